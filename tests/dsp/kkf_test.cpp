#include "dsp/kkf.h"

#include "dsp/status.h"
#include "tests/allocations.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

KkfPtr Make(int32_t length)
{
    CKKF* kkf = nullptr;
    EXPECT_EQ(CreateKKF(&kkf, length), kSuccess);
    return KkfPtr(kkf);
}

// N * sum over j of a[j + lag] * b[j]
double DirectSum(const Signal& a, const Signal& b, int32_t lag, int32_t n)
{
    double sum = 0.0;
    for (int32_t j = std::max(0, -lag); j < int32_t(b.size()) && j + lag < int32_t(a.size()); ++j)
        sum += double(a[size_t(j + lag)]) * b[size_t(j)];
    return n * sum;
}

// x later by d samples, as long as x; what comes in from outside is silence.
Signal Delayed(const Signal& x, int32_t d)
{
    Signal y(x.size(), 0.0f);
    for (int32_t i = std::max(0, d); i < int32_t(x.size()) + std::min(0, d); ++i)
        y[size_t(i)] = x[size_t(i - d)];
    return y;
}

Signal Impulse(int32_t n, int32_t at, float height = 1.0f)
{
    Signal x(static_cast<size_t>(n), 0.0f);
    x[size_t(at)] = height;
    return x;
}

TEST(Kkf, LengthGrowsToAPowerOfTwo)
{
    static constexpr struct {
        int32_t asked, given;
    } kCases[] = {{1, 8}, {1000, 1024}, {1024, 1024}, {1025, 2048}};
    for (const auto& c : kCases) {
        float* result = nullptr;
        EXPECT_EQ(Make(c.asked)->GetResult(&result), c.given) << "asked for " << c.asked;
    }
    for (int32_t refused : {0, -1, INT32_MAX}) {
        CKKF* kkf = nullptr;
        EXPECT_EQ(CreateKKF(&kkf, refused), kInvalidArgument);
        EXPECT_EQ(kkf, nullptr);
    }
    EXPECT_EQ(DestroyKKF(nullptr), 0);
}

TEST(Kkf, AgreesWithTheDirectSumWhereItIsPositive)
{
    static constexpr struct {
        int32_t n, lengthA, lengthB;
    } kCases[] = {{8, 4, 4}, {64, 32, 32}, {1024, 512, 512}, {1024, 700, 324}, {1024, 1, 1023}, {4096, 2048, 2048}};
    for (const auto& c : kCases) {
        const auto kkf = Make(c.n);
        const Signal a = Noise(c.lengthA, 1), b = Noise(c.lengthB, 2);
        kkf->Correlate(a.data(), b.data(), c.lengthA, c.lengthB);
        float* result = nullptr;
        kkf->GetResult(&result);
        const double bound = 2e-7 * c.n * std::sqrt(c.lengthA * double(c.lengthB));   // rounding in three transforms
        for (int32_t lag = -c.n / 2; lag < c.n / 2; ++lag) {
            // Lags beyond half the length come in again at the other end.
            const double sum =
                DirectSum(a, b, lag, c.n) + DirectSum(a, b, lag - c.n, c.n) + DirectSum(a, b, lag + c.n, c.n);
            ASSERT_NEAR(result[c.n / 2 + lag], std::max(0.0, sum), bound) << c.n << " lag " << lag;
        }
    }
}

TEST(Kkf, FindsADelayOfEitherSign)
{
    const auto kkf = Make(1024);
    for (unsigned seed = 0; seed < 20; ++seed)
        for (int32_t d : {-200, -1, 0, 1, 37, 200}) {
            const Signal x = Noise(512, seed), y = Delayed(x, d);
            kkf->Correlate(x.data(), y.data(), 512, 512);
            EXPECT_EQ(kkf->FindMaxNear(500, 0, 250), -d) << "seed " << seed;
            EXPECT_EQ(kkf->FindMaxNear(500, -d + 3, 5), -d) << "seed " << seed;
        }
}

constexpr float kLevel = 1.00005e-3f;   // times N in the middle between two steps of 1/10000, out of rounding's way

// One impulse against two: the correlation is two peaks, at +100 and at +180.
TEST(Kkf, EarlierOfTwoEqualPeaksWinsAndALouderOneBeatsIt)
{
    const auto kkf = Make(1024);
    Signal a = Impulse(512, 100);
    const Signal b = Impulse(512, 0);
    a[100] = kLevel;
    for (const auto& [height, found] : {std::pair{1.0f, 100}, {1.1f, 180}, {0.9f, 100}}) {
        a[180] = height * kLevel;
        kkf->Correlate(a.data(), b.data(), 512, 512);
        EXPECT_EQ(kkf->FindMaxNear(500, 140, 60), found) << height;
        EXPECT_EQ(kkf->FindMaxNear(500, 180, 20), 180) << height;   // the other one is outside
    }
}

// 0.00231 and 0.00239 are both 23 steps, 0.00241 is 24.
TEST(Kkf, ComparesInStepsOfATenThousandth)
{
    const auto kkf = Make(8);
    const Signal b = Impulse(4, 0);
    Signal a(4, 0.0f);
    static constexpr struct {
        float first, second;   // heights times N
        int32_t found;
    } kCases[] = {{0.00231f, 0.00239f, 0}, {0.00239f, 0.00241f, 3}, {0.00241f, 0.00239f, 0}};
    for (const auto& c : kCases) {
        a[0] = c.first / 8.0f;
        a[3] = c.second / 8.0f;
        kkf->Correlate(a.data(), b.data(), 4, 4);
        EXPECT_EQ(kkf->FindMaxNear(4, 1, 2), c.found) << c.first << ' ' << c.second;
    }
}

TEST(Kkf, SilenceAndUnlikeSegmentsGiveThePrediction)
{
    const auto kkf = Make(256);
    const Signal silent(128, 0.0f), loud = Noise(128, 1), quiet = Noise(128, 1, 1e-5f);
    Signal ramp(128), fall(128);
    for (size_t i = 0; i < 128; ++i) {
        ramp[i] = float(i);
        fall[i] = -float(i);
    }
    const std::pair<const Signal*, const Signal*> kPairs[] = {
        {&silent, &silent}, {&silent, &loud}, {&quiet, &quiet}, {&ramp, &fall}};   // quiet: at most 256 * 128 * 1e-10
    for (const auto& [a, b] : kPairs) {
        kkf->Correlate(a->data(), b->data(), 128, 128);
        for (int32_t predicted : {-40, 0, 17})
            EXPECT_EQ(kkf->FindMaxNear(100, predicted, 20), predicted);
        float* result = nullptr;
        kkf->GetResult(&result);
        EXPECT_GE(*std::min_element(result, result + 256), 0.0f) << "no negative value survives";
    }
}

// Peaks at every lag from -64 to 63, the louder the later, show which window was searched: its last lag wins.
TEST(Kkf, WindowMovesInsideTheRangeAndKeepsItsWidth)
{
    const auto kkf = Make(256);
    Signal a(128);
    for (size_t i = 0; i < 128; ++i)
        a[i] = 1.0f + float(i) * 0.01f;
    const Signal rising = a, probe = Impulse(128, 64);
    const Signal falling(rising.rbegin(), rising.rend());
    static constexpr struct {
        int32_t predicted, first, last;   // of a window of 2 * 5 + 1 lags in a range of +- 50
    } kCases[] = {{0, -5, 5},   {-45, -50, -40}, {-46, -51, -41}, {-60, -51, -41},
                  {45, 40, 50}, {46, 39, 49},    {60, 39, 49}};
    for (const auto& c : kCases) {
        kkf->Correlate(rising.data(), probe.data(), 128, 128);
        EXPECT_EQ(kkf->FindMaxNear(50, c.predicted, 5), c.last) << c.predicted;
        kkf->Correlate(falling.data(), probe.data(), 128, 128);
        EXPECT_EQ(kkf->FindMaxNear(50, c.predicted, 5), c.first) << c.predicted;
    }
    EXPECT_EQ(kkf->FindMaxNear(50, 7, -1), 7) << "an empty window";
    for (int32_t end : {-128, 128})   // the window would leave the result
        EXPECT_EQ(kkf->FindMaxNear(128, end, 3), end);
}

// Results reach 1e5; ten thousand times that leaves 32 bits.
TEST(Kkf, LoudPeaksAreComparedWithoutOverflow)
{
    const auto kkf = Make(4096);
    Signal a = Impulse(2048, 50, 10.0f);
    a[80] = 30.0f;
    const Signal b = Impulse(2048, 0, 10.0f);
    kkf->Correlate(a.data(), b.data(), 2048, 2048);
    EXPECT_EQ(kkf->FindMaxNear(2000, 65, 40), 80);
}

TEST(Kkf, CreationSurvivesEveryFailingAllocation)
{
    for (int64_t successes = 0;; ++successes) {
        CKKF* kkf = nullptr;
        const FailingAllocation failing(successes);
        const int32_t status = CreateKKF(&kkf, 1024);
        const KkfPtr owner(kkf);
        if (!failing.HasFailed())
            break;
        EXPECT_EQ(status, kOutOfMemory) << successes;
        EXPECT_EQ(kkf, nullptr);
    }
}

TEST(Kkf, AllocatesNothingAfterCreation)
{
    const auto kkf = Make(1024);
    const Signal x = Noise(512, 1);
    const int64_t before = AllocationCount();
    kkf->Correlate(x.data(), x.data(), 512, 512);
    EXPECT_EQ(kkf->FindMaxNear(500, 3, 20), 0);
    EXPECT_EQ(AllocationCount(), before);
}

}   // namespace
