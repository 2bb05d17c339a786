// The definitions of the vector kernels, on any processor.
#include "dsp/kernels_table.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace {

void SinCos(float* sines, float* cosines, const float* angles, int32_t n)
{
    for (int32_t i = 0; i < n; ++i) {
        sines[i] = std::sin(angles[i]);
        cosines[i] = std::cos(angles[i]);
    }
}

void RotateBins(float* dst, const float* src, const int32_t* target, const float* turns, int32_t begin, int32_t end)
{
    for (int32_t k = begin; k < end; ++k) {
        const float c = turns[2 * target[k]], s = turns[2 * target[k] + 1];
        const float re = src[2 * k], im = src[2 * k + 1];
        dst[2 * k] = re * c - im * s;
        dst[2 * k + 1] = im * c + re * s;
    }
}

void GatherAdd(float* dst, const float* table, const int32_t* index, const float* b, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        dst[i] = table[index[i]] + b[i];
}

void CorrelationProduct(float* out, const float* a, const float* b, int32_t begin, int32_t end)
{
    for (int32_t k = begin; k < end; ++k) {
        const float sign = k % 2 ? -1.0f : 1.0f;
        const float aRe = a[2 * k], aIm = a[2 * k + 1], bRe = b[2 * k], bIm = b[2 * k + 1];
        out[2 * k] = sign * (aRe * bRe + aIm * bIm);
        out[2 * k + 1] = sign * (aIm * bRe - aRe * bIm);
    }
}

void WindowZeroPhase(float* dst, const float* src, const float* window, int32_t n)
{
    const int32_t half = n / 2;
    for (int32_t i = 0; i < half; ++i) {
        dst[i] = src[half + i] * window[half + i];
        dst[half + i] = src[i] * window[i];
    }
}

void OverlapAdd(float* sum, const float* frame, const float* window, int32_t n)
{
    for (int32_t i = 0; i < n; ++i)
        sum[i] += frame[i] * window[i];
}

void OverlapAddZeroPhase(float* sum, const float* frame, const float* window, int32_t n)
{
    const int32_t half = n / 2;
    OverlapAdd(sum, frame + half, window, half);
    OverlapAdd(sum + half, frame, window + half, half);
}

void Interleave(float* dst, const float* const* src, int32_t channels, int32_t frames)
{
    for (int32_t c = 0; c < channels; ++c)
        for (int32_t i = 0; i < frames; ++i)
            dst[int64_t(i) * channels + c] = src[c][i];
}

void Deinterleave(float* const* dst, const float* src, int32_t channels, int32_t frames)
{
    for (int32_t c = 0; c < channels; ++c)
        for (int32_t i = 0; i < frames; ++i)
            dst[c][i] = src[int64_t(i) * channels + c];
}

// The weights of an output frame serve all channels.
void Cubic(float* const* out, const float* const* x, int32_t channels, double position, float ratio, int32_t count)
{
    for (int32_t j = 0; j < count; ++j, position += double(ratio)) {
        const auto i = int32_t(position);
        const auto t = float(position - i);
        const float t2 = t * t, t3 = t2 * t;
        const float h00 = 2.0f * t3 - 3.0f * t2 + 1.0f;
        const float h10 = t3 - 2.0f * t2 + t;
        const float h11 = t3 - t2;
        const float h01 = 3.0f * t2 - 2.0f * t3;
        for (int32_t c = 0; c < channels; ++c) {
            const float* at = x[c] + i;
            const float m0 = (at[-1] - at[-3]) / 2.0f, m1 = (at[0] - at[-2]) / 2.0f;
            out[c][j] = h00 * at[-2] + h01 * at[-1] + h10 * m0 + h11 * m1;
        }
    }
}

// Next to 1.5 x 2^23 a float has whole numbers only: the sum rounds to the nearest, halves to the even one, and holds it
// in its lowest bits. For values below 2^22.
int32_t RoundToNearest(float x)
{
    constexpr float kShift = 12582912.0f;
    return std::bit_cast<int32_t>(x + kShift) - std::bit_cast<int32_t>(kShift);
}

void PointBins(int32_t* target, uint64_t* pointsDown, const float* advance, float bins, float turn, int32_t n)
{
    const float last = bins * 0.5f - 1.0f;
    for (int32_t k = 0; k < n; ++k) {
        const float t = advance[k] * bins / turn;
        target[k] = RoundToNearest(t > 0.5f ? std::min(t, last) : float(k));
    }
    for (int32_t word = 0; word < (n + 63) / 64; ++word) {
        uint64_t bits = 0;
        for (int32_t k = 64 * word; k < std::min(n, 64 * word + 64); ++k)
            bits |= uint64_t(target[k] <= k) << k % 64;
        pointsDown[word] = bits;
    }
}

void SumEnergies(BinEnergy* below, const float* magnitude, const float* reference, float floor, int32_t n)
{
    double change = 0.0, energy = 0.0;
    for (int32_t k = 0; k < n; ++k) {
        const float d = std::fabs(magnitude[k] - reference[k]), r = reference[k];
        const bool counts = d > floor;
        change += counts ? d * d : 0.0f;
        energy += counts ? r * r : 0.0f;
        below[k + 1] = {change, energy};
    }
}

void RegionEnds(int32_t* ends, const int32_t* target, const int32_t* peaks, int32_t count, int32_t n)
{
    for (int32_t i = 0; i < count; ++i) {
        int32_t k = peaks[i] + 1;
        while (k < n && target[k] <= peaks[i])
            ++k;
        ends[i] = k;
    }
}

#include "dsp/sample_kernels.inl"

}   // namespace

constinit const VectorKernels kKernelsPortable = {
#include "dsp/kernels_entries.inl"
};
