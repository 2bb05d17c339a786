// Format records of waveform audio.
#pragma once

#include <guiddef.h>

inline constexpr WORD WAVE_FORMAT_UNKNOWN = 0x0000;
inline constexpr WORD WAVE_FORMAT_PCM = 0x0001;
inline constexpr WORD WAVE_FORMAT_IEEE_FLOAT = 0x0003;
inline constexpr WORD WAVE_FORMAT_EXTENSIBLE = 0xFFFE;

#pragma pack(push, 1)
struct WAVEFORMATEX {
    WORD wFormatTag;
    WORD nChannels;
    DWORD nSamplesPerSec;
    DWORD nAvgBytesPerSec;
    WORD nBlockAlign;   // bytes of a frame
    WORD wBitsPerSample;
    WORD cbSize;   // bytes that follow this record
};

struct WAVEFORMATEXTENSIBLE {
    WAVEFORMATEX Format;
    union {
        WORD wValidBitsPerSample;
        WORD wSamplesPerBlock;
        WORD wReserved;
    } Samples;
    DWORD dwChannelMask;
    GUID SubFormat;
};
#pragma pack(pop)
static_assert(sizeof(WAVEFORMATEX) == 18 && sizeof(WAVEFORMATEXTENSIBLE) == 40);
