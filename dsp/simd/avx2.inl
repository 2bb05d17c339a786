// What the vector entries and kernels of the AVX2 class build on: its width, and the operations for which the compiler
// has no vector form of its own. Included inside the unnamed namespace of the class's files.
//   VecF LargerOf(VecF a, VecF b), SmallerOf(VecF a, VecF b): b where either is no number
//   bool AnyOf(VecI v): whether any lane is negative

#include "dsp/simd/lanes.inl"

constexpr int kLanes = 8;

using VecF = Vec<float, kLanes>;
using VecI = Vec<int32_t, kLanes>;
using VecU = Vec<uint32_t, kLanes>;   // for bits, which may wrap

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
