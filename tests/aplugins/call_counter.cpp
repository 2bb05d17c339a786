#include "tests/aplugins/call_counter.h"

#include <atomic>
#include <cstdlib>
#include <pthread.h>

namespace {

std::atomic<int64_t> calls{0};

}   // namespace

void CountCall()
{
    ++calls;
}

int64_t HeapAndLockCalls()
{
    return calls;
}

// The linker sends the calls of all objects in this program here.
extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t n, size_t size);
void* __real_realloc(void* p, size_t size);
int __real_pthread_mutex_lock(pthread_mutex_t* mutex);

void* __wrap_malloc(size_t size)
{
    ++calls;
    return __real_malloc(size);
}
void* __wrap_calloc(size_t n, size_t size)
{
    ++calls;
    return __real_calloc(n, size);
}
void* __wrap_realloc(void* p, size_t size)
{
    ++calls;
    return __real_realloc(p, size);
}
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex)
{
    ++calls;
    return __real_pthread_mutex_lock(mutex);
}
}
