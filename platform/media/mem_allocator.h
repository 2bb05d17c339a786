// An allocator of samples in one block of memory, which exists while the allocator is committed and until the last buffer
// is back.
#pragma once

#include "platform/media/media_sample.h"
#include "platform/media/monitor.h"
#include "platform/media/unknown.h"

#include <memory>
#include <vector>

class CMemAllocator : public CUnknown, public IMemAllocator {
public:
    explicit CMemAllocator(IUnknown* outer = nullptr);
    DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override;

    // E_INVALIDARG for negative values, VFW_E_BADALIGN, VFW_E_ALREADY_COMMITTED, VFW_E_BUFFERS_OUTSTANDING. All that is
    // asked for is granted.
    HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* pRequest, ALLOCATOR_PROPERTIES* pActual) override;
    HRESULT STDMETHODCALLTYPE GetProperties(ALLOCATOR_PROPERTIES* pProperties) override;
    HRESULT STDMETHODCALLTYPE Commit() override;   // VFW_E_SIZENOTSET, E_OUTOFMEMORY
    HRESULT STDMETHODCALLTYPE Decommit() override;
    HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample** ppBuffer, REFERENCE_TIME* pStart, REFERENCE_TIME* pEnd,
                                        DWORD dwFlags) override;
    HRESULT STDMETHODCALLTYPE ReleaseBuffer(IMediaSample* pBuffer) override;

protected:
    ~CMemAllocator() override;

private:
    struct FreeAligned {
        size_t align;
        void operator()(BYTE* p) const;
    };

    HRESULT Allocate();
    void FreeWhenIdle();
    bool AllBack() const { return idle.size() == samples.size(); }

    Monitor monitor;   // guards everything below
    ALLOCATOR_PROPERTIES granted = {0, 0, 1, 0};
    bool committed = false;
    std::unique_ptr<BYTE, FreeAligned> memory;
    std::vector<std::unique_ptr<CMediaSample>> samples;
    std::vector<CMediaSample*> idle;
};
