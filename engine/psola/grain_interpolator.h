// Reads a signal between its frames for grains that are read at the pitch: a windowed sinc of three crossings a side. Above
// a pitch of 1 it widens with the pitch, so that nothing folds back from beyond the new Nyquist frequency.
// One object serves one thread; after creation nothing allocates.
#pragma once

#include "dsp/kaiser_sinc.h"
#include "dsp/resample_tap.h"

#include <cstdint>
#include <vector>

class GrainInterpolator {
public:
    // Throws std::bad_alloc.
    GrainInterpolator();

    // pitch: frames read per frame written, 1/64 to 64.
    void SetPitch(float pitch) noexcept;
    // Frames that are read on either side of a position.
    int32_t Reach() const noexcept { return reach; }
    // The place of output frame i of a grain, from its start on, in 1/2^kPhaseBits of a frame.
    int64_t Place(int32_t i) const noexcept { return int64_t(double(i) * step + 0.5); }
    // The signal at a place counted from x, at a gain that makes up for the filter's width.
    float Read(const float* x, int64_t place) const noexcept;

private:
    static constexpr int32_t kLength = 3 * kSincPerCrossing;

    double Wing(const float* x, int32_t direction, int32_t at, int32_t end) const noexcept;

    std::vector<float> table, deltas;
    double step = 0.0;        // places per output frame
    int32_t filterStep = 0;   // table steps per frame
    int32_t reach = 0;
    float gain = 0.0f;
};
