// A stream over a block of the global heap.
#include "platform/native/stream.h"

#include <winbase.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

namespace {

// The block that a stream and its clones share.
struct SharedBlock {
    SharedBlock(HGLOBAL handle_, bool owned_) : handle(handle_), owned(owned_), size(GlobalSize(handle_)) {}
    SharedBlock(const SharedBlock&) = delete;
    SharedBlock& operator=(const SharedBlock&) = delete;
    ~SharedBlock()
    {
        if (owned)
            GlobalFree(handle);
    }
    bool Resize(ULONGLONG cb)
    {
        const HGLOBAL moved = GlobalReAlloc(handle, SIZE_T(cb), GMEM_MOVEABLE);
        if (!moved)
            return false;
        handle = moved;
        size = cb;
        return true;
    }

    HGLOBAL handle;
    bool owned;
    ULONGLONG size;   // bytes in the stream
};

class MemoryStream final : public Stream {
public:
    explicit MemoryStream(std::shared_ptr<SharedBlock> block_, ULONGLONG position_ = 0)
        : block(std::move(block_)), position(position_)
    {
    }

    HRESULT Read(void* pv, ULONG cb, ULONG* pcbRead) override
    {
        if (pcbRead)
            *pcbRead = 0;
        if (!pv)
            return STG_E_INVALIDPOINTER;
        const ULONGLONG available = block->size - std::min(position, block->size);
        const ULONG count = ULONG(std::min<ULONGLONG>(cb, available));
        std::memcpy(pv, static_cast<const BYTE*>(GlobalLock(block->handle)) + std::min(position, block->size), count);
        GlobalUnlock(block->handle);
        position += count;
        if (pcbRead)
            *pcbRead = count;
        return S_OK;
    }

    HRESULT Write(const void* pv, ULONG cb, ULONG* pcbWritten) override
    {
        if (pcbWritten)
            *pcbWritten = 0;
        if (!pv)
            return STG_E_INVALIDPOINTER;
        if (cb == 0)
            return S_OK;
        if (position + cb > block->size && !block->Resize(position + cb))
            return E_OUTOFMEMORY;
        std::memcpy(static_cast<BYTE*>(GlobalLock(block->handle)) + position, pv, cb);
        GlobalUnlock(block->handle);
        position += cb;
        if (pcbWritten)
            *pcbWritten = cb;
        return S_OK;
    }

    HRESULT Seek(LARGE_INTEGER move, DWORD dwOrigin, ULARGE_INTEGER* pNewPosition) override
    {
        if (dwOrigin > STREAM_SEEK_END)
            return STG_E_INVALIDFUNCTION;
        const ULONGLONG base = dwOrigin == STREAM_SEEK_SET ? 0 : dwOrigin == STREAM_SEEK_CUR ? position : block->size;
        ULONGLONG moved = position;
        const bool valid = MovedPosition(base, move.QuadPart, moved);
        position = moved;
        if (pNewPosition)
            pNewPosition->QuadPart = position;
        return valid ? S_OK : STG_E_INVALIDFUNCTION;
    }

    HRESULT SetSize(ULARGE_INTEGER newSize) override { return block->Resize(newSize.QuadPart) ? S_OK : E_OUTOFMEMORY; }

    HRESULT Commit(DWORD) override { return S_OK; }
    HRESULT Revert() override { return S_OK; }

    HRESULT Stat(STATSTG* pStat, DWORD) override
    {
        if (!pStat)
            return STG_E_INVALIDPOINTER;
        *pStat = {};   // it has no name
        pStat->type = STGTY_STREAM;
        pStat->cbSize.QuadPart = block->size;
        return S_OK;
    }

    HRESULT Clone(IStream** ppStream) override
    {
        if (!ppStream)
            return STG_E_INVALIDPOINTER;
        *ppStream = new (std::nothrow) MemoryStream(block, position);
        return *ppStream ? S_OK : E_OUTOFMEMORY;
    }

    HGLOBAL Block() const { return block->handle; }

private:
    std::shared_ptr<SharedBlock> block;
    ULONGLONG position;
};

}   // namespace

HRESULT CreateStreamOnHGlobal(HGLOBAL hGlobal, BOOL bDeleteOnRelease, IStream** ppStream)
{
    if (!ppStream)
        return E_INVALIDARG;
    *ppStream = nullptr;
    if (hGlobal && GlobalFlags(hGlobal) == GMEM_INVALID_HANDLE)
        return E_INVALIDARG;
    const HGLOBAL block = hGlobal ? hGlobal : GlobalAlloc(GMEM_MOVEABLE, 0);
    if (!block)
        return E_OUTOFMEMORY;
    *ppStream = new (std::nothrow) MemoryStream(std::make_shared<SharedBlock>(block, bDeleteOnRelease));
    return *ppStream ? S_OK : E_OUTOFMEMORY;
}

HRESULT GetHGlobalFromStream(IStream* pStream, HGLOBAL* phGlobal)
{
    const auto* const stream = dynamic_cast<const MemoryStream*>(pStream);
    if (!stream || !phGlobal)
        return E_INVALIDARG;
    *phGlobal = stream->Block();
    return S_OK;
}
