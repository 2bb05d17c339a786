// What the tools look for in every sample that they read.
#pragma once

#include "dsp/kernels.h"

#include <cmath>
#include <cstdint>
#include <span>

// Turns samples that are no finite number into silence; gives how many there were.
inline int64_t MendNonFinite(std::span<float> samples)
{
    if (std::isfinite(Kernels().PeakMagnitude(samples.data(), int32_t(samples.size()))))
        return 0;
    int64_t mended = 0;
    for (float& sample : samples)
        if (!std::isfinite(sample)) {
            sample = 0.0f;
            ++mended;
        }
    return mended;
}
