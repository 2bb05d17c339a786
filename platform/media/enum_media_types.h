// The types that a pin prefers, in their order. Gives VFW_E_ENUM_OUT_OF_SYNC once the pin has other types, until Reset.
#pragma once

#include "platform/com_ptr.h"
#include "platform/media/unknown.h"

#include <dshow.h>

class CBasePin;

class CEnumMediaTypes final : public CUnknown, public IEnumMediaTypes {
public:
    CEnumMediaTypes(CBasePin* thePin, int position);   // holds a reference to the pin
    DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override;

    HRESULT STDMETHODCALLTYPE Next(ULONG nTypes, AM_MEDIA_TYPE** ppTypes, ULONG* pnFetched) override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG nTypes) override;
    HRESULT STDMETHODCALLTYPE Reset() override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumMediaTypes** ppEnum) override;

private:
    ~CEnumMediaTypes() override;
    bool IsStale() const;

    CBasePin* pin;
    ComPtr<IPin> held;
    int next;
    LONG version;
};
