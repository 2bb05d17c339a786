#include "dsp/kernels.h"

#include "tests/dsp/each_class.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>

namespace {

class KernelsOf : public EachClass {
protected:
    const VectorKernels& kernels = *GetParam()->kernels;
};
INSTANTIATE_TEST_SUITE_P(, KernelsOf, testing::ValuesIn(ClassesHere()), ClassName);

constexpr int32_t kSizes[] = {0, 1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 32, 33, 100};
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kSentinel = 77.0f;   // stands behind every result

void ExpectNear(const Signal& got, const Signal& expected, double tolerance, int32_t n)
{
    for (size_t i = 0; i < expected.size(); ++i)
        ASSERT_NEAR(got[i], expected[i], tolerance) << n << " at " << i;
}

// Two roundings of products and sums of numbers up to 1.
constexpr double kTolerance = 2.4e-7;

TEST_P(KernelsOf, SinCosHoldsItsBound)
{
    Signal angles;
    for (float a = -1000.0f; a < 1000.0f; a += 0.037f)
        angles.push_back(a);
    for (float a = -7.0f; a < 7.0f; a += 0.0011f)
        angles.push_back(a);
    for (int32_t n : kSizes) {
        Signal sines(size_t(n) + 1, kSentinel), cosines = sines;
        kernels.SinCos(sines.data(), cosines.data(), angles.data() + 1, n);
        EXPECT_EQ(sines.back(), kSentinel);
        EXPECT_EQ(cosines.back(), kSentinel);
    }
    Signal sines(angles.size()), cosines(angles.size());
    kernels.SinCos(sines.data(), cosines.data(), angles.data(), int32_t(angles.size()));
    for (size_t i = 0; i < angles.size(); ++i) {
        ASSERT_NEAR(sines[i], std::sin(double(angles[i])), 2e-7) << angles[i];
        ASSERT_NEAR(cosines[i], std::cos(double(angles[i])), 2e-7) << angles[i];
    }
}

TEST_P(KernelsOf, RotationAndGatherFollowTheirRegions)
{
    for (int32_t end : kSizes)
        for (int32_t begin : {1, 2}) {
            const Signal x = Noise(2 * end + 2, 1), angles = Noise(end + 1, 2, 3.0f), phase = Noise(end + 1, 3, 3.0f);
            Signal turns;
            std::vector<int32_t> target;
            for (size_t k = 0; k < angles.size(); ++k) {
                turns.push_back(std::cos(angles[k]));
                turns.push_back(std::sin(angles[k]));
                target.push_back(int32_t(k) / 5 * 5);
            }
            Signal y(x.size(), kSentinel), expected = y, sums(angles.size(), kSentinel), expectedSums = sums;
            for (size_t k = size_t(begin); k < size_t(std::max(begin, end)); ++k) {
                const auto t = size_t(target[k]);
                const auto z =
                    std::complex<double>(x[2 * k], x[2 * k + 1]) * std::complex<double>(turns[2 * t], turns[2 * t + 1]);
                expected[2 * k] = float(z.real());
                expected[2 * k + 1] = float(z.imag());
            }
            for (size_t k = 0; k < size_t(end); ++k)
                expectedSums[k] = angles[size_t(target[k])] + phase[k];
            kernels.RotateBins(y.data(), x.data(), target.data(), turns.data(), begin, end);
            ExpectNear(y, expected, kTolerance, end);
            Signal inPlace = x;
            kernels.RotateBins(inPlace.data(), inPlace.data(), target.data(), turns.data(), begin, end);
            for (size_t i = size_t(2 * begin); i < size_t(2 * end); ++i)
                ASSERT_EQ(inPlace[i], y[i]) << end;
            kernels.GatherAdd(sums.data(), angles.data(), target.data(), phase.data(), end);
            EXPECT_EQ(sums, expectedSums) << end;
        }
}

TEST_P(KernelsOf, FramesTurnByHalfOnTheWayInAndBack)
{
    for (int32_t half : kSizes)
        for (size_t offset : {0, 1}) {
            const int32_t n = 2 * half;
            const Signal x = Noise(n + 1, 1), window = Noise(n + 1, 2), sum = Noise(n + 2, 3);
            const float *in = x.data() + offset, *w = window.data() + offset;
            Signal turned(size_t(n) + 2, kSentinel), added = sum, plain = sum;
            kernels.WindowZeroPhase(turned.data(), in, w, n);
            kernels.OverlapAddZeroPhase(added.data(), in, w, n);
            kernels.OverlapAdd(plain.data(), in, w, n);
            for (int32_t i = 0; i < n; ++i) {
                const int32_t other = (i + half) % n;
                const auto at = size_t(i);
                ASSERT_EQ(turned[at], in[other] * w[other]) << n;
                ASSERT_NEAR(added[at], double(sum[at]) + double(in[other]) * w[i], kTolerance) << n;
                ASSERT_NEAR(plain[at], double(sum[at]) + double(in[i]) * w[i], kTolerance) << n;
            }
            EXPECT_EQ(turned[size_t(n)], kSentinel);
            EXPECT_EQ(added[size_t(n)], sum[size_t(n)]);
        }
}

TEST_P(KernelsOf, ChannelsInterleaveAndComeApart)
{
    for (int32_t channels : {1, 2, 3, 6, 32})
        for (int32_t frames : kSizes) {
            std::vector<Signal> in, out;
            std::vector<const float*> sources;
            std::vector<float*> targets;
            for (int32_t c = 0; c < channels; ++c) {
                in.push_back(Noise(frames + 1, unsigned(c)));
                in.back().back() = kSentinel;
                out.emplace_back(size_t(frames) + 1, kSentinel);
            }
            for (size_t c = 0; c < size_t(channels); ++c) {
                sources.push_back(in[c].data());
                targets.push_back(out[c].data());
            }
            Signal mixed(size_t(channels * frames) + 1, kSentinel);
            kernels.Interleave(mixed.data(), sources.data(), channels, frames);
            EXPECT_EQ(mixed.back(), kSentinel);
            for (int32_t i = 0; i < channels * frames; ++i)
                ASSERT_EQ(mixed[size_t(i)], in[size_t(i % channels)][size_t(i / channels)])
                    << channels << 'x' << frames;
            kernels.Deinterleave(targets.data(), mixed.data(), channels, frames);
            EXPECT_EQ(out, in) << channels << 'x' << frames;
        }
}

TEST_P(KernelsOf, CubicRunsThroughACubicOfItsFourPoints)
{
    for (int32_t channels : {1, 2, 5})
        for (float ratio : {0.1f, 0.7f, 1.0f, 1.3f, 3.7f})
            for (int32_t count : kSizes) {
                const double position = 3.25;
                const auto frames = int32_t(position + count * double(ratio)) + 2;
                std::vector<Signal> x, y;
                std::vector<const float*> in;
                std::vector<float*> out;
                for (int32_t c = 0; c < channels; ++c) {
                    x.push_back(Noise(frames, unsigned(c)));
                    y.emplace_back(size_t(count) + 1, kSentinel);
                }
                for (size_t c = 0; c < size_t(channels); ++c) {
                    in.push_back(x[c].data());
                    out.push_back(y[c].data());
                }
                kernels.Cubic(out.data(), in.data(), channels, position, ratio, count);
                for (size_t c = 0; c < size_t(channels); ++c) {
                    ASSERT_EQ(y[c].back(), kSentinel);
                    for (int32_t j = 0; j < count; ++j) {
                        const double at = position + j * double(ratio), t = at - std::floor(at);
                        const float* p = x[c].data() + int64_t(at);
                        // Newton's form of Catmull and Rom's curve
                        const double m0 = (double(p[-1]) - p[-3]) / 2, m1 = (double(p[0]) - p[-2]) / 2;
                        const double rise = double(p[-1]) - p[-2];
                        const double expected =
                            p[-2] + t * (m0 + t * (3 * rise - 2 * m0 - m1 + t * (m0 + m1 - 2 * rise)));
                        ASSERT_NEAR(y[c][size_t(j)], expected, 6e-7) << ratio << " frame " << j;
                    }
                }
            }
}

TEST_P(KernelsOf, CorrelationProductAlternatesItsSign)
{
    for (int32_t end : kSizes)
        for (int32_t begin : {1, 4}) {
            const Signal a = Noise(2 * end + 2, 1), b = Noise(2 * end + 2, 2);
            Signal out(a.size(), kSentinel), expected = out, inPlace = a;
            for (int32_t k = begin; k < end; ++k) {
                const auto re = size_t(2 * k), im = re + 1;
                const auto z = std::complex<double>(a[re], a[im]) * std::complex<double>(b[re], -b[im]);
                expected[re] = float(k % 2 ? -z.real() : z.real());
                expected[im] = float(k % 2 ? -z.imag() : z.imag());
            }
            kernels.CorrelationProduct(out.data(), a.data(), b.data(), begin, end);
            ExpectNear(out, expected, kTolerance, end);
            kernels.CorrelationProduct(inPlace.data(), inPlace.data(), b.data(), begin, end);
            for (auto i = size_t(2 * begin); i < size_t(2 * end); ++i)
                ASSERT_EQ(inPlace[i], out[i]) << end;
        }
}

// Advances that point near, far, nowhere and beyond the top; the definition's own answer for three of them.
TEST_P(KernelsOf, BinsPointWhereTheDefinitionSays)
{
    constexpr float kBinCount = 512.0f, kTurn = 128.0f * 6.2831855f;
    for (int32_t n : {0, 1, 7, 8, 15, 16, 17, 63, 64, 65, 100, 128, 129, 256}) {
        Signal advance = Noise(n + 1, 4, 2.0f);
        for (int32_t k = 0; k < n; ++k)
            advance[size_t(k)] = (float(k) + 3.0f * advance[size_t(k)]) * kTurn / kBinCount;
        if (n > 8) {
            advance[2] = std::nanf("");
            advance[3] = 2.5f * kTurn / kBinCount;   // halfway: to the even bin
            advance[8] = 1e9f;
        }
        std::vector<int32_t> target(size_t(n) + 1, -7), expected = target;
        std::vector<uint64_t> down(size_t(n) / 64 + 1, 77), expectedDown = down;
        kernels.PointBins(target.data(), down.data(), advance.data(), kBinCount, kTurn, n);
        kKernelsPortable.PointBins(expected.data(), expectedDown.data(), advance.data(), kBinCount, kTurn, n);
        ASSERT_EQ(target, expected) << n;
        ASSERT_EQ(down, expectedDown) << n;
        if (n > 8) {
            EXPECT_EQ(target[2], 2);
            EXPECT_EQ(target[3], 2);
            EXPECT_EQ(target[8], 255);
            EXPECT_EQ(down[0] & 0x10c, 0xcu);   // bins 2 and 3, not 8
        }
    }
}

TEST_P(KernelsOf, EnergiesAddUpAndRegionsEndWhereBinsPointBeyond)
{
    for (int32_t n : kSizes) {
        const Signal now = Noise(n + 1, 5), before = Noise(n + 1, 6);
        std::vector<BinEnergy> below(size_t(n) + 2, {0.0, 0.0});
        kernels.SumEnergies(below.data(), now.data(), before.data(), 0.3f, n);
        double change = 0.0, reference = 0.0;
        for (size_t k = 0; k < size_t(n); ++k) {
            const double d = std::fabs(double(now[k]) - before[k]);
            change += d > 0.3f ? d * d : 0.0;
            reference += d > 0.3f ? double(before[k]) * before[k] : 0.0;
            ASSERT_NEAR(below[k + 1].change, change, 1e-6 * change) << n;   // squares are rounded to float
            ASSERT_NEAR(below[k + 1].reference, reference, 1e-6 * reference) << n;
        }
        EXPECT_EQ(below.back().change, 0.0);

        std::vector<int32_t> target, peaks, ends(size_t(n), -1), expected(ends);
        for (int32_t k = 0; k < n; ++k)
            target.push_back(k / 5 * 5 + (k % 7 == 3 ? 5 : 0));
        for (int32_t k = 0; k < n; k += 5)
            peaks.push_back(k);
        kernels.RegionEnds(ends.data(), target.data(), peaks.data(), int32_t(peaks.size()), n);
        for (size_t i = 0; i < peaks.size(); ++i) {
            int32_t k = peaks[i] + 1;
            for (; k < n && target[size_t(k)] <= peaks[i]; ++k) {
            }
            ASSERT_EQ(ends[i], k) << n;
        }
    }
}

TEST_P(KernelsOf, SamplesConvertToTheNearestStepAndBack)
{
    Signal x = {0.0f, -0.0f, 1.0f, -1.0f, 1.5f, -1.5f, 3e38f, -3e38f, 1e-30f, kInfinity, -kInfinity, 0.99998f};
    for (float step : {0.5f, 1.5f, 2.5f, -0.5f, -1.5f, 32766.5f, 32767.4f, 32767.5f, -32768.5f, -32769.0f})
        x.push_back(step / 32768.0f);
    const Signal noise = Noise(100, 8, 1.2f);
    x.insert(x.end(), noise.begin(), noise.end());
    for (const float fullScale : {32768.0f, 128.0f})
        for (int32_t n = 0; n < int32_t(x.size()); ++n) {
            std::vector<int16_t> got(size_t(n) + 1, 77), expected = got;
            int32_t beyond = 0;
            for (size_t i = 0; i < size_t(n); ++i) {
                const double value = double(x[i + 1]) * fullScale;
                beyond += value > fullScale - 0.5 || value < -fullScale - 0.5;
                expected[i] = int16_t(std::nearbyint(std::clamp<double>(value, -fullScale, fullScale - 1.0)));
            }
            EXPECT_EQ(kernels.ToInt16(got.data(), x.data() + 1, fullScale, n), beyond) << n;
            ASSERT_EQ(got, expected) << n;
        }
    std::vector<int16_t> all;
    for (int32_t v = -32768; v < 32768; ++v)
        all.push_back(int16_t(v));
    for (const int32_t n : kSizes) {
        Signal few(size_t(n) + 1, kSentinel);
        kernels.FromInt16(few.data(), all.data() + 1, n);
        EXPECT_EQ(few.back(), kSentinel);
    }
    Signal floats(all.size());
    kernels.FromInt16(floats.data(), all.data(), int32_t(all.size()));
    std::vector<int16_t> back(all.size());
    EXPECT_EQ(kernels.ToInt16(back.data(), floats.data(), 32768.0f, int32_t(all.size())), 0);
    EXPECT_EQ(back, all);
    EXPECT_EQ(floats[0], -1.0f);
}

TEST_P(KernelsOf, ThePeakIsTheLargestMagnitudeAndShowsWhatIsNoNumber)
{
    for (const int32_t n : kSizes) {
        Signal x = Noise(n + 2, 3);
        x.front() = x.back() = 5.0f;   // beside what is looked at
        float expected = 0.0f;
        for (int32_t i = 1; i <= n; ++i)
            expected = std::max(expected, std::fabs(x[size_t(i)]));
        EXPECT_EQ(kernels.PeakMagnitude(x.data() + 1, n), expected) << n;
        for (int32_t i = 1; i <= n; ++i)
            for (const float odd : {-kInfinity, std::nanf("")}) {
                Signal y = x;
                y[size_t(i)] = odd;
                EXPECT_FALSE(std::isfinite(kernels.PeakMagnitude(y.data() + 1, n))) << n << " at " << i;
            }
    }
}

}   // namespace
