#include "platform/media/transform_pins.h"

#include "platform/media/transform_filter.h"

#include <mutex>

// ---- input -----------------------------------------------------------------------------------------------------------

CTransformInputPin::CTransformInputPin(CTransformFilter* theFilter, const WCHAR* pszName)
    : CBaseInputPin(theFilter, pszName), transform(theFilter)
{
}

HRESULT CTransformInputPin::CheckConnect(IPin* pPin)
{
    if (const HRESULT hr = transform->CheckConnect(PINDIR_INPUT, pPin); FAILED(hr))
        return hr;
    return CBaseInputPin::CheckConnect(pPin);
}

HRESULT CTransformInputPin::CompleteConnect(IPin* pReceivePin)
{
    if (const HRESULT hr = CBaseInputPin::CompleteConnect(pReceivePin); FAILED(hr))
        return hr;
    return transform->CompleteConnect(PINDIR_INPUT, pReceivePin);
}

HRESULT CTransformInputPin::BreakConnect()
{
    transform->BreakConnect(PINDIR_INPUT);
    return CBaseInputPin::BreakConnect();
}

HRESULT CTransformInputPin::CheckMediaType(const CMediaType* pType)
{
    if (const HRESULT hr = transform->CheckInputType(pType); hr != S_OK)
        return hr;
    const auto& output = transform->output;
    return output && output->IsConnected() ? transform->CheckTransform(pType, &output->CurrentMediaType()) : S_OK;
}

HRESULT CTransformInputPin::SetMediaType(const CMediaType* pType)
{
    if (const HRESULT hr = transform->SetMediaType(PINDIR_INPUT, pType); FAILED(hr))
        return hr;
    return CBaseInputPin::SetMediaType(pType);
}

HRESULT CTransformInputPin::CheckStreaming()
{
    if (!transform->output || !transform->output->IsConnected())
        return VFW_E_NOT_CONNECTED;
    return CBaseInputPin::CheckStreaming();
}

HRESULT CTransformInputPin::Receive(IMediaSample* pSample)
{
    const std::scoped_lock lock(transform->ReceiveLock());
    if (const HRESULT hr = CBaseInputPin::Receive(pSample); hr != S_OK)
        return hr;
    return transform->Receive(pSample);
}

HRESULT CTransformInputPin::EndOfStream()
{
    const std::scoped_lock lock(transform->ReceiveLock());
    if (const HRESULT hr = CheckStreaming(); hr != S_OK)
        return hr;
    return transform->EndOfStream();
}

HRESULT CTransformInputPin::BeginFlush()
{
    const std::scoped_lock lock(filter->FilterLock());
    if (!transform->BothConnected())
        return VFW_E_NOT_CONNECTED;
    CBaseInputPin::BeginFlush();
    return transform->BeginFlush();
}

HRESULT CTransformInputPin::EndFlush()
{
    const std::scoped_lock lock(filter->FilterLock());
    if (!transform->BothConnected())
        return VFW_E_NOT_CONNECTED;
    const std::scoped_lock receive(transform->ReceiveLock());
    if (const HRESULT hr = transform->EndFlush(); FAILED(hr))
        return hr;
    return CBaseInputPin::EndFlush();
}

HRESULT CTransformInputPin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate)
{
    const std::scoped_lock lock(transform->ReceiveLock());
    CBaseInputPin::NewSegment(tStart, tStop, dRate);
    return transform->output ? transform->NewSegment(tStart, tStop, dRate) : S_OK;
}

// ---- output ----------------------------------------------------------------------------------------------------------

CTransformOutputPin::CTransformOutputPin(CTransformFilter* theFilter, const WCHAR* pszName)
    : CBaseOutputPin(theFilter, pszName), transform(theFilter), seeking(this, theFilter)
{
}

HRESULT CTransformOutputPin::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (ppObject && riid == IID_IMediaSeeking)
        return GetInterface<IMediaSeeking>(&seeking, ppObject);
    return CBaseOutputPin::NonDelegatingQueryInterface(riid, ppObject);
}

HRESULT CTransformOutputPin::CheckConnect(IPin* pPin)
{
    if (!transform->input || !transform->input->IsConnected())
        return E_UNEXPECTED;
    if (const HRESULT hr = transform->CheckConnect(PINDIR_OUTPUT, pPin); FAILED(hr))
        return hr;
    return CBaseOutputPin::CheckConnect(pPin);
}

HRESULT CTransformOutputPin::CompleteConnect(IPin* pReceivePin)
{
    if (const HRESULT hr = CBaseOutputPin::CompleteConnect(pReceivePin); FAILED(hr))
        return hr;
    return transform->CompleteConnect(PINDIR_OUTPUT, pReceivePin);
}

HRESULT CTransformOutputPin::BreakConnect()
{
    transform->BreakConnect(PINDIR_OUTPUT);
    return CBaseOutputPin::BreakConnect();
}

HRESULT CTransformOutputPin::CheckMediaType(const CMediaType* pType)
{
    const auto& input = transform->input;
    if (!input || !input->IsConnected())
        return E_INVALIDARG;
    return transform->CheckTransform(&input->CurrentMediaType(), pType);
}

HRESULT CTransformOutputPin::SetMediaType(const CMediaType* pType)
{
    if (const HRESULT hr = transform->SetMediaType(PINDIR_OUTPUT, pType); FAILED(hr))
        return hr;
    return CBaseOutputPin::SetMediaType(pType);
}

HRESULT CTransformOutputPin::GetMediaType(int position, CMediaType* pType)
{
    const auto& input = transform->input;
    return input && input->IsConnected() ? transform->GetMediaType(position, pType) : VFW_S_NO_MORE_ITEMS;
}

HRESULT CTransformOutputPin::DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pRequest)
{
    return transform->DecideBufferSize(pAllocator, pRequest);
}

HRESULT CTransformOutputPin::Notify(IBaseFilter*, Quality q)
{
    const HRESULT hr = transform->AlterQuality(q);
    return hr == S_FALSE ? transform->input->PassNotify(q) : hr;
}
