#include "tests/aplugins/call_counter.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <pthread.h>

namespace {

std::atomic<int64_t> calls{0};

void* Allocate(size_t size, size_t alignment)
{
    ++calls;
    if (alignment <= alignof(std::max_align_t))
        return std::malloc(size);
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

void* AllocateOrThrow(size_t size, size_t alignment)
{
    void* const p = Allocate(size ? size : 1, alignment);
    return p ? p : throw std::bad_alloc();
}

}   // namespace

int64_t HeapAndLockCalls()
{
    return calls;
}

void* operator new(size_t size)
{
    return AllocateOrThrow(size, 1);
}
void* operator new[](size_t size)
{
    return AllocateOrThrow(size, 1);
}
void* operator new(size_t size, std::align_val_t a)
{
    return AllocateOrThrow(size, size_t(a));
}
void* operator new[](size_t size, std::align_val_t a)
{
    return AllocateOrThrow(size, size_t(a));
}
void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size ? size : 1, 1);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size ? size : 1, 1);
}
void operator delete(void* p) noexcept
{
    std::free(p);
}
void operator delete[](void* p) noexcept
{
    std::free(p);
}
void operator delete(void* p, size_t) noexcept
{
    std::free(p);
}
void operator delete[](void* p, size_t) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::align_val_t) noexcept
{
    std::free(p);
}
void operator delete[](void* p, std::align_val_t) noexcept
{
    std::free(p);
}
void operator delete(void* p, size_t, std::align_val_t) noexcept
{
    std::free(p);
}
void operator delete[](void* p, size_t, std::align_val_t) noexcept
{
    std::free(p);
}

// The linker sends the calls of all objects in this program here.
extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t n, size_t size);
void* __real_realloc(void* p, size_t size);
void* __real_aligned_alloc(size_t alignment, size_t size);
int __real_posix_memalign(void** p, size_t alignment, size_t size);
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
void* __wrap_aligned_alloc(size_t alignment, size_t size)
{
    ++calls;
    return __real_aligned_alloc(alignment, size);
}
int __wrap_posix_memalign(void** p, size_t alignment, size_t size)
{
    ++calls;
    return __real_posix_memalign(p, alignment, size);
}
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex)
{
    ++calls;
    return __real_pthread_mutex_lock(mutex);
}
}
