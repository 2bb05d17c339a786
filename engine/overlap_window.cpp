#include "engine/overlap_window.h"

#include <cmath>
#include <numbers>

namespace {

// e = min(3, floor(log2(frame / hop + 1)))
bool TakesThirdPower(int32_t frame, int32_t hopA)
{
    return frame / hopA >= 7;
}

}   // namespace

OverlapWindow::OverlapWindow(int32_t frameSize, int32_t hopS, int32_t hopA)
    : frame(frameSize), powers{MakeVtnfBuffer(frameSize), MakeVtnfBuffer(frameSize)},
      synthNorm(MakeVtnfBuffer(frameSize)), sums(std::make_unique<double[]>(size_t(frameSize) + 1))
{
    for (int32_t i = 0; i < frame / 2; ++i) {
        const double w = 0.53836 - 0.46164 * std::cos(2.0 * std::numbers::pi * i / (frame - 1));
        const auto mirrored = size_t(frame - 1 - i);
        powers[0][size_t(i)] = powers[0][mirrored] = float(w * w);
        powers[1][size_t(i)] = powers[1][mirrored] = float(w * w * w);
    }
    SetHops(hopS, hopA);
}

// The entry behind the last one counts as the first: a sum that reaches it takes one term more.
void OverlapWindow::SetHops(int32_t hopS, int32_t hopA) noexcept
{
    weights = powers[TakesThirdPower(frame, hopA) ? 1 : 0].get();
    sums[size_t(frame)] = double(weights[0]) * weights[0];
    for (int32_t i = frame - 1; i >= 0; --i) {
        const double later = i + hopS <= frame ? sums[size_t(i + hopS)] : 0.0;
        sums[size_t(i)] = double(weights[i]) * weights[i] + later;
    }
    for (int32_t i = 0; i < frame; ++i)
        synthNorm[size_t(i)] = float(1.0 / sums[size_t(i)]);
}
