#include "engine/overlap_window.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

constexpr struct {
    int32_t frame, hopA, hopS;
    int exponent;
} kHops[] = {{4096, 1024, 1024, 2}, {4096, 1024, 102, 2}, {4096, 1024, 1536, 2}, {4096, 512, 1126, 3},
             {4096, 64, 640, 3},    {2048, 256, 256, 3},  {32768, 8192, 818, 2}};

TEST(OverlapWindow, IsAPowerOfItsHammingForm)
{
    for (const auto& h : kHops) {
        const OverlapWindow window(h.frame, h.hopS, h.hopA);
        for (int32_t i = 0; i < h.frame; ++i) {
            const int32_t rising = std::min(i, h.frame - 1 - i);
            const double w = 0.53836 - 0.46164 * std::cos(2.0 * std::numbers::pi * rising / (h.frame - 1));
            ASSERT_NEAR(window.Weights()[i], std::pow(w, h.exponent), 1e-7) << h.frame << '/' << h.hopA << ' ' << i;
        }
    }
}

TEST(OverlapWindow, EvensOutTheOverlappedSquares)
{
    OverlapWindow window(4096, 64, 64);
    for (const auto& h : kHops) {
        if (h.frame != 4096)
            window = OverlapWindow(h.frame, h.hopS, h.hopA);
        window.SetHops(h.hopS, h.hopA);
        for (int32_t i = 0; i < h.hopS; ++i) {
            double sum = 0.0;
            for (int32_t at = i; at <= h.frame; at += h.hopS)
                sum += double(window.Weights()[at % h.frame]) * window.Weights()[at % h.frame];
            ASSERT_NEAR(sum * window.Norm()[i], 1.0, 1e-6) << h.frame << '/' << h.hopS << ' ' << i;
        }
        window = OverlapWindow(4096, 64, 64);
    }
}

}   // namespace
