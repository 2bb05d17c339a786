#include "tests/aplugins/call_counter.h"

#include <cstddef>

extern "C" {
void* __real_aligned_alloc(size_t alignment, size_t size);
int __real_posix_memalign(void** p, size_t alignment, size_t size);

void* __wrap_aligned_alloc(size_t alignment, size_t size)
{
    CountCall();
    return __real_aligned_alloc(alignment, size);
}
int __wrap_posix_memalign(void** p, size_t alignment, size_t size)
{
    CountCall();
    return __real_posix_memalign(p, alignment, size);
}
}
