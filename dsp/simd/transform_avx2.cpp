// The transform for processors with AVX2 and FMA.
#include "dsp/transform_kernel.h"

#include <stddef.h>

namespace {
#include "dsp/simd/lanes.inl"
#include "dsp/simd/transform.inl"
}   // namespace

constinit const TransformClass kTransformAvx2 = {{KernelOf<float, 8>(), KernelOf<float, 4>(), KernelOf<float, 1>()},
                                                 {KernelOf<double, 4>(), KernelOf<double, 2>(), KernelOf<double, 1>()}};
