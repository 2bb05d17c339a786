#include "tests/allocations.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int64_t> count = 0;

void* Allocate(size_t size, size_t alignment)
{
    ++count;
    const size_t rounded = (size + alignment - 1) / alignment * alignment;
    if (void* p = std::aligned_alloc(alignment, rounded ? rounded : alignment))
        return p;
    throw std::bad_alloc();
}

}   // namespace

int64_t AllocationCount()
{
    return count;
}

// The array and nothrow forms come down to these.
void* operator new(size_t size)
{
    return Allocate(size, alignof(std::max_align_t));
}
void* operator new(size_t size, std::align_val_t alignment)
{
    return Allocate(size, size_t(alignment));
}
void operator delete(void* p) noexcept
{
    std::free(p);
}
void operator delete(void* p, size_t) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::align_val_t) noexcept
{
    std::free(p);
}
void operator delete(void* p, size_t, std::align_val_t) noexcept
{
    std::free(p);
}
