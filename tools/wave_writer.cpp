#include "tools/failure.h"
#include "tools/wave_audio.h"
#include "tools/wave_format.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <unistd.h>

namespace {

constexpr int64_t kMostDataBytes = (int64_t(1) << 32) - (1 << 21);   // tags and headers want some

using Bytes = std::vector<unsigned char>;

void Append(Bytes& bytes, uint64_t number, size_t count)
{
    bytes.resize(bytes.size() + count);
    StoreLE(bytes.data() + bytes.size() - count, number, count);
}

Bytes FormatRecord(const AudioFormat& format, const WaveSample& kind)
{
    const auto frameBytes = uint32_t(format.channels) * kind.bits / 8u;
    const bool extensible = !format.channelMap.empty();
    Bytes record;
    Append(record, extensible ? kWaveExtensible : kind.tag, 2);
    Append(record, uint32_t(format.channels), 2);
    Append(record, uint32_t(format.rate), 4);
    Append(record, uint64_t(format.rate) * frameBytes, 4);
    Append(record, frameBytes, 2);
    Append(record, kind.bits, 2);
    if (!extensible)
        return record;
    Append(record, kExtensibleFormatBytes - kPlainFormatBytes - 2, 2);
    Append(record, kind.bits, 2);
    Append(record, uint32_t(format.channelMap.front()), 4);
    Append(record, kind.tag, 2);
    record.insert(record.end(), kSubFormatTail.begin(), kSubFormatTail.end());
    return record;
}

void AppendChunk(Bytes& bytes, uint32_t id, const Bytes& body)
{
    Append(bytes, id, 4);
    Append(bytes, body.size(), 4);
    bytes.insert(bytes.end(), body.begin(), body.end());
    bytes.resize(bytes.size() + body.size() % 2);
}

// All before the audio's first byte, the two sizes still to be filled in.
Bytes Header(const AudioFormat& format, const WaveSample& kind, const std::vector<Tag>& tags)
{
    Bytes header, list;
    Append(header, ChunkId("RIFF"), 4);
    Append(header, 0, 4);
    Append(header, ChunkId("WAVE"), 4);
    AppendChunk(header, ChunkId("fmt "), FormatRecord(format, kind));
    Append(list, ChunkId("INFO"), 4);
    for (const Tag& tag : tags) {
        Bytes text(tag.text.begin(), tag.text.end());
        text.push_back(0);
        AppendChunk(list, uint32_t(tag.kind), text);
    }
    if (!tags.empty())
        AppendChunk(header, ChunkId("LIST"), list);
    Append(header, ChunkId("data"), 4);
    Append(header, 0, 4);
    return header;
}

class WaveWriter : public AudioWriter {
public:
    WaveWriter(int theDescriptor, const std::string& theName, const AudioFormat& format, int64_t expectedFrames,
               const std::vector<Tag>& tags)
        : descriptor(theDescriptor), name(theName), channels(format.channels),
          kind(*std::ranges::find(kWaveSamples, format.encoding, &WaveSample::encoding))
    {
        CheckSize(expectedFrames * channels * kind.bits / 8);
        const Bytes header = Header(format, kind, tags);
        headerBytes = header.size();
        Put(header.data(), header.size());
    }

    void Write(const float* in, int64_t frames) override
    {
        const auto samples = size_t(frames * channels);
        const size_t sampleBytes = kind.bits / 8u;
        CheckSize(dataBytes + int64_t(samples * sampleBytes));
        bytes.resize(samples * sampleBytes);
        for (size_t i = 0; i < samples; ++i)
            StoreLE(bytes.data() + i * sampleBytes, kind.tag == kWaveFloat ? FloatBits(in[i]) : Whole(in[i]),
                    sampleBytes);
        Put(bytes.data(), bytes.size());
        dataBytes += int64_t(bytes.size());
    }

    int64_t Clipped() const override { return clipped; }

    void Finish() override
    {
        const unsigned char pad = 0;
        Put(&pad, size_t(dataBytes % 2));
        PutSize(4, headerBytes - 8 + uint64_t(dataBytes + dataBytes % 2));
        PutSize(headerBytes - 4, uint64_t(dataBytes));
    }

private:
    void CheckSize(int64_t size) const
    {
        if (size > kMostDataBytes)
            throw DataFailure(name + ": cannot write: a WAV file holds 4 GiB at most");
    }

    uint64_t FloatBits(float value) const
    {
        return kind.bits == 64 ? std::bit_cast<uint64_t>(double(value)) : std::bit_cast<uint32_t>(value);
    }

    // Rounded to the file's own grain, so that what was read comes back bit for bit.
    uint64_t Whole(float value)
    {
        const double fullScale = std::ldexp(1.0, kind.bits - 1), scaled = value * fullScale;
        clipped += scaled > fullScale - 0.5 || scaled < -fullScale - 0.5;
        const auto whole = std::llrint(std::clamp(scaled, -fullScale, fullScale - 1.0));
        return uint64_t(kind.bits == 8 ? whole + 128 : whole);   // bytes have no sign
    }

    void Put(const unsigned char* p, size_t count)
    {
        while (count > 0) {
            const auto written = write(descriptor, p, count);
            if (written < 0 && errno != EINTR)
                throw DataFailure(name + ": cannot write: " + std::strerror(errno));
            p += std::max<int64_t>(written, 0), count -= size_t(std::max<int64_t>(written, 0));
        }
    }

    void PutSize(uint64_t at, uint64_t size)
    {
        unsigned char number[4];
        StoreLE(number, size, sizeof number);
        if (lseek(descriptor, off_t(at), SEEK_SET) < 0)
            throw DataFailure(name + ": cannot write: " + std::strerror(errno));
        Put(number, sizeof number);
    }

    int descriptor;
    std::string name;
    int64_t channels;
    const WaveSample& kind;
    size_t headerBytes = 0;
    int64_t dataBytes = 0, clipped = 0;
    Bytes bytes;
};

}   // namespace

std::unique_ptr<AudioWriter> CreateWave(int descriptor, const std::string& name, const AudioFormat& format,
                                        int64_t expectedFrames, const std::vector<Tag>& tags)
{
    if (format.container != Container::kWav)
        throw UsageFailure(name + ": this program writes WAV files alone");
    return std::make_unique<WaveWriter>(descriptor, name, format, expectedFrames, tags);
}
