#include "engine/psola/transient_rating.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace {

constexpr float kHighCoefficient = -0.5f, kLowCoefficient = -0.9f;
constexpr float kHighThreshold = 0.01f, kLowThreshold = 0.1f;   // a band below this level, of full scale, has no attack
constexpr float kClearAttack = 0.7f;
constexpr double kAntiZero = 1e-31;

float Peak(const std::vector<float>& x, int32_t n)
{
    float peak = 0.0f;
    for (int32_t i = 0; i < n; ++i)
        peak = std::max(peak, std::fabs(x[size_t(i)]));
    return peak;
}

}   // namespace

TransientRating::TransientRating(int32_t longest) : filtered(size_t(longest))
{
    CSimpleFIRFilter* fir = nullptr;
    CSimpleIIRFilter* iir = nullptr;
    CreateFIR(&fir, kHighCoefficient);
    highFilter.reset(fir);
    CreateIIR(&iir, kLowCoefficient);
    lowFilter.reset(iir);
    if (!highFilter || !lowFilter)
        throw std::bad_alloc();
}

float TransientRating::Rate(const float* period, int32_t frames) noexcept
{
    highFilter->Process(period, filtered.data(), frames);
    const float high = RateBand(Peak(filtered, frames), lastHigh, kHighThreshold);
    lowFilter->Process(period, filtered.data(), frames);
    low = Peak(filtered, frames);
    return std::max(high, RateBand(low, lastLow, kLowThreshold));
}

// Grows with the ratio and with the relative distance of the two levels.
float TransientRating::RateBand(float peak, float& lastPeak, float threshold) const noexcept
{
    const double now = peak, before = lastPeak;
    lastPeak = peak;
    if (!(now > before && peak > threshold) || holdNow || holdPrevious)
        return 0.0f;
    const double rise = (now + kAntiZero) / (before + kAntiZero) * (now - before) + kAntiZero;
    return float(std::tanh(rise / (now + before + kAntiZero)));
}

void TransientRating::Place(float transient) noexcept
{
    holdPrevious = holdNow;
    holdNow = transient > kClearAttack;
}

void TransientRating::Reset() noexcept
{
    lastHigh = lastLow = low = 0.0f;
    holdNow = holdPrevious = false;
}
