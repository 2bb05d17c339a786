// Counts what the program under test takes from the free store, so that a test can show that a streaming call takes
// nothing. An executable that asks lists tests/allocations.cpp among its sources.
#pragma once

#include <cstdint>

// Calls of operator new in this process so far, from any thread.
int64_t AllocationCount();
