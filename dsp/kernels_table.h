// The shape of the table behind dsp/kernels.h. Processor-specific files include this, so it has no functions.
#pragma once

#include <cstdint>

// Of all bins below one.
struct BinEnergy {
    double change, reference;
};

struct VectorKernels {
    // sines[i] = sin(angles[i]), cosines[i] likewise; to 2e-7 for angles within +-1000.
    void (*SinCos)(float* sines, float* cosines, const float* angles, int32_t n);

    // Turns bins begin .. end-1 of a packed spectrum (begin at least 1) by the turn of their region:
    //   dst[k] = src[k] * (turns[2 target[k]] + i turns[2 target[k] + 1])
    // target[k] is the bin that leads the region; turns holds cosine and sine of each such bin's angle. dst may be src.
    void (*RotateBins)(float* dst, const float* src, const int32_t* target, const float* turns, int32_t begin,
                       int32_t end);
    // dst[i] = table[index[i]] + b[i]; dst may be b.
    void (*GatherAdd)(float* dst, const float* table, const int32_t* index, const float* b, int32_t n);

    // out[k] = (-1)^k a[k] conj(b[k]) for bins begin .. end-1 of packed spectra (begin at least 1): the correlation of two
    // segments, turned by half the length. out may be a or b.
    void (*CorrelationProduct)(float* out, const float* a, const float* b, int32_t begin, int32_t end);

    // Weights a frame of n samples (even) and turns it by half, so that its middle stands at 0 (zero phase):
    //   dst[i] = src[n/2 + i] * window[n/2 + i], dst[n/2 + i] = src[i] * window[i],   i below n/2
    void (*WindowZeroPhase)(float* dst, const float* src, const float* window, int32_t n);
    // The way back, weighted and added: sum[i] += frame[n/2 + i] * window[i], sum[n/2 + i] += frame[i] * window[n/2 + i].
    void (*OverlapAddZeroPhase)(float* sum, const float* frame, const float* window, int32_t n);
    // sum[i] += frame[i] * window[i]
    void (*OverlapAdd)(float* sum, const float* frame, const float* window, int32_t n);

    // dst[i * channels + c] = src[c][i], and the reverse; channels at least 1.
    void (*Interleave)(float* dst, const float* const* src, int32_t channels, int32_t frames);
    void (*Deinterleave)(float* const* dst, const float* src, int32_t channels, int32_t frames);

    // Catmull-Rom interpolation at count read positions, position, position + ratio, ... (0 or above, in frames):
    //   out[c][j] from x[c][i - 3] .. x[c][i], i the whole part of position j; the curve runs between i - 2 and i - 1.
    // The positions are exact multiples as long as they have 53 bits together with the last bit of ratio.
    void (*Cubic)(float* const* out, const float* const* x, int32_t channels, double position, float ratio,
                  int32_t count);

    // The bin that each bin's phase advance belongs to: target[k] = advance[k] * bins / turn, rounded to the nearest and
    // at most bins/2 - 1; k itself unless that is above 0.5. Bit k % 64 of pointsDown[k / 64] tells that target[k] is at
    // most k; bits of the last word from n on are 0. bins below 2^22.
    void (*PointBins)(int32_t* target, uint64_t* pointsDown, const float* advance, float bins, float turn, int32_t n);
    // below[k + 1] = below[k] + {d * d, reference[k] * reference[k]} where d = |magnitude[k] - reference[k]| is above floor,
    // below[k] elsewhere, for k below n. below[0] is taken as 0 and not touched.
    void (*SumEnergies)(BinEnergy* below, const float* magnitude, const float* reference, float floor, int32_t n);
    // ends[i]: the first k above peaks[i] with target[k] above peaks[i], or n (or peaks[i] + 1 where that is beyond n).
    void (*RegionEnds)(int32_t* ends, const int32_t* target, const int32_t* peaks, int32_t count, int32_t n);

    // The largest magnitude, 0 for no samples; infinite or no number where a sample is.
    float (*PeakMagnitude)(const float* x, int32_t n);
    // dst[i] = src[i] / 32768, exactly.
    void (*FromInt16)(float* dst, const int16_t* src, int32_t n);
    // dst[i] = src[i] * fullScale rounded to the nearest, halves to the even one, and limited to -fullScale ..
    // fullScale - 1; fullScale a power of two up to 32768. Gives how many fullScale - 0.5 or -fullScale - 0.5 does not
    // hold. What is no number becomes any.
    int32_t (*ToInt16)(int16_t* dst, const float* src, float fullScale, int32_t n);
};

extern const VectorKernels kKernelsPortable;
extern const VectorKernels kKernelsAvx2;
extern const VectorKernels kKernelsAvx512;
