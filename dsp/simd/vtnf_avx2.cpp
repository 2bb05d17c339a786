// The vector table for processors with AVX2 and FMA.
#include "dsp/vtnf_shared.h"
#include "dsp/vtnf_table.h"

#include <stddef.h>

// Made outside, where nothing is compiled for this class.
int32_t CreateFFTAvx2(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType);
int32_t DestroyFFTAvx2(CvtnfFFT_If** ppFFT);

namespace {
constexpr int kLanes = 8;
#include "dsp/simd/lanes.inl"

using VecF = Vec<float, kLanes>;
using VecI = Vec<int32_t, kLanes>;

inline VecF LargerOf(VecF a, VecF b)
{
    return __builtin_ia32_maxps256(a, b);
}

inline VecF SmallerOf(VecF a, VecF b)
{
    return __builtin_ia32_minps256(a, b);
}

inline bool AnyOf(VecI v)
{
    return __builtin_ia32_movmskps256(reinterpret_cast<VecF>(v)) != 0;
}

#include "dsp/simd/math.inl"
#include "dsp/simd/vtnf.inl"
}   // namespace

constinit const VtnfTable kVtnfAvx2 = {
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
    CreateFFTAvx2,
    DestroyFFTAvx2,
};
