// The linear forms in which audio is stored, and what tells them in a header: the format tag and the bits of a sample.
// [any] No state.
#pragma once

#include <windows.h>

#include <cstdint>

// Stored in records, and the index of the conversions. Little endian unless it says otherwise.
enum QXSAMPLETYPE : uint32_t {
    QXSAMPLE_NONE = 0,        // compressed or unknown
    QXSAMPLE_PCM_U8 = 0x10,   // silence 0x80
    QXSAMPLE_PCM_S16 = 0x11,
    QXSAMPLE_PCM_S24 = 0x12,   // packed into 3 bytes
    QXSAMPLE_PCM_S32 = 0x13,
    QXSAMPLE_FLOAT32 = 0x20,         // full scale 1.0
    QXSAMPLE_FLOAT64 = 0x21,         // full scale 1.0
    QXSAMPLE_PCM_S24_IN_32 = 0x30,   // right-justified and sign-extended: -8388608 to 8388607
    QXSAMPLE_PCM_S8 = 0x31,          // silence 0
    QXSAMPLE_PCM_S16_BE = 0x40,      // big endian
    QXSAMPLE_PCM_S24_BE = 0x41,
    QXSAMPLE_PCM_S32_BE = 0x42,
    QXSAMPLE_TAG_FE03_16 = 0x80,   // told from other types, and of no further meaning
    QXSAMPLE_TAG_FE03_24 = 0x81,
};

// Tags for the linear formats that have no public one.
inline constexpr WORD kTagUnpacked = 0xFE00;   // 24 bits in 32
inline constexpr WORD kTagSigned = 0xFE01;     // signed also with 8 bits
inline constexpr WORD kTagBigEndian = 0xFE02;
inline constexpr WORD kTagFe03 = 0xFE03;

// Format tag, bits and bytes of a sample; 0 for a type that is not linear.
WORD QxAudio_FormatTagFromSampleType(QXSAMPLETYPE eType);
WORD QxAudio_BitsFromSampleType(QXSAMPLETYPE eType);
WORD QxAudio_BytesFromSampleType(QXSAMPLETYPE eType);
// The type of a plain header. 20-bit PCM counts as 24.
QXSAMPLETYPE QxAudio_GetSampleType2(WORD wTag, WORD wBits);
// What full scale is for an integer of so many bits; 1.0 for a width that is none of 8, 16, 24 and 32.
double QxAudio_GetNormalizeFactor(uint32_t nBits);
