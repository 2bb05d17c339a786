// The filter between two peers, without a graph: the test brings samples on its own thread.
#pragma once

#include "aplugins/qxvantor/vantor_filter.h"
#include "tests/aplugins/qxvantor/peers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

class FilterRig {
public:
    using Feed = OnePinFilter<FeedPin>;
    using Take = OnePinFilter<TakePin>;

    FilterRig()
    {
        HRESULT hr = E_FAIL;
        filter = static_cast<CQxVantor*>(CQxVantor::CreateInstance(nullptr, &hr));
        EXPECT_EQ(hr, S_OK);
        take->pin.onSample = [this](IMediaSample* pSample) {
            taken.emplace_back(pSample);
            return S_OK;
        };
    }
    FilterRig(const FilterRig&) = delete;
    FilterRig& operator=(const FilterRig&) = delete;
    ~FilterRig()
    {
        Stop();
        DisconnectOutput();
        DisconnectInput();
        filter->Release();
        feed->Release();
        take->Release();
        EXPECT_EQ(CUnknown::ObjectsActive(), 0);
    }

    CBasePin* Input() { return filter->GetPin(0); }
    CBasePin* Output() { return filter->GetPin(1); }
    HRESULT ConnectInput(const CMediaType& type) { return feed->pin.Connect(Input(), &type); }
    HRESULT ConnectOutput() { return Output()->Connect(&take->pin, nullptr); }
    void DisconnectInput()
    {
        feed->pin.Disconnect();
        Input()->Disconnect();
    }
    void DisconnectOutput()
    {
        Output()->Disconnect();
        take->pin.Disconnect();
    }
    // Connected and paused, ready for samples.
    HRESULT Start(WORD channels, DWORD rate)
    {
        if (const HRESULT hr = ConnectInput(FloatType(channels, rate)); FAILED(hr))
            return hr;
        if (const HRESULT hr = ConnectOutput(); FAILED(hr))
            return hr;
        return Pause();
    }
    HRESULT Pause()
    {
        take->Pause();
        if (const HRESULT hr = filter->Pause(); FAILED(hr))
            return hr;
        return feed->Pause();
    }
    void Stop()
    {
        take->Stop();
        filter->Stop();
        feed->Stop();
    }
    // Delivers one sample of interleaved audio; it starts at a time in ticks, or carries none.
    HRESULT Send(std::span<const float> audio, std::optional<REFERENCE_TIME> start, bool discontinuity = false)
    {
        ComPtr<IMediaSample> sample;
        if (const HRESULT hr = feed->pin.GetDeliveryBuffer(sample.Out(), nullptr, nullptr, 0); FAILED(hr))
            return hr;
        BYTE* data = nullptr;
        sample->GetPointer(&data);
        std::ranges::copy(std::as_bytes(audio), reinterpret_cast<std::byte*>(data));
        sample->SetActualDataLength(LONG(audio.size_bytes()));
        if (start) {
            REFERENCE_TIME end = *start + 1;
            sample->SetTime(&*start, &end);
            sample->SetMediaTime(&*start, &end);
        }
        sample->SetDiscontinuity(discontinuity);
        sample->SetSyncPoint(discontinuity);
        return feed->pin.Deliver(sample.Get());
    }
    std::vector<float> Audio() const
    {
        std::vector<float> all;
        for (const Taken& t : taken)
            all.insert(all.end(), t.audio.begin(), t.audio.end());
        return all;
    }
    template <class T>
    ComPtr<T> Interface(REFIID riid)
    {
        ComPtr<T> p;
        EXPECT_EQ(filter->NonDelegatingQueryInterface(riid, reinterpret_cast<void**>(p.Out())), S_OK);
        return p;
    }

    CQxVantor* filter = nullptr;
    Feed* feed = new Feed;
    Take* take = new Take;
    std::vector<Taken> taken;
};
