#include "audio/sample_type.h"

#include <mmreg.h>

#include <algorithm>
#include <iterator>

namespace {

// What a type is written as.
struct SampleType {
    QXSAMPLETYPE eType;
    WORD wTag, wBits, cBytes;
};
constexpr SampleType kTypes[] = {
    {QXSAMPLE_PCM_U8, WAVE_FORMAT_PCM, 8, 1},          {QXSAMPLE_PCM_S16, WAVE_FORMAT_PCM, 16, 2},
    {QXSAMPLE_PCM_S24, WAVE_FORMAT_PCM, 24, 3},        {QXSAMPLE_PCM_S32, WAVE_FORMAT_PCM, 32, 4},
    {QXSAMPLE_FLOAT32, WAVE_FORMAT_IEEE_FLOAT, 32, 4}, {QXSAMPLE_FLOAT64, WAVE_FORMAT_IEEE_FLOAT, 64, 8},
    {QXSAMPLE_PCM_S24_IN_32, kTagUnpacked, 32, 4},     {QXSAMPLE_PCM_S8, kTagSigned, 8, 1},
    {QXSAMPLE_PCM_S16_BE, kTagBigEndian, 16, 2},       {QXSAMPLE_PCM_S24_BE, kTagBigEndian, 24, 3},
    {QXSAMPLE_PCM_S32_BE, kTagBigEndian, 32, 4},
};

// What is read as which type: more than is written.
struct Reading {
    WORD wTag, wBits;
    QXSAMPLETYPE eType;
};
constexpr Reading kReadings[] = {
    {WAVE_FORMAT_PCM, 8, QXSAMPLE_PCM_U8},
    {WAVE_FORMAT_PCM, 16, QXSAMPLE_PCM_S16},
    {WAVE_FORMAT_PCM, 20, QXSAMPLE_PCM_S24},
    {WAVE_FORMAT_PCM, 24, QXSAMPLE_PCM_S24},
    {WAVE_FORMAT_PCM, 32, QXSAMPLE_PCM_S32},
    {WAVE_FORMAT_IEEE_FLOAT, 32, QXSAMPLE_FLOAT32},
    {WAVE_FORMAT_IEEE_FLOAT, 64, QXSAMPLE_FLOAT64},
    {kTagUnpacked, 24, QXSAMPLE_PCM_S24_IN_32},
    {kTagUnpacked, 32, QXSAMPLE_PCM_S24_IN_32},
    {kTagSigned, 8, QXSAMPLE_PCM_S8},
    {kTagSigned, 16, QXSAMPLE_PCM_S16},
    {kTagSigned, 20, QXSAMPLE_PCM_S24},
    {kTagSigned, 24, QXSAMPLE_PCM_S24},
    {kTagSigned, 32, QXSAMPLE_PCM_S32},
    {kTagBigEndian, 8, QXSAMPLE_PCM_U8},
    {kTagBigEndian, 16, QXSAMPLE_PCM_S16_BE},
    {kTagBigEndian, 24, QXSAMPLE_PCM_S24_BE},
    {kTagBigEndian, 32, QXSAMPLE_PCM_S32_BE},
    {kTagFe03, 16, QXSAMPLE_TAG_FE03_16},
    {kTagFe03, 24, QXSAMPLE_TAG_FE03_24},
};

constexpr SampleType kNoType = {QXSAMPLE_NONE, 0, 0, 0};

const SampleType& RowOf(QXSAMPLETYPE eType)
{
    const auto row = std::ranges::find(kTypes, eType, &SampleType::eType);
    return row == std::end(kTypes) ? kNoType : *row;
}

}   // namespace

WORD QxAudio_FormatTagFromSampleType(QXSAMPLETYPE eType)
{
    return RowOf(eType).wTag;
}

WORD QxAudio_BitsFromSampleType(QXSAMPLETYPE eType)
{
    return RowOf(eType).wBits;
}

WORD QxAudio_BytesFromSampleType(QXSAMPLETYPE eType)
{
    return RowOf(eType).cBytes;
}

QXSAMPLETYPE QxAudio_GetSampleType2(WORD wTag, WORD wBits)
{
    for (const Reading& reading : kReadings)
        if (reading.wTag == wTag && reading.wBits == wBits)
            return reading.eType;
    return QXSAMPLE_NONE;
}

double QxAudio_GetNormalizeFactor(uint32_t nBits)
{
    switch (nBits) {
    case 8:
    case 16:
    case 24:
    case 32:
        return double(1ull << (nBits - 1));
    default:
        return 1.0;
    }
}
