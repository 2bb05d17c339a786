// The shape of the vector table. Processor-specific files include this, so it has no functions; dsp/vtnf.h tells what the
// entries do.
#pragma once

#include <cstdint>

class CvtnfFFT_If;

// One slot per entry, in the order that the table has kept from the start.
struct VtnfTable {
    float* (*Alloc)(int32_t n);
    void (*Free)(float** p);
    void (*Zero)(float* v, int32_t n);
    void (*StdDev)(const float* v, float* pOut, int32_t n);
    void (*Mean)(const float* v, float* pOut, int32_t n);
    void (*MaxIndex)(const float* v, float* pMax, int32_t* pIndex, int32_t n);
    void (*MaxEvery)(float* dst, const float* src, int32_t n);
    void (*Add)(float* dst, const float* src, int32_t n);
    void (*AddScalar)(float* dst, float c, int32_t n);
    void (*Sub)(float* dst, const float* src, int32_t n);
    void (*Mul)(float* dst, const float* src, int32_t n);
    void (*MulScalar)(float* dst, float c, int32_t n);
    void (*Div)(float* dst, const float* src, int32_t n);
    void (*AddProduct)(float* dst, const float* a, const float* b, int32_t n);
    void (*Abs)(float* v, int32_t n);
    void (*Exp)(float* v, int32_t n);
    void (*ThresholdLn)(float* v, float level, float value, int32_t n);
    void (*ThresholdLT)(float* v, float level, float value, int32_t n);
    void (*ThresholdGT)(float* v, float level, float value, int32_t n);
    void (*DotProduct)(const float* a, const float* b, float* pOut, int32_t n);
    void (*PackSpectrum)(float* dst, const float* re, const float* im, int32_t fftSize);
    void (*UnpackSpectrum)(float* re, float* im, const float* src, int32_t fftSize);
    void (*AddComplex)(float* dst, const float* src, int32_t bins);
    void (*MulPacked)(float* dst, const float* src, int32_t bins);
    void (*NoOp)();
    void (*Phase)(float* dst, const float* packed, int32_t bins);
    void (*AddProductPacked)(float* dst, const float* a, const float* b, int32_t bins);
    void (*Magnitude)(float* dst, const float* packed, int32_t bins);
    void (*PrincipalArgument)(float* dst, const float* src, int32_t n);
    int32_t (*CreateFFT)(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType);
    int32_t (*DestroyFFT)(CvtnfFFT_If** ppFFT);
};

// The portable forms, which define what every entry computes, and those of the processor classes.
extern const VtnfTable kVtnfPortable;
extern const VtnfTable kVtnfAvx2;
extern const VtnfTable kVtnfAvx512;
