#include "dsp/fast_resample.h"

#include "tests/allocations.h"
#include "tests/dsp/each_class.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace {

class FastResample : public EachClass {};
INSTANTIATE_TEST_SUITE_P(, FastResample, testing::ValuesIn(ClassesHere()), ClassName);

// Feeds x in blocks of these lengths, in turn, at these ratios, in turn; every channel gets x times its number.
std::vector<Signal> Resampled(const Signal& x, int32_t channels, const std::vector<int32_t>& blocks,
                              const std::vector<float>& ratios)
{
    CFastResample resampler(channels, 4096);
    std::vector<Signal> result(static_cast<size_t>(channels));
    size_t turn = 0;
    for (size_t at = 0; at < x.size(); ++turn) {
        const auto frames = std::min(size_t(blocks[turn % blocks.size()]), x.size() - at);
        std::vector<Signal> work(size_t(channels), Signal(frames * 12 + 12));
        std::vector<float*> data;
        for (size_t c = 0; c < work.size(); ++c) {
            for (size_t i = 0; i < frames; ++i)
                work[c][i] = x[at + i] * float(c + 1);
            data.push_back(work[c].data());
        }
        const int32_t written =
            resampler.Process(data.data(), int32_t(frames), data.data(), ratios[turn % ratios.size()]);
        for (size_t c = 0; c < work.size(); ++c)
            result[c].insert(result[c].end(), work[c].begin(), work[c].begin() + written);
        at += frames;
    }
    return result;
}

TEST_P(FastResample, AtRatioOneTheInputComesBackTwoFramesLate)
{
    const Signal x = Noise(1000, 1);
    const Signal y = Resampled(x, 1, {1, 7, 100}, {1.0f})[0];
    ASSERT_EQ(y.size(), x.size());
    for (size_t i = 0; i < x.size(); ++i)
        ASSERT_EQ(y[i], i < 2 ? 0.0f : x[i - 2]) << i;
}

TEST_P(FastResample, BlocksAndChannelsDoNotShow)
{
    const Signal x = Noise(3000, 2);
    for (float ratio : {0.1f, 0.5f, 0.943874f, 1.3348398f, 9.7f}) {
        const auto whole = Resampled(x, 3, {4096}, {ratio});
        for (const auto& blocks : {std::vector<int32_t>{1}, {2, 3}, {127, 1, 500}}) {
            const auto pieces = Resampled(x, 3, blocks, {ratio});
            ASSERT_EQ(pieces[0].size(), whole[0].size()) << ratio;
            for (size_t c = 0; c < 3; ++c)
                for (size_t i = 0; i < whole[0].size(); ++i) {
                    ASSERT_NEAR(pieces[c][i], whole[c][i], 6e-7 * double(c + 1)) << ratio << " frame " << i;
                    ASSERT_NEAR(whole[c][i], whole[0][i] * float(c + 1), 6e-7 * double(c + 1));
                }
        }
        // Every read position j * ratio below the input's length gives a frame.
        EXPECT_EQ(whole[0].size(), size_t(std::ceil(3000.0 / double(ratio)))) << ratio;
    }
}

TEST_P(FastResample, AGlidingRatioKeepsItsReadPosition)
{
    Signal ramp(4000);
    std::iota(ramp.begin(), ramp.end(), 0.0f);   // of which the curve gives back the read position itself
    const std::vector<float> ratios = {0.8f, 1.1f, 0.35f, 2.0f, 1.0f};
    const Signal y = Resampled(ramp, 1, {64}, ratios)[0];
    double position = 0.0;
    size_t turn = 0;
    for (size_t j = 0; j < y.size(); ++j) {
        if (position > 4.0) {
            ASSERT_NEAR(y[j], position - 2.0, 1e-3) << j;   // roundings of numbers up to 4000
        }
        position += double(ratios[turn % ratios.size()]);
        while (position >= 64.0 * double(turn + 1))
            ++turn;
    }
}

TEST_P(FastResample, ResetForgetsAndARatioOfNothingTakesNothing)
{
    CFastResample resampler(1, 64);
    const Signal x = Noise(64, 1);
    Signal first(200), again(200);
    const float* in[] = {x.data()};
    float* out[] = {first.data()};
    const int64_t allocations = AllocationCount();
    const int32_t written = resampler.Process(in, 64, out, 0.77f);
    for (float ratio : {0.0f, -1.0f, std::nanf("")})
        EXPECT_EQ(resampler.Process(in, 64, out, ratio), 0);
    resampler.Reset();
    out[0] = again.data();
    EXPECT_EQ(resampler.Process(in, 64, out, 0.77f), written);
    EXPECT_EQ(AllocationCount(), allocations);
    EXPECT_EQ(again, first);
}

}   // namespace
