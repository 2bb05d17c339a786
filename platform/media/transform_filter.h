// A filter with one input and one output that answers each sample with new ones, on the thread that brings it.
//
// Locks, in their order: filterLock for state and connections; receiveLock for all that streams: samples, end of stream,
// segments, start and end of streaming. Streaming never waits for filterLock, so a stop can wait for it.
#pragma once

#include "platform/media/base_filter.h"
#include "platform/media/transform_pins.h"

#include <memory>

class CTransformFilter : public CBaseFilter {
public:
    CTransformFilter(IUnknown* outer, REFCLSID theClassId) : CBaseFilter(outer, theClassId) {}

    int GetPinCount() override { return 2; }
    // 0: the input, 1: the output, made at the first call; null when memory is short. A class with pins of its own makes
    // them here.
    CBasePin* GetPin(int n) override;
    HRESULT STDMETHODCALLTYPE Stop() override;
    HRESULT STDMETHODCALLTYPE Pause() override;

    // ---- what a transformation decides, [control]
    virtual HRESULT CheckInputType(const CMediaType* pType) = 0;
    virtual HRESULT CheckTransform(const CMediaType* pIn, const CMediaType* pOut) = 0;
    virtual HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pRequest) = 0;
    virtual HRESULT GetMediaType(int position,
                                 CMediaType* pType) = 0;   // of the output; asked while the input is connected
    virtual HRESULT CheckConnect(PIN_DIRECTION, IPin*) { return S_OK; }
    virtual HRESULT CompleteConnect(PIN_DIRECTION, IPin*) { return S_OK; }
    virtual HRESULT BreakConnect(PIN_DIRECTION) { return S_OK; }
    // The type as agreed; called before the pin keeps it. [control], and [streaming] for a change that a sample brings.
    virtual HRESULT SetMediaType(PIN_DIRECTION, const CMediaType*) { return S_OK; }
    // Between them data flows. Under receiveLock. A refusal to start keeps the filter stopped.
    virtual HRESULT StartStreaming() { return S_OK; }
    virtual HRESULT StopStreaming() { return S_OK; }

    // ---- what it does with data, [streaming], under receiveLock
    // One sample in, one out: S_FALSE delivers nothing. Called by the Receive here and by nothing else.
    virtual HRESULT Transform(IMediaSample* pIn, IMediaSample* pOut) = 0;
    virtual HRESULT Receive(IMediaSample* pSample);
    virtual HRESULT EndOfStream();
    virtual HRESULT NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate);

    virtual HRESULT BeginFlush();                               // [control], while data may be under way
    virtual HRESULT EndFlush();                                 // [control], under receiveLock: nothing is under way
    virtual HRESULT AlterQuality(Quality) { return S_FALSE; }   // S_FALSE: pass it upstream

    CriticalSection& ReceiveLock() { return receiveLock; }

protected:
    ~CTransformFilter() override;

    bool BothConnected() const;

    CriticalSection receiveLock;
    std::unique_ptr<CTransformInputPin> input;
    std::unique_ptr<CTransformOutputPin> output;

    friend class CTransformInputPin;
    friend class CTransformOutputPin;
};
