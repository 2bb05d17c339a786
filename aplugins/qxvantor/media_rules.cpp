#include "aplugins/qxvantor/media_rules.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

constexpr ULONG kShortFormat = 16;   // a format record without cbSize
constexpr WORD kMaxChannels = 32;
constexpr WORD kMaxEngineChannels = 48;
constexpr WORD kExtensionSize = sizeof(WAVEFORMATEXTENSIBLE) - sizeof(WAVEFORMATEX);
constexpr DWORD kMinRate = 8000, kMaxRate = 384000;   // Hz

bool IsUncompressedAudio(const AM_MEDIA_TYPE& type)
{
    return type.majortype == MEDIATYPE_Audio && !type.bTemporalCompression && type.cbFormat >= kShortFormat &&
           type.pbFormat;
}

// As much of a record as the block holds, the rest 0.
template <class Record>
Record Read(const AM_MEDIA_TYPE& type)
{
    Record record = {};
    std::memcpy(&record, type.pbFormat, std::min<size_t>(type.cbFormat, sizeof record));
    return record;
}

bool IsFloat(const AM_MEDIA_TYPE& type)
{
    const auto format = Read<WAVEFORMATEXTENSIBLE>(type);
    if (format.Format.wFormatTag == WAVE_FORMAT_EXTENSIBLE)
        return format.Format.cbSize >= kExtensionSize && format.SubFormat == MEDIASUBTYPE_IEEE_FLOAT;
    return format.Format.wFormatTag == WAVE_FORMAT_IEEE_FLOAT;
}

void Recompute(WAVEFORMATEX& format)
{
    format.nBlockAlign = WORD(format.wBitsPerSample / 8 * format.nChannels);
    format.nAvgBytesPerSec = format.nBlockAlign * format.nSamplesPerSec;
}

}   // namespace

HRESULT CheckInputFormat(const AM_MEDIA_TYPE& type)
{
    if (!IsUncompressedAudio(type) || !IsFloat(type))
        return E_INVALIDARG;
    const auto format = Read<WAVEFORMATEX>(type);
    const bool taken = format.nChannels >= 1 && format.nChannels <= kMaxChannels && format.wBitsPerSample == 32;
    return taken ? S_OK : E_INVALIDARG;
}

HRESULT CheckSameFormat(const AM_MEDIA_TYPE& in, const AM_MEDIA_TYPE& out)
{
    if (!IsUncompressedAudio(in) || !IsUncompressedAudio(out))
        return E_INVALIDARG;
    const auto a = Read<WAVEFORMATEX>(in), b = Read<WAVEFORMATEX>(out);
    const bool same = a.wFormatTag == b.wFormatTag && a.nChannels == b.nChannels &&
                      a.wBitsPerSample == b.wBitsPerSample && a.nSamplesPerSec == b.nSamplesPerSec;
    return same && a.nChannels != 0 && a.nChannels <= kMaxEngineChannels ? S_OK : E_INVALIDARG;
}

bool IsRateSupported(const AM_MEDIA_TYPE& type)
{
    const DWORD rate = Read<WAVEFORMATEX>(type).nSamplesPerSec;
    return rate >= kMinRate && rate <= kMaxRate;
}

HRESULT MakeOutputType(const AM_MEDIA_TYPE& in, CMediaType* pOut)
{
    auto format = Read<WAVEFORMATEX>(in);
    if (format.nChannels == 0 || format.nChannels > kMaxChannels)
        return E_FAIL;
    if (const HRESULT hr = pOut->Set(in); FAILED(hr))
        return hr;
    format.cbSize = 0;
    Recompute(format);
    std::memcpy(pOut->pbFormat, &format, std::min<size_t>(pOut->cbFormat, sizeof format));
    return S_OK;
}

WAVEFORMATEX PlainFormat(const AM_MEDIA_TYPE& type)
{
    auto format = Read<WAVEFORMATEX>(type);
    if (format.wFormatTag == WAVE_FORMAT_EXTENSIBLE)
        format.wFormatTag = WAVE_FORMAT_IEEE_FLOAT;
    format.cbSize = 0;
    Recompute(format);
    return format;
}
