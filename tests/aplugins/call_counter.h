// Counts what the code under test asks of the heap and of locks: the C allocators, operator new by way of
// tests/allocations.cpp, and pthread_mutex_lock.
#pragma once

#include <cstdint>

int64_t HeapAndLockCalls();
void CountCall();   // for further calls of that kind
