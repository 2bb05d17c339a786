#include "engine/psola/grain_interpolator.h"

#include <algorithm>

namespace {

constexpr double kRolloff = 0.90234375;   // of the Nyquist frequency
constexpr double kBeta = 9.0;
constexpr float kGain = 0.99f;

}   // namespace

GrainInterpolator::GrainInterpolator() : table(size_t(kLength)), deltas(size_t(kLength))
{
    for (int32_t i = 0; i < kLength; ++i)
        table[size_t(i)] = float(KaiserSinc(i, kLength, kRolloff, kBeta));
    for (size_t i = 0; i + 1 < table.size(); ++i)
        deltas[i] = table[i + 1] - table[i];
    SetPitch(1.0f);
}

void GrainInterpolator::SetPitch(float pitch) noexcept
{
    const double perFrame = std::min(double(kSincPerCrossing), kSincPerCrossing / double(pitch));
    step = double(pitch) * (1 << kPhaseBits);
    filterStep = int32_t(perFrame * kTableSteps + 0.5);
    reach = kLength * kTableSteps / filterStep + 2;
    gain = pitch >= 1.0f ? kGain / pitch : kGain;
}

float GrainInterpolator::Read(const float* x, int64_t place) const noexcept
{
    constexpr int32_t kEnd = kLength * kTableSteps;
    const auto phase = int32_t(place & kPhaseMask), ahead = -phase & kPhaseMask;
    x += place >> kPhaseBits;
    // On a frame the centre belongs to the left wing alone.
    const int32_t rightStart = ahead ? (filterStep * ahead) >> kPhaseBits : filterStep;
    const int32_t leftStart = (filterStep * phase) >> kPhaseBits;
    return gain * float(Wing(x + 1, 1, rightStart, kEnd - kTableSteps) + Wing(x, -1, leftStart, kEnd));
}

double GrainInterpolator::Wing(const float* x, int32_t direction, int32_t at, int32_t end) const noexcept
{
    double sum = 0.0;
    for (; at < end; at += filterStep, x += direction) {
        const size_t entry = size_t(at) / kTableSteps;
        const float c = table[entry] + float(at & (kTableSteps - 1)) * (1.0f / kTableSteps) * deltas[entry];
        sum += double(c) * double(*x);
    }
    return sum;
}
