#include "platform/media/base_renderer.h"

#include <mutex>

// ---- pin -------------------------------------------------------------------------------------------------------------

CRendererInputPin::CRendererInputPin(CBaseRenderer* theRenderer)
    : CBaseInputPin(theRenderer, TEXT("In")), renderer(theRenderer)
{
}

HRESULT CRendererInputPin::CheckMediaType(const CMediaType* pType)
{
    return renderer->CheckMediaType(pType);
}

HRESULT CRendererInputPin::SetMediaType(const CMediaType* pType)
{
    if (const HRESULT hr = renderer->SetMediaType(pType); FAILED(hr))
        return hr;
    return CBaseInputPin::SetMediaType(pType);
}

// Returns when nothing is under way any more.
HRESULT CRendererInputPin::Inactive()
{
    const HRESULT hr = CBaseInputPin::Inactive();
    renderer->LetGo();
    const std::scoped_lock lock(renderer->receiveLock);
    return hr;
}

HRESULT CRendererInputPin::Receive(IMediaSample* pSample)
{
    const std::scoped_lock lock(renderer->receiveLock);
    if (const HRESULT hr = CBaseInputPin::Receive(pSample); hr != S_OK)
        return hr;
    if (!renderer->AwaitRun())
        return CheckStreaming();
    return renderer->Take(pSample);
}

HRESULT CRendererInputPin::EndOfStream()
{
    const std::scoped_lock lock(renderer->receiveLock);
    if (const HRESULT hr = CheckStreaming(); hr != S_OK)
        return hr;
    return renderer->End();
}

HRESULT CRendererInputPin::BeginFlush()
{
    CBaseInputPin::BeginFlush();
    renderer->LetGo();
    return S_OK;
}

HRESULT CRendererInputPin::EndFlush()
{
    const std::scoped_lock lock(renderer->receiveLock);
    return CBaseInputPin::EndFlush();
}

HRESULT CRendererInputPin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate)
{
    const std::scoped_lock lock(renderer->receiveLock);
    renderer->OnNewSegment(tStart, tStop, dRate);
    return CBaseInputPin::NewSegment(tStart, tStop, dRate);
}

// ---- filter ----------------------------------------------------------------------------------------------------------

CBaseRenderer::CBaseRenderer(IUnknown* outer, REFCLSID theClassId) : CBaseFilter(outer, theClassId) {}

CBaseRenderer::~CBaseRenderer() = default;

HRESULT CBaseRenderer::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (riid == IID_IAMFilterMiscFlags)
        return GetInterface<IAMFilterMiscFlags>(this, ppObject);
    return CBaseFilter::NonDelegatingQueryInterface(riid, ppObject);
}

HRESULT CBaseRenderer::Pause()
{
    const std::scoped_lock lock(filterLock);
    if (IsActive() || !input.IsConnected())
        return CBaseFilter::Pause();
    {
        const std::scoped_lock guard(monitor);
        cued = ended = told = false;
    }
    const HRESULT hr = CBaseFilter::Pause();
    return hr == S_OK ? S_FALSE : hr;
}

HRESULT CBaseRenderer::Run(REFERENCE_TIME tStart)
{
    const std::scoped_lock lock(filterLock);
    if (const HRESULT hr = CBaseFilter::Run(tStart); FAILED(hr))
        return hr;
    {
        const std::scoped_lock guard(monitor);
        monitor.WakeAll();
    }
    TellEnd();
    return S_OK;
}

HRESULT CBaseRenderer::GetState(DWORD dwMilliseconds, FILTER_STATE* pState)
{
    const HRESULT hr = CBaseFilter::GetState(dwMilliseconds, pState);
    const std::scoped_lock guard(monitor);
    if (hr != S_OK || *pState != State_Paused || !input.IsConnected())
        return hr;
    if (!cued)
        monitor.Wait(dwMilliseconds);
    return cued ? S_OK : VFW_S_STATE_INTERMEDIATE;
}

// False when a stop or a flush came instead.
bool CBaseRenderer::AwaitRun()
{
    const std::scoped_lock guard(monitor);
    if (!cued) {
        cued = true;
        monitor.WakeAll();
    }
    while (state == State_Paused && !input.IsFlushing())
        monitor.Wait();
    return state == State_Running && !input.IsFlushing();
}

void CBaseRenderer::LetGo()
{
    const std::scoped_lock guard(monitor);
    ended = told = false;
    monitor.WakeAll();
}

HRESULT CBaseRenderer::Take(IMediaSample* pSample)
{
    const HRESULT hr = DoRenderSample(pSample);
    if (FAILED(hr))
        NotifyEvent(EC_ERRORABORT, hr, 0);
    return hr;
}

HRESULT CBaseRenderer::End()
{
    const HRESULT hr = OnEndOfStream();
    if (FAILED(hr))
        NotifyEvent(EC_ERRORABORT, hr, 0);
    {
        const std::scoped_lock guard(monitor);
        cued = ended = true;
        monitor.WakeAll();
    }
    TellEnd();
    return hr;
}

// Once a stream, by whoever comes last: the end or the start of running.
void CBaseRenderer::TellEnd()
{
    {
        const std::scoped_lock guard(monitor);
        if (!ended || told || state != State_Running)
            return;
        told = true;
    }
    NotifyEvent(EC_COMPLETE, S_OK, 0);
}
