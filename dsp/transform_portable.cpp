// The transform on any processor, in the 128-bit vectors that every common one has.
#include "dsp/transform_kernel.h"

#include <stddef.h>

namespace {
#include "dsp/simd/lanes.inl"
#include "dsp/simd/transform.inl"
}   // namespace

constinit const TransformClass kTransformPortable = {{KernelOf<float, 4>(), KernelOf<float, 1>()},
                                                     {KernelOf<double, 2>(), KernelOf<double, 1>()}};
