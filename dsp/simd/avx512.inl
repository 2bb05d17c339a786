// What the vector entries and kernels of the AVX-512 class build on: its width, and the operations for which the compiler
// has no vector form of its own. Included inside the unnamed namespace of the class's files.
//   VecF LargerOf(VecF a, VecF b), SmallerOf(VecF a, VecF b): b where either is no number
//   uint32_t BitsOf(VecI v): bit l is set where lane l is negative, as comparisons are where they hold
//   bool AnyOf(VecI v): whether any lane is negative

#include "dsp/simd/lanes.inl"

constexpr int kLanes = 16;

using VecF = Vec<float, kLanes>;
using VecI = Vec<int32_t, kLanes>;
using VecU = Vec<uint32_t, kLanes>;   // for bits, which may wrap

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

inline uint32_t BitsOf(VecI v)
{
    return __builtin_ia32_cvtd2mask512(v);
}

inline bool AnyOf(VecI v)
{
    return BitsOf(v) != 0;
}
