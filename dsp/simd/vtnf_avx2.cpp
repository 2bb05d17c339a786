// The vector table for processors with AVX2 and FMA.
#include "dsp/vtnf_shared.h"
#include "dsp/vtnf_table.h"

#include <stddef.h>

// Made outside, where nothing is compiled for this class.
int32_t CreateFFTAvx2(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType);
int32_t DestroyFFTAvx2(CvtnfFFT_If** ppFFT);

namespace {
#include "dsp/simd/avx2.inl"
#include "dsp/simd/math.inl"
#include "dsp/simd/packed.inl"
#include "dsp/simd/vtnf.inl"
}   // namespace

constinit const VtnfTable kVtnfAvx2 = {
#include "dsp/vtnf_entries.inl"
    CreateFFTAvx2,
    DestroyFFTAvx2,
};
