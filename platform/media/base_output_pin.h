// A pin that delivers: settles the allocator with its peer, and passes samples, ends, flushes and segments on.
#pragma once

#include "platform/media/base_pin.h"

class CBaseOutputPin : public CBasePin {
public:
    CBaseOutputPin(CBaseFilter* theFilter, const WCHAR* pszName) : CBasePin(theFilter, PINDIR_OUTPUT, pszName) {}

    HRESULT CheckConnect(IPin* pPin) override;   // VFW_E_NO_TRANSPORT: the peer takes no samples from memory
    HRESULT CompleteConnect(IPin* pReceivePin) override;
    HRESULT BreakConnect() override;
    HRESULT Active() override;   // VFW_E_NO_ALLOCATOR, or what committing gives
    HRESULT Inactive() override;

    // These travel downstream and have no business here: E_UNEXPECTED.
    HRESULT STDMETHODCALLTYPE EndOfStream() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE BeginFlush() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE EndFlush() override { return E_UNEXPECTED; }

    // Asks the allocator for what this pin needs. pRequest: what the peer requires, zero where it requires nothing.
    virtual HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pRequest) = 0;
    // The peer's allocator if both agree on it, else one of InitAllocator's.
    virtual HRESULT DecideAllocator(IMemInputPin* pPin, IMemAllocator** ppAllocator);
    virtual HRESULT InitAllocator(IMemAllocator** ppAllocator);

    // [streaming] VFW_E_NOT_CONNECTED without a peer, else what the allocator or the peer answers.
    virtual HRESULT GetDeliveryBuffer(IMediaSample** ppSample, REFERENCE_TIME* pStart, REFERENCE_TIME* pEnd,
                                      DWORD dwFlags);
    virtual HRESULT Deliver(IMediaSample* pSample);
    virtual HRESULT DeliverEndOfStream();
    virtual HRESULT DeliverBeginFlush();   // [control]
    virtual HRESULT DeliverEndFlush();     // [control]
    virtual HRESULT DeliverNewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate);

    IMemAllocator* GetAllocator() const { return allocator.Get(); }   // null until connected

private:
    HRESULT OfferAllocator(IMemInputPin* pPin, IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES request);

    ComPtr<IMemAllocator> allocator;
    ComPtr<IMemInputPin> inputPin;   // the peer's
};
