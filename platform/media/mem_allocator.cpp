#include "platform/media/mem_allocator.h"

#include <cstdint>
#include <mutex>
#include <new>

namespace {

bool IsPowerOfTwo(LONG n)
{
    return n > 0 && (n & (n - 1)) == 0;
}

constexpr size_t RoundUp(size_t n, size_t step)
{
    return (n + step - 1) / step * step;
}

}   // namespace

void CMemAllocator::FreeAligned::operator()(BYTE* p) const
{
    ::operator delete(p, std::align_val_t(align));
}

CMemAllocator::CMemAllocator(IUnknown* outer) : CUnknown(outer) {}

CMemAllocator::~CMemAllocator() = default;

HRESULT CMemAllocator::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (riid == IID_IMemAllocator)
        return GetInterface<IMemAllocator>(this, ppObject);
    return CUnknown::NonDelegatingQueryInterface(riid, ppObject);
}

HRESULT CMemAllocator::SetProperties(ALLOCATOR_PROPERTIES* pRequest, ALLOCATOR_PROPERTIES* pActual)
{
    if (!pRequest || !pActual)
        return E_POINTER;
    const std::scoped_lock lock(monitor);
    if (!IsPowerOfTwo(pRequest->cbAlign))
        return VFW_E_BADALIGN;
    if (pRequest->cBuffers < 0 || pRequest->cbBuffer < 0 || pRequest->cbPrefix < 0)
        return E_INVALIDARG;
    if (committed)
        return VFW_E_ALREADY_COMMITTED;
    if (!AllBack())
        return VFW_E_BUFFERS_OUTSTANDING;
    granted = *pRequest;
    *pActual = granted;
    return S_OK;
}

HRESULT CMemAllocator::GetProperties(ALLOCATOR_PROPERTIES* pProperties)
{
    if (!pProperties)
        return E_POINTER;
    const std::scoped_lock lock(monitor);
    *pProperties = granted;
    return S_OK;
}

HRESULT CMemAllocator::Commit()
{
    const std::scoped_lock lock(monitor);
    if (committed)
        return S_OK;
    if (granted.cBuffers == 0 || granted.cbBuffer == 0)
        return VFW_E_SIZENOTSET;
    // Buffers that are still out since the last Decommit keep the block; it goes on serving.
    if (samples.empty())
        if (const HRESULT hr = Allocate(); FAILED(hr))
            return hr;
    committed = true;
    return S_OK;
}

// Each buffer starts at a multiple of cbAlign, its prefix in front of it.
HRESULT CMemAllocator::Allocate()
try {
    const auto align = size_t(granted.cbAlign);
    const size_t lead = RoundUp(size_t(granted.cbPrefix), align);
    const size_t stride = RoundUp(lead + size_t(granted.cbBuffer), align);
    const auto count = size_t(granted.cBuffers);
    if (count > PTRDIFF_MAX / stride)
        return E_OUTOFMEMORY;
    memory.reset(static_cast<BYTE*>(::operator new(count* stride, std::align_val_t(align), std::nothrow)));
    memory.get_deleter().align = align;
    if (!memory)
        return E_OUTOFMEMORY;
    idle.reserve(count);
    samples.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        BYTE* const buffer = memory.get() + i * stride + lead;
        samples.push_back(std::make_unique<CMediaSample>(this, buffer, granted.cbBuffer));
        idle.push_back(samples.back().get());
    }
    return S_OK;
} catch (const std::bad_alloc&) {
    idle.clear();
    samples.clear();
    memory.reset();
    return E_OUTOFMEMORY;
}

void CMemAllocator::FreeWhenIdle()
{
    if (committed || !AllBack())
        return;
    idle.clear();
    samples.clear();
    memory.reset();
}

HRESULT CMemAllocator::Decommit()
{
    const std::scoped_lock lock(monitor);
    committed = false;
    FreeWhenIdle();
    monitor.WakeAll();
    return S_OK;
}

HRESULT CMemAllocator::GetBuffer(IMediaSample** ppBuffer, REFERENCE_TIME* pStart, REFERENCE_TIME* pEnd, DWORD dwFlags)
{
    if (!ppBuffer)
        return E_POINTER;
    *ppBuffer = nullptr;
    CMediaSample* sample = nullptr;
    {
        const std::scoped_lock lock(monitor);
        while (committed && idle.empty()) {
            if (dwFlags & AM_GBF_NOWAIT)
                return VFW_E_TIMEOUT;
            monitor.Wait();
        }
        if (!committed)
            return VFW_E_NOT_COMMITTED;
        sample = idle.back();
        idle.pop_back();
    }
    sample->GoOut();
    sample->SetTime(pStart, pEnd);
    *ppBuffer = sample;
    return S_OK;
}

HRESULT CMemAllocator::ReleaseBuffer(IMediaSample* pBuffer)
{
    if (!pBuffer)
        return E_POINTER;
    const std::scoped_lock lock(monitor);
    idle.push_back(static_cast<CMediaSample*>(pBuffer));   // within the capacity of all samples
    FreeWhenIdle();
    monitor.WakeOne();
    return S_OK;
}
