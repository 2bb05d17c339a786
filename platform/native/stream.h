// What all streams share: references, and copying by way of Read and Write.
#pragma once

#include <objbase.h>

#include <atomic>

class Stream : public IStream {
public:
    Stream() = default;
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    virtual ~Stream() = default;

    HRESULT QueryInterface(REFIID riid, void** ppObject) override;
    ULONG AddRef() override { return ++references; }
    ULONG Release() override;
    HRESULT CopyTo(IStream* pTo, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead, ULARGE_INTEGER* pcbWritten) override;
    HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER cb, DWORD dwType) override;
    HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER cb, DWORD dwType) override;

private:
    std::atomic<ULONG> references = 1;
};

// A move by a signed distance from a base; nothing when it ends before the start or runs over.
bool MovedPosition(ULONGLONG base, LONGLONG distance, ULONGLONG& position);
