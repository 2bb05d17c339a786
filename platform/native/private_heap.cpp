// Private heaps: each block carries a link, so that a heap can free all it has given.
#include "platform/native/refusal.h"

#include <heapapi.h>

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

namespace {

struct alignas(16) BlockLink {
    BlockLink *previous, *next;
    SIZE_T size;
};

constexpr DWORD kHeapMagic = 0x50414548;

struct PrivateHeap {
    DWORD magic = kHeapMagic;
    DWORD options = 0;
    SIZE_T maximum = 0;   // bytes, 0 for no limit
    SIZE_T used = 0;
    std::mutex lock;
    BlockLink blocks = {&blocks, &blocks, 0};
};

// Locks unless heap or call say that the caller does.
class HeapGuard {
public:
    HeapGuard(PrivateHeap& heap, DWORD flags)
        : guarded((heap.options | flags) & HEAP_NO_SERIALIZE ? nullptr : &heap.lock)
    {
        if (guarded)
            guarded->lock();
    }
    ~HeapGuard()
    {
        if (guarded)
            guarded->unlock();
    }

private:
    std::mutex* guarded;
};

PrivateHeap* HeapOf(HANDLE hHeap)
{
    PrivateHeap* const heap = static_cast<PrivateHeap*>(hHeap);
    return heap && heap->magic == kHeapMagic ? heap : nullptr;
}

BlockLink* LinkOf(LPCVOID p)
{
    return static_cast<BlockLink*>(const_cast<LPVOID>(p)) - 1;
}

bool Fits(const PrivateHeap& heap, SIZE_T cbMore)
{
    if (cbMore > PTRDIFF_MAX - sizeof(BlockLink))
        return false;
    return heap.maximum == 0 || cbMore + sizeof(BlockLink) <= heap.maximum - heap.used;
}

void PutIn(PrivateHeap& heap, BlockLink& link)
{
    link.previous = &heap.blocks;
    link.next = heap.blocks.next;
    link.next->previous = link.previous->next = &link;
    heap.used += link.size + sizeof(BlockLink);
}

void TakeOut(PrivateHeap& heap, BlockLink& link)
{
    link.previous->next = link.next;
    link.next->previous = link.previous;
    heap.used -= link.size + sizeof(BlockLink);
}

}   // namespace

HANDLE HeapCreate(DWORD dwOptions, SIZE_T cbInitial, SIZE_T cbMaximum)
{
    if (cbMaximum != 0 && cbInitial > cbMaximum)
        return Refuse<HANDLE>(ERROR_INVALID_PARAMETER);
    PrivateHeap* const heap = new (std::nothrow) PrivateHeap;
    if (!heap)
        return Refuse<HANDLE>(ERROR_NOT_ENOUGH_MEMORY);
    heap->options = dwOptions;
    heap->maximum = cbMaximum;
    return heap;
}

BOOL HeapDestroy(HANDLE hHeap)
{
    PrivateHeap* const heap = HeapOf(hHeap);
    if (!heap || hHeap == GetProcessHeap())
        return Refuse(ERROR_INVALID_HANDLE);
    while (heap->blocks.next != &heap->blocks) {
        BlockLink* const link = heap->blocks.next;
        TakeOut(*heap, *link);
        std::free(link);
    }
    heap->magic = 0;
    delete heap;
    return TRUE;
}

LPVOID HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T cb)
{
    PrivateHeap* const heap = HeapOf(hHeap);
    if (!heap)
        return nullptr;
    const HeapGuard guard(*heap, dwFlags);
    if (!Fits(*heap, cb))
        return nullptr;
    const SIZE_T cbTaken = sizeof(BlockLink) + cb;
    const bool zero = (heap->options | dwFlags) & HEAP_ZERO_MEMORY;
    BlockLink* const link = static_cast<BlockLink*>(zero ? std::calloc(cbTaken, 1) : std::malloc(cbTaken));
    if (!link)
        return nullptr;
    link->size = cb;
    PutIn(*heap, *link);
    return link + 1;
}

LPVOID HeapReAlloc(HANDLE hHeap, DWORD dwFlags, LPVOID p, SIZE_T cb)
{
    PrivateHeap* const heap = HeapOf(hHeap);
    if (!heap || !p)
        return nullptr;
    const HeapGuard guard(*heap, dwFlags);
    BlockLink* link = LinkOf(p);
    const SIZE_T cbOld = link->size;
    if (cb > cbOld && ((dwFlags & HEAP_REALLOC_IN_PLACE_ONLY) || !Fits(*heap, cb - cbOld)))
        return nullptr;
    TakeOut(*heap, *link);
    BlockLink* const moved = static_cast<BlockLink*>(std::realloc(link, sizeof(BlockLink) + cb));
    link = moved ? moved : link;
    if (moved) {
        if (cb > cbOld && ((heap->options | dwFlags) & HEAP_ZERO_MEMORY))
            std::memset(reinterpret_cast<BYTE*>(link + 1) + cbOld, 0, cb - cbOld);
        link->size = cb;
    }
    PutIn(*heap, *link);
    return moved ? link + 1 : nullptr;
}

BOOL HeapFree(HANDLE hHeap, DWORD dwFlags, LPVOID p)
{
    PrivateHeap* const heap = HeapOf(hHeap);
    if (!heap)
        return Refuse(ERROR_INVALID_HANDLE);
    if (!p)
        return TRUE;
    const HeapGuard guard(*heap, dwFlags);
    TakeOut(*heap, *LinkOf(p));
    std::free(LinkOf(p));
    return TRUE;
}

SIZE_T HeapSize(HANDLE hHeap, DWORD dwFlags, LPCVOID p)
{
    PrivateHeap* const heap = HeapOf(hHeap);
    if (!heap || !p)
        return SIZE_T(-1);
    const HeapGuard guard(*heap, dwFlags);
    return LinkOf(p)->size;
}

HANDLE GetProcessHeap()
{
    static PrivateHeap heap;
    return &heap;
}
