#include "platform/media/enum_media_types.h"

#include "platform/media/base_pin.h"

CEnumMediaTypes::CEnumMediaTypes(CBasePin* thePin, int position)
    : pin(thePin), held(Share<IPin>(thePin)), next(position), version(thePin->GetMediaTypeVersion())
{
}

CEnumMediaTypes::~CEnumMediaTypes() = default;

HRESULT CEnumMediaTypes::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (riid == IID_IEnumMediaTypes)
        return GetInterface<IEnumMediaTypes>(this, ppObject);
    return CUnknown::NonDelegatingQueryInterface(riid, ppObject);
}

bool CEnumMediaTypes::IsStale() const
{
    return version != pin->GetMediaTypeVersion();
}

HRESULT CEnumMediaTypes::Next(ULONG nTypes, AM_MEDIA_TYPE** ppTypes, ULONG* pnFetched)
{
    if (!ppTypes)
        return E_POINTER;
    if (!pnFetched && nTypes > 1)
        return E_INVALIDARG;
    if (pnFetched)
        *pnFetched = 0;
    if (IsStale())
        return VFW_E_ENUM_OUT_OF_SYNC;
    ULONG fetched = 0;
    for (; fetched < nTypes; ++fetched) {
        CMediaType type;
        if (pin->GetMediaType(next, &type) != S_OK)
            break;
        ppTypes[fetched] = CreateMediaType(&type);
        if (!ppTypes[fetched])
            break;
        ++next;
    }
    if (pnFetched)
        *pnFetched = fetched;
    return fetched == nTypes ? S_OK : S_FALSE;
}

HRESULT CEnumMediaTypes::Skip(ULONG nTypes)
{
    if (IsStale())
        return VFW_E_ENUM_OUT_OF_SYNC;
    for (; nTypes > 0; --nTypes, ++next) {
        CMediaType type;
        if (pin->GetMediaType(next, &type) != S_OK)
            return S_FALSE;
    }
    return S_OK;
}

HRESULT CEnumMediaTypes::Reset()
{
    next = 0;
    version = pin->GetMediaTypeVersion();
    return S_OK;
}

HRESULT CEnumMediaTypes::Clone(IEnumMediaTypes** ppEnum)
{
    if (!ppEnum)
        return E_POINTER;
    *ppEnum = nullptr;
    if (IsStale())
        return VFW_E_ENUM_OUT_OF_SYNC;
    *ppEnum = new (std::nothrow) CEnumMediaTypes(pin, next);
    return *ppEnum ? S_OK : E_OUTOFMEMORY;
}
