// A source, a filter and a sink that tests run in a graph. A sample is its index, four bytes of it, and the source stamps
// sample n with n ticks of a millisecond.
#pragma once

#include "platform/media/base_renderer.h"
#include "platform/media/filter_graph.h"
#include "platform/media/mem_allocator.h"
#include "platform/media/source_stream.h"
#include "platform/media/transform_filter.h"

#include <cstring>
#include <functional>
#include <mutex>
#include <vector>

constexpr CLSID kTestClass = {0x3C8A7D10, 0x5B6E, 0x4F21, {0x90, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}};
constexpr REFERENCE_TIME kMillisecond = 10'000;

// A type of this kind: audio of a format that only the tests know.
inline CMediaType TypeOf(int32_t kind)
{
    CMediaType type;
    type.majortype = MEDIATYPE_Audio;
    type.subtype = MEDIASUBTYPE_PCM;
    type.formattype = FORMAT_WaveFormatEx;
    type.SetFormat(&kind, sizeof kind);
    return type;
}

inline int32_t KindOf(const AM_MEDIA_TYPE& type)
{
    int32_t kind = -1;
    if (type.majortype == MEDIATYPE_Audio && type.cbFormat == sizeof kind)
        std::memcpy(&kind, type.pbFormat, sizeof kind);
    return kind;
}

inline int32_t IndexOf(IMediaSample* sample)
{
    BYTE* p = nullptr;
    int32_t index = -1;
    if (SUCCEEDED(sample->GetPointer(&p)))
        std::memcpy(&index, p, sizeof index);
    return index;
}

class TestSource final : public CSource {
public:
    TestSource(int32_t theCount, int32_t theKind = 1) : CSource(nullptr, kTestClass), count(theCount), kind(theKind) {}

    HRESULT GetMediaType(CMediaType* pType) override
    {
        *pType = TypeOf(kind);
        return S_OK;
    }
    HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pRequest) override
    {
        pRequest->cBuffers = 2;
        pRequest->cbBuffer = sizeof(int32_t);
        ALLOCATOR_PROPERTIES granted{};
        return pAllocator->SetProperties(pRequest, &granted);
    }
    HRESULT OnSeek(REFERENCE_TIME start) override
    {
        next = int32_t(start / kMillisecond);
        first = true;
        return S_OK;
    }
    HRESULT FillBuffer(IMediaSample* pSample) override
    {
        if (next == failAt)
            return E_ACCESSDENIED;
        if (next == count)
            return S_FALSE;
        BYTE* p = nullptr;
        pSample->GetPointer(&p);
        std::memcpy(p, &next, sizeof next);
        REFERENCE_TIME start = next * kMillisecond, end = start + kMillisecond;
        pSample->SetTime(&start, &end);
        pSample->SetDiscontinuity(std::exchange(first, false));
        if (next == changeAt) {
            CMediaType type = TypeOf(changeTo);
            pSample->SetMediaType(&type);
        }
        ++next;
        return S_OK;
    }

    int32_t failAt = -1, changeAt = -1, changeTo = 0;

private:
    ~TestSource() override = default;

    int32_t count, kind, next = 0;
    bool first = true;
};

// Passes each sample on, in a buffer of its own, as often as it is told.
class TestTransform final : public CTransformFilter {
public:
    explicit TestTransform(int theCopies = 1) : CTransformFilter(nullptr, kTestClass), copies(theCopies) {}

    HRESULT CheckInputType(const CMediaType* pType) override { return KindOf(*pType) > 0 ? refusal : E_INVALIDARG; }
    HRESULT CheckTransform(const CMediaType* pIn, const CMediaType* pOut) override
    {
        return KindOf(*pIn) == KindOf(*pOut) ? S_OK : E_INVALIDARG;
    }
    HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pRequest) override
    {
        pRequest->cBuffers = 2;
        pRequest->cbBuffer = sizeof(int32_t);
        ALLOCATOR_PROPERTIES granted{};
        return pAllocator->SetProperties(pRequest, &granted);
    }
    HRESULT GetMediaType(int position, CMediaType* pType) override
    {
        return position == 0 ? pType->Set(input->CurrentMediaType()) : VFW_S_NO_MORE_ITEMS;
    }
    HRESULT CompleteConnect(PIN_DIRECTION direction, IPin*) override
    {
        const bool differ = direction == PINDIR_INPUT && output->IsConnected() &&
                            KindOf(input->CurrentMediaType()) != KindOf(output->CurrentMediaType());
        return differ ? ReconnectPin(output.get()) : S_OK;
    }
    HRESULT SetMediaType(PIN_DIRECTION direction, const CMediaType* pType) override
    {
        (direction == PINDIR_INPUT ? kindIn : kindOut) = KindOf(*pType);
        return S_OK;
    }
    HRESULT StartStreaming() override
    {
        ++(SUCCEEDED(startResult) ? started : refused);
        return startResult;
    }
    HRESULT StopStreaming() override
    {
        ++stopped;
        return S_OK;
    }
    HRESULT Transform(IMediaSample* pIn, IMediaSample* pOut) override
    {
        std::memcpy(Data(pOut), Data(pIn), sizeof(int32_t));
        return S_OK;
    }
    HRESULT Receive(IMediaSample* pSample) override
    {
        HRESULT hr = S_OK;
        for (int i = 0; i < copies && hr == S_OK; ++i)
            hr = CTransformFilter::Receive(pSample);
        return hr;
    }
    HRESULT AlterQuality(Quality) override { return qualityResult; }

    HRESULT refusal = S_OK, startResult = S_OK, qualityResult = S_FALSE;
    int started = 0, refused = 0, stopped = 0;
    int32_t kindIn = 0, kindOut = 0;

private:
    ~TestTransform() override = default;
    static BYTE* Data(IMediaSample* sample)
    {
        BYTE* p = nullptr;
        sample->GetPointer(&p);
        return p;
    }

    int copies;
};

class TestSink final : public CBaseRenderer {
public:
    struct Taken {
        int32_t index;
        bool discontinuity;
        bool operator==(const Taken&) const = default;
    };

    explicit TestSink(int32_t theKind = 1) : CBaseRenderer(nullptr, kTestClass), kind(theKind) {}

    HRESULT CheckMediaType(const CMediaType* pType) override
    {
        return kind == 0 || KindOf(*pType) == kind ? S_OK : refusal;
    }
    HRESULT DoRenderSample(IMediaSample* pSample) override
    {
        const std::scoped_lock lock(guard);
        taken.push_back({IndexOf(pSample), pSample->IsDiscontinuity() == S_OK});
        return onSample ? onSample(pSample) : S_OK;
    }
    HRESULT OnEndOfStream() override
    {
        const std::scoped_lock lock(guard);
        ++ends;
        return S_OK;
    }

    std::vector<Taken> TakenSoFar()
    {
        const std::scoped_lock lock(guard);
        return taken;
    }
    int Ends()
    {
        const std::scoped_lock lock(guard);
        return ends;
    }
    CRendererInputPin& Pin() { return input; }

    HRESULT refusal = E_INVALIDARG;
    std::function<HRESULT(IMediaSample*)> onSample;   // set while stopped
    int32_t kind;                                     // 0: takes any

private:
    ~TestSink() override = default;

    std::mutex guard;
    std::vector<Taken> taken;
    int ends = 0;
};

template <class T>
ComPtr<T> Owned(T* object)
{
    return ComPtr<T>(object);
}
