#include "tests/allocations.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int64_t> count = 0;
thread_local int64_t successesLeft = -1;   // of allocations before the one that fails; negative: none fails

void* AllocateOrNull(size_t size, size_t alignment) noexcept
{
    ++count;
    if (successesLeft >= 0 && --successesLeft < 0)
        return nullptr;
    const size_t rounded = (size + alignment - 1) / alignment * alignment;
    return std::aligned_alloc(alignment, rounded ? rounded : alignment);
}

void* Allocate(size_t size, size_t alignment)
{
    if (void* p = AllocateOrNull(size, alignment))
        return p;
    throw std::bad_alloc();
}

}   // namespace

int64_t AllocationCount()
{
    return count;
}

FailingAllocation::FailingAllocation(int64_t successes)
{
    successesLeft = successes;
}

FailingAllocation::~FailingAllocation()
{
    successesLeft = -1;
}

bool FailingAllocation::HasFailed() const
{
    return successesLeft < 0;
}

// All forms, since a sanitizer would supply its own for those left out, and the pairs would not match.
void* operator new(size_t size)
{
    return Allocate(size, alignof(std::max_align_t));
}
void* operator new(size_t size, std::align_val_t alignment)
{
    return Allocate(size, size_t(alignment));
}
void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    return AllocateOrNull(size, alignof(std::max_align_t));
}
void* operator new(size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return AllocateOrNull(size, size_t(alignment));
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
void operator delete(void* p, const std::nothrow_t&) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept
{
    std::free(p);
}
void* operator new[](size_t size)
{
    return Allocate(size, alignof(std::max_align_t));
}
void* operator new[](size_t size, std::align_val_t alignment)
{
    return Allocate(size, size_t(alignment));
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept
{
    return AllocateOrNull(size, alignof(std::max_align_t));
}
void* operator new[](size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return AllocateOrNull(size, size_t(alignment));
}
void operator delete[](void* p) noexcept
{
    std::free(p);
}
void operator delete[](void* p, size_t) noexcept
{
    std::free(p);
}
void operator delete[](void* p, std::align_val_t) noexcept
{
    std::free(p);
}
void operator delete[](void* p, size_t, std::align_val_t) noexcept
{
    std::free(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept
{
    std::free(p);
}
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept
{
    std::free(p);
}
