#include "kernel/list_access.h"

namespace {

struct SearchEnd {
    int32_t probe;   // the slot compared last, -1 when the range is empty
    int result;      // of that comparison
};

// Binary search; the probe stands at the middle, or just below it when the number of items is even.
SearchEnd SearchSorted(const tQXLIST& list, const void* key, ListRange range, QXLISTCOMPARE compare)
{
    SearchEnd end = {-1, 0};
    int32_t low = range.start;
    for (int32_t n = range.count; n > 0;) {
        const int32_t below = n % 2 ? n / 2 : n / 2 - 1;
        end.probe = low + below;
        end.result = compare(list.dwSortCriteria, key, ItemAt(list, end.probe));
        if (end.result == 0)
            break;
        if (end.result > 0)
            low = end.probe + 1;
        n = end.result < 0 ? below : n / 2;
    }
    return end;
}

void SwapSlots(tQXLIST& list, int32_t a, int32_t b)
{
    std::swap_ranges(SlotAt(list, a), SlotAt(list, a) + list.cbItem, SlotAt(list, b));
}

// Strictly greater, so that the earliest of equal items wins.
int32_t LargestOf(const tQXLIST& list, int32_t count, QXLISTCOMPARE compare)
{
    int32_t largest = 0;
    for (int32_t i = 1; i < count; ++i)
        if (compare(list.dwSortCriteria, ItemAt(list, i), ItemAt(list, largest)) > 0)
            largest = i;
    return largest;
}

void SiftDown(tQXLIST& list, int32_t root, int32_t count, QXLISTCOMPARE compare)
{
    const auto greater = [&](int32_t a, int32_t b) {
        return compare(list.dwSortCriteria, ItemAt(list, a), ItemAt(list, b)) > 0;
    };
    for (int64_t child = 2 * int64_t(root) + 1; child < count; child = 2 * int64_t(root) + 1) {
        int32_t larger = int32_t(child);
        if (larger + 1 < count && greater(larger + 1, larger))
            ++larger;
        if (!greater(larger, root))
            return;
        SwapSlots(list, root, larger);
        root = larger;
    }
}

// A heap list would own what the source owns already.
bool TakesItemsOf(const tQXLIST& destination, const tQXLIST& source)
{
    return IsArrayList(destination) == IsArrayList(source) && destination.cbItem == source.cbItem &&
           !IsHeapList(destination);
}

}   // namespace

int32_t QxList_FindSpecificItemRange(tQXLIST* pList, int32_t nStart, int32_t nCount, const void* pItem)
{
    const ListEntry entry(pList);
    if (!entry.Allowed() || (IsArrayList(*pList) && !pItem))
        return -1;
    const void* const wanted = IsArrayList(*pList) ? pItem : &pItem;
    const ListRange range = ClampRange(*pList, nStart, nCount);
    for (int32_t i = range.start; i < range.start + range.count; ++i)
        if (std::memcmp(SlotAt(*pList, i), wanted, pList->cbItem) == 0)
            return i;
    return -1;
}

int32_t QxList_FindItemRange(tQXLIST* pList, int32_t nStart, int32_t nCount, void* pContext, QXLISTMATCH pfnMatch)
{
    const ListEntry entry(pList);
    if (!entry.Allowed() || !pfnMatch)
        return -1;
    const ListRange range = ClampRange(*pList, nStart, nCount);
    for (int32_t i = range.start; i < range.start + range.count; ++i)
        if (pfnMatch(pContext, ItemAt(*pList, i)) == 0)
            return i;
    return -1;
}

int32_t QxList_FindSortedItemRange(tQXLIST* pList, const void* pKey, int32_t nStart, int32_t nCount,
                                   QXLISTCOMPARE pfnCompare)
{
    const ListEntry entry(pList);
    if (!entry.Allowed() || !pfnCompare)
        return -1;
    const SearchEnd end = SearchSorted(*pList, pKey, ClampRange(*pList, nStart, nCount), pfnCompare);
    return end.result == 0 ? end.probe : -1;
}

int32_t QxList_FindSortedInsertIndexRange(tQXLIST* pList, const void* pKey, int32_t nStart, int32_t nCount,
                                          QXLISTCOMPARE pfnCompare)
{
    const ListEntry entry(pList);
    if (!entry.Allowed() || !pfnCompare || nStart > pList->nCount)
        return -1;
    const SearchEnd end = SearchSorted(*pList, pKey, ClampRange(*pList, nStart, nCount), pfnCompare);
    if (end.probe < 0)
        return 0;
    return end.result > 0 ? end.probe + 1 : end.probe;
}

HRESULT QxList_Sort(tQXLIST* pList, DWORD dwCriteria, QXLISTCOMPARE pfnCompare)
{
    const ListEntry entry(pList);
    if (!entry.Allowed())
        return E_FAIL;
    pList->dwSortCriteria = dwCriteria;
    for (int32_t unsorted = pfnCompare ? pList->nCount : 0; unsorted > 1; --unsorted) {
        const int32_t largest = LargestOf(*pList, unsorted, pfnCompare);
        if (largest != unsorted - 1)
            SwapSlots(*pList, largest, unsorted - 1);
    }
    return S_OK;
}

HRESULT QxList_HeapSort(tQXLIST* pList, DWORD dwCriteria, QXLISTCOMPARE pfnCompare)
{
    const ListEntry entry(pList);
    if (!entry.Allowed())
        return E_FAIL;
    pList->dwSortCriteria = dwCriteria;
    if (!pfnCompare)
        return S_OK;
    for (int32_t root = pList->nCount / 2 - 1; root >= 0; --root)
        SiftDown(*pList, root, pList->nCount, pfnCompare);
    for (int32_t last = pList->nCount - 1; last > 0; --last) {
        SwapSlots(*pList, 0, last);
        SiftDown(*pList, 0, last, pfnCompare);
    }
    return S_OK;
}

HRESULT QxList_SortTo(tQXLIST* pDestination, tQXLIST* pSource, DWORD dwCriteria, QXLISTCOMPARE pfnCompare)
{
    if (pDestination == pSource || !pfnCompare)
        return E_FAIL;
    const ListEntry source(pSource), destination(pDestination);
    if (!source.Allowed() || !destination.Allowed() || !TakesItemsOf(*pDestination, *pSource))
        return E_FAIL;
    // All the room first, so that memory never runs out half way.
    if (const HRESULT hr = ReserveSlots(*pDestination, pSource->nCount); FAILED(hr))
        return hr;
    pDestination->dwSortCriteria = dwCriteria;
    for (int32_t i = 0; i < pSource->nCount; ++i) {
        const int32_t place = QxList_FindSortedInsertIndexRange(pDestination, ItemAt(*pSource, i), 0, -1, pfnCompare);
        PutSlots(*pDestination, place, SlotAt(*pSource, i), 1);
    }
    if (pSource->nCount > 0)
        pDestination->pPending = nullptr;
    return S_OK;
}
