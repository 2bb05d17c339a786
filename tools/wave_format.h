// What readers and writers of WAV files share: the kinds of samples, and numbers in the file's order of bytes.
#pragma once

#include "tools/audio_file.h"

#include <array>
#include <cstdint>
#include <cstring>

struct WaveSample {
    Encoding encoding;
    uint16_t tag, bits;
};
constexpr uint16_t kWaveWhole = 1, kWaveFloat = 3, kWaveExtensible = 0xFFFE;
constexpr WaveSample kWaveSamples[] = {
    {Encoding::kPcm8, kWaveWhole, 8},   {Encoding::kPcm16, kWaveWhole, 16},   {Encoding::kPcm24, kWaveWhole, 24},
    {Encoding::kPcm32, kWaveWhole, 32}, {Encoding::kFloat32, kWaveFloat, 32}, {Encoding::kFloat64, kWaveFloat, 64},
};

constexpr size_t kPlainFormatBytes = 16, kExtensibleFormatBytes = 40;   // of the format record
// What follows the tag in an extensible record's identifier of the sample kind.
constexpr std::array<unsigned char, 14> kSubFormatTail = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                                          0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

constexpr uint32_t ChunkId(const char (&name)[5])
{
    uint32_t id = 0;
    for (int i = 3; i >= 0; --i)
        id = id << 8 | static_cast<unsigned char>(name[i]);
    return id;
}

// The number of the least significant byte first that stands at p.
template <typename Number>
Number LoadLE(const unsigned char* p)
{
    Number number = 0;
    for (size_t i = sizeof(Number); i-- > 0;)
        number = Number(uint64_t(number) << 8 | p[i]);
    return number;
}

inline void StoreLE(unsigned char* p, uint64_t number, size_t bytes)
{
    for (size_t i = 0; i < bytes; ++i)
        p[i] = static_cast<unsigned char>(number >> 8 * i);
}
