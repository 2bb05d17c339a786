#include "tests/allocations.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
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
    // The block's own address stands in front of what is given out; not every runtime aligns, and frees alike.
    void* const block = std::malloc(size + alignment + sizeof(void*));
    if (!block)
        return nullptr;
    const auto first = reinterpret_cast<uintptr_t>(block) + sizeof(void*);
    void** const given = reinterpret_cast<void**>((first + alignment - 1) / alignment * alignment);
    given[-1] = block;
    return given;
}

void Free(void* p) noexcept
{
    if (p)
        std::free(static_cast<void**>(p)[-1]);
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
    Free(p);
}
void operator delete(void* p, size_t) noexcept
{
    Free(p);
}
void operator delete(void* p, std::align_val_t) noexcept
{
    Free(p);
}
void operator delete(void* p, size_t, std::align_val_t) noexcept
{
    Free(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept
{
    Free(p);
}
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept
{
    Free(p);
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
    Free(p);
}
void operator delete[](void* p, size_t) noexcept
{
    Free(p);
}
void operator delete[](void* p, std::align_val_t) noexcept
{
    Free(p);
}
void operator delete[](void* p, size_t, std::align_val_t) noexcept
{
    Free(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept
{
    Free(p);
}
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept
{
    Free(p);
}
