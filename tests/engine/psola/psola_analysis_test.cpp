#include "engine/psola/psola_analysis.h"

#include "dsp/status.h"
#include "engine/psola/pitch_marks.h"
#include "engine/rate_band.h"
#include "tests/allocations.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr struct Configuration {
    const char* name;
    int32_t periodMode, trackPitch;
} kMono{"mono", kPeriodModeMono, 1}, kSpeech{"speech", kPeriodModeSpeech, 0}, kPro{"pro", kPeriodModePro, 0};

struct Analysis {
    CPitchMarks marks;
    PSOLAAnalysisPtr walk;

    Analysis(const Configuration& configuration, float rate, int32_t channels = 1)
    {
        CPSOLAAnalysis* made = nullptr;
        EXPECT_EQ(marks.Allocate(20000), kSuccess);
        EXPECT_EQ(CreatePSOLAAnalysis(&made, &marks, rate, configuration.periodMode, channels, configuration.trackPitch,
                                      1, 0),
                  kSuccess);
        walk.reset(made);
    }
    // In blocks as the Soloist modes bring them at the start.
    void Feed(const Signal& x, int32_t block = 5120)
    {
        for (size_t at = 0; at < x.size(); at += size_t(block)) {
            const float* plane = x.data() + at;
            walk->ProcessBlock(&plane, int32_t(std::min(size_t(block), x.size() - at)));
        }
    }
};

// Pulses that fall off within a millisecond: a spectrum that falls by 6 dB an octave, all partials in phase.
Signal PulseTrain(int32_t n, double rate, double hz)
{
    Signal x(static_cast<size_t>(n));
    const double decay = std::exp(-1000.0 / rate);
    double level = 0.0, phase = 0.0;
    for (float& v : x) {
        level *= decay;
        phase += hz / rate;
        if (phase >= 1.0) {
            phase -= 1.0;
            level += 0.5 * std::pow(decay, phase * rate / hz);   // what has passed since the pulse
        }
        v = float(level);
    }
    return x;
}

// Like a sung tone: twelve partials that fall by 6 dB an octave.
Signal SungTone(int32_t n, double rate, double hz)
{
    Signal x(size_t(n), 0.0f);
    for (int32_t h = 1; h <= 12 && h * hz < 0.45 * rate; ++h)
        MixInto(&x, Tone(n, h * hz, rate, 0.2 / h, h * h));
    return x;
}

TEST(PsolaAnalysis, RefusesWhatItCannotWorkOn)
{
    CPitchMarks marks;
    CPSOLAAnalysis* made = nullptr;
    EXPECT_EQ(CreatePSOLAAnalysis(&made, nullptr, 44100.0f, 0, 1, 0, 1, 0), kInvalidArgument);
    EXPECT_EQ(CreatePSOLAAnalysis(&made, &marks, 512000.0f, 0, 1, 0, 1, 0), kInvalidArgument);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(CreatePSOLAAnalysis(&made, &marks, 511999.0f, 0, 1, 0, 1, 0), kSuccess);
    EXPECT_EQ(marks.GetPosition(0), 0);   // an empty list gets its first mark
    EXPECT_EQ(DestroyPSOLAAnalysis(made), kSuccess);
    EXPECT_EQ(DestroyPSOLAAnalysis(nullptr), kInvalidArgument);
    EXPECT_EQ(CreatePSOLAAnalysis(&made, &marks, 8000.0f, kPeriodModeMono, 1, 1, 1, 0), kSuccess);   // without tracker
    EXPECT_EQ(DestroyPSOLAAnalysis(made), kSuccess);
}

// One mark a period, settled after half a second. A mark moves by 2 frames when the energy check sends it towards a
// distant peak, and by up to 4 towards a near one; the mean period has none of that.
void ExpectAMarkAPeriod(const Signal& x, const Configuration& configuration, float rate, double hz, const char* what)
{
    Analysis analysis(configuration, rate);
    analysis.Feed(x);
    const double period = rate / hz;
    int32_t first = -1, last = -1, count = 0, worst = 0;
    for (int32_t i = 0; i + 1 < analysis.marks.GetNumMarks(); ++i) {
        if (analysis.marks.GetPosition(i) < rate / 2)
            continue;
        first = first < 0 ? analysis.marks.GetPosition(i) : first;
        last = analysis.marks.GetPosition(i + 1);
        worst = std::max(worst, std::abs(analysis.marks.GetPeriod(i) - int32_t(std::lround(period))));
        ++count;
    }
    ASSERT_GT(count, 10) << what;
    EXPECT_LE(worst, 5.0 + 0.005 * period)   // smooth waves at high rates have flat peaks of correlation
        << what << ' ' << configuration.name << ", " << hz << " Hz at " << rate;
    EXPECT_NEAR(double(last - first) / count, period, 0.02 * period + 0.05)
        << what << ' ' << configuration.name << ", " << hz << " Hz at " << rate;
}

TEST(PsolaAnalysis, PlacesAMarkAPeriod)
{
    for (const float rate : {16000.0f, 44100.0f, 96000.0f, 192000.0f})
        for (const double hz : {60.0, 90.0, 110.0, 150.0, 220.0, 440.0, 900.0})
            for (const Configuration& configuration : {kMono, kSpeech}) {
                // Without the tracker the frame stays: periods around half of it are told from their multiples.
                const double half = 128.0 * (1 << RateBand(rate)), period = rate / hz;
                if (configuration.periodMode == kPeriodModeSpeech && (period < 0.8 * half || period > 1.8 * half))
                    continue;
                const auto frames = int32_t(1.5 * rate);
                ExpectAMarkAPeriod(PulseTrain(frames, rate, hz), configuration, rate, hz, "pulses");
                ExpectAMarkAPeriod(SungTone(frames, rate, hz), configuration, rate, hz, "tone");
            }
}

TEST(PsolaAnalysis, RatesAClickAndHoldsTwoMarks)
{
    for (const Configuration& configuration : {kSpeech, kPro}) {
        Signal x(60000, 0.0f);
        x[30000] = 0.9f;
        Analysis analysis(configuration, 44100.0f);
        analysis.Feed(x);
        int32_t click = 0;
        for (int32_t i = 0; i < analysis.marks.GetNumMarks(); ++i)
            if (analysis.marks.GetTransient(i) > analysis.marks.GetTransient(click))
                click = i;
        EXPECT_GT(analysis.marks.GetTransient(click), 0.7f) << configuration.name;
        EXPECT_EQ(analysis.marks.GetTransient(click + 1), 0.0f) << configuration.name;
        EXPECT_EQ(analysis.marks.GetTransient(click + 2), 0.0f) << configuration.name;
        EXPECT_NEAR(analysis.marks.GetPosition(click), 30000, 1024) << configuration.name;
    }
}

TEST(PsolaAnalysis, WalksThroughSilenceByHalfFrames)
{
    static constexpr struct {
        float rate;
        int32_t half;
    } kCases[] = {{31999.0f, 128}, {32000.0f, 256},   {63999.0f, 256},
                  {64000.0f, 512}, {128000.0f, 1024}, {256000.0f, 2048}};
    for (const auto& c : kCases) {
        Analysis analysis(kSpeech, c.rate);
        analysis.Feed(Signal(50000, 0.0f));
        ASSERT_GT(analysis.marks.GetNumMarks(), 5);
        for (int32_t i = 0; i + 1 < analysis.marks.GetNumMarks(); ++i) {
            EXPECT_EQ(analysis.marks.GetPeriod(i), c.half) << c.rate;
            EXPECT_EQ(analysis.marks.GetHarmonicity(i + 1), 0.0f);
            EXPECT_EQ(analysis.marks.GetPower(i + 1), 0.0f);
        }
    }
}

TEST(PsolaAnalysis, ClosesTheListBehindTheLastSample)
{
    for (const Configuration& configuration : {kMono, kSpeech, kPro})
        for (const int32_t frames : {0, 1, 100, 3000, 40000}) {
            Analysis analysis(configuration, 44100.0f);
            analysis.Feed(Noise(frames, 3, 0.5f));
            analysis.walk->FinishMarks();
            EXPECT_EQ(analysis.marks.GetLastPosition(), frames) << configuration.name;
            for (int32_t i = 0; i + 1 < analysis.marks.GetNumMarks(); ++i)
                ASSERT_GT(analysis.marks.GetPeriod(i), 0) << configuration.name << ", " << frames;
        }
}

TEST(PsolaAnalysis, TellsTheSameAgainAfterResetAndWhateverTheBlocks)
{
    const Signal x = SungTone(40000, 44100.0, 180.0);
    Analysis analysis(kSpeech, 44100.0f), other(kSpeech, 44100.0f);
    std::vector<int32_t> positions[2];
    for (auto& p : positions) {
        analysis.walk->Reset();
        analysis.Feed(x);
        for (int32_t i = 0; i < analysis.marks.GetNumMarks(); ++i)
            p.push_back(analysis.marks.GetPosition(i));
    }
    EXPECT_EQ(positions[0], positions[1]);
    other.Feed(x, 39000);   // more than the buffer holds
    ASSERT_EQ(other.marks.GetNumMarks(), int32_t(positions[0].size()));
    for (int32_t i = 0; i < other.marks.GetNumMarks(); ++i)
        EXPECT_EQ(other.marks.GetPosition(i), positions[0][size_t(i)]);
}

TEST(PsolaAnalysis, AllocatesNothingAfterCreation)
{
    for (const Configuration& configuration : {kMono, kSpeech, kPro}) {
        Analysis analysis(configuration, 44100.0f);
        const Signal x = SungTone(100000, 44100.0, 180.0);
        const int64_t before = AllocationCount();
        analysis.Feed(x);
        analysis.walk->FinishMarks();
        EXPECT_EQ(AllocationCount(), before) << configuration.name;
    }
}

}   // namespace
