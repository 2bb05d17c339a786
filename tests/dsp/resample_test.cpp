#include "dsp/resample.h"

#include "dsp/status.h"
#include "tests/allocations.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

constexpr double kPi = std::numbers::pi;
constexpr int32_t kMaxFrames = 4096;

ResamplerPtr Make(int32_t quality = 3, int32_t channels = 1, bool pair = false, int32_t type = kResampleFloat,
                  int32_t maxFrames = kMaxFrames)
{
    CResampleBase* resampler = nullptr;
    EXPECT_EQ(CreateResampler(&resampler, quality, maxFrames, channels, type, pair), kSuccess);
    return ResamplerPtr(resampler);
}

double Sinc(double x)
{
    return x == 0.0 ? 1.0 : std::sin(kPi * x) / (kPi * x);
}

// What a band-limited signal is worth between its samples: the sum of sincs over the whole of it, held together by a
// window (four-term Blackman-Harris) so wide that it tells below 1e-4 for content up to 0.48 of the rate.
double BandLimited(const Signal& x, double t)
{
    constexpr double kHalf = 200.0;
    const double phase = std::sin(kPi * (t - std::floor(t))) / kPi;
    const auto below = int64_t(std::floor(t));
    if (phase == 0.0)
        return x[size_t(below)];
    const auto first = std::max<int64_t>(0, below - int64_t(kHalf) + 1);
    const auto last = std::min<int64_t>(int64_t(x.size()) - 1, below + int64_t(kHalf));
    double sum = 0.0;
    for (int64_t n = first; n <= last; ++n) {
        const double u = t - double(n), c = std::cos(kPi * u / kHalf);
        const double window = 0.35875 + 0.48829 * c + 0.14128 * (2.0 * c * c - 1.0) + 0.01168 * c * (4.0 * c * c - 3.0);
        sum += x[size_t(n)] * window * ((below - n) % 2 ? -phase : phase) / u;
    }
    return sum;
}

// The Kaiser window with beta 9: edge is 0 in the middle, 1 at the end.
double Kaiser(double edge)
{
    static const std::vector<double> kTable = [] {
        std::vector<double> table(4097);
        for (size_t i = 0; i < table.size(); ++i)
            table[i] = std::cyl_bessel_i(0.0, 9.0 * std::sqrt(1.0 - std::pow(double(i) / 4096.0, 2.0))) /
                       std::cyl_bessel_i(0.0, 9.0);
        return table;
    }();
    const double position = std::min(edge, 1.0) * 4096.0;
    const auto i = std::min<size_t>(size_t(position), 4095);
    return kTable[i] + (position - double(i)) * (kTable[i + 1] - kTable[i]);
}

// The filter as a formula: quality zero crossings a wing, stretched below ratio 1, over what has arrived by then.
double Filtered(const Signal& x, size_t arrived, double t, double ratio, int32_t quality)
{
    const double stretch = std::min(1.0, ratio), rolloff = 0.9f + float(quality) * 0.00078125f;
    const double length = 256.0 * quality, reach = quality / stretch;
    double sum = 0.0;
    for (auto n = int64_t(std::max(0.0, std::floor(t - reach) + 1.0)); n < int64_t(arrived) && double(n) < t + reach;
         ++n) {
        const double u = std::fabs(t - double(n)) * stretch;
        sum += x[size_t(n)] * rolloff * Sinc(rolloff * u) * Kaiser(u * 256.0 / (length - 1.0));
    }
    return sum * 0.99 * stretch;
}

struct Output {
    Signal samples;
    std::vector<double> times;     // read position of each, in input frames
    std::vector<double> ratios;    // in force
    std::vector<size_t> arrived;   // input frames that had come in by then
};

// Streams x at the ratio that ratioAt gives for each call of about blockFrames output frames.
Output Stream(CResampleBase& resampler, const Signal& x, int32_t blockFrames,
              const std::function<float(size_t)>& ratioAt)
{
    Output out;
    Signal block(size_t(blockFrames) * 8 + 64);
    double time = 0.0;
    size_t taken = 0;
    for (size_t call = 0;; ++call) {
        const float ratio = ratioAt(call);
        const int32_t needed = resampler.InputFramesFor(blockFrames, 1.0f, ratio);
        if (taken + size_t(needed) > x.size())
            return out;
        const int32_t written = resampler.Process(x.data() + taken, block.data(), 1.0f, ratio, 1, needed);
        EXPECT_GE(written, blockFrames) << "call " << call << " at ratio " << ratio;
        taken += size_t(needed);
        for (int32_t i = 0; i < written; ++i, time += 1.0 / double(ratio)) {
            out.samples.push_back(block[size_t(i)]);
            out.times.push_back(time);
            out.ratios.push_back(ratio);
            out.arrived.push_back(taken);
        }
    }
}

// Six tones below `top` cycles a frame, none a fraction of another.
Signal Tones(int32_t n, double top)
{
    Signal sum(static_cast<size_t>(n), 0.0f);
    for (double part : {0.0713, 0.193, 0.377, 0.591, 0.829, 0.997}) {
        const Signal tone = Tone(n, part * top, 1.0, 0.15, 7.0 * part);
        std::transform(sum.begin(), sum.end(), tone.begin(), sum.begin(), std::plus<>());
    }
    return sum;
}

// Error against the exact value in dB below the signal; the gain at DC is part of the design and taken out. The ends,
// where the reference misses half its signal, stay out.
double ErrorDb(const Output& out, const Signal& x, double gain)
{
    double error = 0.0, power = 1e-30;
    for (size_t i = 0; i < out.samples.size(); ++i) {
        if (out.times[i] < 200.0 || out.times[i] > double(x.size()) - 200.0)
            continue;
        const double exact = BandLimited(x, out.times[i]);
        error += std::pow(out.samples[i] / gain - exact, 2.0);
        power += exact * exact;
    }
    return 10.0 * std::log10(error / power);
}

TEST(Resample, FollowsTheExactBandLimitedSignal)
{
    // At quality 3 what is left is the droop of 0.07 dB at a fifth of Nyquist; long filters show that the times are exact.
    static constexpr struct {
        int32_t quality;
        double top, errorDb;   // top: of the lower Nyquist frequency
    } kCases[] = {{3, 0.2, -41.0}, {24, 0.7, -75.0}, {60, 0.8, -82.0}};
    for (const auto& c : kCases)
        for (float ratio : {0.25f, 0.37f, 0.5f, 0.944f, 1.0f, 1.06f, 1.5f, 2.0f, 3.17f, 4.0f}) {
            const Signal x = Tones(2000, c.top * 0.5 * std::min(1.0f, ratio));
            const Output out = Stream(*Make(c.quality), x, 61, [&](size_t) { return ratio; });
            const double gain = c.quality == 3 ? 0.9893 : 0.99;
            EXPECT_LT(ErrorDb(out, x, gain), c.errorDb) << "quality " << c.quality << ", ratio " << ratio;
        }
}

TEST(Resample, GlidesWithoutAPhaseJump)
{
    static constexpr struct {
        float from, to;
    } kGlides[] = {{0.25f, 4.0f}, {4.0f, 0.25f}, {1.2f, 0.8f}, {0.5f, 0.51f}};
    for (const auto& g : kGlides) {
        const Signal x = Tones(12000, 0.2 * 0.5 * 0.25);
        const auto ratio = [&](size_t call) {
            return g.from * std::pow(g.to / g.from, float(std::min<size_t>(call, 100)) / 100.0f);
        };
        EXPECT_LT(ErrorDb(Stream(*Make(), x, 64, ratio), x, 0.9893), -41.0) << g.from << " to " << g.to;
    }
}

// Noise shows every coefficient. The bound: the read position is cut to 1/32768 frame, worth up to 1e-4 of the peak.
TEST(Resample, WeighsEveryInputFrameByTheFilterFormula)
{
    const Signal x = Noise(9000, 3);
    const std::function<float(size_t)> kRatios[] = {[](size_t) { return 1.0f; }, [](size_t) { return 0.2296875f; },
                                                    [](size_t) { return 2.7f; },
                                                    [](size_t call) { return call < 5 ? 1.0f : 0.25f; },   // xOff grows
                                                    [](size_t call) { return call % 2 ? 0.4f : 3.0f; }};
    for (int32_t quality : {1, 3, 16})
        for (const auto& ratioAt : kRatios) {
            const Output out = Stream(*Make(quality), x, 50, ratioAt);
            ASSERT_GT(out.samples.size(), 200u);
            for (size_t i = 0; i < out.samples.size(); ++i)
                ASSERT_NEAR(out.samples[i], Filtered(x, out.arrived[i], out.times[i], out.ratios[i], quality), 3e-4)
                    << "quality " << quality << ", ratio " << out.ratios[i] << ", frame " << i;
        }
}

TEST(Resample, StaysInStepHoweverTheInputIsCut)
{
    static constexpr struct {
        float in, out;
    } kRates[] = {{48000, 11025}, {44100, 11025}, {384000, 11025}, {11025, 48000}, {44100, 44101}, {1, 1}};
    for (const auto& rates : kRates)
        for (int32_t piece : {1, 2, 7, 480, 4096}) {
            const auto resampler = Make();
            const Signal x = Noise(piece, 1);
            Signal out(size_t(piece) * 5 + 64);
            double read = 0.0, written = 0.0;
            const double ratio = double(rates.out) / rates.in;
            for (int32_t call = 0; call < 60000 / piece; ++call, read += piece)
                written += resampler->Process(x.data(), out.data(), rates.in, rates.out, 1, piece);
            // What is held back is the look-ahead, and the fraction of an output frame.
            const double lookAhead = std::max(8.0, std::floor(4.0 * std::max(1.0, 1.0 / ratio) + 1.0));
            EXPECT_NEAR(written, (read - lookAhead) * ratio, 1.0 + ratio)
                << rates.in << " to " << rates.out << " by " << piece;
        }
}

TEST(Resample, TellsItsNeedToTheFrame)
{
    const auto resampler = Make();
    const Signal x(kMaxFrames, 0.0f);
    Signal out(kMaxFrames);
    EXPECT_EQ(resampler->InputFramesFor(512, 44100, 11025), 2065);   // and 17 of look-ahead
    EXPECT_EQ(resampler->Process(x.data(), out.data(), 44100, 11025, 1, 2065), 512);
    EXPECT_EQ(resampler->InputFramesFor(512, 44100, 11025), 2048);
    EXPECT_EQ(resampler->Process(x.data(), out.data(), 44100, 11025, 1, 2048), 512);
    EXPECT_EQ(resampler->InputFramesFor(0, 44100, 11025), 0);
    resampler->Reset();
    EXPECT_EQ(resampler->InputFramesFor(512, 44100, 11025), 2065);
}

TEST(Resample, FirstFramesWaitForTheLookAheadAndAreNotLost)
{
    const auto resampler = Make();
    const Signal x = Noise(200, 5);
    Signal out(400);
    EXPECT_EQ(resampler->Process(x.data(), out.data(), 1, 1, 1, 8), 0);
    const int32_t written = resampler->Process(x.data() + 8, out.data(), 1, 1, 1, 192);
    EXPECT_EQ(written, 192);
    for (int32_t i = 0; i < written; ++i)
        ASSERT_NEAR(out[size_t(i)], Filtered(x, 200, i, 1.0, 3), 1e-6) << i;
}

// The call before was longer, so what it left behind stands where the look-ahead is missing.
TEST(Resample, MissingLookAheadIsSilence)
{
    const auto resampler = Make();
    const Signal x = Noise(1700, 4);
    Signal out(1700);
    const int32_t before = resampler->Process(x.data(), out.data(), 1, 1, 1, 1400);
    ASSERT_EQ(resampler->Process(x.data() + 1400, out.data(), 10, 1, 1, 300), 30);
    for (int32_t i = 2; i < 30; ++i)   // the first two reach for more of the past than is kept
        ASSERT_NEAR(out[size_t(i)], Filtered(x, 1700, before + 10.0 * i, 0.1, 3), 3e-4) << i;
}

TEST(Resample, ChannelsAreIndependentAndAlike)
{
    constexpr int32_t kFrames = 300;
    for (int32_t channels : {2, 3, 5, 6, 8, 48})
        for (bool pair : {false, true})
            for (float ratio : {0.05f, 0.3f, 1.7f}) {
                const auto together = Make(3, channels, pair);
                std::vector<ResamplerPtr> alone(static_cast<size_t>(channels));
                std::generate(alone.begin(), alone.end(), [] { return Make(); });
                // The pair sums in single precision: a few roundings of sums near 2.
                const float bound = pair && channels == 2 ? 1e-6f : 1.2e-7f;
                for (unsigned call = 0; call < 4; ++call) {   // from the second one on the ratio is known to stay
                    const Signal mixed = Noise(kFrames * channels, call);
                    Signal out(size_t(kFrames * channels * 3)), one(kFrames), expected(3 * kFrames);
                    const int32_t written = together->Process(mixed.data(), out.data(), 1, ratio, channels, kFrames);
                    for (int32_t c = 0; c < channels; ++c) {
                        for (int32_t i = 0; i < kFrames; ++i)
                            one[size_t(i)] = mixed[size_t(i * channels + c)];
                        ASSERT_EQ(alone[size_t(c)]->Process(one.data(), expected.data(), 1, ratio, 1, kFrames),
                                  written);
                        for (int32_t i = 0; i < written; ++i)
                            ASSERT_NEAR(out[size_t(i * channels + c)], expected[size_t(i)], bound)
                                << channels << " channels, ratio " << ratio << ", channel " << c;
                    }
                }
            }
}

// One call reads the table, many find the ratio unchanged and use rows. The ratios are such that both read at the very
// same positions; where these fall on frames, nothing but rounding differs.
TEST(Resample, RowsAgreeWithTheTable)
{
    const Signal x = Noise(4000, 1);
    static constexpr struct {
        float in, out, bound;
    } kCases[] = {{8, 1, 5e-7f}, {2, 1, 5e-7f}, {1, 1, 5e-7f}, {1, 2, 5e-7f}, {1, 4, 5e-7f}, {5, 4, 1e-4f}};
    for (const auto& c : kCases) {
        Signal whole(17000), cut(17000);
        const int32_t written = Make()->Process(x.data(), whole.data(), c.in, c.out, 1, 4000);
        const auto resampler = Make();
        int32_t inPieces = 0;
        for (int32_t at = 0; at < 4000; at += 160)
            inPieces += resampler->Process(x.data() + at, cut.data() + inPieces, c.in, c.out, 1, 160);
        ASSERT_EQ(inPieces, written);
        for (int32_t i = 0; i < written; ++i)
            ASSERT_NEAR(cut[size_t(i)], whole[size_t(i)], c.bound) << c.in << " to " << c.out << ", frame " << i;
    }
}

TEST(Resample, WorksInPlaceAndStartsAnewAfterReset)
{
    const auto resampler = Make(3, 2);
    const Signal x = Noise(1000, 1);
    Signal apart(1000), inPlace = x;
    const int32_t written = resampler->Process(x.data(), apart.data(), 3, 2, 2, 500);
    resampler->Process(x.data(), inPlace.data(), 5, 1, 2, 100);   // leaves history and a wide look-ahead behind
    resampler->Reset();
    inPlace = x;
    EXPECT_EQ(resampler->Process(inPlace.data(), inPlace.data(), 3, 2, 2, 500), written);
    EXPECT_TRUE(std::equal(apart.begin(), apart.begin() + 2 * written, inPlace.begin()));
}

TEST(Resample, SixteenBitClassAgreesWithTheFloatClassAndHoldsFullScale)
{
    for (float ratio : {0.4f, 1.0f, 2.3f}) {
        const auto integer = Make(3, 1, false, kResampleInt16);
        const auto real = Make();
        const Signal x = Noise(1000, 2, 0.5f);
        std::vector<int16_t> x16(1000), y16(3000);
        std::transform(x.begin(), x.end(), x16.begin(), [](float v) { return int16_t(std::lrint(v * 32767.0f)); });
        Signal rounded(1000), y(3000);
        std::transform(x16.begin(), x16.end(), rounded.begin(), [](int16_t v) { return float(v); });
        const int32_t written = integer->Process(x16.data(), y16.data(), 1, ratio, 1, 1000);
        ASSERT_EQ(real->Process(rounded.data(), y.data(), 1, ratio, 1, 1000), written);
        for (int32_t i = 0; i < written; ++i)   // 2 to 5 steps of truncation, and coefficients of 15 bits
            ASSERT_NEAR(y16[size_t(i)], y[size_t(i)], 8.0) << ratio << " frame " << i;
    }
    const auto integer = Make(3, 1, false, kResampleInt16);
    std::vector<int16_t> square(400), out(1700);
    for (size_t i = 0; i < 400; ++i)
        square[i] = i / 8 % 2 ? INT16_MIN : INT16_MAX;
    const int32_t written = integer->Process(square.data(), out.data(), 1, 4, 1, 400);
    for (int32_t i = 20; i < written - 20; ++i)   // a wrapped overshoot would jump by the whole range
        ASSERT_LT(std::abs(out[size_t(i)] - out[size_t(i - 1)]), 24000) << i;
    EXPECT_EQ(*std::max_element(out.begin(), out.end()), INT16_MAX);
}

TEST(Resample, RefusesWhatItCannotDo)
{
    static constexpr struct {
        int32_t quality, maxFrames, channels, type, status;
    } kCases[] = {{0, 64, 1, 0, kInvalidArgument},  {121, 64, 1, 0, kInvalidArgument}, {3, 64, 1, 2, kInvalidArgument},
                  {3, 64, 1, -1, kInvalidArgument}, {3, -1, 1, 0, kInvalidArgument},   {3, 64, 0, 0, kInvalidArgument},
                  {1, 64, 1, 1, kSuccess},          {120, 64, 48, 0, kSuccess}};
    for (const auto& c : kCases) {
        CResampleBase* resampler = nullptr;
        EXPECT_EQ(CreateResampler(&resampler, c.quality, c.maxFrames, c.channels, c.type, 0), c.status);
        EXPECT_EQ(resampler != nullptr, c.status == kSuccess);
        EXPECT_EQ(DestroyResampler(&resampler), 0);
        EXPECT_EQ(resampler, nullptr);
    }
    const auto resampler = Make(3, 1, false, kResampleFloat, 64);
    Signal x(1000, 1.0f);
    EXPECT_EQ(resampler->Process(x.data(), x.data(), 1, 1, 1, 65), 0);
    EXPECT_EQ(resampler->Process(x.data(), x.data(), 1, 1, 2, 64), 0);
    EXPECT_EQ(resampler->Process(x.data(), x.data(), 1001, 1, 1, 64), 0);
    EXPECT_EQ(resampler->Process(x.data(), x.data(), 0, 0, 1, 64), 0);
    EXPECT_EQ(resampler->InputFramesFor(10, 1, 1), 18) << "nothing of it was taken";
}

TEST(Resample, WidestLookAheadFitsItsBuffer)
{
    for (int32_t type : {kResampleFloat, kResampleInt16}) {
        const auto resampler = Make(3, 2, false, type);
        std::vector<float> x(size_t(kMaxFrames) * 2), out(size_t(kMaxFrames) * 2 + 64);
        int32_t written = 0;
        for (int32_t call = 0; call < 12; ++call)
            written += resampler->Process(x.data(), out.data(), call ? 1000 : 1, 1, 2, call ? kMaxFrames : 9);
        EXPECT_NEAR(written, 1 + (11 * kMaxFrames - 4001) / 1000, 2);
    }
}

TEST(Resample, CreationSurvivesEveryFailingAllocation)
{
    for (int32_t type : {kResampleFloat, kResampleInt16})
        for (int64_t successes = 0;; ++successes) {
            CResampleBase* resampler = nullptr;
            const FailingAllocation failing(successes);
            const int32_t status = CreateResampler(&resampler, 3, 64, 1, type, 0);
            const ResamplerPtr owner(resampler);
            if (!failing.HasFailed())
                break;
            EXPECT_EQ(status, kOutOfMemory) << successes;
            EXPECT_EQ(resampler, nullptr);
        }
}

TEST(Resample, AllocatesNothingAfterCreation)
{
    const auto resampler = Make(3, 2, true);
    const Signal x = Noise(1024, 1);
    Signal out(5000);
    const int64_t before = AllocationCount();
    for (float ratio = 0.25f; ratio < 4.0f; ratio *= 1.01f)
        resampler->Process(x.data(), out.data(), 1, ratio, 2, 512);
    resampler->Reset();
    EXPECT_EQ(AllocationCount(), before);
}

// The figures that the class comment gives.
TEST(Resample, ResponseOfQualityThree)
{
    // Frequencies in units of the lower Nyquist frequency. The gain of the tone itself, and all that is left beside it.
    static constexpr struct {
        double frequency, gainDb, besideDb;
    } kUp[] = {{0.001, -0.094, -84.0}, {0.2, -0.165, -68.0}, {0.3, -0.300, -51.0},
               {0.5, -1.016, -32.0},   {0.7, -2.758, -19.5}, {0.9, -6.057, -11.0}},
      kDown[] = {{0.001, -0.093, -89.0}, {0.5, -1.016, -89.0}, {0.9, -6.057, -54.0}};
    static constexpr struct {
        double frequency, leftDb;
    } kFolding[] = {{1.2, -15.0}, {1.4, -25.0}, {1.5, -32.0}, {1.6, -40.0}, {1.7, -51.0}, {1.8, -68.0}, {1.99, -80.0}};

    const auto measure = [](float ratio, double frequency) {
        const double perFrame = frequency * 0.5 * std::min(1.0f, ratio);
        const Signal x = Tone(4000, perFrame, 1.0, 1.0, 0.3);
        Signal y(20000);
        const int32_t n = Make()->Process(x.data(), y.data(), 1, ratio, 1, 4000);
        // Least squares fit of the tone where both wings are inside the signal.
        const double w = 2.0 * kPi * perFrame / double(ratio);
        double cc = 0, cs = 0, ss = 0, yc = 0, ys = 0, yy = 0;
        for (int32_t i = 100; i < n - 100; ++i) {
            const double c = std::cos(w * i), s = std::sin(w * i), v = y[size_t(i)];
            cc += c * c, cs += c * s, ss += s * s, yc += v * c, ys += v * s, yy += v * v;
        }
        const double det = cc * ss - cs * cs, a = (yc * ss - ys * cs) / det, b = (ys * cc - yc * cs) / det;
        const double left = std::max(1e-20, (yy - a * yc - b * ys) / (n - 200) * 2.0);
        return std::array{20.0 * std::log10(std::hypot(a, b)), 10.0 * std::log10(left),
                          10.0 * std::log10(yy / (n - 200) * 2.0)};
    };
    for (float ratio : {1.3348f, 2.0f, 4.0f})
        for (const auto& c : kUp) {
            const auto [gain, beside, all] = measure(ratio, c.frequency);
            EXPECT_NEAR(gain, c.gainDb, 0.01) << ratio << " at " << c.frequency;
            EXPECT_LT(beside, c.besideDb) << ratio << " at " << c.frequency;
        }
    for (float ratio : {0.25f, 0.5f, 0.749f})
        for (const auto& c : kDown) {
            const auto [gain, beside, all] = measure(ratio, c.frequency);
            EXPECT_NEAR(gain, c.gainDb, 0.01) << ratio << " at " << c.frequency;
            EXPECT_LT(beside, c.besideDb) << ratio << " at " << c.frequency;
        }
    for (float ratio : {0.25f, 0.5f})
        for (const auto& c : kFolding)
            EXPECT_LT(measure(ratio, c.frequency)[2], c.leftDb) << ratio << " at " << c.frequency;
}

}   // namespace
