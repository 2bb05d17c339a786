#include "audio/wave_format.h"

#include "audio/wave_header.h"

#include <algorithm>
#include <cstring>

namespace {

DWORD MaskOf(const WAVEFORMATEX& format)
{
    return IsExtensible(format) ? Extended(format).dwChannelMask : 0;
}

// The bytes behind a header.
std::span<const BYTE> ExtraOf(const WAVEFORMATEX& format)
{
    const auto* const bytes = reinterpret_cast<const BYTE*>(&format);
    if (!IsExtensible(format))
        return {bytes + kPlainBytes, format.cbSize};
    return {bytes + kExtensibleBytes, size_t(std::max(format.cbSize - kExtensionBytes, 0))};
}

// An extensible header whose sub-format was left out, and whose sizes all fit plain samples: the type by the bits.
QXSAMPLETYPE SalvagedType(const WAVEFORMATEXTENSIBLE& extended)
{
    const WAVEFORMATEX& format = extended.Format;
    const bool sizesFit = format.nBlockAlign == format.nChannels * (format.wBitsPerSample / 8) &&
                          format.nAvgBytesPerSec == format.nSamplesPerSec * format.nBlockAlign;
    if (!IsEqualGUID(extended.SubFormat, GUID{}) || (format.cbSize != 0 && format.cbSize != kExtensionBytes) ||
        !sizesFit)
        return QXSAMPLE_NONE;
    switch (format.wBitsPerSample) {
    case 8:
        return QXSAMPLE_PCM_U8;
    case 16:
        return QXSAMPLE_PCM_S16;
    case 24:
        return QXSAMPLE_PCM_S24;
    case 32:
        return QXSAMPLE_FLOAT32;
    case 64:
        return QXSAMPLE_FLOAT64;
    default:
        return QXSAMPLE_NONE;
    }
}

WORD MendedBlockAlign(WAVEFORMATEX format)
{
    QxAudio_FixBadWfx(&format);
    return format.nBlockAlign;
}

}   // namespace

void _qxwaveformat::Clear(DWORD size)
{
    const DWORD capacity = size <= kRecordBytes ? kRecordBytes : size;
    std::memset(static_cast<void*>(this), 0, capacity);
    cbRecord = capacity;
}

DWORD _qxwaveformat::ExtraCapacity() const
{
    return cbRecord < kExtraOffset ? 0 : std::min(cbRecord - kExtraOffset, kLargestExtra);
}

void _qxwaveformat::Settle()
{
    cbRecord = cbRecord < kExtraOffset ? kRecordBytes : kRecordBytes + cbExtra;
}

void _qxwaveformat::Init(DWORD nRate, QXSAMPLETYPE eType, WORD nChannelCount, DWORD dwMask, DWORD size)
{
    Clear(size);
    eSampleType = eType;
    nSamplesPerSec = nRate;
    nChannels = nChannelCount;
    dwChannelMask = dwMask;
    nBlockAlign = WORD(QxAudio_BytesFromSampleType(eType) * nChannelCount);
    nAvgBytesPerSec = nBlockAlign * nRate;
    Settle();
}

void _qxwaveformat::Init(DWORD size, const WAVEFORMATEX& format)
{
    Clear(size);
    nSamplesPerSec = format.nSamplesPerSec;
    nChannels = format.nChannels;
    nBlockAlign = MendedBlockAlign(format);
    nAvgBytesPerSec = format.nAvgBytesPerSec;
    eSampleType = QxAudio_GetSampleType(&format);
    if (IsExtensible(format)) {
        dwFlags |= QXWF_EXTENSIBLE;
        dwChannelMask = MaskOf(format);
        if (eSampleType == QXSAMPLE_NONE)
            eSampleType = SalvagedType(Extended(format));
    }
    if (eSampleType == QXSAMPLE_NONE)
        TakeCompressed(format);
    Settle();
}

void _qxwaveformat::TakeCompressed(const WAVEFORMATEX& format)
{
    dwFlags |= QXWF_COMPRESSED;
    wFormatTag = QxAudio_GetWaveFormatTag(&format);
    wBitsPerSample = format.wBitsPerSample;
    const bool hasExtra = format.wFormatTag != WAVE_FORMAT_PCM && format.wFormatTag != WAVE_FORMAT_IEEE_FLOAT;
    if (!hasExtra || cbRecord < kExtraOffset)
        return;
    const std::span<const BYTE> extra = ExtraOf(format);
    cbExtra = WORD(std::min<size_t>(extra.size(), ExtraCapacity()));
    std::copy_n(extra.begin(), cbExtra, abExtra);
}

void _qxwaveformat::InitAsWfx(WORD wTag, DWORD nRate, WORD nBits, WORD nChannelCount, DWORD dwMask, DWORD size)
{
    const WORD bits = wTag == WAVE_FORMAT_PCM && nBits == 20 ? WORD(24) : nBits;
    Clear(size);
    eSampleType = QxAudio_GetSampleType2(wTag, bits);
    nSamplesPerSec = nRate;
    nChannels = nChannelCount;
    dwChannelMask = dwMask;
    if (eSampleType == QXSAMPLE_NONE) {
        dwFlags |= QXWF_COMPRESSED;
        wFormatTag = wTag;
        wBitsPerSample = bits;
    }
    nBlockAlign = WORD(DWORD(nChannelCount) * bits / 8);
    nAvgBytesPerSec = nBlockAlign * nRate;
    Settle();
}

WORD _qxwaveformat::UpdateBlockAlign()
{
    if (eSampleType != QXSAMPLE_NONE) {
        nBlockAlign = WORD(QxAudio_BytesFromSampleType(eSampleType) * nChannels);
        nAvgBytesPerSec = nBlockAlign * nSamplesPerSec;
    }
    return nBlockAlign;
}

WORD _qxwaveformat::FormatTag() const
{
    return IsCompressed() ? wFormatTag : QxAudio_FormatTagFromSampleType(eSampleType);
}

WORD _qxwaveformat::BitsPerSample() const
{
    return IsCompressed() ? wBitsPerSample : QxAudio_BitsFromSampleType(eSampleType);
}

WORD _qxwaveformat::BytesPerSample() const
{
    return WORD(BitsPerSample() >> 3);
}

bool _qxwaveformat::IsCompressed() const
{
    return (dwFlags & QXWF_COMPRESSED) != 0;
}

// A damaged record does not lead beyond what its length covers.
std::span<const BYTE> _qxwaveformat::Extra() const
{
    if (cbRecord < kExtraOffset)
        return {};
    return {abExtra, std::min({DWORD(cbExtra), cbRecord - kRecordBytes, kLargestExtra})};
}

DWORD _qxwaveformat::EffectiveMask() const
{
    return dwChannelMask ? dwChannelMask : DefaultChannelMask(nChannels);
}

bool _qxwaveformat::IsMaskDefault() const
{
    return EffectiveMask() == DefaultChannelMask(nChannels);
}

bool _qxwaveformat::SameSpeakers(DWORD mask) const
{
    return EffectiveMask() == (mask ? mask : DefaultChannelMask(nChannels));
}

bool _qxwaveformat::operator==(const _qxwaveformat& other) const
{
    if (eSampleType != other.eSampleType || nSamplesPerSec != other.nSamplesPerSec || nChannels != other.nChannels ||
        IsCompressed() != other.IsCompressed() || !SameSpeakers(other.dwChannelMask))
        return false;
    return !IsCompressed() || (wFormatTag == other.wFormatTag && nAvgBytesPerSec == other.nAvgBytesPerSec &&
                               wBitsPerSample == other.wBitsPerSample && std::ranges::equal(Extra(), other.Extra()));
}

bool _qxwaveformat::operator==(const WAVEFORMATEX& format) const
{
    if (nSamplesPerSec != format.nSamplesPerSec || nChannels != format.nChannels || !SameSpeakers(MaskOf(format)))
        return false;
    if (!IsCompressed())
        return eSampleType == QxAudio_GetSampleType(&format);
    return wFormatTag == format.wFormatTag && nAvgBytesPerSec == format.nAvgBytesPerSec &&
           wBitsPerSample == format.wBitsPerSample && std::ranges::equal(Extra(), ExtraOf(format));
}
