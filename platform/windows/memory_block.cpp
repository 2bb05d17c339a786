#include "platform/memory_block.h"

#include <malloc.h>

size_t MemoryBlockSize(void* p)
{
    return p ? _msize(p) : 0;
}
