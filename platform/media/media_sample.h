// One buffer of an allocator. A sample that is out keeps its allocator alive and goes back to it with its last reference.
#pragma once

#include "platform/media/media_type.h"

#include <atomic>
#include <optional>

class CMediaSample final : public IMediaSample {
public:
    // pBuffer: cb bytes that the allocator owns. The sample is not out yet.
    CMediaSample(IMemAllocator* theAllocator, BYTE* pBuffer, LONG cb);
    CMediaSample(const CMediaSample&) = delete;
    CMediaSample& operator=(const CMediaSample&) = delete;
    ~CMediaSample() = default;

    void GoOut();   // with one reference, and no property of its former life

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE GetPointer(BYTE** ppBuffer) override;
    LONG STDMETHODCALLTYPE GetSize() override;
    HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* pStart, REFERENCE_TIME* pEnd) override;
    HRESULT STDMETHODCALLTYPE SetTime(REFERENCE_TIME* pStart, REFERENCE_TIME* pEnd) override;
    HRESULT STDMETHODCALLTYPE IsSyncPoint() override;
    HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL bSyncPoint) override;
    HRESULT STDMETHODCALLTYPE IsPreroll() override;
    HRESULT STDMETHODCALLTYPE SetPreroll(BOOL bPreroll) override;
    LONG STDMETHODCALLTYPE GetActualDataLength() override;
    HRESULT STDMETHODCALLTYPE SetActualDataLength(LONG cb) override;
    HRESULT STDMETHODCALLTYPE GetMediaType(AM_MEDIA_TYPE** ppType) override;
    HRESULT STDMETHODCALLTYPE SetMediaType(AM_MEDIA_TYPE* pType) override;
    HRESULT STDMETHODCALLTYPE IsDiscontinuity() override;
    HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL bDiscontinuity) override;
    HRESULT STDMETHODCALLTYPE GetMediaTime(LONGLONG* pStart, LONGLONG* pEnd) override;
    HRESULT STDMETHODCALLTYPE SetMediaTime(LONGLONG* pStart, LONGLONG* pEnd) override;

private:
    struct Span {
        LONGLONG start, end;
    };
    // What GoOut clears.
    struct Properties {
        LONG length = 0;
        bool syncPoint = false, preroll = false, discontinuity = false;
        std::optional<REFERENCE_TIME> start, end;   // an end only with a start
        std::optional<Span> mediaTime;
        std::optional<CMediaType> type;
    };

    IMemAllocator* allocator;
    BYTE* buffer;
    LONG size;
    std::atomic<ULONG> references = 0;
    Properties properties;
};
