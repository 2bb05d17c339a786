// The octave of a sample rate. Every frame and buffer of the engine that has to hold a fixed stretch of time grows by a
// factor of two per band.
#pragma once

#include <cstdint>

// 0 below 32000 Hz, then 1, 2, 3, and 4 from 256000 Hz.
constexpr int32_t RateBand(float sampleRate)
{
    int32_t band = 0;
    for (float limit = 32000.0f; band < 4 && sampleRate >= limit; limit *= 2.0f)
        ++band;
    return band;
}
