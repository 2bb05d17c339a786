// The vector table: all array arithmetic of the spectral code, its buffers and its transforms go through these entries.
// The table is chosen once per process by vtnfInit; callers never ask which processor they run on. Counts are in
// 32-bit floats (in bins where so named), at least 1 unless stated; the first operand of an in-place entry is source and
// destination. A packed spectrum of N floats holds Re X[0], Re X[N/2], then Re, Im of bins 1 .. N/2-1.
#pragma once

#include "dsp/vtnf_table.h"

#include <atomic>
#include <cstdint>

// Chooses the table by the processor (see dsp/processor_class.h); safe from any thread, and later calls return at once.
// The constructors of the spectral classes call it first.
void vtnfInit();

// Vector level of the processor: -1 before the first vtnfInit, then 1 base, 2 SSE, 3 SSE2, 4 SSE3. Callers choose buffer
// layouts by it, never arithmetic; so it does not follow a class that was asked for, and other architectures answer 4.
int32_t vtnfGetLevel();

// The table in force; the portable one before the first vtnfInit.
extern constinit std::atomic<const VtnfTable*> vtnfTableInForce;
inline const VtnfTable& vtnfGetTable()
{
    return *vtnfTableInForce.load(std::memory_order_acquire);
}

// The entries in use, called through the table in force. ------------------------------------------------------------

// A buffer of n floats, uninitialised, aligned to 64 bytes; null when n is 0 or negative, or memory is out. The caller
// frees it with vtnfFree.
inline float* vtnfAlloc(int32_t n)
{
    return vtnfGetTable().Alloc(n);
}
// Frees *p when it is not null, and nulls it.
inline void vtnfFree(float** p)
{
    vtnfGetTable().Free(p);
}
inline void vtnfZero(float* v, int32_t n)
{
    vtnfGetTable().Zero(v, n);
}
// The largest element and its index, the first one on a tie.
inline void vtnfMaxIndex(const float* v, float* pMax, int32_t* pIndex, int32_t n)
{
    vtnfGetTable().MaxIndex(v, pMax, pIndex, n);
}
// dst[i] = max(dst[i], src[i])
inline void vtnfMaxEvery(float* dst, const float* src, int32_t n)
{
    vtnfGetTable().MaxEvery(dst, src, n);
}
inline void vtnfAdd(float* dst, const float* src, int32_t n)
{
    vtnfGetTable().Add(dst, src, n);
}
inline void vtnfSub(float* dst, const float* src, int32_t n)
{
    vtnfGetTable().Sub(dst, src, n);
}
inline void vtnfMul(float* dst, const float* src, int32_t n)
{
    vtnfGetTable().Mul(dst, src, n);
}
inline void vtnfMulScalar(float* dst, float c, int32_t n)
{
    vtnfGetTable().MulScalar(dst, c, n);
}
inline void vtnfDiv(float* dst, const float* src, int32_t n)
{
    vtnfGetTable().Div(dst, src, n);
}
// v[i] = e^v[i], to 1e-7 of the value; denormals, 0 and infinity where the result leaves the normal numbers.
inline void vtnfExp(float* v, int32_t n)
{
    vtnfGetTable().Exp(v, n);
}
// Where v[i] < level, v[i] = value; then v[i] = ln(v[i]), to 1.3e-7 of the value.
inline void vtnfThresholdLn(float* v, float level, float value, int32_t n)
{
    vtnfGetTable().ThresholdLn(v, level, value, n);
}
// Where v[i] < level, v[i] = value.
inline void vtnfThresholdLT(float* v, float level, float value, int32_t n)
{
    vtnfGetTable().ThresholdLT(v, level, value, n);
}
// dst[k] = atan2(im[k], re[k]) of a packed spectrum of finite values, k from 0 to bins-1, bin 0 with imaginary part 0; to
// 3e-7 and to 2e-7 of the angle. packed[1] stays as it is unless dst is packed.
inline void vtnfPhase(float* dst, const float* packed, int32_t bins)
{
    vtnfGetTable().Phase(dst, packed, bins);
}
// dst[k] = sqrt(re^2 + im^2), bin 0 as abs(packed[0]). packed[1] stays as it is unless dst is packed.
inline void vtnfMagnitude(float* dst, const float* packed, int32_t bins)
{
    vtnfGetTable().Magnitude(dst, packed, bins);
}
// Wraps phases into (-pi, pi]. The portable entry leaves element 0 as it is, the others wrap it too; callers do not read
// it. Phases stay below 2^31 turns.
inline void vtnfPrincipalArgument(float* dst, const float* src, int32_t n)
{
    vtnfGetTable().PrincipalArgument(dst, src, n);
}
// A transform of the class that fits the table; see dsp/vtnf_fft.h. *ppOut is null on failure.
inline int32_t vtnfCreateFFT(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType)
{
    return vtnfGetTable().CreateFFT(ppOut, windowLength, zeroPadFactor, windowType);
}
// Destroys and nulls; an object of another table's class gives kInvalidArgument.
inline int32_t vtnfDestroyFFT(CvtnfFFT_If** ppFFT)
{
    return vtnfGetTable().DestroyFFT(ppFFT);
}
