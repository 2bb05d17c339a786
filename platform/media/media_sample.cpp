#include "platform/media/media_sample.h"

#include "platform/media/unknown.h"

namespace {

HRESULT YesOrNo(bool yes)
{
    return yes ? S_OK : S_FALSE;
}

}   // namespace

CMediaSample::CMediaSample(IMemAllocator* theAllocator, BYTE* pBuffer, LONG cb)
    : allocator(theAllocator), buffer(pBuffer), size(cb)
{
}

void CMediaSample::GoOut()
{
    properties = {};
    properties.length = size;
    references = 1;
    allocator->AddRef();
}

HRESULT CMediaSample::QueryInterface(REFIID riid, void** ppObject)
{
    if (!ppObject)
        return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IMediaSample)
        return GetInterface<IMediaSample>(this, ppObject);
    *ppObject = nullptr;
    return E_NOINTERFACE;
}

ULONG CMediaSample::AddRef()
{
    return ++references;
}

ULONG CMediaSample::Release()
{
    const ULONG remaining = --references;
    if (remaining == 0) {
        IMemAllocator* const home = allocator;   // the sample may be gone as soon as it is back
        home->ReleaseBuffer(this);
        home->Release();
    }
    return remaining;
}

HRESULT CMediaSample::GetPointer(BYTE** ppBuffer)
{
    if (!ppBuffer)
        return E_POINTER;
    *ppBuffer = buffer;
    return S_OK;
}

LONG CMediaSample::GetSize()
{
    return size;
}

HRESULT CMediaSample::GetTime(REFERENCE_TIME* pStart, REFERENCE_TIME* pEnd)
{
    if (!pStart || !pEnd)
        return E_POINTER;
    if (!properties.start)
        return VFW_E_SAMPLE_TIME_NOT_SET;
    *pStart = *properties.start;
    *pEnd = properties.end.value_or(*properties.start + 1);
    return properties.end ? S_OK : VFW_S_NO_STOP_TIME;
}

HRESULT CMediaSample::SetTime(REFERENCE_TIME* pStart, REFERENCE_TIME* pEnd)
{
    properties.start = pStart ? std::optional(*pStart) : std::nullopt;
    properties.end = pStart && pEnd ? std::optional(*pEnd) : std::nullopt;
    return S_OK;
}

HRESULT CMediaSample::IsSyncPoint()
{
    return YesOrNo(properties.syncPoint);
}

HRESULT CMediaSample::SetSyncPoint(BOOL bSyncPoint)
{
    properties.syncPoint = bSyncPoint != FALSE;
    return S_OK;
}

HRESULT CMediaSample::IsPreroll()
{
    return YesOrNo(properties.preroll);
}

HRESULT CMediaSample::SetPreroll(BOOL bPreroll)
{
    properties.preroll = bPreroll != FALSE;
    return S_OK;
}

LONG CMediaSample::GetActualDataLength()
{
    return properties.length;
}

HRESULT CMediaSample::SetActualDataLength(LONG cb)
{
    if (cb < 0 || cb > size)
        return VFW_E_BUFFER_OVERFLOW;
    properties.length = cb;
    return S_OK;
}

HRESULT CMediaSample::GetMediaType(AM_MEDIA_TYPE** ppType)
{
    if (!ppType)
        return E_POINTER;
    *ppType = nullptr;
    if (!properties.type)
        return S_FALSE;
    *ppType = CreateMediaType(&*properties.type);
    return *ppType ? S_OK : E_OUTOFMEMORY;
}

HRESULT CMediaSample::SetMediaType(AM_MEDIA_TYPE* pType)
{
    if (!pType) {
        properties.type.reset();
        return S_OK;
    }
    CMediaType copy;
    if (const HRESULT hr = copy.Set(*pType); FAILED(hr))
        return hr;
    properties.type = std::move(copy);
    return S_OK;
}

HRESULT CMediaSample::IsDiscontinuity()
{
    return YesOrNo(properties.discontinuity);
}

HRESULT CMediaSample::SetDiscontinuity(BOOL bDiscontinuity)
{
    properties.discontinuity = bDiscontinuity != FALSE;
    return S_OK;
}

HRESULT CMediaSample::GetMediaTime(LONGLONG* pStart, LONGLONG* pEnd)
{
    if (!pStart || !pEnd)
        return E_POINTER;
    if (!properties.mediaTime)
        return VFW_E_MEDIA_TIME_NOT_SET;
    *pStart = properties.mediaTime->start;
    *pEnd = properties.mediaTime->end;
    return S_OK;
}

HRESULT CMediaSample::SetMediaTime(LONGLONG* pStart, LONGLONG* pEnd)
{
    if (pStart && !pEnd)
        return E_POINTER;
    properties.mediaTime = pStart ? std::optional(Span{*pStart, *pEnd}) : std::nullopt;
    return S_OK;
}
