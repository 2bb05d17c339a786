// The global heap. A fixed block's handle is its address. A movable block's handle is an odd-looking address of its
// own (never one of a block), so the two tell themselves apart.
#include "platform/native/refusal.h"

#include <winbase.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <unordered_map>

namespace {

struct GlobalBlock {
    BYTE* data;
    SIZE_T size;
    UINT locks;
    bool movable;
};

// All blocks by handle, and the handles of movable blocks by address.
struct GlobalHeap {
    std::mutex lock;
    std::unordered_map<HGLOBAL, GlobalBlock> blocks;
    std::unordered_map<LPCVOID, HGLOBAL> movable;
};

GlobalHeap& Heap()
{
    static GlobalHeap heap;
    return heap;
}

constexpr UINT kMaxLocks = GMEM_LOCKCOUNT;
constexpr uintptr_t kMovableMark = 2;   // block addresses are multiples of 16

HGLOBAL HandleFor(const GlobalBlock& block)
{
    if (!block.movable)
        return block.data;
    void* const place = std::malloc(1);
    return place ? reinterpret_cast<HGLOBAL>(reinterpret_cast<uintptr_t>(place) | kMovableMark) : nullptr;
}

void FreeHandle(HGLOBAL handle)
{
    const auto value = reinterpret_cast<uintptr_t>(handle);
    if (value & kMovableMark)
        std::free(reinterpret_cast<void*>(value & ~kMovableMark));
}

BYTE* NewData(SIZE_T cb, bool zero)
{
    const SIZE_T cbTaken = std::max<SIZE_T>(cb, 1);
    return static_cast<BYTE*>(zero ? std::calloc(cbTaken, 1) : std::malloc(cbTaken));
}

// The data at its new size; null leaves the old. A block that may not move stays when it shrinks, and else fails.
BYTE* Resized(const GlobalBlock& block, SIZE_T cb, UINT nFlags)
{
    const bool mayMove = (nFlags & GMEM_MOVEABLE) || (block.movable && block.locks == 0);
    if (!mayMove)
        return cb <= block.size ? block.data : nullptr;
    BYTE* const data = static_cast<BYTE*>(std::realloc(block.data, std::max<SIZE_T>(cb, 1)));
    if (data && (nFlags & GMEM_ZEROINIT) && cb > block.size)
        std::memset(data + block.size, 0, cb - block.size);
    return data;
}

void Insert(GlobalHeap& heap, HGLOBAL handle, const GlobalBlock& block)
{
    heap.blocks[handle] = block;
    if (block.movable)
        heap.movable[block.data] = handle;
}

void Erase(GlobalHeap& heap, HGLOBAL handle, const GlobalBlock& block)
{
    if (block.movable)
        heap.movable.erase(block.data);
    heap.blocks.erase(handle);
}

HGLOBAL Modify(GlobalHeap& heap, HGLOBAL hMem, GlobalBlock block, UINT nFlags)
{
    if (block.movable || !(nFlags & GMEM_MOVEABLE))
        return hMem;
    Erase(heap, hMem, block);
    block.movable = true;
    const HGLOBAL handle = HandleFor(block);
    Insert(heap, handle, block);
    return handle;
}

}   // namespace

HGLOBAL GlobalAlloc(UINT nFlags, SIZE_T cb)
{
    GlobalBlock block = {NewData(cb, nFlags & GMEM_ZEROINIT), cb, 0, (nFlags & GMEM_MOVEABLE) != 0};
    if (!block.data)
        return Refuse<HGLOBAL>(ERROR_NOT_ENOUGH_MEMORY);
    const HGLOBAL handle = HandleFor(block);
    if (!handle) {
        std::free(block.data);
        return Refuse<HGLOBAL>(ERROR_NOT_ENOUGH_MEMORY);
    }
    GlobalHeap& heap = Heap();
    const std::lock_guard guard(heap.lock);
    Insert(heap, handle, block);
    return handle;
}

HGLOBAL GlobalReAlloc(HGLOBAL hMem, SIZE_T cb, UINT nFlags)
{
    GlobalHeap& heap = Heap();
    const std::lock_guard guard(heap.lock);
    const auto found = heap.blocks.find(hMem);
    if (found == heap.blocks.end())
        return Refuse<HGLOBAL>(ERROR_INVALID_HANDLE);
    GlobalBlock block = found->second;
    if (nFlags & GMEM_MODIFY)
        return Modify(heap, hMem, block, nFlags);
    const GlobalBlock old = block;
    block.data = Resized(block, cb, nFlags);
    if (!block.data)
        return Refuse<HGLOBAL>(ERROR_NOT_ENOUGH_MEMORY);
    block.size = cb;
    Erase(heap, hMem, old);
    const HGLOBAL handle = block.movable ? hMem : block.data;
    Insert(heap, handle, block);
    return handle;
}

HGLOBAL GlobalFree(HGLOBAL hMem)
{
    if (!hMem)
        return nullptr;
    GlobalHeap& heap = Heap();
    const std::lock_guard guard(heap.lock);
    const auto found = heap.blocks.find(hMem);
    if (found == heap.blocks.end())
        return Refuse(ERROR_INVALID_HANDLE, hMem);
    const GlobalBlock block = found->second;
    Erase(heap, hMem, block);
    std::free(block.data);
    FreeHandle(hMem);
    return nullptr;
}

LPVOID GlobalLock(HGLOBAL hMem)
{
    GlobalHeap& heap = Heap();
    const std::lock_guard guard(heap.lock);
    const auto found = heap.blocks.find(hMem);
    if (found == heap.blocks.end())
        return Refuse<LPVOID>(ERROR_INVALID_HANDLE);
    GlobalBlock& block = found->second;
    if (block.movable && block.locks < kMaxLocks)
        ++block.locks;
    return block.data;
}

BOOL GlobalUnlock(HGLOBAL hMem)
{
    GlobalHeap& heap = Heap();
    const std::lock_guard guard(heap.lock);
    const auto found = heap.blocks.find(hMem);
    if (found == heap.blocks.end())
        return Refuse(ERROR_INVALID_HANDLE);
    GlobalBlock& block = found->second;
    if (!block.movable)
        return TRUE;
    if (block.locks == 0)
        return Refuse(ERROR_NOT_LOCKED);
    return --block.locks > 0 ? TRUE : Refuse(ERROR_SUCCESS);
}

HGLOBAL GlobalHandle(LPCVOID p)
{
    GlobalHeap& heap = Heap();
    const std::lock_guard guard(heap.lock);
    const auto movable = heap.movable.find(p);
    if (movable != heap.movable.end())
        return movable->second;
    const auto fixed = heap.blocks.find(const_cast<LPVOID>(p));
    return fixed != heap.blocks.end() ? fixed->first : Refuse<HGLOBAL>(ERROR_INVALID_HANDLE);
}

SIZE_T GlobalSize(HGLOBAL hMem)
{
    GlobalHeap& heap = Heap();
    const std::lock_guard guard(heap.lock);
    const auto found = heap.blocks.find(hMem);
    return found != heap.blocks.end() ? found->second.size : Refuse<SIZE_T>(ERROR_INVALID_HANDLE);
}

UINT GlobalFlags(HGLOBAL hMem)
{
    GlobalHeap& heap = Heap();
    const std::lock_guard guard(heap.lock);
    const auto found = heap.blocks.find(hMem);
    return found != heap.blocks.end() ? found->second.locks : Refuse<UINT>(ERROR_INVALID_HANDLE, GMEM_INVALID_HANDLE);
}

HLOCAL LocalFree(HLOCAL hMem)
{
    return GlobalFree(hMem);
}
