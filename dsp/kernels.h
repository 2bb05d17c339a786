// Vector kernels beside the vector table: loops that the engine's profile shows. Chosen by processor class like the
// table; the portable forms define what they compute, and a form of another class is here for its measured gain
// (bench/dsp/kernels_bench.cpp). Counts are at least 0 unless stated, arrays may stand at any address, and operands
// overlap only where that is said.
#pragma once

#include "dsp/kernels_table.h"

#include <atomic>

// The kernels in force; the portable ones before the first vtnfInit.
extern constinit std::atomic<const VectorKernels*> kernelsInForce;
inline const VectorKernels& Kernels()
{
    return *kernelsInForce.load(std::memory_order_acquire);
}
