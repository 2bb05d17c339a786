// A source: a filter with one output whose own thread fills samples and delivers them while the filter is not stopped.
#pragma once

#include "platform/media/base_output_pin.h"

#include <thread>

class CSource;

// Its pin, which has the thread.
class CSourceStream final : public CBaseOutputPin {
public:
    explicit CSourceStream(CSource* theSource);

    HRESULT CheckMediaType(const CMediaType* pType) override;
    HRESULT GetMediaType(int position, CMediaType* pType) override;
    HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pRequest) override;
    HRESULT Active() override;
    HRESULT Inactive() override;

    // [control] Flushes what is under way and delivers from another place of the source, as a seek does.
    HRESULT Seek(REFERENCE_TIME start);

private:
    HRESULT StartThread();
    void StopThread();
    void Work();
    HRESULT DeliverOne();
    void Fail(HRESULT hr);

    CSource* source;
    REFERENCE_TIME segmentStart = 0;
    std::atomic<bool> stopping = false;
    std::thread worker;
};

class CSource : public CBaseFilter {
public:
    CSource(IUnknown* outer, REFCLSID theClassId) : CBaseFilter(outer, theClassId) {}

    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int n) override { return n == 0 ? &output : nullptr; }

    // The only type that it delivers.
    virtual HRESULT GetMediaType(CMediaType* pType) = 0;
    virtual HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pRequest) = 0;
    // The next sample is the first at or after this time; at every start it is 0.
    virtual HRESULT OnSeek(REFERENCE_TIME start) = 0;
    // [its thread] S_OK: fills the sample, stamps included; S_FALSE: the stream has ended; a failure ends it and goes to
    // the graph.
    virtual HRESULT FillBuffer(IMediaSample* pSample) = 0;

    HRESULT Seek(REFERENCE_TIME start) { return output.Seek(start); }

protected:
    ~CSource() override;

    CSourceStream output{this};
};
