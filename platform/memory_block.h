// Blocks of the runtime's heap.
#pragma once

#include <cstddef>

// Bytes that a block from malloc, calloc or realloc can hold: at least what was asked for. 0 for null.
size_t MemoryBlockSize(void* p);
