// The window of the vocoder, applied to a frame before and after its bins are turned, and what undoes both when the
// frames are overlapped at the synthesis hop:
//   weight[i] = (0.53836 - 0.46164 cos(2 pi i / (M - 1))) ^ e,  i < M/2, and mirrored
//   norm[i]   = 1 / (weight[i]^2 + weight[i + R]^2 + weight[i + 2R]^2 + ...)
// M is the frame, R the synthesis hop. A Hamming window's power keeps the side lobes low; the exponent e is 2 while frames
// overlap four times and 3 from eight times up, where a narrower window still overlaps evenly.
// The tables of both exponents are made at construction; a change of hops calls no transcendental function.
#pragma once

#include "dsp/vtnf_buffer.h"

#include <array>
#include <cstdint>
#include <memory>

class OverlapWindow {
public:
    // frame: samples, even. Throws std::bad_alloc.
    OverlapWindow(int32_t frame, int32_t hopS, int32_t hopA);

    void SetHops(int32_t hopS, int32_t hopA) noexcept;

    const float* Weights() const noexcept { return weights; }        // frame entries
    const float* Norm() const noexcept { return synthNorm.get(); }   // frame entries; output takes the first hopS

private:
    int32_t frame;
    std::array<VtnfBuffer, 2> powers;   // of exponent 2 and 3
    const float* weights = nullptr;     // that in force
    VtnfBuffer synthNorm;
    std::unique_ptr<double[]> sums;   // frame + 1: the squares from an entry on, at steps of the synthesis hop
};
