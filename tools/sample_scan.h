// What the tools look for in every sample that they read or write, in loops that compilers turn into vectors.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <span>

// The largest magnitude; infinite or no number where a sample is. Magnitudes order like their bits, where infinity stands
// above all numbers, and what is no number above that.
inline float PeakOf(std::span<const float> samples)
{
    int32_t peak = 0;
    for (const float sample : samples)
        peak = std::max(peak, std::bit_cast<int32_t>(sample) & INT32_MAX);
    return std::bit_cast<float>(peak);
}

// Turns samples that are no finite number into silence; gives how many there were.
inline int64_t MendNonFinite(std::span<float> samples)
{
    if (std::isfinite(PeakOf(samples)))
        return 0;
    int64_t mended = 0;
    for (float& sample : samples)
        if (!std::isfinite(sample)) {
            sample = 0.0f;
            ++mended;
        }
    return mended;
}
