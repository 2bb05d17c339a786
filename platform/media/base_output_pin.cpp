#include "platform/media/base_output_pin.h"

#include "platform/media/mem_allocator.h"

#include <new>

HRESULT CBaseOutputPin::CheckConnect(IPin* pPin)
{
    if (const HRESULT hr = CBasePin::CheckConnect(pPin); FAILED(hr))
        return hr;
    inputPin = Query<IMemInputPin>(pPin, IID_IMemInputPin);
    return inputPin ? S_OK : VFW_E_NO_TRANSPORT;
}

HRESULT CBaseOutputPin::CompleteConnect(IPin*)
{
    return DecideAllocator(inputPin.Get(), allocator.Out());
}

HRESULT CBaseOutputPin::BreakConnect()
{
    if (allocator)
        allocator->Decommit();
    allocator = {};
    inputPin = {};
    return S_OK;
}

HRESULT CBaseOutputPin::InitAllocator(IMemAllocator** ppAllocator)
{
    *ppAllocator = new (std::nothrow) CMemAllocator;
    return *ppAllocator ? S_OK : E_OUTOFMEMORY;
}

HRESULT CBaseOutputPin::OfferAllocator(IMemInputPin* pPin, IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES request)
{
    if (const HRESULT hr = DecideBufferSize(pAllocator, &request); FAILED(hr))
        return hr;
    return pPin->NotifyAllocator(pAllocator, FALSE);
}

HRESULT CBaseOutputPin::DecideAllocator(IMemInputPin* pPin, IMemAllocator** ppAllocator)
{
    *ppAllocator = nullptr;
    ALLOCATOR_PROPERTIES request{};
    pPin->GetAllocatorRequirements(&request);   // most pins require nothing and leave it
    if (request.cbAlign == 0)
        request.cbAlign = 1;
    ComPtr<IMemAllocator> candidate;
    if (SUCCEEDED(pPin->GetAllocator(candidate.Out())) && SUCCEEDED(OfferAllocator(pPin, candidate.Get(), request))) {
        *ppAllocator = candidate.Release();
        return S_OK;
    }
    HRESULT hr = InitAllocator(candidate.Out());
    if (SUCCEEDED(hr))
        hr = OfferAllocator(pPin, candidate.Get(), request);
    if (SUCCEEDED(hr))
        *ppAllocator = candidate.Release();
    return hr;
}

HRESULT CBaseOutputPin::Active()
{
    return allocator ? allocator->Commit() : VFW_E_NO_ALLOCATOR;
}

HRESULT CBaseOutputPin::Inactive()
{
    return allocator ? allocator->Decommit() : VFW_E_NO_ALLOCATOR;
}

HRESULT CBaseOutputPin::GetDeliveryBuffer(IMediaSample** ppSample, REFERENCE_TIME* pStart, REFERENCE_TIME* pEnd,
                                          DWORD dwFlags)
{
    *ppSample = nullptr;
    return allocator ? allocator->GetBuffer(ppSample, pStart, pEnd, dwFlags) : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::Deliver(IMediaSample* pSample)
{
    return inputPin ? inputPin->Receive(pSample) : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverEndOfStream()
{
    return IsConnected() ? GetConnected()->EndOfStream() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverBeginFlush()
{
    return IsConnected() ? GetConnected()->BeginFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverEndFlush()
{
    return IsConnected() ? GetConnected()->EndFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverNewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate)
{
    return IsConnected() ? GetConnected()->NewSegment(tStart, tStop, dRate) : VFW_E_NOT_CONNECTED;
}
