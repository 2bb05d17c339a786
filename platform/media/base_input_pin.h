// A pin that receives: offers an allocator, and lets samples in only while data may flow.
#pragma once

#include "platform/media/base_pin.h"

class CBaseInputPin : public CBasePin, public IMemInputPin {
public:
    CBaseInputPin(CBaseFilter* theFilter, const WCHAR* pszName) : CBasePin(theFilter, PINDIR_INPUT, pszName) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppObject) override
    {
        return CBasePin::QueryInterface(riid, ppObject);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return CBasePin::AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return CBasePin::Release(); }
    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override;

    HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** ppAllocator) override;
    HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) override;
    HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES* pProperties) override;   // E_NOTIMPL
    // [streaming] Here only what comes before the data is looked at: whether data may flow, and a change of the media
    // type that the sample brings. A type that cannot be used ends the stream: VFW_E_INVALIDMEDIATYPE, EC_ERRORABORT to
    // the graph, and VFW_E_RUNTIME_ERROR for further samples until a flush or a stop.
    HRESULT STDMETHODCALLTYPE Receive(IMediaSample* pSample) override;
    HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample** ppSamples, LONG nSamples, LONG* pnProcessed) override;
    HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override;   // S_OK: what follows the filter is not asked

    HRESULT STDMETHODCALLTYPE BeginFlush() override;
    HRESULT STDMETHODCALLTYPE EndFlush() override;

    HRESULT BreakConnect() override;
    HRESULT Inactive() override;

    // [streaming] S_OK, S_FALSE while flushing, VFW_E_WRONG_STATE when stopped, VFW_E_NOT_CONNECTED, VFW_E_RUNTIME_ERROR.
    virtual HRESULT CheckStreaming();
    // A quality message on its way upstream: to the sink that was set, or else to the peer. VFW_E_NOT_FOUND: to nobody.
    HRESULT PassNotify(const Quality& q);

    bool IsFlushing() const { return flushing; }
    bool IsReadOnly() const { return readOnly; }
    IMemAllocator* Allocator() const { return allocator.Get(); }   // null until one is settled

private:
    HRESULT TakeTypeChange(IMediaSample* pSample);

    ComPtr<IMemAllocator> allocator;
    bool readOnly = false;
    std::atomic<bool> flushing = false, failed = false;
};
