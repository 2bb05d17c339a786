#include "aplugins/qxvantor/ratio_ramp.h"

#include "engine/tensio_pro_if.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kLowestStretch = kMinTotalFactor;   // the single-precision 0.1, as the engine compares it
constexpr double kHighestStretch = 10.0;
constexpr double kLowestPitch = 0.25;
constexpr double kHighestPitch = 4.0;
constexpr double kLowestProduct = kMinTotalFactor;
constexpr double kHighestProduct = kMaxTotalFactor;
constexpr double kInsideBound = 4.9999e-5;   // how far inside the bound a corrected factor is put
constexpr double kLargestStep = 0.1;         // of factor per engine pass

// The longest way, 9.9 of stretch in steps of 0.1, is over by then. A step of 0 never arrives: the factors then jump.
constexpr int32_t kMostSteps = 200;

float Product(double stretch, double pitch)
{
    return float(stretch) * float(pitch);
}

bool InBounds(float product)
{
    return product >= kMinTotalFactor && product <= kMaxTotalFactor;
}

double StepTowards(double from, double to, int32_t divisor)
{
    return std::copysign(std::min(std::abs(to - from) / divisor, kLargestStep), to - from);
}

double Advance(double current, double target, double step)
{
    return std::abs(target - current) <= std::abs(step) ? target : current + step;
}

}   // namespace

void RatioRamp::SetTargets(double stretch, double pitch)
{
    if (!std::isnan(stretch))
        targetStretch = std::clamp(stretch, kLowestStretch, kHighestStretch);
    if (!std::isnan(pitch))
        targetPitch = std::clamp(pitch, kLowestPitch, kHighestPitch);
    LimitRatioProduct();
}

void RatioRamp::LimitRatioProduct()
{
    const bool stretchMoved = lastStretch != targetStretch;
    const auto correct = [&](double bound, double margin) {
        if (stretchMoved)
            lastStretch = targetStretch = bound / targetPitch + margin;
        else
            lastPitch = targetPitch = bound / targetStretch + margin;
    };
    if (Product(targetStretch, targetPitch) < kMinTotalFactor)
        correct(kLowestProduct, kInsideBound);
    if (Product(targetStretch, targetPitch) > kMaxTotalFactor)
        correct(kHighestProduct, -kInsideBound);
}

// In force are the targets as they come out of the record's own units.
void RatioRamp::TakeTargets(QxVantorParams* params)
{
    SetTargets(params->stretchPercent / 100.0, std::exp2(params->pitchSemitones / 12.0));
    params->stretchPercent = targetStretch * 100.0;
    params->pitchSemitones = std::log2(targetPitch) * 12.0;
    targetStretch = params->bypass ? 1.0 : params->stretchPercent / 100.0;
    targetPitch = params->bypass ? 1.0 : std::exp2(params->pitchSemitones / 12.0);
}

void RatioRamp::JumpTo(double stretch, double pitch)
{
    curStretch = targetStretch = stretch;
    curPitch = targetPitch = pitch;
}

void RatioRamp::SetSteps(int32_t divisor)
{
    stretchStep = StepTowards(curStretch, targetStretch, divisor);
    pitchStep = StepTowards(curPitch, targetPitch, divisor);
}

void RatioRamp::Step() noexcept
{
    for (int32_t i = 0; i < kMostSteps; ++i) {
        curStretch = Advance(curStretch, targetStretch, stretchStep);
        curPitch = Advance(curPitch, targetPitch, pitchStep);
        if (curPitch == targetPitch) {
            curStretch = targetStretch;   // a change of stretch alone takes effect at once
            return;
        }
        if (InBounds(Product(curStretch, curPitch)))
            return;
    }
    curStretch = targetStretch;
    curPitch = targetPitch;
}

bool RatioRamp::NeedsStep() const noexcept
{
    return curStretch != targetStretch || curPitch != targetPitch;
}

void RatioRamp::SetCurrent(float stretch, float pitch, int32_t divisor) noexcept
{
    if (double(pitch) != curPitch)
        pitchStep = StepTowards(pitch, targetPitch, divisor);
    curStretch = stretch;
    curPitch = pitch;
}
