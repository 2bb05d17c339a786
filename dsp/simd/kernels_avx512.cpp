// The vector kernels for processors with AVX-512.
#include "dsp/kernels_table.h"

#include <stddef.h>

namespace {
#include "dsp/simd/avx512.inl"
#include "dsp/simd/math.inl"
#include "dsp/simd/packed.inl"
#include "dsp/simd/vector_kernels.inl"
#include "dsp/simd/peak_kernels.inl"
#include "dsp/sample_kernels.inl"
}   // namespace

constinit const VectorKernels kKernelsAvx512 = {
#include "dsp/kernels_entries.inl"
};
