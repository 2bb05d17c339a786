// Counts heap and lock calls of this program, from operator new, the C allocators and pthread_mutex_lock.
#pragma once

#include <cstdint>

int64_t HeapAndLockCalls();
