// Entries of the vector table that are the same in every class.
#pragma once

#include <cstdint>

// See vtnfAlloc and vtnfFree.
float* VtnfAlloc(int32_t n);
void VtnfFree(float** p);
void VtnfNoOp();
