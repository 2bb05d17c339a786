// The pins of a filter in their order. Gives VFW_E_ENUM_OUT_OF_SYNC once the filter has other pins, until Reset.
#pragma once

#include "platform/com_ptr.h"
#include "platform/media/unknown.h"

#include <dshow.h>

class CBaseFilter;

class CEnumPins final : public CUnknown, public IEnumPins {
public:
    CEnumPins(CBaseFilter* theFilter, int position);   // holds a reference to the filter
    DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override;

    HRESULT STDMETHODCALLTYPE Next(ULONG nPins, IPin** ppPins, ULONG* pnFetched) override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG nPins) override;
    HRESULT STDMETHODCALLTYPE Reset() override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumPins** ppEnum) override;

private:
    ~CEnumPins() override;
    bool IsStale() const;

    CBaseFilter* filter;
    ComPtr<IBaseFilter> held;
    int next;
    LONG version;
};
