// How far the onset of a pitch period stands out from the period before, in two bands: a mark behind which the high or
// the low band jumps is an attack. After a clear attack the next two marks are not rated.
// One object serves one thread; nothing allocates after creation.
#pragma once

#include "dsp/simple_filter.h"

#include <cstdint>
#include <vector>

class TransientRating {
public:
    // longest: the most frames of a period. Throws std::bad_alloc.
    explicit TransientRating(int32_t longest);

    // Rates a period of frames samples, 0 to 1. The filters run on from period to period.
    float Rate(const float* period, int32_t frames) noexcept;
    // The mark that was rated last has been placed.
    void Place(float transient) noexcept;
    // Forgets levels and hold; the filters keep their state.
    void Reset() noexcept;
    // Peak level of the low band in the period rated last.
    float PeakLow() const noexcept { return low; }

private:
    // Peaks of this period and the one before.
    float RateBand(float peak, float& lastPeak, float threshold) const noexcept;

    SimpleFirPtr highFilter;
    SimpleIirPtr lowFilter;
    std::vector<float> filtered;
    float lastHigh = 0.0f, lastLow = 0.0f, low = 0.0f;
    bool holdNow = false, holdPrevious = false;
};
