// The portable entries: plain loops that define what each entry computes, on any processor.
#include "dsp/vtnf_fft_gen.h"
#include "dsp/vtnf_shared.h"
#include "dsp/vtnf_table.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

void Zero(float* v, int32_t n)
{
    std::fill_n(v, n, 0.0f);
}

void Mean(const float* v, float* pOut, int32_t n)
{
    double sum = 0.0;
    for (int32_t i = 0; i < n; ++i)
        sum += v[i];
    *pOut = float(sum / n);
}

// Of a sample: the sum of squares is divided by n - 1.
void StdDev(const float* v, float* pOut, int32_t n)
{
    double sum = 0.0;
    for (int32_t i = 0; i < n; ++i)
        sum += v[i];
    const double mean = sum / n;
    double squares = 0.0;
    for (int32_t i = 0; i < n; ++i)
        squares += (v[i] - mean) * (v[i] - mean);
    *pOut = float(std::sqrt(squares / (n - 1)));
}

void MaxIndex(const float* v, float* pMax, int32_t* pIndex, int32_t n)
{
    int32_t index = 0;
    for (int32_t i = 1; i < n; ++i)
        if (v[i] > v[index])
            index = i;
    *pMax = v[index];
    *pIndex = index;
}

void MaxEvery(float* dst, const float* src, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        dst[i] = std::max(dst[i], src[i]);
}

void Add(float* dst, const float* src, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        dst[i] += src[i];
}

void AddScalar(float* dst, float c, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        dst[i] += c;
}

void Sub(float* dst, const float* src, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        dst[i] -= src[i];
}

void Mul(float* dst, const float* src, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        dst[i] *= src[i];
}

void MulScalar(float* dst, float c, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        dst[i] *= c;
}

void Div(float* dst, const float* src, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        dst[i] /= src[i];
}

void AddProduct(float* dst, const float* a, const float* b, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        dst[i] += a[i] * b[i];
}

void Abs(float* v, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        v[i] = std::fabs(v[i]);
}

void Exp(float* v, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        v[i] = std::exp(v[i]);
}

void ThresholdLT(float* v, float level, float value, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        if (v[i] < level)
            v[i] = value;
}

void ThresholdGT(float* v, float level, float value, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        if (v[i] > level)
            v[i] = value;
}

void ThresholdLn(float* v, float level, float value, int32_t n)
{
    ThresholdLT(v, level, value, n);
    for (int32_t i = 0; i < n; ++i)
        v[i] = std::log(v[i]);
}

// Products of two floats are exact in double.
void DotProduct(const float* a, const float* b, float* pOut, int32_t n)
{
    double sum = 0.0;
    for (int32_t i = 0; i < n; ++i)
        sum += double(a[i]) * b[i];
    *pOut = float(sum);
}

// im starts at bin 1.
void PackSpectrum(float* dst, const float* re, const float* im, int32_t fftSize)
{
    const int32_t half = fftSize / 2;
    dst[0] = re[0];
    dst[1] = re[half];
    for (int32_t k = 1; k < half; ++k) {
        dst[2 * k] = re[k];
        dst[2 * k + 1] = im[k - 1];
    }
}

void UnpackSpectrum(float* re, float* im, const float* src, int32_t fftSize)
{
    const int32_t half = fftSize / 2;
    re[0] = src[0];
    re[half] = src[1];
    for (int32_t k = 1; k < half; ++k) {
        re[k] = src[2 * k];
        im[k - 1] = src[2 * k + 1];
    }
}

void AddComplex(float* dst, const float* src, int32_t bins)
{
    Add(dst, src, 2 * bins);
}

void MulPacked(float* dst, const float* src, int32_t bins)
{
    dst[0] *= src[0];
    dst[1] *= src[1];
    for (int32_t k = 2; k < 2 * bins; k += 2) {
        const float re = dst[k] * src[k] - dst[k + 1] * src[k + 1];
        dst[k + 1] = dst[k] * src[k + 1] + dst[k + 1] * src[k];
        dst[k] = re;
    }
}

void AddProductPacked(float* dst, const float* a, const float* b, int32_t bins)
{
    dst[0] += a[0] * b[0];
    dst[1] += a[1] * b[1];
    for (int32_t k = 2; k < 2 * bins; k += 2) {
        dst[k] += a[k] * b[k] - a[k + 1] * b[k + 1];
        dst[k + 1] += a[k] * b[k + 1] + a[k + 1] * b[k];
    }
}

void Phase(float* dst, const float* packed, int32_t bins)
{
    dst[0] = std::atan2(0.0f, packed[0]);
    for (int32_t k = 1; k < bins; ++k)
        dst[k] = std::atan2(packed[2 * k + 1], packed[2 * k]);
}

void Magnitude(float* dst, const float* packed, int32_t bins)
{
    dst[0] = std::fabs(packed[0]);
    for (int32_t k = 1; k < bins; ++k)
        dst[k] = std::sqrt(packed[2 * k] * packed[2 * k] + packed[2 * k + 1] * packed[2 * k + 1]);
}

// Element 0 stands for DC, whose phase needs no wrapping.
void PrincipalArgument(float* dst, const float* src, int32_t n)
{
    for (int32_t i = 1; i < n; ++i) {
        const float x = src[i] + 3.1415927f;
        const float turns = std::floor(x * -0.15915494f);
        dst[i] = turns * 6.2831855f + x + 3.1415927f;
    }
}

}   // namespace

const VtnfTable kVtnfPortable = {
#include "dsp/vtnf_entries.inl"
    CreateFFTPortable,
    DestroyFFTPortable,
};
