// What both directions of pins share: connection by negotiation of the media type, and the current segment.
//
// A pin is a part of its filter: it is counted with it and deleted by it.
#pragma once

#include "platform/com_ptr.h"
#include "platform/media/base_filter.h"
#include "platform/media/media_type.h"

#include <string>

class CBasePin : public IPin, public IQualityControl {
public:
    // The name is what users read; the id, by which FindPin finds the pin, is the name unless a class says otherwise.
    CBasePin(CBaseFilter* theFilter, PIN_DIRECTION theDirection, const WCHAR* pszName);
    CBasePin(const CBasePin&) = delete;
    CBasePin& operator=(const CBasePin&) = delete;
    virtual ~CBasePin();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return filter->AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return filter->Release(); }
    virtual HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject);

    // VFW_E_ALREADY_CONNECTED, VFW_E_NOT_STOPPED. A type whose major type and format are told is the only one tried, and
    // its refusal is the result. Otherwise the peer's types are tried and then this pin's, those that match what is told:
    // the result is then the first refusal that says more than "not this one", or else VFW_E_NO_ACCEPTABLE_TYPES.
    HRESULT STDMETHODCALLTYPE Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pType) override;
    HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pType) override;
    HRESULT STDMETHODCALLTYPE Disconnect() override;   // S_FALSE: was not connected
    HRESULT STDMETHODCALLTYPE ConnectedTo(IPin** ppPin) override;
    HRESULT STDMETHODCALLTYPE ConnectionMediaType(AM_MEDIA_TYPE* pType) override;
    HRESULT STDMETHODCALLTYPE QueryPinInfo(PIN_INFO* pInfo) override;
    HRESULT STDMETHODCALLTYPE QueryDirection(PIN_DIRECTION* pDirection) override;
    HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* ppszId) override;
    HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* pType) override;   // S_OK or S_FALSE
    HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** ppEnum) override;
    HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** ppPins, ULONG* pnPins) override;   // E_NOTIMPL
    HRESULT STDMETHODCALLTYPE EndOfStream() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

    HRESULT STDMETHODCALLTYPE Notify(IBaseFilter* pSelf, Quality q) override;   // E_NOTIMPL
    HRESULT STDMETHODCALLTYPE SetSink(IQualityControl* pSink) override;

    // S_OK when the pin can use the type. What a class answers here comes back from Connect, but for E_FAIL, E_INVALIDARG
    // and S_FALSE, which become VFW_E_TYPE_NOT_ACCEPTED.
    virtual HRESULT CheckMediaType(const CMediaType* pType) = 0;
    virtual HRESULT SetMediaType(const CMediaType* pType);
    virtual HRESULT GetMediaType(int position, CMediaType* pType);   // S_OK or VFW_S_NO_MORE_ITEMS; here no types
    virtual HRESULT CheckConnect(IPin* pPin);                        // VFW_E_INVALID_DIRECTION
    virtual HRESULT CompleteConnect(IPin* pReceivePin);              // the last chance to refuse
    virtual HRESULT BreakConnect();                                  // after a refusal and on Disconnect
    virtual HRESULT Active() { return S_OK; }                        // Stopped to Paused
    virtual HRESULT Inactive() { return S_OK; }
    virtual HRESULT Run(REFERENCE_TIME) { return S_OK; }
    virtual std::basic_string_view<WCHAR> Id() const { return name; }

    bool IsConnected() const { return bool(peer); }
    IPin* GetConnected() const { return peer.Get(); }
    const CMediaType& CurrentMediaType() const { return mediaType; }
    std::basic_string_view<WCHAR> Name() const { return name; }
    LONG GetMediaTypeVersion() const { return typeVersion; }
    void IncrementTypeVersion() { ++typeVersion; }   // the pin prefers other types now
    REFERENCE_TIME CurrentStartTime() const { return segmentStart; }
    REFERENCE_TIME CurrentStopTime() const { return segmentStop; }
    double CurrentRate() const { return segmentRate; }

protected:
    CBaseFilter* filter;
    IQualityControl* qualitySink = nullptr;

private:
    HRESULT AttemptConnection(IPin* pReceivePin, const CMediaType& type);
    HRESULT AgreeMediaType(IPin* pReceivePin, const AM_MEDIA_TYPE* pType);
    HRESULT TryMediaTypes(IPin* pReceivePin, const AM_MEDIA_TYPE* pPattern, IEnumMediaTypes* pEnum);
    void Forget();

    PIN_DIRECTION direction;
    std::basic_string<WCHAR> name;
    ComPtr<IPin> peer;
    CMediaType mediaType;
    std::atomic<LONG> typeVersion = 0;
    REFERENCE_TIME segmentStart = 0, segmentStop = INT64_MAX;
    double segmentRate = 1.0;
};
