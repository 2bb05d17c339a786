#include "tools/declared_size.h"
#include "tools/failure.h"
#include "tools/utf8_path.h"
#include "tools/wave_audio.h"
#include "tools/wave_format.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

constexpr uint64_t kStreamed = 0x7FFFF000;   // sizes from here up are what writers put that could not go back
constexpr uint64_t kMostTagBytes = 1 << 20;
constexpr int kMostChunks = 10000;

// A sample as a float of full scale 1.
float Decode(const unsigned char* p, const WaveSample& kind)
{
    switch (kind.encoding) {
    case Encoding::kPcm8:
        return (float(*p) - 128.0f) / 128.0f;
    case Encoding::kPcm16:
        return float(LoadLE<int16_t>(p)) / 32768.0f;
    case Encoding::kPcm24:
        return float(int32_t(uint32_t(LoadLE<uint16_t>(p)) << 8 | uint32_t(p[2]) << 24) >> 8) / 8388608.0f;
    case Encoding::kPcm32:
        return float(LoadLE<int32_t>(p)) / 2147483648.0f;
    case Encoding::kFloat32:
        return std::bit_cast<float>(LoadLE<uint32_t>(p));
    default:
        return float(std::bit_cast<double>(LoadLE<uint64_t>(p)));
    }
}

class WaveReader : public AudioReader {
public:
    explicit WaveReader(const std::string& thePath) : path(thePath)
    {
        OpenFile();
        ReadChunks();
        if (!kind || dataAt == 0)
            throw DataFailure(path + ": the WAV file lacks its format or its audio");
        if (DeclaresMoreThanItHolds(path))
            throw Truncated();
        frames = int64_t(dataBytes / FrameBytes());
        file.clear();
        file.seekg(std::streamoff(dataAt));
    }

    const AudioFormat& Format() const override { return format; }
    int64_t Frames() const override { return frames; }
    std::vector<Tag> Tags() const override { return tags; }

    int64_t Read(float* out, int64_t wanted) override
    {
        const int64_t count = std::min(wanted, frames - framesRead);
        bytes.resize(size_t(count) * FrameBytes());
        if (!file.read(reinterpret_cast<char*>(bytes.data()), std::streamsize(bytes.size())))
            throw Truncated();
        for (size_t i = 0; i < size_t(count * format.channels); ++i)
            out[i] = Decode(bytes.data() + i * SampleBytes(), *kind);
        framesRead += count;
        return count;
    }

private:
    void OpenFile()
    {
        const fs::path place = Utf8Path(path);
        std::error_code error;
        if (fs::is_directory(place, error))
            throw DataFailure(path + ": a folder, not a file");
        file.open(place, std::ios::binary | std::ios::ate);
        if (!file)
            throw DataFailure(path + ": cannot read: " + std::strerror(errno));
        size = uint64_t(file.tellg());
        if (size == 0)
            throw DataFailure(path + ": the file is empty");
    }

    // True when all of it stands in the file.
    bool Load(uint64_t at, uint64_t count)
    {
        if (at > size || size - at < count)
            return false;
        bytes.resize(size_t(count));
        file.clear();
        file.seekg(std::streamoff(at));
        return bool(file.read(reinterpret_cast<char*>(bytes.data()), std::streamsize(count)));
    }

    void ReadChunks()
    {
        if (!Load(0, 12) || LoadLE<uint32_t>(bytes.data()) != ChunkId("RIFF") ||
            LoadLE<uint32_t>(bytes.data() + 8) != ChunkId("WAVE"))
            throw DataFailure(path + ": not an audio file of a known format; this program reads WAV files alone");
        uint64_t at = 12;
        for (int i = 0; i < kMostChunks && Load(at, 8); ++i) {
            const auto id = LoadLE<uint32_t>(bytes.data());
            const uint64_t body = LoadLE<uint32_t>(bytes.data() + 4);
            at += 8;
            if (id == ChunkId("fmt ") && !kind)
                TakeFormat(at, body);
            else if (id == ChunkId("LIST") && body <= kMostTagBytes)
                TakeTags(at, body);
            else if (id == ChunkId("data") && dataAt == 0)
                dataAt = at, dataBytes = body >= kStreamed ? size - at : body;
            at += body + body % 2;
        }
    }

    void TakeFormat(uint64_t at, uint64_t body)
    {
        if (body < kPlainFormatBytes || !Load(at, std::min<uint64_t>(body, kExtensibleFormatBytes)))
            throw Truncated();
        auto tag = LoadLE<uint16_t>(bytes.data());
        if (tag == kWaveExtensible && bytes.size() == kExtensibleFormatBytes) {
            tag = LoadLE<uint16_t>(bytes.data() + 24);
            if (const auto mask = LoadLE<uint32_t>(bytes.data() + 20))
                format.channelMap = {int(mask)};
        }
        format.channels = LoadLE<uint16_t>(bytes.data() + 2);
        format.rate = LoadLE<int32_t>(bytes.data() + 4);
        const auto bits = LoadLE<uint16_t>(bytes.data() + 14);
        kind = std::ranges::find_if(kWaveSamples, [&](auto& row) { return row.tag == tag && row.bits == bits; });
        if (kind == std::end(kWaveSamples) || format.channels == 0 || format.rate <= 0 ||
            LoadLE<uint16_t>(bytes.data() + 12) != FrameBytes())
            throw DataFailure(path + ": no WAV format that this program reads");
        format.container = Container::kWav;
        format.encoding = kind->encoding;
    }

    void TakeTags(uint64_t at, uint64_t body)
    {
        if (body < 4 || !Load(at, body) || LoadLE<uint32_t>(bytes.data()) != ChunkId("INFO"))
            return;
        for (size_t i = 4; i + 8 <= bytes.size();) {
            const auto id = LoadLE<int32_t>(bytes.data() + i);
            const size_t length = LoadLE<uint32_t>(bytes.data() + i + 4);
            i += 8;
            if (length > bytes.size() - i)
                return;
            const std::string_view text(reinterpret_cast<const char*>(bytes.data() + i), length);
            tags.push_back({id, std::string(text.substr(0, text.find('\0')))});
            i += length + length % 2;
        }
    }

    size_t SampleBytes() const { return kind->bits / 8u; }
    size_t FrameBytes() const { return SampleBytes() * size_t(format.channels); }
    Failure Truncated() const { return DataFailure(path + ": the file is damaged or ends before its audio does"); }

    std::string path;
    std::ifstream file;
    uint64_t size = 0, dataAt = 0, dataBytes = 0;
    AudioFormat format;
    const WaveSample* kind = nullptr;
    std::vector<Tag> tags;
    std::vector<unsigned char> bytes;
    int64_t frames = 0, framesRead = 0;
};

}   // namespace

std::unique_ptr<AudioReader> OpenWave(const std::string& path)
{
    return std::make_unique<WaveReader>(path);
}
