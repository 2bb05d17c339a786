#include "platform/media/enum_pins.h"

#include "platform/media/base_filter.h"
#include "platform/media/base_pin.h"

CEnumPins::CEnumPins(CBaseFilter* theFilter, int position)
    : filter(theFilter), held(Share<IBaseFilter>(theFilter)), next(position), version(theFilter->GetPinVersion())
{
}

CEnumPins::~CEnumPins() = default;

HRESULT CEnumPins::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (riid == IID_IEnumPins)
        return GetInterface<IEnumPins>(this, ppObject);
    return CUnknown::NonDelegatingQueryInterface(riid, ppObject);
}

bool CEnumPins::IsStale() const
{
    return version != filter->GetPinVersion();
}

HRESULT CEnumPins::Next(ULONG nPins, IPin** ppPins, ULONG* pnFetched)
{
    if (!ppPins)
        return E_POINTER;
    if (!pnFetched && nPins > 1)
        return E_INVALIDARG;
    if (pnFetched)
        *pnFetched = 0;
    if (IsStale())
        return VFW_E_ENUM_OUT_OF_SYNC;
    ULONG fetched = 0;
    for (; fetched < nPins && next < filter->GetPinCount(); ++fetched)
        ppPins[fetched] = Share<IPin>(filter->GetPin(next++)).Release();
    if (pnFetched)
        *pnFetched = fetched;
    return fetched == nPins ? S_OK : S_FALSE;
}

HRESULT CEnumPins::Skip(ULONG nPins)
{
    if (IsStale())
        return VFW_E_ENUM_OUT_OF_SYNC;
    const auto remaining = ULONG(filter->GetPinCount() - next);
    if (nPins > remaining)
        return S_FALSE;
    next += int(nPins);
    return S_OK;
}

HRESULT CEnumPins::Reset()
{
    next = 0;
    version = filter->GetPinVersion();
    return S_OK;
}

HRESULT CEnumPins::Clone(IEnumPins** ppEnum)
{
    if (!ppEnum)
        return E_POINTER;
    *ppEnum = nullptr;
    if (IsStale())
        return VFW_E_ENUM_OUT_OF_SYNC;
    *ppEnum = new (std::nothrow) CEnumPins(filter, next);
    return *ppEnum ? S_OK : E_OUTOFMEMORY;
}
