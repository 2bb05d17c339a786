// The seeking of a filter that has none of its own: every question goes to the pin that feeds the filter's first pin.
// Positions are the source's. E_NOTIMPL while nothing that seeks is connected there.
#pragma once

#include "platform/com_ptr.h"

#include <windows.h>

#include <dshow.h>

class CSeekingPassThru final : public IMediaSeeking {
public:
    // Both outlive this object, which is a part of the pin.
    CSeekingPassThru(IPin* thePin, IBaseFilter* theFilter) : pin(thePin), filter(theFilter) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppObject) override
    {
        return pin->QueryInterface(riid, ppObject);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return pin->AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return pin->Release(); }

    HRESULT STDMETHODCALLTYPE GetCapabilities(DWORD* pdwCapabilities) override;
    HRESULT STDMETHODCALLTYPE CheckCapabilities(DWORD* pdwCapabilities) override;
    HRESULT STDMETHODCALLTYPE IsFormatSupported(const GUID* pFormat) override;
    HRESULT STDMETHODCALLTYPE QueryPreferredFormat(GUID* pFormat) override;
    HRESULT STDMETHODCALLTYPE GetTimeFormat(GUID* pFormat) override;
    HRESULT STDMETHODCALLTYPE IsUsingTimeFormat(const GUID* pFormat) override;
    HRESULT STDMETHODCALLTYPE SetTimeFormat(const GUID* pFormat) override;
    HRESULT STDMETHODCALLTYPE GetDuration(LONGLONG* pDuration) override;
    HRESULT STDMETHODCALLTYPE GetStopPosition(LONGLONG* pStop) override;
    HRESULT STDMETHODCALLTYPE GetCurrentPosition(LONGLONG* pCurrent) override;
    HRESULT STDMETHODCALLTYPE ConvertTimeFormat(LONGLONG* pTarget, const GUID* pTargetFormat, LONGLONG source,
                                                const GUID* pSourceFormat) override;
    HRESULT STDMETHODCALLTYPE SetPositions(LONGLONG* pCurrent, DWORD dwCurrentFlags, LONGLONG* pStop,
                                           DWORD dwStopFlags) override;
    HRESULT STDMETHODCALLTYPE GetPositions(LONGLONG* pCurrent, LONGLONG* pStop) override;
    HRESULT STDMETHODCALLTYPE GetAvailable(LONGLONG* pEarliest, LONGLONG* pLatest) override;
    HRESULT STDMETHODCALLTYPE SetRate(double dRate) override;
    HRESULT STDMETHODCALLTYPE GetRate(double* pdRate) override;
    HRESULT STDMETHODCALLTYPE GetPreroll(LONGLONG* pPreroll) override;

private:
    ComPtr<IMediaSeeking> Upstream() const;
    template <class... Parameters, class... Arguments>
    HRESULT Ask(HRESULT (STDMETHODCALLTYPE IMediaSeeking::*operation)(Parameters...), Arguments... arguments) const;

    IPin* pin;
    IBaseFilter* filter;
};
