#include "audio/wave_header.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

// Of the sub-formats that carry a tag; the tag takes the place of the low half of the first number.
constexpr GUID kTagBase = {0, 0, 0x10, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

bool CarriesTag(const GUID& subFormat)
{
    const auto* const bytes = reinterpret_cast<const BYTE*>(&subFormat);
    return std::memcmp(bytes + 2, reinterpret_cast<const BYTE*>(&kTagBase) + 2, sizeof(GUID) - 2) == 0;
}

WORD TagOf(const GUID& subFormat)
{
    return CarriesTag(subFormat) ? LOWORD(subFormat.Data1) : WORD(0);
}

WORD FrameBytes(DWORD bits, DWORD channels)
{
    return WORD(bits / 8 * channels);
}

// A mask that a plain header implies.
bool IsPlainMask(DWORD mask, DWORD channels)
{
    return channels <= 2 && mask == DefaultChannelMask(channels);
}

void InitPlain(WAVEFORMATEX& format, WORD tag, DWORD rate, WORD bits, WORD channels)
{
    const WORD frame = FrameBytes(bits, channels);
    format = {tag, channels, rate, frame * rate, frame, bits, 0};
}

}   // namespace

DWORD DefaultChannelMask(DWORD channels)
{
    return channels >= 32 ? ~DWORD(0) : (DWORD(1) << channels) - 1;
}

QXSAMPLETYPE QxAudio_GetSampleType(const WAVEFORMATEX* pFormat)
{
    if (!IsExtensible(*pFormat))
        return QxAudio_GetSampleType2(pFormat->wFormatTag, pFormat->wBitsPerSample);
    const WAVEFORMATEXTENSIBLE& extended = Extended(*pFormat);
    const QXSAMPLETYPE type = QxAudio_GetSampleType2(TagOf(extended.SubFormat), pFormat->wBitsPerSample);
    return type == QXSAMPLE_PCM_S32 && extended.Samples.wValidBitsPerSample == 24 ? QXSAMPLE_PCM_S24_IN_32 : type;
}

WORD QxAudio_GetWaveFormatTag(const WAVEFORMATEX* pFormat)
{
    if (!pFormat)
        return 0;
    if (!IsExtensible(*pFormat) || pFormat->cbSize < kExtensionBytes)
        return pFormat->wFormatTag;
    return TagOf(Extended(*pFormat).SubFormat);
}

bool QxAudio_GetFormatTagExtensible(const WAVEFORMATEXTENSIBLE* pFormat, WORD* pTag)
{
    if (!IsExtensible(pFormat->Format) || pFormat->Format.cbSize < kExtensionBytes)
        return false;
    const WORD tag = TagOf(pFormat->SubFormat);
    if (tag != WAVE_FORMAT_PCM && tag != WAVE_FORMAT_IEEE_FLOAT)
        return false;
    *pTag = tag;
    return true;
}

bool QxAudio_IsCompressed(const WAVEFORMATEX* pFormat)
{
    switch (pFormat->wFormatTag) {
    case WAVE_FORMAT_EXTENSIBLE:
        return QxAudio_IsCompressedExtensible(&Extended(*pFormat));
    case WAVE_FORMAT_PCM:
    case WAVE_FORMAT_IEEE_FLOAT:
    case kTagUnpacked:
    case kTagSigned:
    case kTagBigEndian:
        return pFormat->nBlockAlign != pFormat->wBitsPerSample / 8 * pFormat->nChannels;
    default:
        return true;
    }
}

bool QxAudio_IsCompressedExtensible(const WAVEFORMATEXTENSIBLE* pFormat)
{
    const WORD tag = TagOf(pFormat->SubFormat);
    return pFormat->Format.cbSize < kExtensionBytes || (tag != WAVE_FORMAT_PCM && tag != WAVE_FORMAT_IEEE_FLOAT);
}

bool QxAudio_IsEqualFormat(const WAVEFORMATEX* pA, const WAVEFORMATEX* pB)
{
    return pA->wFormatTag == pB->wFormatTag && pA->nChannels == pB->nChannels &&
           pA->nSamplesPerSec == pB->nSamplesPerSec && pA->wBitsPerSample == pB->wBitsPerSample;
}

int32_t QxAudio_FixBadWfx(WAVEFORMATEX* pFormat)
{
    if (pFormat->wFormatTag != WAVE_FORMAT_PCM)
        return 0;
    const WORD bits = pFormat->wBitsPerSample == 20 ? WORD(24) : pFormat->wBitsPerSample;
    const WORD frame = FrameBytes(bits, pFormat->nChannels);
    if (bits == pFormat->wBitsPerSample && frame == pFormat->nBlockAlign)
        return 0;
    pFormat->wBitsPerSample = bits;
    pFormat->nBlockAlign = frame;
    return 1;
}

void QxAudio_InitWfx(WAVEFORMATEX* pFormat, DWORD nRate, QXSAMPLETYPE eType, WORD nChannels)
{
    InitPlain(*pFormat, QxAudio_FormatTagFromSampleType(eType), nRate, QxAudio_BitsFromSampleType(eType), nChannels);
}

void QxAudio_InitWfxFlex(WAVEFORMATEX* pFormat, WORD wTag, DWORD nRate, WORD nBits, WORD nChannels, DWORD dwMask,
                         DWORD cbDest)
{
    if (dwMask == 0 || IsPlainMask(dwMask, nChannels) || cbDest < kExtensibleBytes)
        return InitPlain(*pFormat, wTag, nRate, nBits, nChannels);
    const DWORD mask = std::popcount(dwMask) > int(nChannels) ? 0 : dwMask;
    InitExtensible(reinterpret_cast<WAVEFORMATEXTENSIBLE*>(pFormat), wTag, nRate, nBits, nChannels, mask);
}

void InitExtensible(WAVEFORMATEXTENSIBLE* pFormat, WORD wTag, DWORD nRate, WORD nBits, WORD nChannels, DWORD dwMask)
{
    InitPlain(pFormat->Format, wTag, nRate, nBits, nChannels);
    MakeExtensible(pFormat, wTag, dwMask ? dwMask : DefaultChannelMask(nChannels));
}

void MakeExtensible(WAVEFORMATEXTENSIBLE* pFormat, WORD wSubFormatTag, DWORD dwMask)
{
    pFormat->Format.wFormatTag = WAVE_FORMAT_EXTENSIBLE;
    pFormat->Format.cbSize = kExtensionBytes;
    pFormat->Samples.wValidBitsPerSample = pFormat->Format.wBitsPerSample;
    pFormat->dwChannelMask = dwMask;
    pFormat->SubFormat = kTagBase;
    pFormat->SubFormat.Data1 = wSubFormatTag;
}

void QxAudio_CopyWfxToWfExt(const WAVEFORMATEX* pFormat, WAVEFORMATEXTENSIBLE* pDest)
{
    std::memcpy(static_cast<void*>(pDest), pFormat, std::min(kPlainBytes + pFormat->cbSize, kExtensibleBytes));
}

void QxAudio_CopyWfExtToWfx(const WAVEFORMATEXTENSIBLE* pFormat, WAVEFORMATEX* pDest)
{
    WORD tag = 0;
    if (!IsExtensible(pFormat->Format)) {
        *pDest = pFormat->Format;
    } else if (QxAudio_GetFormatTagExtensible(pFormat, &tag)) {
        *pDest = pFormat->Format;
        pDest->wFormatTag = tag;
        pDest->cbSize = 0;
    }
}
