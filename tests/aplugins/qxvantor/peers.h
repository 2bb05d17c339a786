// A filter on either side of the one under test: one that is fed by the test, and one that keeps what it gets.
#pragma once

#include "platform/media/base_input_pin.h"
#include "platform/media/base_output_pin.h"

#include <mmreg.h>

#include <cstring>
#include <functional>
#include <optional>
#include <vector>

inline WAVEFORMATEXTENSIBLE FloatFormat(WORD channels, DWORD rate, bool extensible = false)
{
    WAVEFORMATEXTENSIBLE format = {};
    const auto align = WORD(4 * channels);
    format.Format = {WORD(extensible ? WAVE_FORMAT_EXTENSIBLE : WAVE_FORMAT_IEEE_FLOAT),
                     channels,
                     rate,
                     align * rate,
                     align,
                     32,
                     WORD(extensible ? 22 : 0)};
    format.Samples.wValidBitsPerSample = 32;
    format.SubFormat = MEDIASUBTYPE_IEEE_FLOAT;
    return format;
}

inline CMediaType AudioType(const WAVEFORMATEXTENSIBLE& format, ULONG cbFormat)
{
    CMediaType type;
    type.majortype = MEDIATYPE_Audio;
    type.subtype = MEDIASUBTYPE_IEEE_FLOAT;
    type.formattype = FORMAT_WaveFormatEx;
    type.bFixedSizeSamples = TRUE;
    type.lSampleSize = format.Format.nBlockAlign;
    type.SetFormat(&format, cbFormat);
    return type;
}

inline CMediaType FloatType(WORD channels, DWORD rate)
{
    return AudioType(FloatFormat(channels, rate), sizeof(WAVEFORMATEX));
}

class FeedPin final : public CBaseOutputPin {
public:
    explicit FeedPin(CBaseFilter* theFilter) : CBaseOutputPin(theFilter, TEXT("Feed")) {}
    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES*) override
    {
        ALLOCATOR_PROPERTIES wanted = {2, cbBuffer, 16, 0}, granted;
        return pAllocator->SetProperties(&wanted, &granted);
    }
    LONG cbBuffer = 65536;
};

class TakePin final : public CBaseInputPin {
public:
    explicit TakePin(CBaseFilter* theFilter) : CBaseInputPin(theFilter, TEXT("Take")) {}
    HRESULT CheckMediaType(const CMediaType* pType) override { return accept && !accept(*pType) ? S_FALSE : S_OK; }
    HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override
    {
        if (const HRESULT hr = CBaseInputPin::Receive(pSample); hr != S_OK)
            return hr;
        return onSample ? onSample(pSample) : S_OK;
    }
    HRESULT STDMETHODCALLTYPE EndOfStream() override
    {
        ++ends;
        return S_OK;
    }
    std::function<bool(const CMediaType&)> accept;
    std::function<HRESULT(IMediaSample*)> onSample;
    int ends = 0;
};

template <class Pin>
class OnePinFilter final : public CBaseFilter {
public:
    OnePinFilter() : CBaseFilter(nullptr, GUID_NULL) {}
    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int n) override { return n == 0 ? &pin : nullptr; }

    Pin pin{this};

private:
    ~OnePinFilter() override = default;
};

// One delivered sample.
struct Taken {
    std::vector<float> audio;
    std::optional<std::pair<REFERENCE_TIME, REFERENCE_TIME>> time;
    std::optional<std::pair<LONGLONG, LONGLONG>> mediaTime;
    bool discontinuity = false, sync = false;

    explicit Taken(IMediaSample* pSample)
    {
        BYTE* data = nullptr;
        pSample->GetPointer(&data);
        audio.resize(size_t(pSample->GetActualDataLength()) / sizeof(float));
        std::memcpy(audio.data(), data, audio.size() * sizeof(float));
        LONGLONG start, end;
        if (pSample->GetTime(&start, &end) == S_OK)
            time = {start, end};
        if (pSample->GetMediaTime(&start, &end) == S_OK)
            mediaTime = {start, end};
        discontinuity = pSample->IsDiscontinuity() == S_OK;
        sync = pSample->IsSyncPoint() == S_OK;
    }
};
