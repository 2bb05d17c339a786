// The time stamps of the output. They start from the input's at a discontinuity and run on by counted frames alone, since
// the output has another length than the input; rounding is done once a sample, to the nearest tick.
#pragma once

#include <cstdint>

struct OutputClock {
    static constexpr double kTicksPerSecond = 1e7;   // of 100 ns

    int64_t rtOutStart = 0, rtOutEnd = 0;   // ticks, of the next and of the last sample
    int64_t mtOutStart = 0, mtOutEnd = 0;   // frames, of the same

    // The next sample has this many frames: its stamps are rtOutStart .. rtOutEnd and mtOutStart .. mtOutEnd. A sample
    // after a discontinuity starts where the input's did, any other where the last one ended.
    void Stamp(int64_t frames, uint32_t samplesPerSecond, bool afterDiscontinuity) noexcept
    {
        if (!afterDiscontinuity) {
            rtOutStart = rtOutEnd;
            mtOutStart = mtOutEnd;
        }
        rtOutEnd = rtOutStart;
        if (samplesPerSecond != 0)
            rtOutEnd += int64_t(double(frames) / samplesPerSecond * kTicksPerSecond + 0.5);
        mtOutEnd = mtOutStart + frames;
    }
};
