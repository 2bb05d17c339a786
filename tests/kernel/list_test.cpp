#include "tests/kernel/lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <thread>

namespace {

using Ints = std::vector<int32_t>;

constexpr DWORD kPointers = 0;

TEST(List, SizesAreHeldInTheirLimits)
{
    static constexpr struct {
        DWORD options, cbItem;
        int32_t initial, growBy;
        int32_t slots, growByGiven;
        DWORD cbSlot;
    } kCases[] = {
        {QXLIST_ARRAY, 4, 0, 0, 16, 16, 4},
        {QXLIST_ARRAY, 4, 1, 1, 4, 4, 4},
        {QXLIST_ARRAY, 6, 5, 4, 8, 4, 8},
        {QXLIST_ARRAY, 1, 17, 16, 32, 16, 4},
        {kPointers, 99, -5, -1, 16, 16, sizeof(void*)},
        {QXLIST_HEAP_ITEMS, 0, 1, 70000, 66560, 66560, sizeof(void*)},
    };
    for (const auto& c : kCases) {
        const ListPtr list = MakeList(c.options, c.cbItem, c.initial, c.growBy);
        ASSERT_TRUE(list);
        EXPECT_EQ(list->nAllocated, c.slots);
        EXPECT_EQ(list->nGrowBy, c.growByGiven);
        EXPECT_EQ(list->cbItem, c.cbSlot);
        EXPECT_EQ(list->dwOptions, c.options | QXLIST_ANY_THREAD);
    }
}

TEST(List, RefusesImpossibleLists)
{
    tQXLIST* list = nullptr;
    EXPECT_EQ(QxList_CreateExZ(&list, 4, 0, 0, QXLIST_ARRAY | QXLIST_HEAP_ITEMS, 0, 0, 0), E_FAIL);
    EXPECT_EQ(QxList_CreateExZ(&list, 4, 0, 0, QXLIST_IN_PLACE, 0, 0, 0), E_FAIL);
    EXPECT_EQ(QxList_CreateExZ(&list, 4, INT32_MAX, 0, QXLIST_ARRAY, 0, 0, 0), E_OUTOFMEMORY);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(QxList_Destroy(nullptr), S_OK);
}

TEST(List, IsKnownByItsRecord)
{
    const ListPtr list = MakeList(kPointers);
    EXPECT_TRUE(QxList_IsList(list.get(), sizeof(tQXLIST)));
    EXPECT_FALSE(QxList_IsList(list.get(), sizeof(tQXLIST) - 4));
    EXPECT_FALSE(QxList_IsList(nullptr, sizeof(tQXLIST)));
    EXPECT_FALSE(QxList_IsList(reinterpret_cast<tQXLIST*>(UINT_PTR(64)), sizeof(tQXLIST)));
    EXPECT_FALSE(QxList_IsValidIndexSlow(list.get(), 0));
}

TEST(List, InsertsWhereAskedAndAppendsOtherwise)
{
    const ListPtr list = MakeArray({1, 2, 3});
    const Ints more = {8, 9};
    EXPECT_EQ(QxList_InsertList(list.get(), 1, more.data(), 2), S_OK);
    EXPECT_EQ(Values(list.get()), (Ints{1, 8, 9, 2, 3}));
    EXPECT_EQ(QxList_InsertList(list.get(), 1000, more.data(), 1), S_OK);
    EXPECT_EQ(QxList_InsertList(list.get(), -1, more.data(), -2), S_OK);
    EXPECT_EQ(QxList_InsertList(list.get(), 0, more.data(), 0), S_OK);
    EXPECT_EQ(Values(list.get()), (Ints{1, 8, 9, 2, 3, 8, 8, 9}));
    EXPECT_EQ(QxList_InsertList(list.get(), 0, nullptr, -1), E_FAIL);
    EXPECT_EQ(QxList_InsertList(list.get(), 0, nullptr, 1), E_FAIL);
}

TEST(List, GrowsByItsStepAndKeepsItsItems)
{
    const ListPtr list = MakeList(QXLIST_ARRAY, 4, 4, 4);
    Ints expected;
    for (int32_t i = 0; i < 100; ++i) {
        ASSERT_EQ(QxList_InsertList(list.get(), i / 2, &i, 1), S_OK);
        expected.insert(expected.begin() + i / 2, i);
    }
    EXPECT_EQ(Values(list.get()), expected);
    EXPECT_EQ(list->nAllocated, 100);
    EXPECT_EQ(QxList_GrowAllocated(list.get(), 5), S_OK);
    EXPECT_EQ(list->nAllocated, 108);
    EXPECT_EQ(QxList_ShrinkAllocated(list.get(), 5), S_OK);
    EXPECT_EQ(list->nAllocated, 100);
    EXPECT_EQ(QxList_GrowAllocated(list.get(), INT32_MAX), E_OUTOFMEMORY);
    EXPECT_EQ(Values(list.get()), expected);
}

TEST(List, DeletesRanges)
{
    static const struct {
        int32_t index, count;
        HRESULT result;
        Ints left;
    } kCases[] = {
        {1, 2, S_OK, {0, 3, 4}},           {3, 100, S_OK, {0, 1, 2}},       {2, -1, S_OK, {0, 1}},
        {1, 0, S_OK, {0, 1, 2, 3, 4}},     {5, 1, E_FAIL, {0, 1, 2, 3, 4}}, {-1, 1, E_FAIL, {0, 1, 2, 3, 4}},
        {-1, -1, E_FAIL, {0, 1, 2, 3, 4}}, {0, INT32_MAX, S_OK, {}},
    };
    for (const auto& c : kCases) {
        const ListPtr list = MakeArray({0, 1, 2, 3, 4});
        EXPECT_EQ(QxList_DeleteList(list.get(), c.index, c.count, FALSE), c.result);
        EXPECT_EQ(Values(list.get()), c.left) << c.index << ", " << c.count;
    }
    const ListPtr list = MakeArray(Ints(100, 7));
    EXPECT_EQ(QxList_DeleteList(list.get(), 3, -1, TRUE), S_OK);
    EXPECT_LE(list->nAllocated, 3 + list->nGrowBy);
    EXPECT_EQ(Values(list.get()), Ints(3, 7));
}

TEST(List, MovesBlocks)
{
    static const struct {
        int32_t from, to, count;
        HRESULT result;
        Ints order;
    } kCases[] = {
        {0, 2, 2, S_OK, {2, 3, 0, 1, 4}},           {3, 0, 2, S_OK, {3, 4, 0, 1, 2}},
        {3, -7, 1, S_OK, {3, 0, 1, 2, 4}},          {1, 3, -1, S_OK, {0, 3, 4, 1, 2}},
        {-1, 0, 1, E_INVALIDARG, {0, 1, 2, 3, 4}},  {3, 0, 3, E_FAIL, {0, 1, 2, 3, 4}},
        {0, 4, 2, E_FAIL, {0, 1, 2, 3, 4}},         {2, 2, 2, S_OK, {0, 1, 2, 3, 4}},
        {0, 1, INT32_MAX, E_FAIL, {0, 1, 2, 3, 4}},
    };
    for (const auto& c : kCases) {
        const ListPtr list = MakeArray({0, 1, 2, 3, 4});
        EXPECT_EQ(QxList_MoveRange(list.get(), c.from, c.to, c.count), c.result);
        EXPECT_EQ(Values(list.get()), c.order) << c.from << " to " << c.to;
    }
}

TEST(List, MovesBlocksLargerThanTheStackBuffer)
{
    Ints values(1000);
    std::iota(values.begin(), values.end(), 0);
    const ListPtr list = MakeArray(values);
    EXPECT_EQ(QxList_MoveRange(list.get(), 10, 500, 300), S_OK);
    std::rotate(values.begin() + 10, values.begin() + 310, values.begin() + 800);
    EXPECT_EQ(Values(list.get()), values);
}

TEST(List, ForcesTheCountOfArrays)
{
    const ListPtr list = MakeArray({1, 2});
    EXPECT_EQ(QxList_ArrayForceItemCount(list.get(), 40, FALSE), S_OK);
    EXPECT_EQ(list->nCount, 40);
    EXPECT_EQ(Values(list.get())[39], 0);
    EXPECT_EQ(QxList_ArrayForceItemCount(list.get(), 1, TRUE), S_OK);
    EXPECT_EQ(list->nAllocated, 16);
    EXPECT_EQ(QxList_ArrayForceItemCount(list.get(), -1, FALSE), E_FAIL);
    EXPECT_EQ(QxList_ArrayForceItemCount(MakeList(kPointers).get(), 1, FALSE), E_FAIL);
}

class HeapList : public testing::TestWithParam<DWORD> {
protected:
    ListPtr list = MakeList(QXLIST_HEAP_ITEMS | GetParam());
};
INSTANTIATE_TEST_SUITE_P(Storage, HeapList, testing::Values(0, QXLIST_PRIVATE_HEAP, QXLIST_THREAD_SAFE));

TEST_P(HeapList, TakesThePendingItemInOrDropsIt)
{
    void *item = nullptr, *second = nullptr;
    ASSERT_EQ(QxList_AllocItem(list.get(), 12, &item), S_OK);
    EXPECT_EQ(std::memcmp(item, "\0\0\0\0\0\0\0\0\0\0\0", 12), 0);
    EXPECT_EQ(QxList_AllocItem(list.get(), 12, &second), E_FAIL);
    EXPECT_EQ(QxList_InsertList(list.get(), 0, nullptr, -1), S_OK);
    EXPECT_EQ(QxList_FindSpecificItemRange(list.get(), 0, -1, item), 0);
    EXPECT_EQ(QxList_InsertList(list.get(), 0, nullptr, -1), E_FAIL);
    ASSERT_EQ(QxList_AllocItem(list.get(), 12, &item), S_OK);
    EXPECT_EQ(QxList_DeleteList(list.get(), -1, -1, FALSE), S_OK);
    EXPECT_EQ(list->nCount, 1);
    EXPECT_EQ(QxList_AllocItem(MakeArray({}).get(), 4, &item), E_FAIL);
}

TEST_P(HeapList, TakesPointersOnlyWhenToldToOwnThem)
{
    void* const block = std::calloc(1, 4);
    EXPECT_EQ(QxList_InsertList(list.get(), 0, &block, 1), E_FAIL);
    if (GetParam() == QXLIST_PRIVATE_HEAP)
        return std::free(block);
    EXPECT_EQ(QxList_InsertList(list.get(), 0, &block, -1), S_OK);
    EXPECT_EQ(list->nCount, 1);
}

TEST_P(HeapList, KnowsAndChangesTheSizesOfItsItems)
{
    AddHeapItem(list.get(), 7);
    EXPECT_GE(QxList_AllocSize(list.get(), 0), 4);
    const INT_PTR before = QxList_AllocSize(list.get(), -1);
    ASSERT_EQ(QxList_ReAllocItem(list.get(), 0, 5000), S_OK);
    const auto* const item = static_cast<const BYTE*>(*reinterpret_cast<void**>(list->pItems));
    EXPECT_EQ(HeapValues(list.get()), Ints{7});
    EXPECT_TRUE(std::all_of(item + 64, item + 5000, [](BYTE b) { return b == 0; }));
    EXPECT_GE(QxList_AllocSize(list.get(), -1), before + 4900);
    EXPECT_EQ(QxList_ReAllocItem(list.get(), 1, 8), E_FAIL);
    EXPECT_EQ(QxList_AllocSize(list.get(), 1), -1);
    EXPECT_EQ(QxList_AllocSize(MakeList(QXLIST_ARRAY, 6).get(), -1), INT_PTR(sizeof(tQXLIST) + 16 * 8));
}

TEST_P(HeapList, HandsItemsToAnotherListInTheirOrder)
{
    const ListPtr other = MakeList(QXLIST_HEAP_ITEMS);
    for (const int32_t v : {1, 2, 3, 4})
        AddHeapItem(other.get(), v);
    if (GetParam() == QXLIST_PRIVATE_HEAP)
        return;   // items of different allocators do not mix
    AddHeapItem(list.get(), 10);
    AddHeapItem(list.get(), 20);
    EXPECT_EQ(QxList_MoveItemsBetweenHeapLists(list.get(), 1, other.get(), 1, 2), S_OK);
    EXPECT_EQ(HeapValues(list.get()), (Ints{10, 2, 3, 20}));
    EXPECT_EQ(HeapValues(other.get()), (Ints{1, 4}));
    EXPECT_EQ(QxList_MoveItemsBetweenHeapLists(list.get(), 0, other.get(), 1, 2), E_FAIL);
    EXPECT_EQ(QxList_MoveItemsBetweenHeapLists(list.get(), 0, other.get(), 0, 0), S_OK);
    void* pending = nullptr;
    QxList_AllocItem(list.get(), 4, &pending);
    EXPECT_EQ(QxList_MoveItemsBetweenHeapLists(list.get(), 0, other.get(), 0, 1), E_FAIL);
    QxList_DeleteList(list.get(), -1, -1, FALSE);
    EXPECT_EQ(QxList_MoveItemsBetweenHeapLists(list.get(), -1, other.get(), 0, -1), S_OK);
    EXPECT_EQ(HeapValues(list.get()), (Ints{10, 2, 3, 20, 1, 4}));
    EXPECT_EQ(QxList_MoveItemsBetweenHeapLists(list.get(), 0, MakeArray({1}).get(), 0, 1), E_FAIL);
}

TEST(List, LivesInMemoryOfItsOwner)
{
    tQXLIST record, *list = &record;
    ASSERT_EQ(QxList_CreateExZ(&list, 4, 0, 0, QXLIST_ARRAY | QXLIST_IN_PLACE | QXLIST_THREAD_SAFE, 0, 0, 0), S_OK);
    EXPECT_EQ(list, &record);
    EXPECT_EQ(Append(list, {1, 2}), S_OK);
    EXPECT_EQ(QxList_Destroy(list), S_OK);
    EXPECT_EQ(record.dwMagic, 0u);
    EXPECT_EQ(QxList_Destroy(list), E_FAIL);
}

TEST(List, MovesItsHeaderIntoARecord)
{
    tQXLIST record, *list = MakeArray({1, 2}, QXLIST_THREAD_SAFE).release();
    EXPECT_EQ(QxList_ConvertToInPlace(nullptr, &record), E_INVALIDARG);
    EXPECT_EQ(QxList_ConvertToInPlace(&list, nullptr), E_INVALIDARG);
    tQXLIST dead = {}, *noList = &dead;
    EXPECT_EQ(QxList_ConvertToInPlace(&noList, &record), E_INVALIDARG);
    EXPECT_EQ(noList, &dead);
    ASSERT_EQ(QxList_ConvertToInPlace(&list, &record), S_OK);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(Append(&record, {3}), S_OK);
    EXPECT_EQ(Values(&record), (Ints{1, 2, 3}));
    tQXLIST again, *inPlace = &record;
    EXPECT_EQ(QxList_ConvertToInPlace(&inPlace, &again), E_FAIL);
    EXPECT_EQ(QxList_Destroy(&record), S_OK);
}

TEST(List, ServesOnlyItsOwnerOnceTheCheckIsLive)
{
    const ListPtr list = MakeArray({5});
    list->dwOptions &= ~QXLIST_ANY_THREAD;
    std::thread([&] {
        const int32_t value = 6;
        EXPECT_EQ(QxList_InsertList(list.get(), 0, &value, 1), E_FAIL);
        EXPECT_EQ(QxList_DeleteList(list.get(), 0, 1, FALSE), E_FAIL);
        EXPECT_EQ(QxList_FindSpecificItemRange(list.get(), 0, -1, &value), -1);
        EXPECT_EQ(QxList_GetUserData(list.get()), DWORD(-1));
        EXPECT_FALSE(QxList_IsValidIndexSlow(list.get(), 0));
        EXPECT_EQ(QxList_Destroy(list.get()), E_FAIL);
        QxList_SetThreadOwner(list.get(), 0);
        EXPECT_EQ(Append(list.get(), {7}), S_OK);
    }).join();
    QxList_SetThreadOwner(list.get(), 0);
    EXPECT_EQ(Values(list.get()), (Ints{5, 7}));
    EXPECT_EQ(QxList_SetUserData(list.get(), 11), 0u);
    EXPECT_EQ(QxList_SetUserData(list.get(), 12), 11u);
}

TEST(ListSearch, FindsItemsInRanges)
{
    const ListPtr list = MakeArray({3, 5, 3, 7});
    const int32_t three = 3;
    EXPECT_EQ(QxList_FindSpecificItemRange(list.get(), -1, -1, &three), 0);
    EXPECT_EQ(QxList_FindSpecificItemRange(list.get(), 1, 100, &three), 2);
    EXPECT_EQ(QxList_FindSpecificItemRange(list.get(), 1, 1, &three), -1);
    EXPECT_EQ(QxList_FindSpecificItemRange(list.get(), 9, -1, &three), -1);
    const QXLISTMATCH isLarge = [](void* limit, void* item) {
        return *static_cast<int32_t*>(item) > *static_cast<int32_t*>(limit) ? 0 : 1;
    };
    int32_t limit = 4;
    EXPECT_EQ(QxList_FindItemRange(list.get(), 0, -1, &limit, isLarge), 1);
    EXPECT_EQ(QxList_FindItemRange(list.get(), 2, -1, &limit, isLarge), 3);
}

TEST(ListSearch, ComparesWholeSlots)
{
    const ListPtr list = MakeList(QXLIST_ARRAY, 6);
    const char slot[] = "abcdefgh", otherTail[] = "abcdefgX";
    QxList_InsertList(list.get(), 0, slot, 1);
    EXPECT_EQ(QxList_FindSpecificItemRange(list.get(), 0, -1, slot), 0);
    EXPECT_EQ(QxList_FindSpecificItemRange(list.get(), 0, -1, otherTail), -1);
}

TEST(ListSearch, FindsEveryItemAndPlaceInSortedLists)
{
    for (int32_t n = 0; n <= 20; ++n) {
        Ints values(size_t(n), 0);
        for (int32_t i = 0; i < n; ++i)
            values[size_t(i)] = 2 * i;
        const ListPtr list = MakeArray(values);
        for (int32_t key = -1; key <= 2 * n; ++key) {
            const bool present = key >= 0 && key % 2 == 0 && key < 2 * n;
            const auto place = std::ranges::lower_bound(values, key) - values.begin();
            EXPECT_EQ(QxList_FindSortedItemRange(list.get(), &key, 0, -1, CompareInts), present ? key / 2 : -1);
            EXPECT_EQ(QxList_FindSortedInsertIndexRange(list.get(), &key, 0, -1, CompareInts), place)
                << n << ' ' << key;
        }
    }
    const int32_t key = 1;
    EXPECT_EQ(QxList_FindSortedInsertIndexRange(MakeArray({1}).get(), &key, 2, -1, CompareInts), -1);
}

TEST(ListSearch, ProbesTheMiddleOrJustBelow)
{
    const ListPtr list = MakeArray({1, 1, 1, 1, 1, 1, 1});
    const int32_t key = 1;
    EXPECT_EQ(QxList_FindSortedItemRange(list.get(), &key, 0, 7, CompareInts), 3);
    EXPECT_EQ(QxList_FindSortedItemRange(list.get(), &key, 1, 6, CompareInts), 3);
    EXPECT_EQ(QxList_FindSortedItemRange(list.get(), &key, 0, 2, CompareInts), 0);
}

TEST(ListSort, BothSortsSortAnyList)
{
    std::mt19937 random(1);
    for (const auto sort : {QxList_Sort, QxList_HeapSort})
        for (int32_t n : {0, 1, 2, 3, 10, 257}) {
            Ints values(size_t(n), 0);
            for (int32_t& v : values)
                v = int32_t(random() % 100);
            const ListPtr array = MakeArray(values), heap = MakeList(QXLIST_HEAP_ITEMS);
            for (const int32_t v : values)
                AddHeapItem(heap.get(), v);
            EXPECT_EQ(sort(array.get(), 9, CompareInts), S_OK);
            EXPECT_EQ(sort(heap.get(), 9, CompareInts), S_OK);
            std::ranges::sort(values);
            EXPECT_EQ(Values(array.get()), values);
            EXPECT_EQ(HeapValues(heap.get()), values);
            EXPECT_EQ(QxList_GetSortCriteria(array.get()), 9u);
        }
    const ListPtr list = MakeArray({2, 1});
    EXPECT_EQ(QxList_Sort(list.get(), 5, nullptr), S_OK);
    EXPECT_EQ(Values(list.get()), (Ints{2, 1}));
    EXPECT_EQ(QxList_GetSortCriteria(list.get()), 5u);
}

TEST(ListSort, SortsIntoAnotherList)
{
    const ListPtr source = MakeArray({5, 1, 9}), sorted = MakeArray({2, 7});
    EXPECT_EQ(QxList_SortTo(sorted.get(), source.get(), 3, CompareInts), S_OK);
    EXPECT_EQ(Values(sorted.get()), (Ints{1, 2, 5, 7, 9}));
    EXPECT_EQ(Values(source.get()), (Ints{5, 1, 9}));
    EXPECT_EQ(QxList_GetSortCriteria(sorted.get()), 3u);
    EXPECT_EQ(QxList_SortTo(sorted.get(), sorted.get(), 3, CompareInts), E_FAIL);
    EXPECT_EQ(QxList_SortTo(MakeList(kPointers).get(), source.get(), 3, CompareInts), E_FAIL);
}

TEST(ListSort, SortsOwnedItemsIntoPointersToThem)
{
    const ListPtr owner = MakeList(QXLIST_HEAP_ITEMS), sorted = MakeList(kPointers);
    for (const int32_t v : {5, 1, 9})
        AddHeapItem(owner.get(), v);
    EXPECT_EQ(QxList_SortTo(sorted.get(), owner.get(), 3, CompareInts), S_OK);
    EXPECT_EQ(HeapValues(sorted.get()), (Ints{1, 5, 9}));
    EXPECT_EQ(HeapValues(owner.get()), (Ints{5, 1, 9}));
    const ListPtr second = MakeList(QXLIST_HEAP_ITEMS);
    EXPECT_EQ(QxList_SortTo(second.get(), owner.get(), 3, CompareInts), E_FAIL);   // each item has one owner
    EXPECT_EQ(second->nCount, 0);
}

TEST(ListThreads, LoseNothingUnderConcurrentUse)
{
    constexpr int32_t kThreads = 4, kItems = 400;
    const ListPtr list = MakeList(QXLIST_HEAP_ITEMS | QXLIST_PRIVATE_HEAP | QXLIST_THREAD_SAFE, 0, 4, 4);
    const auto match = [](void* wanted, void* item) {
        return *static_cast<int32_t*>(wanted) == *static_cast<int32_t*>(item) ? 0 : 1;
    };
    const auto work = [&](int32_t first) {
        for (int32_t i = 0; i < kItems; ++i) {
            int32_t value = first + i;
            AddHeapItem(list.get(), value, int32_t(value % 7));
            EXPECT_GE(QxList_FindItemRange(list.get(), 0, -1, &value, match), 0);
            if (i % 3 == 0) {
                // Others may move it between the find and the delete, so the two are one step under the list's lock.
                EnterCriticalSection(&list->csLock);
                const int32_t at = QxList_FindItemRange(list.get(), 0, -1, &value, match);
                EXPECT_EQ(QxList_DeleteList(list.get(), at, 1, TRUE), S_OK);
                LeaveCriticalSection(&list->csLock);
            }
        }
    };
    std::vector<std::thread> threads;
    for (int32_t t = 0; t < kThreads; ++t)
        threads.emplace_back(work, t * kItems);
    for (std::thread& thread : threads)
        thread.join();
    Ints expected;
    for (int32_t v = 0; v < kThreads * kItems; ++v)
        if (v % kItems % 3 != 0)
            expected.push_back(v);
    Ints values = HeapValues(list.get());
    std::ranges::sort(values);
    EXPECT_EQ(values, expected);
}

}   // namespace
