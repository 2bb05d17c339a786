#include "platform/memory_block.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

namespace {

TEST(GlobalHeap, FixedBlockIsItsOwnHandleAndKeepsItsContentWhenItGrows)
{
    BYTE* block = static_cast<BYTE*>(GlobalAlloc(GPTR, 100));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(GlobalLock(block), block);
    EXPECT_EQ(GlobalHandle(block), block);
    EXPECT_GE(GlobalSize(block), 100u);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(block[i], 0) << i;
    std::memset(block, 7, 100);
    block = static_cast<BYTE*>(GlobalReAlloc(block, 100000, GMEM_MOVEABLE | GMEM_ZEROINIT));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block[99], 7);
    EXPECT_EQ(block[99999], 0);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalHeap, MovableBlockCountsItsLocks)
{
    const HGLOBAL handle = GlobalAlloc(GHND, 16);
    void* const first = GlobalLock(handle);
    ASSERT_NE(first, nullptr);
    EXPECT_NE(first, handle);
    EXPECT_EQ(GlobalLock(handle), first);
    EXPECT_EQ(GlobalFlags(handle) & GMEM_LOCKCOUNT, 2u);
    EXPECT_EQ(GlobalHandle(first), handle);
    EXPECT_TRUE(GlobalUnlock(handle));
    EXPECT_FALSE(GlobalUnlock(handle));
    EXPECT_EQ(GetLastError(), DWORD(NO_ERROR));
    EXPECT_FALSE(GlobalUnlock(handle));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_NOT_LOCKED));
    std::memcpy(GlobalLock(handle), "abc", 4);
    GlobalUnlock(handle);
    ASSERT_EQ(GlobalReAlloc(handle, 1 << 20, 0), handle);   // the handle stays, whatever the block does
    EXPECT_STREQ(static_cast<const char*>(GlobalLock(handle)), "abc");
    GlobalUnlock(handle);
    EXPECT_EQ(GlobalFree(handle), nullptr);
    EXPECT_EQ(GlobalFree(nullptr), nullptr);
}

TEST(GlobalHeap, RefusesMoreThanThereIsAndKeepsTheOldBlock)
{
    BYTE* const block = static_cast<BYTE*>(GlobalAlloc(GPTR, 8));
    block[0] = 5;
    EXPECT_EQ(GlobalAlloc(GPTR, SIZE_T(-1) / 4), nullptr);
    EXPECT_EQ(GlobalReAlloc(block, SIZE_T(-1) / 4, GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(block[0], 5);
    GlobalFree(block);
}

TEST(PrivateHeap, GivesZeroedBlocksThatGrowAndTellTheirSize)
{
    const HANDLE heap = HeapCreate(0, 0, 0);
    ASSERT_NE(heap, nullptr);
    BYTE* block = static_cast<BYTE*>(HeapAlloc(heap, HEAP_ZERO_MEMORY, 33));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(HeapSize(heap, 0, block), 33u);
    EXPECT_EQ(reinterpret_cast<UINT_PTR>(block) % 16, 0u);
    block[32] = 9;
    block = static_cast<BYTE*>(HeapReAlloc(heap, HEAP_ZERO_MEMORY, block, 5000));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block[32], 9);
    EXPECT_EQ(block[33], 0);
    EXPECT_EQ(block[4999], 0);
    EXPECT_EQ(HeapSize(heap, 0, block), 5000u);
    EXPECT_EQ(HeapReAlloc(heap, 0, block, SIZE_T(-1) / 4), nullptr);
    EXPECT_EQ(HeapSize(heap, 0, block), 5000u);
    EXPECT_EQ(HeapReAlloc(heap, 0, nullptr, 8), nullptr);
    EXPECT_TRUE(HeapFree(heap, 0, block));
    EXPECT_TRUE(HeapFree(heap, 0, nullptr));
    HeapAlloc(heap, 0, 1000);   // goes with the heap
    EXPECT_TRUE(HeapDestroy(heap));
}

TEST(PrivateHeap, ServesSeveralThreads)
{
    const HANDLE heap = HeapCreate(0, 0, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([heap] {
            for (int i = 0; i < 2000; ++i)
                HeapFree(heap, 0, HeapAlloc(heap, 0, SIZE_T(i % 100 + 1)));
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_TRUE(HeapDestroy(heap));
    void* const block = HeapAlloc(GetProcessHeap(), 0, 10);
    EXPECT_EQ(HeapSize(GetProcessHeap(), 0, block), 10u);
    EXPECT_TRUE(HeapFree(GetProcessHeap(), 0, block));
}

TEST(RuntimeHeap, TellsAtLeastTheSizeThatWasAskedFor)
{
    void* const block = std::malloc(77);
    EXPECT_GE(MemoryBlockSize(block), 77u);
    EXPECT_EQ(MemoryBlockSize(nullptr), 0u);
    std::free(block);
}

TEST(Memory, TellsWhatCanBeRead)
{
    const std::vector<char> block(100000);
    EXPECT_FALSE(IsBadReadPtr(block.data(), block.size()));
    EXPECT_FALSE(IsBadReadPtr(nullptr, 0));
    EXPECT_TRUE(IsBadReadPtr(nullptr, 1));
    EXPECT_TRUE(IsBadReadPtr(reinterpret_cast<const void*>(UINT_PTR(16)), 4));
}

TEST(Interlocked, GivesNewOrOldValueAsPromised)
{
    volatile LONG value = 5;
    EXPECT_EQ(InterlockedIncrement(&value), 6);
    EXPECT_EQ(InterlockedDecrement(&value), 5);
    EXPECT_EQ(InterlockedExchange(&value, 9), 5);
    EXPECT_EQ(InterlockedExchangeAdd(&value, -4), 9);
    EXPECT_EQ(InterlockedCompareExchange(&value, 1, 4), 5);   // not 4: it stays
    EXPECT_EQ(InterlockedCompareExchange(&value, 1, 5), 5);
    EXPECT_EQ(value, 1);
    int a = 0, b = 0;
    PVOID volatile pointer = &a;
    EXPECT_EQ(InterlockedExchangePointer(&pointer, &b), &a);
    EXPECT_EQ(InterlockedCompareExchangePointer(&pointer, &a, &b), &b);
    EXPECT_EQ(pointer, &a);
}

TEST(CriticalSection, IsRecursiveAndKeepsOthersOut)
{
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    EXPECT_TRUE(TryEnterCriticalSection(&section));
    BOOL entered = TRUE;
    std::thread([&] { entered = TryEnterCriticalSection(&section); }).join();
    EXPECT_FALSE(entered);
    LeaveCriticalSection(&section);
    LeaveCriticalSection(&section);
    int count = 0;
    const auto add = [&] {
        for (int i = 0; i < 10000; ++i) {
            EnterCriticalSection(&section);
            ++count;
            LeaveCriticalSection(&section);
        }
    };
    std::thread other(add);
    add();
    other.join();
    EXPECT_EQ(count, 20000);
    DeleteCriticalSection(&section);
}

TEST(LastError, BelongsToItsThread)
{
    DWORD other = 42, otherId = 0;
    std::atomic<int> turn = 0;
    std::thread thread([&] {
        while (turn != 1)
            Sleep(0);
        other = GetLastError();
        otherId = GetCurrentThreadId();
        SetLastError(7);
        turn = 2;
    });
    SetLastError(42);
    turn = 1;
    while (turn != 2) {   // no call of the system in between, which might set it
    }
    const DWORD own = GetLastError();
    thread.join();
    EXPECT_EQ(own, 42u);
    EXPECT_NE(other, 42u);
    EXPECT_NE(otherId, GetCurrentThreadId());
    EXPECT_NE(GetCurrentProcessId(), 0u);
}

TEST(Results, TurnIntoEachOther)
{
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_SUCCESS), S_OK);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER), E_INVALIDARG);
    EXPECT_EQ(HRESULT_FROM_WIN32(DWORD(E_FAIL)), E_FAIL);
    EXPECT_TRUE(SUCCEEDED(S_FALSE));
    EXPECT_TRUE(FAILED(E_OUTOFMEMORY));
}

}   // namespace
