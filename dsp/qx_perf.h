// Small array operations and transforms for other modules of the host. A status is a result code: the sign tells failure,
// and success is never 0 (see QxPerfMapStatus). Null pointers, lengths below 1, and transforms that this was not asked to
// make are refused and nothing is written. All functions may run on any thread at the same time.
#pragma once

#include <cstdint>

using QxPerfStatus = int;
enum QxPerfHintAlgorithm { QXPERF_HINT_NONE, QXPERF_HINT_FAST, QXPERF_HINT_ACCURATE };

// Detects the processor. 0x0004E600, or 0x0004E614 on a processor of another maker than the one that the levels are
// named after; the level follows the features in either case.
int32_t QxPerf_Initialize();
// 0 to 4 by the feature mask: bits 0x04, 0x08, 0x10, 0x40 (SSE2, SSE3, SSSE3, SSE4.1), the highest wins.
constexpr int32_t QxPerfLevelOf(uint32_t features)
{
    return features & 0x40 ? 4 : features & 0x10 ? 3 : features & 0x08 ? 2 : features & 0x04 ? 1 : 0;
}
// The level that QxPerf_Initialize found, 0 before it.
int32_t QxPerfGetLevel();

// An internal status (0, a positive warning or a negative failure) as a result code: 0x4E600 + |s|, with the failure bit
// for s < 0. -9999 counts as -255 and -9998 as -256.
int32_t QxPerfMapStatus(int status);
int32_t QxPerfStatusToHRESULT(QxPerfStatus status);
int QxPerfMapHintAlgorithm(QxPerfHintAlgorithm hint);
// The processor's time-stamp counter; nanoseconds where there is none.
uint64_t QxPerfGetCpuClocks();

// Aligned to 32 bytes, uninitialised, freed by QxPerfsFree; null for a count below 1 and when memory is out.
uint8_t* QxPerfsMalloc_8u(int bytes);
float* QxPerfsMalloc_32f(int count);
void QxPerfsFree(void* p);   // null is accepted

// Uniform in [low, high]; *seed is carried from call to call.
int32_t QxPerfsRandUniform_Direct_32f(float* dst, int n, float low, float high, unsigned* seed);
int32_t QxPerfsSqrt_32f(const float* src, float* dst, int n);
// Complex arrays: n pairs of real and imaginary part.
int32_t QxPerfsMul_64fc_I(const void* src, void* srcDst, int n);
int32_t QxPerfsConj_64fc_I(void* data, int n);
int32_t QxPerfsMinMax_64f(const double* src, int n, double* min, double* max);
int32_t QxPerfsMinMax_32f(const float* src, int n, float* min, float* max);
// dst[c][i] = src[i * channels + c]. Always 0, which is no mapped status.
int32_t QxPerfsDeinterleave_32f(const float* src, int channels, int frames, float** dst);

// Transforms of 2^order values, order 0 to 24. flag: 1 divides the forward transform by the length, 2 the inverse one, 4
// both by its root, 8 none. A spec may be used from several threads, each with a work buffer of its own of the size that
// GetBufSize tells, at any address; without one (null) the call allocates. src and dst may be the same.
int32_t QxPerfsFFTInitAlloc_C_32fc(void** spec, int order, int flag, QxPerfHintAlgorithm hint);
int32_t QxPerfsFFTGetBufSize_C_32fc(const void* spec, int* bytes);
int32_t QxPerfsFFTFwd_CToC_32fc(const void* src, void* dst, const void* spec, uint8_t* work);
int32_t QxPerfsFFTInv_CToC_32fc(const void* src, void* dst, const void* spec, uint8_t* work);
int32_t QxPerfsFFTFree_C_32fc(void* spec);
// Real data in place, spectra in the packed layout (dsp/transform.h).
int32_t QxPerfsFFTInitAlloc_R_64f(void** spec, int order, int flag, QxPerfHintAlgorithm hint);
int32_t QxPerfsFFTGetBufSize_R_64f(void* spec, int* bytes);
int32_t QxPerfsFFTFwd_RToPerm_64f_I(double* data, const void* spec, uint8_t* work);
int32_t QxPerfsFFTInv_PermToR_64f_I(double* data, const void* spec, uint8_t* work);
int32_t QxPerfsFFTFree_R_64f(void* spec);
