// What the list operations share: entering and leaving a list, its slots, its ranges. Internal to the list family.
#pragma once

#include "kernel/list.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

// Enters a list for the length of one call: takes its lock, or checks the thread when the owner check is live.
class ListEntry {
public:
    explicit ListEntry(tQXLIST* entered) : list(entered)
    {
        if (entered->dwOptions & QXLIST_THREAD_SAFE)
            EnterCriticalSection(&entered->csLock);
    }
    ~ListEntry()
    {
        if (list->dwOptions & QXLIST_THREAD_SAFE)
            LeaveCriticalSection(&list->csLock);
    }
    ListEntry(const ListEntry&) = delete;
    ListEntry& operator=(const ListEntry&) = delete;

    bool Allowed() const
    {
        constexpr DWORD kUnchecked = QXLIST_THREAD_SAFE | QXLIST_ANY_THREAD;
        return (list->dwOptions & kUnchecked) != 0 || list->dwThreadOwner == GetCurrentThreadId();
    }

private:
    tQXLIST* const list;
};

inline bool IsHeapList(const tQXLIST& list)
{
    return (list.dwOptions & QXLIST_HEAP_ITEMS) != 0;
}
inline bool IsArrayList(const tQXLIST& list)
{
    return (list.dwOptions & QXLIST_ARRAY) != 0;
}

inline BYTE* SlotAt(const tQXLIST& list, int32_t index)
{
    return list.pItems + size_t(index) * list.cbItem;
}
inline size_t SlotBytes(const tQXLIST& list, int32_t count)
{
    return size_t(count) * list.cbItem;
}
inline void*& PointerAt(const tQXLIST& list, int32_t index)
{
    return *reinterpret_cast<void**>(SlotAt(list, index));
}

// What callbacks and comparisons get for a slot.
inline void* ItemAt(const tQXLIST& list, int32_t index)
{
    return IsArrayList(list) ? SlotAt(list, index) : PointerAt(list, index);
}

struct ListRange {
    int32_t start, count;
};
inline ListRange ClampRange(const tQXLIST& list, int32_t start, int32_t count)
{
    const int32_t first = std::clamp(start, 0, list.nCount), rest = list.nCount - first;
    return {first, count < 0 ? rest : std::min(count, rest)};
}

// Room for count more items behind those in use; E_OUTOFMEMORY leaves everything as it was.
HRESULT ReserveSlots(tQXLIST& list, int32_t count);
// Opens a gap of count slots at index (or at the end) and copies the slots in. The room is there.
void PutSlots(tQXLIST& list, int32_t index, const void* slots, int32_t count);
// Closes the gap of a range inside the list, leaving the items alone; the slots left free are cleared.
void TakeSlots(tQXLIST& list, ListRange range);
