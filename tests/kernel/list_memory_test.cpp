// Every allocation of every operation fails in turn; the list must come out as it was.

#include "kernel/list_memory.h"
#include "tests/kernel/lists.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

int g_allocationsLeft;

bool Spend()
{
    return g_allocationsLeft-- > 0;
}

constexpr ListMemory kScarce = {
    [](size_t cb) { return Spend() ? kPlatformListMemory.allocHeader(cb) : nullptr; },
    [](size_t cb) { return Spend() ? kPlatformListMemory.allocSlots(cb) : nullptr; },
    [] { return Spend() ? kPlatformListMemory.createHeap() : nullptr; },
    [](HANDLE heap, DWORD flags, size_t cb) {
        return Spend() ? kPlatformListMemory.allocItem(heap, flags, cb) : nullptr;
    },
    [](HANDLE heap, DWORD flags, void* p, size_t cb) {
        return Spend() ? kPlatformListMemory.reallocItem(heap, flags, p, cb) : nullptr;
    },
};

class Scarcity {
public:
    explicit Scarcity(int allocations)
    {
        g_allocationsLeft = allocations;
        g_pListMemory = &kScarce;
    }
    ~Scarcity() { g_pListMemory = &kPlatformListMemory; }
};

struct State {
    int32_t count, allocated;
    std::vector<BYTE> slots;
    void* pending;
    DWORD criteria;
    bool operator==(const State&) const = default;
};

State StateOf(const tQXLIST& list)
{
    return {list.nCount,
            list.nAllocated,
            {list.pItems, list.pItems + size_t(list.nCount) * list.cbItem},
            list.pPending,
            list.dwSortCriteria};
}

// Runs the operation with 0, 1, 2 ... allocations granted until it succeeds; gives how many failed.
int FailEachAllocation(const std::function<ListPtr()>& make, const std::function<HRESULT(tQXLIST*)>& operate)
{
    for (int granted = 0;; ++granted) {
        const ListPtr list = make();
        const State before = StateOf(*list);
        const Scarcity scarcity(granted);
        const HRESULT hr = operate(list.get());
        if (hr == S_OK)
            return granted;
        EXPECT_EQ(hr, E_OUTOFMEMORY);
        EXPECT_TRUE(StateOf(*list) == before) << "after " << granted << " allocations";
        if (granted > 8)
            return granted;
    }
}

ListPtr FullArray()
{
    return MakeArray(std::vector<int32_t>(16, 3));
}

ListPtr FullHeapList(DWORD options)
{
    ListPtr list = MakeList(QXLIST_HEAP_ITEMS | options);
    for (int32_t i = 0; i < 16; ++i)
        AddHeapItem(list.get(), i);
    return list;
}

TEST(ListOutOfMemory, CreationGivesNoList)
{
    static constexpr struct {
        DWORD options;
        int allocations;
    } kCases[] = {{QXLIST_ARRAY | QXLIST_THREAD_SAFE, 2}, {QXLIST_HEAP_ITEMS | QXLIST_PRIVATE_HEAP, 3}};
    for (const auto& c : kCases)
        for (int granted = 0; granted <= c.allocations; ++granted) {
            const Scarcity scarcity(granted);
            tQXLIST* list = nullptr;
            const HRESULT hr = QxList_CreateExZ(&list, 4, 0, 0, c.options, 0, 0, 0);
            EXPECT_EQ(hr, granted < c.allocations ? E_OUTOFMEMORY : S_OK);
            EXPECT_EQ(list != nullptr, granted == c.allocations);
            QxList_Destroy(list);
        }
}

TEST(ListOutOfMemory, LeavesTheListAsItWas)
{
    static const std::vector<int32_t> kMany(20, 9);
    const auto append = [](tQXLIST* list) { return Append(list, kMany); };
    const auto force = [](tQXLIST* list) { return QxList_ArrayForceItemCount(list, 17, FALSE); };
    const auto grow = [](tQXLIST* list) { return QxList_GrowAllocated(list, 0); };
    EXPECT_EQ(FailEachAllocation(FullArray, append), 1);
    EXPECT_EQ(FailEachAllocation(FullArray, force), 1);
    EXPECT_EQ(FailEachAllocation(FullArray, grow), 1);
    const ListPtr source = FullArray();
    EXPECT_EQ(
        FailEachAllocation(FullArray, [&](tQXLIST* list) { return QxList_SortTo(list, source.get(), 6, CompareInts); }),
        1);
    const auto bigMove = [](tQXLIST* list) { return QxList_MoveRange(list, 0, 200, 150); };
    EXPECT_EQ(FailEachAllocation([] { return MakeArray(std::vector<int32_t>(400, 1)); }, bigMove), 1);
}

TEST(ListOutOfMemory, LeavesHeapListsAsTheyWere)
{
    for (const DWORD options : {DWORD(0), QXLIST_PRIVATE_HEAP}) {
        const auto make = [options] { return FullHeapList(options); };
        const auto add = [](tQXLIST* list) {
            int32_t value = 5, place = 99;
            const HRESULT hr = QxList_AllocAndInsertItem(list, &value, sizeof value, 3, &place);
            EXPECT_EQ(place, hr == S_OK ? 3 : -1);
            return hr;
        };
        EXPECT_EQ(FailEachAllocation(make, add), 2);
        EXPECT_EQ(FailEachAllocation(make, [](tQXLIST* list) { return QxList_ReAllocItem(list, 2, 4000); }), 1);
    }
}

TEST(ListOutOfMemory, APendingItemStaysPendingAndBothListsKeepTheirItems)
{
    const ListPtr list = FullHeapList(0), other = FullHeapList(0);
    void* item = nullptr;
    ASSERT_EQ(QxList_AllocItem(list.get(), 4, &item), S_OK);
    {
        const Scarcity scarcity(0);
        EXPECT_EQ(QxList_InsertList(list.get(), 0, nullptr, -1), E_OUTOFMEMORY);
        EXPECT_EQ(QxList_MoveItemsBetweenHeapLists(other.get(), 0, list.get(), 0, 4), E_OUTOFMEMORY);
    }
    EXPECT_EQ(list->pPending, item);
    EXPECT_EQ(list->nCount, 16);
    EXPECT_EQ(other->nCount, 16);
    EXPECT_EQ(QxList_InsertList(list.get(), 0, nullptr, -1), S_OK);
}

}   // namespace
