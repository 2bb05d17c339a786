// The vector table for processors with AVX-512.
#include "dsp/vtnf_shared.h"
#include "dsp/vtnf_table.h"

#include <stddef.h>

// Made outside, where nothing is compiled for this class.
int32_t CreateFFTAvx512(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType);
int32_t DestroyFFTAvx512(CvtnfFFT_If** ppFFT);

namespace {
#include "dsp/simd/avx512.inl"
#include "dsp/simd/math.inl"
#include "dsp/simd/packed.inl"
#include "dsp/simd/vtnf.inl"
}   // namespace

constinit const VtnfTable kVtnfAvx512 = {
#include "dsp/vtnf_entries.inl"
    CreateFFTAvx512,
    DestroyFFTAvx512,
};
