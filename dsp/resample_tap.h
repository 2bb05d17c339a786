// Where the two wings of an output frame of the resampler meet the filter table and the history.
#pragma once

#include <cstdint>

constexpr int32_t kTableSteps = 128;   // from one table entry to the next
constexpr int32_t kPhaseBits = 15;     // of the read position's fraction
constexpr int32_t kPhaseMask = (1 << kPhaseBits) - 1;

struct ResampleTap {
    int64_t frame;       // the left wing runs backwards from here, the right one forwards from the next frame
    int32_t phase;       // the read position's fraction
    int32_t leftStart;   // positions in the table, in steps
    int32_t rightStart;

    ResampleTap(double time, int32_t filterStep)
    {
        const auto p = int64_t(time * (1 << kPhaseBits));
        const auto rightPhase = int32_t(-p & kPhaseMask);
        frame = p >> kPhaseBits;
        phase = int32_t(p & kPhaseMask);
        leftStart = int32_t((int64_t(phase) * filterStep) >> kPhaseBits);
        // On a frame the centre tap belongs to the left wing alone.
        rightStart = rightPhase ? int32_t((int64_t(rightPhase) * filterStep) >> kPhaseBits) : filterStep;
    }
};
