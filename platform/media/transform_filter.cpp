#include "platform/media/transform_filter.h"

#include <mutex>
#include <new>

namespace {

// All that a sample tells besides its data.
void CopyProperties(IMediaSample* from, IMediaSample* to)
{
    REFERENCE_TIME start = 0, end = 0;
    if (const HRESULT hr = from->GetTime(&start, &end); SUCCEEDED(hr))
        to->SetTime(&start, hr == S_OK ? &end : nullptr);
    if (SUCCEEDED(from->GetMediaTime(&start, &end)))
        to->SetMediaTime(&start, &end);
    to->SetSyncPoint(from->IsSyncPoint() == S_OK);
    to->SetPreroll(from->IsPreroll() == S_OK);
    to->SetDiscontinuity(from->IsDiscontinuity() == S_OK);
}

}   // namespace

CTransformFilter::~CTransformFilter() = default;

CBasePin* CTransformFilter::GetPin(int n)
{
    const std::scoped_lock lock(filterLock);
    if (!input || !output) {
        input.reset(new (std::nothrow) CTransformInputPin(this, TEXT("Input")));
        output.reset(new (std::nothrow) CTransformOutputPin(this, TEXT("Output")));
    }
    if (!input || !output || n < 0 || n > 1)
        return nullptr;
    return n == 0 ? static_cast<CBasePin*>(input.get()) : output.get();
}

bool CTransformFilter::BothConnected() const
{
    return input && output && input->IsConnected() && output->IsConnected();
}

// ---- state -----------------------------------------------------------------------------------------------------------

// Both allocators are decommitted before the wait for receiveLock: whoever holds it may be waiting for a buffer.
HRESULT CTransformFilter::Stop()
{
    const std::scoped_lock lock(filterLock);
    if (state.exchange(State_Stopped) == State_Stopped)
        return S_OK;
    DeactivatePins();
    if (!BothConnected())
        return S_OK;
    const std::scoped_lock receive(receiveLock);
    return StopStreaming();
}

HRESULT CTransformFilter::Pause()
{
    const std::scoped_lock lock(filterLock);
    if (state != State_Stopped) {
        state = State_Paused;
        return S_OK;
    }
    if (!BothConnected()) {
        const HRESULT hr = CBaseFilter::Pause();
        // Nothing will come, and what follows must not wait for it.
        if (SUCCEEDED(hr) && output && output->IsConnected())
            output->DeliverEndOfStream();
        return hr;
    }
    const std::scoped_lock receive(receiveLock);
    if (const HRESULT hr = StartStreaming(); FAILED(hr))
        return hr;
    const HRESULT hr = CBaseFilter::Pause();
    if (FAILED(hr))
        StopStreaming();
    return hr;
}

// ---- data ------------------------------------------------------------------------------------------------------------

HRESULT CTransformFilter::Receive(IMediaSample* pSample)
{
    ComPtr<IMediaSample> out;
    if (const HRESULT hr = output->GetDeliveryBuffer(out.Out(), nullptr, nullptr, 0); FAILED(hr))
        return hr;
    CopyProperties(pSample, out.Get());
    const HRESULT hr = Transform(pSample, out.Get());
    if (FAILED(hr))
        return hr;
    return hr == S_OK ? output->Deliver(out.Get()) : S_OK;
}

HRESULT CTransformFilter::EndOfStream()
{
    return output->DeliverEndOfStream();
}

HRESULT CTransformFilter::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate)
{
    return output->DeliverNewSegment(tStart, tStop, dRate);
}

HRESULT CTransformFilter::BeginFlush()
{
    return output->DeliverBeginFlush();
}

HRESULT CTransformFilter::EndFlush()
{
    return output->DeliverEndFlush();
}
