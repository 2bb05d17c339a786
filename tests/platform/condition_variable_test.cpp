#include <windows.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

class ConditionVariable : public testing::Test {
protected:
    ConditionVariable()
    {
        InitializeCriticalSection(&section);
        InitializeConditionVariable(&changed);
    }
    ~ConditionVariable() override { DeleteCriticalSection(&section); }

    CRITICAL_SECTION section;
    CONDITION_VARIABLE changed;
};

TEST_F(ConditionVariable, EndsAWaitWhenTheTimeIsOver)
{
    EnterCriticalSection(&section);
    BOOL woken = TRUE;
    for (int i = 0; woken && i < 100; ++i)   // a wake without cause is possible
        woken = SleepConditionVariableCS(&changed, &section, 1);
    EXPECT_FALSE(woken);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_TIMEOUT));
    BOOL others = TRUE;   // the section belongs to the waiter again
    std::thread([&] { others = TryEnterCriticalSection(&section); }).join();
    EXPECT_FALSE(others);
    LeaveCriticalSection(&section);
}

// An item wakes one of the consumers that wait, the end all of them.
TEST_F(ConditionVariable, WakesOneOrAll)
{
    constexpr int kConsumers = 3, kItems = 50;
    constexpr DWORD kPatience = 20'000;   // ms: a lost wake fails the test instead of hanging it
    int items = 0, taken = 0, waiting = 0;
    bool ended = false, lost = false;
    const auto consume = [&] {
        EnterCriticalSection(&section);
        while (!lost && (items > 0 || !ended)) {
            if (items > 0) {
                --items, ++taken;
                continue;
            }
            ++waiting;
            lost = !SleepConditionVariableCS(&changed, &section, kPatience) || lost;
            --waiting;
        }
        LeaveCriticalSection(&section);
    };
    std::vector<std::thread> consumers;
    for (int i = 0; i < kConsumers; ++i)
        consumers.emplace_back(consume);
    const auto whenAllWait = [&](const auto& change) {
        for (bool idle = false; !idle; Sleep(0)) {
            EnterCriticalSection(&section);
            idle = lost || (items == 0 && waiting == kConsumers);
            if (idle)
                change();
            LeaveCriticalSection(&section);
        }
    };
    for (int i = 0; i < kItems; ++i) {
        whenAllWait([&] { ++items; });
        WakeConditionVariable(&changed);
    }
    whenAllWait([&] { ended = true; });
    WakeAllConditionVariable(&changed);
    for (std::thread& consumer : consumers)
        consumer.join();
    EXPECT_FALSE(lost);
    EXPECT_EQ(taken, kItems);
}

}   // namespace
