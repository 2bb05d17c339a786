#include "platform/media/base_input_pin.h"

#include "platform/media/mem_allocator.h"

#include <mutex>
#include <new>

HRESULT CBaseInputPin::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (ppObject && riid == IID_IMemInputPin)
        return GetInterface<IMemInputPin>(this, ppObject);
    return CBasePin::NonDelegatingQueryInterface(riid, ppObject);
}

// ---- allocator -------------------------------------------------------------------------------------------------------

HRESULT CBaseInputPin::GetAllocator(IMemAllocator** ppAllocator)
{
    if (!ppAllocator)
        return E_POINTER;
    const std::scoped_lock lock(filter->FilterLock());
    if (!allocator)
        allocator = ComPtr<IMemAllocator>(new (std::nothrow) CMemAllocator);
    *ppAllocator = ComPtr<IMemAllocator>(allocator).Release();
    return allocator ? S_OK : E_OUTOFMEMORY;
}

HRESULT CBaseInputPin::NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly)
{
    if (!pAllocator)
        return E_POINTER;
    const std::scoped_lock lock(filter->FilterLock());
    allocator = Share(pAllocator);
    readOnly = bReadOnly != FALSE;
    return S_OK;
}

HRESULT CBaseInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES*)
{
    return E_NOTIMPL;
}

HRESULT CBaseInputPin::BreakConnect()
{
    allocator = {};
    return S_OK;
}

HRESULT CBaseInputPin::Inactive()
{
    failed = false;
    flushing = false;
    return allocator ? allocator->Decommit() : VFW_E_NO_ALLOCATOR;
}

// ---- data ------------------------------------------------------------------------------------------------------------

HRESULT CBaseInputPin::CheckStreaming()
{
    if (!IsConnected())
        return VFW_E_NOT_CONNECTED;
    if (filter->IsStopped())
        return VFW_E_WRONG_STATE;
    if (flushing)
        return S_FALSE;
    return failed ? VFW_E_RUNTIME_ERROR : S_OK;
}

HRESULT CBaseInputPin::Receive(IMediaSample* pSample)
{
    if (!pSample)
        return E_POINTER;
    if (const HRESULT hr = CheckStreaming(); hr != S_OK)
        return hr;
    return TakeTypeChange(pSample);
}

HRESULT CBaseInputPin::TakeTypeChange(IMediaSample* pSample)
{
    AM_MEDIA_TYPE* brought = nullptr;
    const HRESULT told = pSample->GetMediaType(&brought);
    if (told != S_OK)
        return FAILED(told) ? told : S_OK;
    CMediaType type;
    HRESULT hr = type.Set(*brought);
    DeleteMediaType(brought);
    if (SUCCEEDED(hr) && type == CurrentMediaType())
        return S_OK;
    if (SUCCEEDED(hr))
        hr = CheckMediaType(&type) == S_OK ? SetMediaType(&type) : VFW_E_INVALIDMEDIATYPE;
    if (SUCCEEDED(hr))
        return S_OK;
    EndOfStream();
    failed = true;
    filter->NotifyEvent(EC_ERRORABORT, VFW_E_TYPE_NOT_ACCEPTED, 0);
    return VFW_E_INVALIDMEDIATYPE;
}

HRESULT CBaseInputPin::ReceiveMultiple(IMediaSample** ppSamples, LONG nSamples, LONG* pnProcessed)
{
    if (!ppSamples || !pnProcessed)
        return E_POINTER;
    *pnProcessed = 0;
    while (*pnProcessed < nSamples) {
        if (const HRESULT hr = Receive(ppSamples[*pnProcessed]); hr != S_OK)
            return hr;
        ++*pnProcessed;
    }
    return S_OK;
}

HRESULT CBaseInputPin::ReceiveCanBlock()
{
    return S_OK;
}

HRESULT CBaseInputPin::BeginFlush()
{
    flushing = true;
    return S_OK;
}

HRESULT CBaseInputPin::EndFlush()
{
    failed = false;
    flushing = false;
    return S_OK;
}

HRESULT CBaseInputPin::PassNotify(const Quality& q)
{
    if (qualitySink)
        return qualitySink->Notify(filter, q);
    const auto upstream = Query<IQualityControl>(GetConnected(), IID_IQualityControl);
    return upstream ? upstream->Notify(filter, q) : VFW_E_NOT_FOUND;
}
