#include "kernel/list_memory.h"

#include "platform/memory_block.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t kPrivateHeapSize = 4096;   // bytes to begin with

void* AllocHeader(size_t cb)
{
    return std::calloc(1, cb);
}

void* AllocSlots(size_t cb)
{
    return GlobalAlloc(GPTR, cb);
}

HANDLE CreatePrivateHeap()
{
    return HeapCreate(HEAP_NO_SERIALIZE, kPrivateHeapSize, 0);
}

void* AllocItem(HANDLE hHeap, DWORD dwFlags, size_t cb)
{
    return hHeap ? HeapAlloc(hHeap, dwFlags, cb) : std::calloc(1, cb > 0 ? cb : 1);
}

void* ReallocItem(HANDLE hHeap, DWORD dwFlags, void* p, size_t cb)
{
    if (hHeap)
        return HeapReAlloc(hHeap, dwFlags, p, cb);
    const size_t cbOld = MemoryBlockSize(p);
    void* pNew = std::realloc(p, cb > 0 ? cb : 1);
    if (pNew && cb > cbOld)
        std::memset(static_cast<BYTE*>(pNew) + cbOld, 0, cb - cbOld);
    return pNew;
}

}   // namespace

constexpr ListMemory kPlatformListMemory = {AllocHeader, AllocSlots, CreatePrivateHeap, AllocItem, ReallocItem};

const ListMemory* g_pListMemory = &kPlatformListMemory;

void FreeListHeader(void* p)
{
    std::free(p);
}

void FreeSlots(void* p)
{
    if (p)
        GlobalFree(p);
}

void FreeItem(HANDLE hHeap, DWORD dwFlags, void* p)
{
    if (hHeap)
        HeapFree(hHeap, dwFlags, p);
    else
        std::free(p);
}

size_t ItemSize(HANDLE hHeap, DWORD dwFlags, void* p)
{
    if (!p)
        return 0;
    return hHeap ? HeapSize(hHeap, dwFlags, p) : MemoryBlockSize(p);
}
