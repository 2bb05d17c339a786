// The transform for processors with AVX-512 (foundation, vector lengths, doublewords and quadwords). The vectors stay at
// 256 bits: what the class adds is 32 registers, so a radix-8 step spills nothing. With 512 bits the last pass spills
// again and takes longer than it saves.
#include "dsp/transform_kernel.h"

#include <stddef.h>

namespace {
#include "dsp/simd/lanes.inl"
#include "dsp/simd/transform.inl"
}   // namespace

constinit const TransformClass kTransformAvx512 = {
    {KernelOf<float, 8>(), KernelOf<float, 4>(), KernelOf<float, 1>()},
    {KernelOf<double, 4>(), KernelOf<double, 2>(), KernelOf<double, 1>()}};
