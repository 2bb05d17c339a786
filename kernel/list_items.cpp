#include "kernel/list_access.h"
#include "kernel/list_memory.h"

#include <array>
#include <limits>
#include <memory>

namespace {

constexpr size_t kMoveOnStack = 512;   // bytes of a block that moves without an allocation

HRESULT DropPending(tQXLIST& list)
{
    if (!list.pPending)
        return E_FAIL;
    FreeItem(list.hHeap, list.dwFreeFlags, list.pPending);
    list.pPending = nullptr;
    return S_OK;
}

HRESULT InsertSlots(tQXLIST& list, int32_t index, const void* slots, int32_t count)
{
    if (const HRESULT hr = ReserveSlots(list, count); FAILED(hr))
        return hr;
    PutSlots(list, index, slots, count);
    list.pPending = nullptr;
    return S_OK;
}

struct FreeGlobalBlock {
    void operator()(BYTE* p) const { FreeSlots(p); }
};

// The block leaves through spare memory, what stands between closes up, and the block comes in at its new place.
HRESULT MoveBlock(tQXLIST& list, int32_t from, int32_t to, int32_t count)
{
    const size_t cbBlock = SlotBytes(list, count);
    std::array<BYTE, kMoveOnStack> local;
    std::unique_ptr<BYTE, FreeGlobalBlock> block;
    if (cbBlock > local.size()) {
        block.reset(static_cast<BYTE*>(g_pListMemory->allocSlots(cbBlock)));
        if (!block)
            return E_OUTOFMEMORY;
    }
    BYTE* const spare = block ? block.get() : local.data();
    std::memcpy(spare, SlotAt(list, from), cbBlock);
    if (from < to)
        std::memmove(SlotAt(list, from), SlotAt(list, from + count), SlotBytes(list, to - from));
    else
        std::memmove(SlotAt(list, to + count), SlotAt(list, to), SlotBytes(list, from - to));
    std::memcpy(SlotAt(list, to), spare, cbBlock);
    return S_OK;
}

void ShrinkWhenSparse(tQXLIST& list)
{
    if (const int32_t spare = list.nAllocated - list.nCount; spare > list.nGrowBy)
        QxList_ShrinkAllocated(&list, spare);
}

}   // namespace

HRESULT ReserveSlots(tQXLIST& list, int32_t count)
{
    if (list.nAllocated - list.nCount >= count)
        return S_OK;
    return count > std::numeric_limits<int32_t>::max() - list.nAllocated ? E_OUTOFMEMORY
                                                                         : QxList_GrowAllocated(&list, count);
}

void PutSlots(tQXLIST& list, int32_t index, const void* slots, int32_t count)
{
    if (count == 0)
        return;
    const int32_t place = index < 0 || index > list.nCount ? list.nCount : index;
    std::memmove(SlotAt(list, place + count), SlotAt(list, place), SlotBytes(list, list.nCount - place));
    std::memcpy(SlotAt(list, place), slots, SlotBytes(list, count));
    list.nCount += count;
}

void TakeSlots(tQXLIST& list, ListRange range)
{
    const int32_t end = range.start + range.count;
    std::memmove(SlotAt(list, range.start), SlotAt(list, end), SlotBytes(list, list.nCount - end));
    list.nCount -= range.count;
    std::memset(SlotAt(list, list.nCount), 0, SlotBytes(list, range.count));
}

HRESULT QxList_InsertList(tQXLIST* pList, int32_t nIndex, const void* pItems, int32_t nCount)
{
    const ListEntry entry(pList);
    if (!entry.Allowed() || nCount == std::numeric_limits<int32_t>::min())
        return E_FAIL;
    if (pItems && (nCount < 0 || !IsHeapList(*pList)))
        return InsertSlots(*pList, nIndex, pItems, nCount < 0 ? -nCount : nCount);
    if (!pItems && nCount == -1 && pList->pPending) {
        const void* const pending = pList->pPending;
        return InsertSlots(*pList, nIndex, &pending, 1);
    }
    return E_FAIL;
}

HRESULT QxList_AllocItem(tQXLIST* pList, DWORD cbItem, void** ppItem)
{
    if (!ppItem)
        return E_FAIL;
    *ppItem = nullptr;
    const ListEntry entry(pList);
    if (!entry.Allowed() || !IsHeapList(*pList) || pList->pPending)
        return E_FAIL;
    pList->pPending = g_pListMemory->allocItem(pList->hHeap, pList->dwAllocFlags, cbItem);
    *ppItem = pList->pPending;
    return *ppItem ? S_OK : E_OUTOFMEMORY;
}

HRESULT QxList_AllocAndInsertItem(tQXLIST* pList, const void* pSource, DWORD cbItem, int32_t nIndex, int32_t* pnIndex)
{
    if (pnIndex)
        *pnIndex = -1;
    const ListEntry entry(pList);
    if (!entry.Allowed())
        return E_FAIL;
    void* item = nullptr;
    if (const HRESULT hr = QxList_AllocItem(pList, cbItem, &item); FAILED(hr))
        return hr;
    if (pSource)
        std::memcpy(item, pSource, cbItem);
    const int32_t place = nIndex < 0 || nIndex > pList->nCount ? pList->nCount : nIndex;
    const HRESULT hr = QxList_InsertList(pList, place, nullptr, -1);
    if (FAILED(hr))
        DropPending(*pList);
    else if (pnIndex)
        *pnIndex = place;
    return hr;
}

HRESULT QxList_ReAllocItem(tQXLIST* pList, int32_t nIndex, DWORD cbItem)
{
    const ListEntry entry(pList);
    if (!entry.Allowed() || !IsHeapList(*pList) || nIndex < 0 || nIndex >= pList->nCount)
        return E_FAIL;
    void*& item = PointerAt(*pList, nIndex);
    void* const moved = g_pListMemory->reallocItem(pList->hHeap, pList->dwAllocFlags, item, cbItem);
    if (!moved)
        return E_OUTOFMEMORY;
    item = moved;
    return S_OK;
}

HRESULT QxList_DeleteList(tQXLIST* pList, int32_t nIndex, int32_t nCount, BOOL bShrink)
{
    const ListEntry entry(pList);
    if (!entry.Allowed())
        return E_FAIL;
    if (nIndex < 0 && nCount < 0)
        return DropPending(*pList);
    const int32_t wanted = nCount < 0 ? pList->nCount - nIndex : nCount;
    if (wanted < 1)
        return S_OK;
    if (nIndex < 0 || nIndex >= pList->nCount)
        return E_FAIL;
    const ListRange range = ClampRange(*pList, nIndex, wanted);
    for (int32_t i = 0; IsHeapList(*pList) && i < range.count; ++i)
        FreeItem(pList->hHeap, pList->dwFreeFlags, PointerAt(*pList, range.start + i));
    TakeSlots(*pList, range);
    if (bShrink)
        ShrinkWhenSparse(*pList);
    return S_OK;
}

HRESULT QxList_MoveRange(tQXLIST* pList, int32_t nFrom, int32_t nTo, int32_t nCount)
{
    const ListEntry entry(pList);
    if (!entry.Allowed())
        return E_FAIL;
    if (nFrom < 0)
        return E_INVALIDARG;
    const int32_t to = std::max(nTo, 0), higher = std::max(nFrom, to);
    const int32_t count = nCount < 0 ? std::max(pList->nCount - higher, 0) : nCount;
    if (count > pList->nCount || higher > pList->nCount - count)
        return E_FAIL;
    return count < 1 || nFrom == to ? S_OK : MoveBlock(*pList, nFrom, to, count);
}

HRESULT QxList_ArrayForceItemCount(tQXLIST* pList, int32_t nCount, BOOL bShrink)
{
    const ListEntry entry(pList);
    if (!entry.Allowed() || !IsArrayList(*pList) || nCount < 0)
        return E_FAIL;
    if (nCount > pList->nCount) {
        if (const HRESULT hr = ReserveSlots(*pList, nCount - pList->nCount); FAILED(hr))
            return hr;
    }
    const bool fewer = nCount < pList->nCount;
    pList->nCount = nCount;
    if (fewer && bShrink)
        ShrinkWhenSparse(*pList);
    return S_OK;
}

HRESULT QxList_MoveItemsBetweenHeapLists(tQXLIST* pDestination, int32_t nDestinationIndex, tQXLIST* pSource,
                                         int32_t nSourceIndex, int32_t nCount)
{
    if (pDestination == pSource)
        return E_FAIL;
    const ListEntry destination(pDestination), source(pSource);
    if (!destination.Allowed() || !source.Allowed())
        return E_FAIL;
    if (!IsHeapList(*pDestination) || !IsHeapList(*pSource) || pDestination->pPending)
        return E_FAIL;
    const int32_t count = nCount < 0 ? pSource->nCount : nCount;
    if (count == 0)
        return S_OK;
    if (nSourceIndex < 0 || count > pSource->nCount || nSourceIndex > pSource->nCount - count)
        return E_FAIL;
    if (const HRESULT hr = ReserveSlots(*pDestination, count); FAILED(hr))
        return hr;
    PutSlots(*pDestination, nDestinationIndex, SlotAt(*pSource, nSourceIndex), count);
    TakeSlots(*pSource, {nSourceIndex, count});
    return S_OK;
}
