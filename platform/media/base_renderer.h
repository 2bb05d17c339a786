// The end of a stream: a filter with one input that takes every sample in turn, with no clock to wait for. As in every
// renderer the first sample of a paused graph waits for Run, a stop or a flush, and the end of the stream is told once
// the filter runs.
#pragma once

#include "platform/media/base_input_pin.h"
#include "platform/media/monitor.h"

class CBaseRenderer;

class CRendererInputPin final : public CBaseInputPin {
public:
    explicit CRendererInputPin(CBaseRenderer* theRenderer);

    HRESULT CheckMediaType(const CMediaType* pType) override;
    HRESULT SetMediaType(const CMediaType* pType) override;
    HRESULT Inactive() override;
    HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override;
    HRESULT STDMETHODCALLTYPE EndOfStream() override;
    HRESULT STDMETHODCALLTYPE BeginFlush() override;
    HRESULT STDMETHODCALLTYPE EndFlush() override;
    HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

private:
    CBaseRenderer* renderer;
};

class CBaseRenderer : public CBaseFilter, public IAMFilterMiscFlags {
public:
    CBaseRenderer(IUnknown* outer, REFCLSID theClassId);
    DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override;

    ULONG STDMETHODCALLTYPE GetMiscFlags() override { return AM_FILTER_MISC_FLAGS_IS_RENDERER; }

    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int n) override { return n == 0 ? &input : nullptr; }
    // Pause gives S_FALSE until the first sample or the end of the stream is here; GetState then
    // VFW_S_STATE_INTERMEDIATE.
    HRESULT STDMETHODCALLTYPE Pause() override;
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME tStart) override;
    HRESULT STDMETHODCALLTYPE GetState(DWORD dwMilliseconds, FILTER_STATE* pState) override;

    virtual HRESULT CheckMediaType(const CMediaType* pType) = 0;
    virtual HRESULT SetMediaType(const CMediaType*) { return S_OK; }   // the type as agreed
    // [streaming] A failure ends the stream: the graph hears of it, and whoever delivers gets it back.
    virtual HRESULT DoRenderSample(IMediaSample* pSample) = 0;
    virtual void OnNewSegment(REFERENCE_TIME, REFERENCE_TIME, double) {}   // [streaming]
    virtual HRESULT OnEndOfStream() { return S_OK; }                       // [streaming]

protected:
    ~CBaseRenderer() override;

    CRendererInputPin input{this};

private:
    friend class CRendererInputPin;

    HRESULT Take(IMediaSample* pSample);
    HRESULT End();
    bool AwaitRun();
    void TellEnd();
    void LetGo();

    CriticalSection receiveLock;   // one sample, end or segment at a time
    Monitor monitor;               // guards what follows; the innermost lock
    bool cued = false;             // something to render is here
    bool ended = false, told = false;
};
