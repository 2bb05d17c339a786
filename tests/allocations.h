// Counts what the program under test takes from the free store, so that a test can show that a streaming call takes
// nothing; and lets one allocation fail. An executable that asks lists tests/allocations.cpp among its sources.
#pragma once

#include <cstdint>

// Calls of operator new in this process so far, from any thread.
int64_t AllocationCount();

// While it lives, the allocation of this thread that follows `successes` others fails, once.
class FailingAllocation {
public:
    explicit FailingAllocation(int64_t successes);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    bool HasFailed() const;
};
