#include "platform/media/source_stream.h"

#include <mutex>
#include <system_error>

namespace {

// What a delivery meets when the graph is being stopped downstream.
bool IsStop(HRESULT hr)
{
    return hr == VFW_E_WRONG_STATE || hr == VFW_E_NOT_COMMITTED;
}

}   // namespace

CSource::~CSource() = default;

CSourceStream::CSourceStream(CSource* theSource) : CBaseOutputPin(theSource, TEXT("Out")), source(theSource) {}

HRESULT CSourceStream::GetMediaType(int position, CMediaType* pType)
{
    return position == 0 ? source->GetMediaType(pType) : VFW_S_NO_MORE_ITEMS;
}

HRESULT CSourceStream::CheckMediaType(const CMediaType* pType)
{
    CMediaType own;
    if (const HRESULT hr = source->GetMediaType(&own); FAILED(hr))
        return hr;
    return own == *pType ? S_OK : S_FALSE;
}

HRESULT CSourceStream::DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pRequest)
{
    return source->DecideBufferSize(pAllocator, pRequest);
}

// ---- thread ----------------------------------------------------------------------------------------------------------

HRESULT CSourceStream::Active()
{
    if (const HRESULT hr = CBaseOutputPin::Active(); FAILED(hr))
        return hr;
    segmentStart = 0;
    HRESULT hr = source->OnSeek(0);
    if (SUCCEEDED(hr))
        hr = StartThread();
    if (FAILED(hr))
        CBaseOutputPin::Inactive();
    return hr;
}

HRESULT CSourceStream::Inactive()
{
    stopping = true;
    const HRESULT hr = CBaseOutputPin::Inactive();   // ends a wait for a buffer
    StopThread();
    return hr;
}

HRESULT CSourceStream::StartThread()
try {
    stopping = false;
    worker = std::thread([this] { Work(); });
    return S_OK;
} catch (const std::system_error&) {
    return E_OUTOFMEMORY;
}

void CSourceStream::StopThread()
{
    stopping = true;
    if (worker.joinable())
        worker.join();
}

// The flush empties what follows, so a thread that waits for a buffer or in a delivery comes back.
HRESULT CSourceStream::Seek(REFERENCE_TIME start)
{
    const std::scoped_lock lock(filter->FilterLock());
    if (filter->IsStopped())
        return VFW_E_WRONG_STATE;
    stopping = true;
    DeliverBeginFlush();
    StopThread();
    DeliverEndFlush();
    segmentStart = start;
    if (const HRESULT hr = source->OnSeek(start); FAILED(hr))
        return hr;
    return StartThread();
}

void CSourceStream::Work()
{
    DeliverNewSegment(segmentStart, INT64_MAX, 1.0);
    HRESULT hr = S_OK;
    while (!stopping && hr == S_OK)
        hr = DeliverOne();
    if (FAILED(hr) && !stopping && !IsStop(hr))
        Fail(hr);
}

// S_FALSE: there is no more to deliver, or nobody wants it.
HRESULT CSourceStream::DeliverOne()
{
    ComPtr<IMediaSample> sample;
    if (const HRESULT hr = GetDeliveryBuffer(sample.Out(), nullptr, nullptr, 0); FAILED(hr))
        return hr;
    const HRESULT filled = source->FillBuffer(sample.Get());
    if (filled == S_OK)
        return Deliver(sample.Get());
    if (filled == S_FALSE)
        DeliverEndOfStream();
    return filled;
}

void CSourceStream::Fail(HRESULT hr)
{
    DeliverEndOfStream();
    filter->NotifyEvent(EC_ERRORABORT, hr, 0);
}
