// The pins of a CTransformFilter. They ask it for every decision.
#pragma once

#include "platform/media/base_input_pin.h"
#include "platform/media/base_output_pin.h"
#include "platform/media/seeking_pass_thru.h"

class CTransformFilter;

class CTransformInputPin : public CBaseInputPin {
public:
    CTransformInputPin(CTransformFilter* theFilter, const WCHAR* pszName);

    HRESULT CheckConnect(IPin* pPin) override;
    HRESULT CompleteConnect(IPin* pReceivePin) override;
    HRESULT BreakConnect() override;
    HRESULT CheckMediaType(const CMediaType* pType) override;   // to a connected output the type must lead too
    HRESULT SetMediaType(const CMediaType* pType) override;
    HRESULT CheckStreaming() override;   // VFW_E_NOT_CONNECTED too when the output is not
    std::basic_string_view<WCHAR> Id() const override { return TEXT("In"); }

    HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override;
    HRESULT STDMETHODCALLTYPE EndOfStream() override;
    HRESULT STDMETHODCALLTYPE BeginFlush() override;
    // Waits for what is under way; the flush has let it go.
    HRESULT STDMETHODCALLTYPE EndFlush() override;
    HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

protected:
    CTransformFilter* transform;
};

// Besides the operations of an output it passes seeking upstream, to whatever feeds the filter's input.
class CTransformOutputPin : public CBaseOutputPin {
public:
    CTransformOutputPin(CTransformFilter* theFilter, const WCHAR* pszName);

    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override;
    HRESULT CheckConnect(IPin* pPin) override;   // E_UNEXPECTED while the input is not connected
    HRESULT CompleteConnect(IPin* pReceivePin) override;
    HRESULT BreakConnect() override;
    HRESULT CheckMediaType(const CMediaType* pType) override;
    HRESULT SetMediaType(const CMediaType* pType) override;
    HRESULT GetMediaType(int position, CMediaType* pType) override;
    HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pRequest) override;
    std::basic_string_view<WCHAR> Id() const override { return TEXT("Out"); }

    HRESULT STDMETHODCALLTYPE Notify(IBaseFilter* pSelf, Quality q) override;

protected:
    CTransformFilter* transform;

private:
    CSeekingPassThru seeking;
};
