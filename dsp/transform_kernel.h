// What a transform kernel needs to know of its length, and what it offers. Kernels are compiled per processor class
// (dsp/simd), so this header, which they include, has no functions.
//
// A transform of M complex points runs in W lanes. Lane w takes the points W l + w, l below L = M / W, and all lanes run
// the same L-point transform in stages of radix 8, 4 or 2, decimation in frequency, in place in a work buffer of M points
// (per column l: W real parts, then W imaginary parts). Its twiddles are the same for all lanes. The last pass gathers W
// columns in the order of their frequencies, turns them so that a vector holds one lane, and combines the lanes by a
// W-point transform: X[k + L j] = sum over w of (exp(-2 pi i w k / M) Y_w[k]) exp(-2 pi i w j / W).
// Real data of N = 2 M samples goes through as M complex points, and the two half spectra are taken apart afterwards.
#pragma once

#include <cstdint>

constexpr int32_t kMaxTransformStages = 12;

// Interleaved points are taken apart and put together within 128-bit groups, so a vector's lanes follow the points in
// an order of their own, "lane order": see LaneOrder in dsp/transform_plan.cpp.
template <class T>
struct TransformTables {
    int32_t points;       // M
    int32_t columns;      // L
    int32_t stageCount;   // the radices below multiply to L
    int32_t radix[kMaxTransformStages];
    const T* stageTwiddles[kMaxTransformStages];   // [p][s - 1]: exp(-2 pi i s p / n), n the length at that stage
    const uint32_t* order;                         // [block][lane]: column that holds frequency W block + lane's place
    const T* laneTwiddles;                         // [block][w - 1]: W real parts, W imaginary parts, in lane order
    const T* realTwiddles;                         // [block]: exp(-2 pi i k / N) / 2 for k = 1 + W block on, likewise
};

template <class T>
struct TransformKernel {
    using Pass = void (*)(const TransformTables<T>& tables, T* out, const T* in, T* work);
    int32_t lanes;   // W; lengths from M = W * W up
    // Interleaved complex points; in and out may be the same. work: 2 M values, aligned to 64 bytes.
    Pass complexForward, complexInverse;
    // 2 M real values and their packed spectrum; the same otherwise.
    Pass realForward, realInverse;
};

// Kernels of one processor class, the widest first; the last has one lane and takes any length.
struct TransformClass {
    TransformKernel<float> floats[4];
    TransformKernel<double> doubles[4];
};

extern const TransformClass kTransformPortable;
extern const TransformClass kTransformAvx2;
extern const TransformClass kTransformAvx512;
