#include "kernel/list.h"

#include "kernel/list_access.h"
#include "kernel/list_memory.h"

#include <atomic>
#include <limits>

namespace {

constexpr int32_t kDefaultSlots = 16, kDefaultGrowBy = 16;
constexpr int32_t kMinGrowBy = 4, kMaxGrowBy = 66560, kMinSlots = 4;

int64_t RoundUp(int64_t value, int64_t step)
{
    return (value + step - 1) / step * step;
}

bool InitSlots(tQXLIST& list, int32_t initial)
{
    const int64_t wanted = initial > 0 ? std::max(initial, kMinSlots) : kDefaultSlots;
    const int64_t slots = RoundUp(wanted, list.nGrowBy);
    if (slots > std::numeric_limits<int32_t>::max())
        return false;
    list.pItems = static_cast<BYTE*>(g_pListMemory->allocSlots(size_t(slots) * list.cbItem));
    list.nAllocated = list.pItems ? int32_t(slots) : 0;
    return list.pItems != nullptr;
}

bool InitItemHeap(tQXLIST& list)
{
    if (!IsHeapList(list))
        return true;
    list.dwAllocFlags = HEAP_NO_SERIALIZE | HEAP_ZERO_MEMORY;
    list.dwFreeFlags = HEAP_NO_SERIALIZE;
    if (!(list.dwOptions & QXLIST_PRIVATE_HEAP))
        return true;
    list.hHeap = g_pListMemory->createHeap();
    return list.hHeap != nullptr;
}

void FreeItems(const tQXLIST& list, ListRange range)
{
    for (int32_t i = range.start; i < range.start + range.count; ++i)
        FreeItem(list.hHeap, list.dwFreeFlags, PointerAt(list, i));
}

void ReleaseContents(tQXLIST& list)
{
    if (list.hHeap)
        HeapDestroy(list.hHeap);
    else if (IsHeapList(list))
        FreeItems(list, {0, list.nCount});
    FreeSlots(list.pItems);
    list.pItems = nullptr;
    list.nCount = list.nAllocated = 0;
    list.dwMagic = 0;
}

void CloseList(tQXLIST& list)
{
    ReleaseContents(list);
    if (list.dwOptions & QXLIST_THREAD_SAFE)
        DeleteCriticalSection(&list.csLock);
}

HRESULT InitList(tQXLIST& list, DWORD itemSize, int32_t initial, int32_t growBy, DWORD options)
{
    constexpr DWORD kLargestItem = std::numeric_limits<DWORD>::max() - 3;
    if ((options & QXLIST_ARRAY) && itemSize > kLargestItem)
        return E_OUTOFMEMORY;
    list.cbItem = options & QXLIST_ARRAY ? DWORD(RoundUp(itemSize, 4)) : DWORD(sizeof(void*));
    list.nGrowBy = std::clamp(growBy < 1 ? kDefaultGrowBy : growBy, kMinGrowBy, kMaxGrowBy);
    if (!InitSlots(list, initial))
        return E_OUTOFMEMORY;
    if (options & QXLIST_THREAD_SAFE)
        InitializeCriticalSection(&list.csLock);
    list.dwThreadOwner = GetCurrentThreadId();
    list.dwOptions = options | QXLIST_ANY_THREAD;
    list.dwMagic = kListMagic;
    if (InitItemHeap(list))
        return S_OK;
    CloseList(list);
    return E_OUTOFMEMORY;
}

INT_PTR OneSize(const tQXLIST& list, int32_t index)
{
    if (IsArrayList(list))
        return list.cbItem;
    return IsHeapList(list) ? INT_PTR(ItemSize(list.hHeap, list.dwFreeFlags, PointerAt(list, index))) : 0;
}

INT_PTR WholeSize(const tQXLIST& list)
{
    INT_PTR total = INT_PTR(sizeof(tQXLIST) + SlotBytes(list, list.nAllocated));
    for (int32_t i = 0; IsHeapList(list) && i < list.nCount; ++i)
        total += OneSize(list, i);
    return total;
}

}   // namespace

HRESULT QxList_CreateExZ(tQXLIST** ppList, DWORD cbItem, int32_t nInitial, int32_t nGrowBy, DWORD dwOptions, DWORD,
                         DWORD, DWORD)
{
    if (!ppList)
        return E_FAIL;
    const bool inPlace = (dwOptions & QXLIST_IN_PLACE) != 0;
    if (inPlace && !*ppList)
        return E_FAIL;
    if (inPlace)
        std::memset(static_cast<void*>(*ppList), 0, sizeof(tQXLIST));
    else
        *ppList = nullptr;
    if ((dwOptions & QXLIST_ARRAY) && ((dwOptions & QXLIST_HEAP_ITEMS) || cbItem == 0))
        return E_FAIL;

    auto* const list = inPlace ? *ppList : static_cast<tQXLIST*>(g_pListMemory->allocHeader(sizeof(tQXLIST)));
    if (!list)
        return E_OUTOFMEMORY;
    const HRESULT hr = InitList(*list, cbItem, nInitial, nGrowBy, dwOptions);
    if (SUCCEEDED(hr))
        *ppList = list;
    else if (!inPlace)
        FreeListHeader(list);
    return hr;
}

HRESULT QxList_Destroy(tQXLIST* pList)
{
    if (!pList)
        return S_OK;
    if (!QxList_IsListFast(pList) || !ListEntry(pList).Allowed())
        return E_FAIL;
    CloseList(*pList);
    if (!(pList->dwOptions & QXLIST_IN_PLACE))
        FreeListHeader(pList);
    return S_OK;
}

BOOL QxList_IsList(const tQXLIST* pList, DWORD cbRecord)
{
    return pList && cbRecord == sizeof(tQXLIST) && !IsBadReadPtr(pList, sizeof(tQXLIST)) && QxList_IsListFast(pList);
}

BOOL QxList_IsListFast(const tQXLIST* pList)
{
    return pList->dwMagic == kListMagic;
}

BOOL QxList_IsValidIndexSlow(tQXLIST* pList, int32_t nIndex)
{
    const ListEntry entry(pList);
    return entry.Allowed() && nIndex >= 0 && nIndex < pList->nCount;
}

DWORD QxList_GetUserData(tQXLIST* pList)
{
    const ListEntry entry(pList);
    return entry.Allowed() ? std::atomic_ref(pList->dwUserData).load(std::memory_order_relaxed) : DWORD(-1);
}

DWORD QxList_SetUserData(tQXLIST* pList, DWORD dwUserData)
{
    const ListEntry entry(pList);
    return entry.Allowed() ? std::atomic_ref(pList->dwUserData).exchange(dwUserData) : DWORD(-1);
}

DWORD QxList_GetCreateOptions(tQXLIST* pList)
{
    const ListEntry entry(pList);
    return entry.Allowed() ? pList->dwOptions : DWORD(-1);
}

DWORD QxList_GetSortCriteria(tQXLIST* pList)
{
    const ListEntry entry(pList);
    return entry.Allowed() ? pList->dwSortCriteria : DWORD(-1);
}

DWORD QxList_GetThreadOwner(tQXLIST* pList)
{
    return std::atomic_ref(pList->dwThreadOwner).load();
}

HRESULT QxList_SetThreadOwner(tQXLIST* pList, DWORD dwThread)
{
    std::atomic_ref(pList->dwThreadOwner).store(dwThread ? dwThread : GetCurrentThreadId());
    return S_OK;
}

int32_t QxList_GetFileAndLine(tQXLIST*, WCHAR* pszOut, DWORD cchOut)
{
    if (pszOut && cchOut > 0)
        pszOut[0] = 0;
    return -1;
}

HRESULT QxList_GrowAllocated(tQXLIST* pList, int32_t nSlots)
{
    const ListEntry entry(pList);
    if (!entry.Allowed())
        return E_FAIL;
    const int64_t more = RoundUp(nSlots > 0 ? nSlots : pList->nGrowBy, pList->nGrowBy);
    const int64_t total = pList->nAllocated + more;
    if (total > std::numeric_limits<int32_t>::max())
        return E_OUTOFMEMORY;
    auto* const grown = static_cast<BYTE*>(g_pListMemory->allocSlots(size_t(total) * pList->cbItem));
    if (!grown)
        return E_OUTOFMEMORY;
    std::memcpy(grown, pList->pItems, SlotBytes(*pList, pList->nCount));
    FreeSlots(pList->pItems);
    pList->pItems = grown;
    pList->nAllocated = int32_t(total);
    return S_OK;
}

HRESULT QxList_ShrinkAllocated(tQXLIST* pList, int32_t nSlots)
{
    const ListEntry entry(pList);
    if (!entry.Allowed())
        return E_FAIL;
    const int32_t spare = pList->nAllocated - pList->nCount;
    int64_t less = RoundUp(nSlots < 0 ? spare : std::min(nSlots, spare), pList->nGrowBy);
    if (less > spare)
        less -= pList->nGrowBy;
    const int32_t left = std::max(int32_t(pList->nAllocated - less), 1);
    // Without leave to move, the block shrinks where it lies or stays as it is.
    if (less > 0 && GlobalReAlloc(pList->pItems, SlotBytes(*pList, left), 0))
        pList->nAllocated = left;
    return S_OK;
}

INT_PTR QxList_AllocSize(tQXLIST* pList, int32_t nIndex)
{
    const ListEntry entry(pList);
    if (!entry.Allowed() || nIndex >= pList->nCount)
        return -1;
    return nIndex < 0 ? WholeSize(*pList) : OneSize(*pList, nIndex);
}

HRESULT QxList_ConvertToInPlace(tQXLIST** ppList, tQXLIST* pRecord)
{
    if (!ppList || !*ppList || !pRecord || !QxList_IsListFast(*ppList))
        return E_INVALIDARG;
    tQXLIST* const list = *ppList;
    if (list->dwOptions & QXLIST_IN_PLACE)
        return E_FAIL;
    std::memcpy(static_cast<void*>(pRecord), list, sizeof(tQXLIST));
    pRecord->dwOptions |= QXLIST_IN_PLACE;
    // A critical section is bound to its address, so the record gets one of its own.
    if (list->dwOptions & QXLIST_THREAD_SAFE) {
        InitializeCriticalSection(&pRecord->csLock);
        DeleteCriticalSection(&list->csLock);
    }
    list->dwMagic = 0;
    FreeListHeader(list);
    *ppList = nullptr;
    return S_OK;
}
