#include "platform/media/base_pin.h"

#include "platform/media/enum_media_types.h"

#include <objbase.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>

namespace {

// Answers that mean no more than "not this type".
bool IsPlainRefusal(HRESULT hr)
{
    return hr == S_FALSE || hr == E_FAIL || hr == E_INVALIDARG || hr == VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT Answer(HRESULT check)
{
    if (check == S_OK)
        return S_OK;
    return IsPlainRefusal(check) || SUCCEEDED(check) ? VFW_E_TYPE_NOT_ACCEPTED : check;
}

}   // namespace

CBasePin::CBasePin(CBaseFilter* theFilter, PIN_DIRECTION theDirection, const WCHAR* pszName)
    : filter(theFilter), direction(theDirection), name(pszName)
{
}

CBasePin::~CBasePin() = default;

HRESULT CBasePin::QueryInterface(REFIID riid, void** ppObject)
{
    return NonDelegatingQueryInterface(riid, ppObject);
}

HRESULT CBasePin::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (!ppObject)
        return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IPin)
        return GetInterface<IPin>(this, ppObject);
    if (riid == IID_IQualityControl)
        return GetInterface<IQualityControl>(this, ppObject);
    *ppObject = nullptr;
    return E_NOINTERFACE;
}

// ---- connection ------------------------------------------------------------------------------------------------------

HRESULT CBasePin::Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pType)
{
    if (!pReceivePin)
        return E_POINTER;
    const std::scoped_lock lock(filter->FilterLock());
    if (peer)
        return VFW_E_ALREADY_CONNECTED;
    if (filter->IsActive())
        return VFW_E_NOT_STOPPED;
    if (const HRESULT hr = CheckConnect(pReceivePin); FAILED(hr)) {
        BreakConnect();
        return hr;
    }
    const HRESULT hr = AgreeMediaType(pReceivePin, pType);
    if (FAILED(hr))
        BreakConnect();
    return hr;
}

HRESULT CBasePin::AgreeMediaType(IPin* pReceivePin, const AM_MEDIA_TYPE* pType)
{
    if (pType && pType->majortype != GUID_NULL && pType->formattype != GUID_NULL) {
        CMediaType type;
        if (const HRESULT hr = type.Set(*pType); FAILED(hr))
            return hr;
        return AttemptConnection(pReceivePin, type);
    }
    HRESULT result = VFW_E_NO_ACCEPTABLE_TYPES;
    for (IPin* const pin : {pReceivePin, static_cast<IPin*>(this)}) {
        ComPtr<IEnumMediaTypes> types;
        if (FAILED(pin->EnumMediaTypes(types.Out())))
            continue;
        const HRESULT hr = TryMediaTypes(pReceivePin, pType, types.Get());
        if (SUCCEEDED(hr))
            return hr;
        if (result == VFW_E_NO_ACCEPTABLE_TYPES)
            result = hr;
    }
    return result;
}

HRESULT CBasePin::TryMediaTypes(IPin* pReceivePin, const AM_MEDIA_TYPE* pPattern, IEnumMediaTypes* pEnum)
{
    HRESULT result = VFW_E_NO_ACCEPTABLE_TYPES;
    AM_MEDIA_TYPE* offered = nullptr;
    ULONG fetched = 0;
    while (pEnum->Next(1, &offered, &fetched) == S_OK) {
        CMediaType type;
        const HRESULT copied = type.Set(*offered);
        DeleteMediaType(offered);
        if (FAILED(copied))
            return copied;
        if (pPattern && !type.MatchesPartial(*pPattern))
            continue;
        const HRESULT hr = AttemptConnection(pReceivePin, type);
        if (SUCCEEDED(hr))
            return hr;
        if (result == VFW_E_NO_ACCEPTABLE_TYPES && !IsPlainRefusal(hr))
            result = hr;
    }
    return result;
}

HRESULT CBasePin::AttemptConnection(IPin* pReceivePin, const CMediaType& type)
{
    if (const HRESULT hr = CheckConnect(pReceivePin); FAILED(hr)) {
        BreakConnect();
        return hr;
    }
    HRESULT hr = Answer(CheckMediaType(&type));
    if (FAILED(hr)) {
        BreakConnect();
        return hr;
    }
    peer = Share(pReceivePin);
    hr = SetMediaType(&type);
    if (SUCCEEDED(hr))
        hr = pReceivePin->ReceiveConnection(this, &type);
    if (SUCCEEDED(hr)) {
        hr = CompleteConnect(pReceivePin);
        if (SUCCEEDED(hr))
            return hr;
        pReceivePin->Disconnect();
    }
    BreakConnect();
    Forget();
    return hr;
}

void CBasePin::Forget()
{
    peer = {};
    mediaType.Reset();
}

HRESULT CBasePin::ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pType)
{
    if (!pConnector || !pType)
        return E_POINTER;
    const std::scoped_lock lock(filter->FilterLock());
    if (peer)
        return VFW_E_ALREADY_CONNECTED;
    if (filter->IsActive())
        return VFW_E_NOT_STOPPED;
    CMediaType type;
    HRESULT hr = type.Set(*pType);
    if (SUCCEEDED(hr))
        hr = CheckConnect(pConnector);
    if (SUCCEEDED(hr))
        hr = Answer(CheckMediaType(&type));
    if (FAILED(hr)) {
        BreakConnect();
        return hr;
    }
    peer = Share(pConnector);
    hr = SetMediaType(&type);
    if (SUCCEEDED(hr))
        hr = CompleteConnect(pConnector);
    if (FAILED(hr)) {
        BreakConnect();
        Forget();
    }
    return hr;
}

HRESULT CBasePin::Disconnect()
{
    const std::scoped_lock lock(filter->FilterLock());
    if (filter->IsActive())
        return VFW_E_NOT_STOPPED;
    if (!peer)
        return S_FALSE;
    const HRESULT hr = BreakConnect();
    Forget();
    return hr;
}

HRESULT CBasePin::CheckConnect(IPin* pPin)
{
    PIN_DIRECTION other = direction;
    if (const HRESULT hr = pPin->QueryDirection(&other); FAILED(hr))
        return hr;
    return other == direction ? VFW_E_INVALID_DIRECTION : S_OK;
}

HRESULT CBasePin::CompleteConnect(IPin*)
{
    return S_OK;
}

HRESULT CBasePin::BreakConnect()
{
    return S_OK;
}

// ---- types -----------------------------------------------------------------------------------------------------------

HRESULT CBasePin::SetMediaType(const CMediaType* pType)
{
    return mediaType.Set(*pType);
}

HRESULT CBasePin::GetMediaType(int, CMediaType*)
{
    return VFW_S_NO_MORE_ITEMS;
}

HRESULT CBasePin::QueryAccept(const AM_MEDIA_TYPE* pType)
{
    if (!pType)
        return E_POINTER;
    CMediaType type;
    if (const HRESULT hr = type.Set(*pType); FAILED(hr))
        return hr;
    return CheckMediaType(&type) == S_OK ? S_OK : S_FALSE;
}

HRESULT CBasePin::EnumMediaTypes(IEnumMediaTypes** ppEnum)
{
    if (!ppEnum)
        return E_POINTER;
    *ppEnum = new (std::nothrow) CEnumMediaTypes(this, 0);
    return *ppEnum ? S_OK : E_OUTOFMEMORY;
}

HRESULT CBasePin::ConnectionMediaType(AM_MEDIA_TYPE* pType)
{
    if (!pType)
        return E_POINTER;
    const std::scoped_lock lock(filter->FilterLock());
    *pType = {};
    return peer ? CopyMediaType(pType, &mediaType) : VFW_E_NOT_CONNECTED;
}

// ---- identity --------------------------------------------------------------------------------------------------------

HRESULT CBasePin::ConnectedTo(IPin** ppPin)
{
    if (!ppPin)
        return E_POINTER;
    const std::scoped_lock lock(filter->FilterLock());
    *ppPin = ComPtr<IPin>(peer).Release();
    return peer ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT CBasePin::QueryPinInfo(PIN_INFO* pInfo)
{
    if (!pInfo)
        return E_POINTER;
    pInfo->pFilter = Share<IBaseFilter>(filter).Release();
    pInfo->dir = direction;
    const size_t length = std::min<size_t>(name.size(), MAX_PIN_NAME - 1);
    *std::copy_n(name.data(), length, pInfo->achName) = 0;
    return S_OK;
}

HRESULT CBasePin::QueryDirection(PIN_DIRECTION* pDirection)
{
    if (!pDirection)
        return E_POINTER;
    *pDirection = direction;
    return S_OK;
}

HRESULT CBasePin::QueryId(LPWSTR* ppszId)
{
    if (!ppszId)
        return E_POINTER;
    const auto id = Id();
    *ppszId = static_cast<LPWSTR>(CoTaskMemAlloc((id.size() + 1) * sizeof(WCHAR)));
    if (!*ppszId)
        return E_OUTOFMEMORY;
    *std::copy(id.begin(), id.end(), *ppszId) = 0;
    return S_OK;
}

HRESULT CBasePin::QueryInternalConnections(IPin**, ULONG*)
{
    return E_NOTIMPL;
}

HRESULT CBasePin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate)
{
    segmentStart = tStart;
    segmentStop = tStop;
    segmentRate = dRate;
    return S_OK;
}

HRESULT CBasePin::Notify(IBaseFilter*, Quality)
{
    return E_NOTIMPL;
}

HRESULT CBasePin::SetSink(IQualityControl* pSink)
{
    const std::scoped_lock lock(filter->FilterLock());
    qualitySink = pSink;
    return S_OK;
}
