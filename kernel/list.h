// The library's one growable sequence: a flat array of slots behind a header, used by handle.
// Three storages: a plain pointer list owns nothing; QXLIST_HEAP_ITEMS holds pointers to items that the list owns;
// QXLIST_ARRAY holds the items themselves. A heap item is made first (QxList_AllocItem), filled by the caller while it
// is pending, and then taken in (QxList_InsertList with null items and count -1) or dropped (QxList_DeleteList with both
// arguments negative). Code that owns its list may read pItems and nCount directly.
//
// A range is (start, count): a negative start means 0, a negative count or one beyond the end means to the end.
// E_FAIL is the general refusal: wrong storage, a pending item, a bad range, the wrong thread; E_OUTOFMEMORY leaves the
// list as it was. An operation called on the wrong thread changes nothing and gives E_FAIL, or -1 where an index or
// value comes back.
//
// Threads: with QXLIST_THREAD_SAFE each call is atomic and calls nest on one thread; without it the user guards the
// list.
#pragma once

#include <windows.h>

#include <cstdint>

inline constexpr DWORD QXLIST_HEAP_ITEMS = 0x00000002;
inline constexpr DWORD QXLIST_ARRAY = 0x00000004;
inline constexpr DWORD QXLIST_IN_PLACE = 0x00000008;       // the header lies in memory of the caller
inline constexpr DWORD QXLIST_PRIVATE_HEAP = 0x10000000;   // heap items come from a heap that lives with the list
inline constexpr DWORD QXLIST_ANY_THREAD = 0x40000000;     // no owner check; set by creation in every case
inline constexpr DWORD QXLIST_THREAD_SAFE = 0x80000000;

inline constexpr DWORD kListMagic = 0x544C5851;   // the bytes "QXLT"

struct tQXLIST {
    int32_t nCount;   // items in use
    DWORD cbItem;     // bytes a slot: a pointer's width, or the item size rounded up to a multiple of 4
    BYTE* pItems;     // nAllocated slots, one block of the global heap
    CRITICAL_SECTION csLock;
    DWORD dwMagic;   // kListMagic while the list is alive, else 0
    DWORD dwOptions;
    DWORD dwUserData;
    DWORD dwSortCriteria;   // first argument of every comparison
    DWORD dwThreadOwner;
    int32_t nAllocated;
    int32_t nGrowBy;
    HANDLE hHeap;   // private item heap, or null
    DWORD dwAllocFlags;
    DWORD dwFreeFlags;
    void* pPending;
};

// Negative, 0 or positive as a stands before, with or behind b. In pointer and heap lists a and b are the slots'
// pointers, in array lists the addresses of the slots.
using QXLISTCOMPARE = int(CALLBACK*)(DWORD dwCriteria, const void* a, const void* b);
// 0 on a match.
using QXLISTMATCH = int(CALLBACK*)(void* pContext, void* pItem);

// *ppList receives the list, or holds the caller's record with QXLIST_IN_PLACE. cbItem counts for QXLIST_ARRAY alone.
// nInitial: slots, 16 when not positive; nGrowBy: 16 when not positive, held in 4..66560. The last three words are 0.
HRESULT QxList_CreateExZ(tQXLIST** ppList, DWORD cbItem, int32_t nInitial, int32_t nGrowBy, DWORD dwOptions,
                         DWORD dwReserved1, DWORD dwReserved2, DWORD dwReserved3);
// Frees what the list owns, except a pending item outside a private heap. Null is accepted.
HRESULT QxList_Destroy(tQXLIST* pList);

BOOL QxList_IsList(const tQXLIST* pList, DWORD cbRecord);   // any pointer may be asked about
BOOL QxList_IsListFast(const tQXLIST* pList);
BOOL QxList_IsValidIndexSlow(tQXLIST* pList, int32_t nIndex);
DWORD QxList_GetUserData(tQXLIST* pList);
DWORD QxList_SetUserData(tQXLIST* pList, DWORD dwUserData);   // gives the old value; atomic
DWORD QxList_GetCreateOptions(tQXLIST* pList);
DWORD QxList_GetSortCriteria(tQXLIST* pList);
DWORD QxList_GetThreadOwner(tQXLIST* pList);
HRESULT QxList_SetThreadOwner(tQXLIST* pList, DWORD dwThread);   // 0: the calling thread
// Nothing is recorded about the place of creation: an empty text and -1.
int32_t QxList_GetFileAndLine(tQXLIST* pList, WCHAR* pszOut, DWORD cchOut);

// Room for nSlots more items, rounded up to a multiple of the grow-by; one grow-by when not positive.
HRESULT QxList_GrowAllocated(tQXLIST* pList, int32_t nSlots);
// Gives back nSlots free slots, rounded up to a multiple of the grow-by; all free ones when negative.
HRESULT QxList_ShrinkAllocated(tQXLIST* pList, int32_t nSlots);

// pItems given, nCount >= 0: inserts nCount items (not into a heap list). pItems given, nCount < 0: inserts -nCount
// items; a heap list takes ownership of the pointers. pItems null, nCount -1: takes the pending item in. An index that
// is negative or behind the last item appends. Nothing is pending afterwards.
HRESULT QxList_InsertList(tQXLIST* pList, int32_t nIndex, const void* pItems, int32_t nCount);
// Heap lists, with nothing pending: a zeroed block that is pending from now on.
HRESULT QxList_AllocItem(tQXLIST* pList, DWORD cbItem, void** ppItem);
// The two steps in one; *pnIndex (may be null) is the new item's index, or -1.
HRESULT QxList_AllocAndInsertItem(tQXLIST* pList, const void* pSource, DWORD cbItem, int32_t nIndex, int32_t* pnIndex);
HRESULT QxList_ReAllocItem(tQXLIST* pList, int32_t nIndex, DWORD cbItem);   // the block may move; growth is zeroed
// Bytes of one item's block, or of the whole list (items, slots and header) for a negative index; -1 for an index
// outside the list. An item that the list does not own counts as 0.
INT_PTR QxList_AllocSize(tQXLIST* pList, int32_t nIndex);
// Both negative: drops the pending item. Otherwise deletes a range, cut to the end; bShrink gives memory back when more
// than one grow-by of slots is free.
HRESULT QxList_DeleteList(tQXLIST* pList, int32_t nIndex, int32_t nCount, BOOL bShrink);
// Moves a block so that it starts at nTo. A negative nTo is 0; a negative nCount runs from the higher of both indices
// to the end. E_INVALIDARG for a negative nFrom.
HRESULT QxList_MoveRange(tQXLIST* pList, int32_t nFrom, int32_t nTo, int32_t nCount);
HRESULT QxList_ArrayForceItemCount(tQXLIST* pList, int32_t nCount, BOOL bShrink);

// Index of the first match, or -1. pItem: the pointer itself, or in array lists the address of cbItem bytes.
int32_t QxList_FindSpecificItemRange(tQXLIST* pList, int32_t nStart, int32_t nCount, const void* pItem);
int32_t QxList_FindItemRange(tQXLIST* pList, int32_t nStart, int32_t nCount, void* pContext, QXLISTMATCH pfnMatch);
// Binary search in a sorted range; any of several equal items.
int32_t QxList_FindSortedItemRange(tQXLIST* pList, const void* pKey, int32_t nStart, int32_t nCount,
                                   QXLISTCOMPARE pfnCompare);
// Where the key belongs: before an equal item that the search meets; 0 for an empty range, -1 for a start beyond the
// list.
int32_t QxList_FindSortedInsertIndexRange(tQXLIST* pList, const void* pKey, int32_t nStart, int32_t nCount,
                                          QXLISTCOMPARE pfnCompare);

// Both store the criteria, also when there is nothing to sort or no comparison. Neither is stable.
HRESULT QxList_Sort(tQXLIST* pList, DWORD dwCriteria, QXLISTCOMPARE pfnCompare);       // quadratic, few exchanges
HRESULT QxList_HeapSort(tQXLIST* pList, DWORD dwCriteria, QXLISTCOMPARE pfnCompare);   // n log n
// Inserts each item of the source into the destination at its sorted place; the source keeps its items. All or none. The
// destination is an array list or plain pointers: an item of a heap list has one owner.
HRESULT QxList_SortTo(tQXLIST* pDestination, tQXLIST* pSource, DWORD dwCriteria, QXLISTCOMPARE pfnCompare);
// Hands items over between two heap lists whose items come from the same allocator: a private heap on the source would
// take the moved items with it. Locks the destination first: opposite moves must not run at the same time.
HRESULT QxList_MoveItemsBetweenHeapLists(tQXLIST* pDestination, int32_t nDestinationIndex, tQXLIST* pSource,
                                         int32_t nSourceIndex, int32_t nCount);
// Moves the header into a record of the caller; the old handle is dead and *ppList null afterwards.
HRESULT QxList_ConvertToInPlace(tQXLIST** ppList, tQXLIST* pRecord);
