// The vector table for processors with AVX-512.
#include "dsp/vtnf_shared.h"
#include "dsp/vtnf_table.h"

#include <stddef.h>

// Made outside, where nothing is compiled for this class.
int32_t CreateFFTAvx512(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType);
int32_t DestroyFFTAvx512(CvtnfFFT_If** ppFFT);

namespace {
constexpr int kLanes = 16;
#include "dsp/simd/lanes.inl"

using VecF = Vec<float, kLanes>;
using VecI = Vec<int32_t, kLanes>;

constexpr uint16_t kAll = 0xffff;   // lanes
constexpr int kRoundAsSet = 4;

inline VecF LargerOf(VecF a, VecF b)
{
    return __builtin_ia32_maxps512_mask(a, b, b, kAll, kRoundAsSet);
}

inline VecF SmallerOf(VecF a, VecF b)
{
    return __builtin_ia32_minps512_mask(a, b, b, kAll, kRoundAsSet);
}

inline bool AnyOf(VecI v)
{
    return __builtin_ia32_cvtd2mask512(v) != 0;
}

#include "dsp/simd/math.inl"
#include "dsp/simd/vtnf.inl"
}   // namespace

constinit const VtnfTable kVtnfAvx512 = {
    VtnfAlloc,
    VtnfFree,
    Zero,
    StdDev,
    Mean,
    MaxIndex,
    MaxEvery,
    Add,
    AddScalar,
    Sub,
    Mul,
    MulScalar,
    Div,
    AddProduct,
    Abs,
    Exp,
    ThresholdLn,
    ThresholdLT,
    ThresholdGT,
    DotProduct,
    PackSpectrum,
    UnpackSpectrum,
    AddComplex,
    MulPacked,
    VtnfNoOp,
    Phase,
    AddProductPacked,
    Magnitude,
    PrincipalArgument,
    CreateFFTAvx512,
    DestroyFFTAvx512,
};
