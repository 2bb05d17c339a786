// Audio files by libsndfile.
#include "dsp/kernels.h"
#include "tools/audio_file.h"
#include "tools/declared_size.h"
#include "tools/failure.h"
#include "tools/native/piecewise_file.h"

#include <sndfile.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

struct SndfileCloser {
    void operator()(SNDFILE* p) const { sf_close(p); }
};
using SndfilePtr = std::unique_ptr<SNDFILE, SndfileCloser>;

constexpr struct {
    Container container;
    int major;
} kMajors[] = {{Container::kWav, SF_FORMAT_WAV},   {Container::kWav, SF_FORMAT_WAVEX},
               {Container::kW64, SF_FORMAT_W64},   {Container::kRf64, SF_FORMAT_RF64},
               {Container::kAiff, SF_FORMAT_AIFF}, {Container::kFlac, SF_FORMAT_FLAC},
               {Container::kOgg, SF_FORMAT_OGG},   {Container::kOpus, SF_FORMAT_OGG}};

constexpr struct {
    Encoding encoding;
    int minor;
    int unusedBits;
} kMinors[] = {{Encoding::kPcm8, SF_FORMAT_PCM_U8, 24},    {Encoding::kPcm8, SF_FORMAT_PCM_S8, 24},
               {Encoding::kPcm16, SF_FORMAT_PCM_16, 16},   {Encoding::kPcm24, SF_FORMAT_PCM_24, 8},
               {Encoding::kPcm32, SF_FORMAT_PCM_32, 0},    {Encoding::kFloat32, SF_FORMAT_FLOAT, -1},
               {Encoding::kFloat64, SF_FORMAT_DOUBLE, -1}, {Encoding::kLossy, SF_FORMAT_VORBIS, -1},
               {Encoding::kLossy, SF_FORMAT_OPUS, -1},     {Encoding::kLossy, SF_FORMAT_MPEG_LAYER_III, -1}};

constexpr int kTagKinds[] = {SF_STR_TITLE, SF_STR_COPYRIGHT, SF_STR_ARTIST,      SF_STR_COMMENT,
                             SF_STR_DATE,  SF_STR_ALBUM,     SF_STR_TRACKNUMBER, SF_STR_GENRE};

Container ContainerOf(int format)
{
    if ((format & SF_FORMAT_SUBMASK) == SF_FORMAT_OPUS)
        return Container::kOpus;
    for (const auto& row : kMajors)
        if (row.major == (format & SF_FORMAT_TYPEMASK))
            return row.container;
    return Container::kOther;
}

Encoding EncodingOf(int format)
{
    for (const auto& row : kMinors)
        if (row.minor == (format & SF_FORMAT_SUBMASK))
            return row.encoding;
    return Encoding::kOther;
}

std::vector<int> ChannelMapOf(SNDFILE* file, int channels)
{
    std::vector<int> map(size_t(channels), 0);
    const auto bytes = int(map.size() * sizeof(int));
    if (sf_command(file, SFC_GET_CHANNEL_MAP_INFO, map.data(), bytes) != SF_TRUE)
        return {};
    return map;
}

// The library's words for what went wrong, without the label in front and the stop behind.
std::string Words(const char* text)
{
    std::string words = text;
    if (const size_t label = words.find("rror : "); label != std::string::npos)
        words.erase(0, label + 7);
    if (words.ends_with('.'))
        words.pop_back();
    return words;
}

constexpr int64_t kAhead = 32768;   // frames read from the system at once

class SndfileReader : public AudioReader {
public:
    explicit SndfileReader(const std::string& thePath) : path(thePath)
    {
        CheckPlace();
        file.reset(sf_open(path.c_str(), SFM_READ, &info));
        if (!file)
            throw DataFailure(path + ": " + Reason());
        if (info.frames == SF_COUNT_MAX || info.frames < 0 || DeclaresMoreThanItHolds(path))
            throw Truncated();
        format.channels = info.channels;
        format.rate = info.samplerate;
        format.container = ContainerOf(info.format);
        format.encoding = EncodingOf(info.format);
        format.channelMap = ChannelMapOf(file.get(), info.channels);
    }

    const AudioFormat& Format() const override { return format; }
    int64_t Frames() const override { return info.frames; }

    int64_t Read(float* out, int64_t frames) override
    {
        const int64_t got =
            format.encoding == Encoding::kPcm16 ? ReadShort(out, frames) : sf_readf_float(file.get(), out, frames);
        framesRead += got;
        if (got < frames && framesRead < info.frames)
            throw Truncated();
        return got;
    }

    std::vector<Tag> Tags() const override
    {
        std::vector<Tag> tags;
        for (const int kind : kTagKinds)
            if (const char* const text = sf_get_string(file.get(), kind))
                tags.push_back({kind, text});
        return tags;
    }

private:
    void CheckPlace() const
    {
        struct stat status {};
        if (stat(path.c_str(), &status) != 0 || access(path.c_str(), R_OK) != 0)
            throw DataFailure(path + ": cannot read: " + std::strerror(errno));
        if (S_ISDIR(status.st_mode))
            throw DataFailure(path + ": a folder, not a file");
        if (S_ISREG(status.st_mode) && status.st_size == 0)
            throw DataFailure(path + ": the file is empty");
    }
    // The library's own conversion takes a few times as long. It reads from the system what it is asked for at once.
    int64_t ReadShort(float* out, int64_t frames)
    {
        int64_t got = 0;
        while (got < frames && (aheadAt < aheadEnd || FillAhead())) {
            const auto part = std::min(size_t((frames - got) * info.channels), aheadEnd - aheadAt);
            Kernels().FromInt16(out + got * info.channels, ahead.data() + aheadAt, int32_t(part));
            aheadAt += part;
            got += int64_t(part) / info.channels;
        }
        return got;
    }
    bool FillAhead()
    {
        ahead.resize(size_t(kAhead * info.channels));
        aheadAt = 0;
        aheadEnd = size_t(std::max<int64_t>(sf_readf_short(file.get(), ahead.data(), kAhead), 0) * info.channels);
        return aheadEnd > 0;
    }
    std::string Reason() const
    {
        if (sf_error(nullptr) == SF_ERR_UNRECOGNISED_FORMAT)
            return "not an audio file of a known format";
        return Words(sf_strerror(nullptr));
    }
    Failure Truncated() const { return DataFailure(path + ": the file is damaged or ends before its audio does"); }

    std::string path;
    SF_INFO info{};
    SndfilePtr file;
    AudioFormat format;
    std::vector<short> ahead;           // read and not yet given: from aheadAt to aheadEnd
    size_t aheadAt = 0, aheadEnd = 0;   // samples
    int64_t framesRead = 0;
};

int MajorFor(const AudioFormat& format, int64_t expectedFrames)
{
    constexpr int64_t kMostWavBytes = (int64_t(1) << 32) - (1 << 20);   // the sizes have 32 bits; headers want some
    const int64_t bytes = expectedFrames * format.channels * 8;
    if (format.container == Container::kWav && bytes > kMostWavBytes)
        return SF_FORMAT_RF64;   // falls back to WAV when it turns out shorter
    if (format.container == Container::kWav && !format.channelMap.empty())
        return SF_FORMAT_WAVEX;
    return std::ranges::find_if(kMajors, [&](const auto& row) { return row.container == format.container; })->major;
}

int MinorFor(const AudioFormat& format)
{
    const bool isSigned = format.container == Container::kAiff || format.container == Container::kFlac;
    if (format.encoding == Encoding::kPcm8)
        return isSigned ? SF_FORMAT_PCM_S8 : SF_FORMAT_PCM_U8;
    if (format.container == Container::kOpus)
        return SF_FORMAT_OPUS;
    return std::ranges::find_if(kMinors, [&](const auto& row) { return row.encoding == format.encoding; })->minor;
}

class SndfileWriter : public AudioWriter {
public:
    SndfileWriter(int descriptor, const std::string& theName, const AudioFormat& format, int64_t expectedFrames,
                  const std::vector<Tag>& tags)
        : name(theName), channels(format.channels), bytes(descriptor)
    {
        SF_INFO info{};
        info.channels = format.channels;
        info.samplerate = format.rate;
        info.format = MajorFor(format, expectedFrames) | MinorFor(format);
        unusedBits =
            std::ranges::find(kMinors, info.format & SF_FORMAT_SUBMASK, [](auto& r) { return r.minor; })->unusedBits;
        if (!sf_format_check(&info))
            throw DataFailure(name + ": this format cannot hold " + std::to_string(channels) + " channels at " +
                              std::to_string(format.rate) + " Hz");
        SF_VIRTUAL_IO calls = PiecewiseFile::Calls();
        file.reset(sf_open_virtual(&calls, SFM_WRITE, &info, &bytes));
        if (!file)
            throw DataFailure(name + ": " + Words(sf_strerror(nullptr)));
        sf_command(file.get(), SFC_RF64_AUTO_DOWNGRADE, nullptr, format.container == Container::kWav);
        // Its time stamp would make every file another one.
        sf_command(file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
        SetFacts(format, tags);
    }

    void Write(const float* in, int64_t frames) override
    {
        const int64_t written = unusedBits < 0     ? sf_writef_float(file.get(), in, frames)
                                : unusedBits >= 16 ? WriteShort(in, frames)
                                                   : WriteWhole(in, frames);
        if (written != frames)
            throw Unwritten(sf_error(file.get()));
    }

    int64_t Clipped() const override { return clipped; }

    void Finish() override
    {
        const int error = sf_error(file.get());
        const int closing = sf_close(file.release());
        if (!bytes.Finish() || error || closing)
            throw Unwritten(error ? error : closing);
    }

private:
    Failure Unwritten(int libraryError) const
    {
        const std::string reason = bytes.Error() ? std::strerror(bytes.Error()) : Words(sf_error_number(libraryError));
        return DataFailure(name + ": cannot write: " + reason);
    }
    void SetFacts(const AudioFormat& format, const std::vector<Tag>& tags)
    {
        if (!format.channelMap.empty()) {   // refused by formats that have no map
            std::vector<int> map = format.channelMap;
            sf_command(file.get(), SFC_SET_CHANNEL_MAP_INFO, map.data(), int(map.size() * sizeof(int)));
        }
        for (const Tag& tag : tags)
            sf_set_string(file.get(), tag.kind, tag.text.c_str());
    }

    // Rounded here to the file's own grain, so that what was read comes back bit for bit: the library's conversions
    // from float truncate, or scale by one step less than full scale.
    int64_t WriteShort(const float* in, int64_t frames)
    {
        const int unused = unusedBits - 16;
        shorts.resize(size_t(frames * channels));
        clipped += Kernels().ToInt16(shorts.data(), in, float(32768 >> unused), int32_t(shorts.size()));
        if (unused > 0)
            for (short& value : shorts)
                value = short(value * (1 << unused));
        return sf_writef_short(file.get(), shorts.data(), frames);
    }

    int64_t WriteWhole(const float* in, int64_t frames)
    {
        const double fullScale = std::ldexp(1.0, 31 - unusedBits);
        whole.resize(size_t(frames * channels));
        for (size_t i = 0; i < whole.size(); ++i) {
            const double value = in[i] * fullScale;
            const double limited = std::clamp(value, -fullScale, fullScale - 1.0);
            clipped += value > fullScale - 0.5 || value < -fullScale - 0.5;
            whole[i] = int(std::llrint(limited) * (int64_t(1) << unusedBits));
        }
        return sf_writef_int(file.get(), whole.data(), frames);
    }

    std::string name;
    int32_t channels;
    int unusedBits = 0;   // of 32, below the sample's; negative: not whole numbers
    PiecewiseFile bytes;
    SndfilePtr file;   // writes to them until it is closed
    std::vector<short> shorts;
    std::vector<int> whole;
    int64_t clipped = 0;
};

}   // namespace

std::unique_ptr<AudioReader> OpenAudio(const std::string& path)
{
    return std::make_unique<SndfileReader>(path);
}

std::unique_ptr<AudioWriter> CreateAudio(int descriptor, const std::string& name, const AudioFormat& format,
                                         int64_t expectedFrames, const std::vector<Tag>& tags)
{
    return std::make_unique<SndfileWriter>(descriptor, name, format, expectedFrames, tags);
}
