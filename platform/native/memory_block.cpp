#include "platform/memory_block.h"

#include <malloc.h>

size_t MemoryBlockSize(void* p)
{
    return malloc_usable_size(p);
}
