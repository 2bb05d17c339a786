#include "platform/media/base_filter.h"

#include "platform/media/base_pin.h"
#include "platform/media/enum_pins.h"

#include <algorithm>
#include <mutex>
#include <new>

CBaseFilter::CBaseFilter(IUnknown* outer, REFCLSID theClassId) : CUnknown(outer), classId(theClassId) {}

CBaseFilter::~CBaseFilter() = default;

HRESULT CBaseFilter::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (riid == IID_IBaseFilter || riid == IID_IMediaFilter || riid == IID_IPersist)
        return GetInterface<IBaseFilter>(this, ppObject);
    return CUnknown::NonDelegatingQueryInterface(riid, ppObject);
}

HRESULT CBaseFilter::GetClassID(CLSID* pClassId)
{
    if (!pClassId)
        return E_POINTER;
    *pClassId = classId;
    return S_OK;
}

// ---- state -----------------------------------------------------------------------------------------------------------

HRESULT CBaseFilter::ActivatePins()
{
    for (int i = 0; i < GetPinCount(); ++i) {
        CBasePin* const pin = GetPin(i);
        if (!pin || !pin->IsConnected())
            continue;
        if (const HRESULT hr = pin->Active(); FAILED(hr)) {
            DeactivatePins();
            return hr;
        }
    }
    return S_OK;
}

void CBaseFilter::DeactivatePins()
{
    for (int i = 0; i < GetPinCount(); ++i)
        if (CBasePin* const pin = GetPin(i); pin && pin->IsConnected())
            pin->Inactive();
}

// The state changes first: what arrives from now on is refused instead of waiting for buffers that will not come.
HRESULT CBaseFilter::Stop()
{
    const std::scoped_lock lock(filterLock);
    if (state.exchange(State_Stopped) != State_Stopped)
        DeactivatePins();
    return S_OK;
}

HRESULT CBaseFilter::Pause()
{
    const std::scoped_lock lock(filterLock);
    if (state == State_Stopped)
        if (const HRESULT hr = ActivatePins(); FAILED(hr))
            return hr;
    state = State_Paused;
    return S_OK;
}

HRESULT CBaseFilter::Run(REFERENCE_TIME tStart)
{
    const std::scoped_lock lock(filterLock);
    startTime = tStart;
    if (state == State_Stopped)
        if (const HRESULT hr = Pause(); FAILED(hr))
            return hr;
    if (state == State_Running)
        return S_OK;
    for (int i = 0; i < GetPinCount(); ++i)
        if (CBasePin* const pin = GetPin(i); pin && pin->IsConnected())
            if (const HRESULT hr = pin->Run(tStart); FAILED(hr))
                return hr;
    state = State_Running;
    return S_OK;
}

HRESULT CBaseFilter::GetState(DWORD, FILTER_STATE* pState)
{
    if (!pState)
        return E_POINTER;
    *pState = state;
    return S_OK;
}

HRESULT CBaseFilter::SetSyncSource(IReferenceClock* pClock)
{
    const std::scoped_lock lock(filterLock);
    clock = Share(pClock);
    return S_OK;
}

HRESULT CBaseFilter::GetSyncSource(IReferenceClock** ppClock)
{
    if (!ppClock)
        return E_POINTER;
    const std::scoped_lock lock(filterLock);
    *ppClock = ComPtr<IReferenceClock>(clock).Release();
    return S_OK;
}

HRESULT CBaseFilter::StreamTime(REFERENCE_TIME* pTime)
{
    if (!pTime)
        return E_POINTER;
    const std::scoped_lock lock(filterLock);
    if (!clock)
        return VFW_E_NO_CLOCK;
    const HRESULT hr = clock->GetTime(pTime);
    if (SUCCEEDED(hr))
        *pTime -= startTime;
    return hr;
}

// ---- pins ------------------------------------------------------------------------------------------------------------

HRESULT CBaseFilter::EnumPins(IEnumPins** ppEnum)
{
    if (!ppEnum)
        return E_POINTER;
    *ppEnum = new (std::nothrow) CEnumPins(this, 0);
    return *ppEnum ? S_OK : E_OUTOFMEMORY;
}

HRESULT CBaseFilter::FindPin(LPCWSTR pszId, IPin** ppPin)
{
    if (!pszId || !ppPin)
        return E_POINTER;
    *ppPin = nullptr;
    const std::scoped_lock lock(filterLock);
    for (int i = 0; i < GetPinCount(); ++i)
        if (CBasePin* const pin = GetPin(i); pin && pin->Id() == pszId)
            return GetInterface<IPin>(pin, reinterpret_cast<void**>(ppPin));
    return VFW_E_NOT_FOUND;
}

// ---- the graph -------------------------------------------------------------------------------------------------------

HRESULT CBaseFilter::QueryFilterInfo(FILTER_INFO* pInfo)
{
    if (!pInfo)
        return E_POINTER;
    const std::scoped_lock lock(filterLock);
    const size_t length = std::min<size_t>(name.size(), MAX_FILTER_NAME - 1);
    *std::copy_n(name.data(), length, pInfo->achName) = 0;
    pInfo->pGraph = Share(graph).Release();
    return S_OK;
}

HRESULT CBaseFilter::JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pszName)
try {
    const std::scoped_lock lock(filterLock);
    name = pszName ? pszName : TEXT("");
    graph = pGraph;
    eventSink = Query<IMediaEventSink>(pGraph, IID_IMediaEventSink).Get();
    return S_OK;
} catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
}

HRESULT CBaseFilter::QueryVendorInfo(LPWSTR*)
{
    return E_NOTIMPL;
}

HRESULT CBaseFilter::NotifyEvent(LONG nCode, LONG_PTR nParam1, LONG_PTR nParam2)
{
    return eventSink ? eventSink->Notify(nCode, nParam1, nParam2) : E_NOTIMPL;
}

HRESULT CBaseFilter::ReconnectPin(IPin* pPin)
{
    return graph ? graph->Reconnect(pPin) : VFW_E_NOT_IN_GRAPH;
}
