// Headers of audio formats for tests, with room for what may follow them.
#pragma once

#include "audio/wave_header.h"

#include <algorithm>
#include <array>
#include <initializer_list>

// As the platform registers them; the tag is the first number.
inline constexpr GUID kSubFormatPcm = {1, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}};
inline constexpr GUID kSubFormatFloat = {3, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}};
inline constexpr GUID kSubFormatForeign = {1, 0, 0x11, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}};

class Header {
public:
    Header(WORD tag, DWORD rate, WORD bits, WORD channels)
    {
        const auto frame = WORD(bits / 8 * channels);
        Format() = {tag, channels, rate, frame * rate, frame, bits, 0};
    }
    Header(GUID subFormat, DWORD rate, WORD bits, WORD channels, DWORD mask, WORD validBits = 0)
        : Header(WAVE_FORMAT_EXTENSIBLE, rate, bits, channels)
    {
        Format().cbSize = 22;
        Extension().Samples.wValidBitsPerSample = validBits ? validBits : bits;
        Extension().dwChannelMask = mask;
        Extension().SubFormat = subFormat;
    }
    void Append(std::initializer_list<BYTE> extra)
    {
        const bool extensible = Format().wFormatTag == WAVE_FORMAT_EXTENSIBLE;
        std::copy(extra.begin(), extra.end(), bytes.begin() + 18 + (extensible ? 22 : 0));
        Format().cbSize = WORD(Format().cbSize + extra.size());
    }

    WAVEFORMATEX& Format() { return reinterpret_cast<WAVEFORMATEX&>(bytes); }
    const WAVEFORMATEX& Format() const { return reinterpret_cast<const WAVEFORMATEX&>(bytes); }
    WAVEFORMATEXTENSIBLE& Extension() { return reinterpret_cast<WAVEFORMATEXTENSIBLE&>(bytes); }
    operator const WAVEFORMATEX*() const { return &Format(); }
    operator const WAVEFORMATEX&() const { return Format(); }
    const BYTE* Bytes() const { return bytes.data(); }

private:
    alignas(4) std::array<BYTE, 2048> bytes = {};
};
