// Lists for tests: an owner, and short ways to fill and read them.
#pragma once

#include "kernel/list.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

struct DestroyList {
    void operator()(tQXLIST* list) const { QxList_Destroy(list); }
};
using ListPtr = std::unique_ptr<tQXLIST, DestroyList>;

inline ListPtr MakeList(DWORD options, DWORD cbItem = 4, int32_t initial = 0, int32_t growBy = 0)
{
    tQXLIST* list = nullptr;
    QxList_CreateExZ(&list, cbItem, initial, growBy, options, 0, 0, 0);
    return ListPtr(list);
}

inline HRESULT Append(tQXLIST* list, const std::vector<int32_t>& values)
{
    return QxList_InsertList(list, -1, values.data(), int32_t(values.size()));
}

inline ListPtr MakeArray(const std::vector<int32_t>& values, DWORD options = 0)
{
    ListPtr list = MakeList(options | QXLIST_ARRAY, sizeof(int32_t));
    Append(list.get(), values);
    return list;
}

inline std::vector<int32_t> Values(const tQXLIST* list)   // of an array list
{
    const auto* const first = reinterpret_cast<const int32_t*>(list->pItems);
    return {first, first + list->nCount};
}

inline int32_t AddHeapItem(tQXLIST* list, int32_t value, int32_t index = -1)
{
    int32_t place = -1;
    QxList_AllocAndInsertItem(list, &value, sizeof value, index, &place);
    return place;
}

inline std::vector<int32_t> HeapValues(const tQXLIST* list)
{
    std::vector<int32_t> values;
    for (int32_t i = 0; i < list->nCount; ++i)
        values.push_back(*reinterpret_cast<int32_t* const*>(list->pItems)[i]);
    return values;
}

inline int CALLBACK CompareInts(DWORD, const void* a, const void* b)
{
    const int32_t x = *static_cast<const int32_t*>(a), y = *static_cast<const int32_t*>(b);
    return x < y ? -1 : x > y ? 1 : 0;
}
