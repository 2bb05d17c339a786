#include "engine/psola/psola_synthesis.h"

#include "dsp/status.h"
#include "engine/psola/pitch_marks.h"
#include "tests/measure.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr int32_t kPeriod = 100, kBlock = 64;

// Marks every kPeriod frames over n frames; output of the synthesis for a mono signal.
struct Synthesis {
    CPitchMarks marks;
    PSOLASynthesisPtr grains;

    explicit Synthesis(int32_t n, int32_t channels = 1)
    {
        CPSOLASynthesis* made = nullptr;
        CreatePSOLASynthesis(&made, &marks, kBlock, channels, 0);
        grains.reset(made);
        grains->SetNoInterpolation(1);
        for (int32_t at = 0; at <= n; at += kPeriod)
            marks.AppendPlainMark(at, 1.0f, 1.0f, 0.0f, 0.0f);
    }
    Signal Run(const Signal& x, size_t atMost = 1 << 20)
    {
        Signal out, block(kBlock);
        const float* in = x.data();
        float* to = block.data();
        auto frames = int32_t(x.size());
        while (grains->ProcessData(&in, frames, &to) == kSuccess && out.size() < atMost) {
            out.insert(out.end(), block.begin(), block.end());
            frames = 0;
        }
        return out;
    }
};

TEST(PsolaSynthesis, ReproducesItsInputAtUnity)
{
    const Signal x = Noise(20000, 1, 0.5f);
    Synthesis synthesis(20000);
    const Signal out = synthesis.Run(x);
    ASSERT_GT(out.size(), 19000u);
    for (size_t i = 0; i < 19000; ++i)
        ASSERT_NEAR(out[i], x[i], 1e-6f) << i;   // the two flanks of a crossfade hold the same samples
}

TEST(PsolaSynthesis, StretchesByUsingMarksAgain)
{
    for (const float stretch : {0.3f, 0.5f, 1.5f, 2.0f, 20.0f}) {
        Synthesis synthesis(20000);
        synthesis.grains->SetStretchFactor(stretch);
        const Signal out = synthesis.Run(Tone(20000, 441.0, 44100.0, 0.5));   // a cycle a period
        EXPECT_NEAR(double(out.size()), 20000.0 * stretch, 2.0 * kPeriod * stretch + kBlock + kPeriod) << stretch;
        const auto fit = FitTone(std::span(out).subspan(1000, out.size() - 2000), 441.0, 44100.0);
        EXPECT_NEAR(fit.frequency, 441.0, 0.01) << stretch;
        EXPECT_LT(fit.sidebands, -60.0) << stretch;
    }
}

TEST(PsolaSynthesis, SpacesPlainGrainsOutWithSilence)
{
    Synthesis synthesis(20000);
    synthesis.grains->SetPitchFactor(0.5f);
    const Signal out = synthesis.Run(Signal(20000, 0.5f));
    ASSERT_GT(out.size(), 15000u);
    for (size_t centre = 2000; centre < 15000; centre += 2 * kPeriod) {
        EXPECT_NEAR(out[centre], 0.5f, 1e-6f);
        EXPECT_EQ(out[centre + kPeriod], 0.0f);   // between two grains, each a period long on either side
        EXPECT_EQ(out[centre + kPeriod - 1] != 0.0f, false) << centre;
    }
}

TEST(PsolaSynthesis, ReadsResampledGrainsAtThePitch)
{
    for (const float pitch : {0.5f, 0.8f, 1.5f, 2.0f}) {
        Synthesis synthesis(20000);
        synthesis.grains->SetNoInterpolation(0);
        synthesis.grains->SetPitchFactor(pitch);
        const Signal out = synthesis.Run(Tone(20000, 441.0, 44100.0, 0.5));
        const auto fit = FitTone(std::span(out).subspan(2000, 12000), 441.0 * pitch, 44100.0);
        EXPECT_NEAR(Cents(fit.frequency / (441.0 * pitch)), 0.0, 1200.0 * 0.5 / (kPeriod / pitch) / std::log(2.0))
            << pitch;   // half a frame of the output period
        EXPECT_NEAR(Decibels(std::pow(fit.amplitude / 0.5, 2.0)), 0.0, 0.6) << pitch;
    }
}

TEST(PsolaSynthesis, StandsStillWhileFrozenAndGoesOn)
{
    Synthesis synthesis(20000);
    const Signal x = Noise(20000, 2, 0.5f);
    const Signal before = synthesis.Run(x, 2000);
    synthesis.grains->SetFreeze(1);
    const double position = synthesis.grains->GetReadPosition();
    synthesis.Run({}, 5000);
    EXPECT_EQ(synthesis.grains->GetReadPosition(), position);
    synthesis.grains->SetFreeze(0);
    EXPECT_GT(synthesis.Run({}).size(), 15000u);
    EXPECT_GT(synthesis.grains->GetReadPosition(), position + 10000);
}

// What the dry run asks for is enough for the block, and it is not asked for twice.
TEST(PsolaSynthesis, AsksForWhatABlockTakes)
{
    for (const float stretch : {0.2f, 1.0f, 3.0f})
        for (const float pitch : {0.5f, 1.0f, 2.0f}) {
            Synthesis synthesis(100000);
            synthesis.grains->SetStretchFactor(stretch);
            synthesis.grains->SetPitchFactor(pitch);
            const Signal x(100000, 1.0f);
            Signal block(kBlock);
            float* out = block.data();
            int32_t given = 0;
            for (int32_t i = 0; i < 100; ++i) {
                const int32_t need = synthesis.grains->GetFramesNeeded();
                ASSERT_GE(need, 0);
                const float* in = x.data() + given;
                ASSERT_EQ(synthesis.grains->ProcessData(&in, need, &out), kSuccess);
                given += need;
                EXPECT_EQ(synthesis.grains->GetFramesNeeded() > 5 * kPeriod * std::max(1.0f, 1.0f / stretch) + kBlock,
                          0);
            }
            EXPECT_NEAR(given, 100 * kBlock / stretch,
                        4 * kPeriod * std::max({1.0f, 1.0f / stretch, 1.0f / pitch}) + 2);
        }
}

TEST(PsolaSynthesis, GivesSilenceWhereNothingWasReceived)
{
    Synthesis synthesis(3000);
    const Signal out = synthesis.Run(Signal(1000, 0.5f));   // marks go on, the input does not
    ASSERT_GT(out.size(), 2500u);
    for (size_t i = 1001; i < out.size(); ++i)
        ASSERT_EQ(out[i], 0.0f) << i;
}

// A stream that is read from before its start begins with that much silence, so that marks land on their own time.
TEST(PsolaSynthesis, BridgesTheTimeBeforeTheFirstGrain)
{
    Synthesis synthesis(20000);
    synthesis.grains->SetReadPosition(-333.0);
    const Signal x = Noise(20000, 3, 0.5f), out = synthesis.Run(x);
    for (size_t i = 0; i < 333; ++i)
        ASSERT_EQ(out[i], 0.0f) << i;
    for (size_t i = 0; i < 15000; ++i)
        ASSERT_NEAR(out[333 + i], x[i], 1e-6f) << i;
}

// With transient grains on, an attack is a straight copy: under a stretch it keeps its shape.
TEST(PsolaSynthesis, CopiesAnAttackAsItIs)
{
    Signal x = Tone(20000, 441.0, 44100.0, 0.05);
    const Signal burst = Noise(250, 4, 0.9f);
    for (size_t i = 0; i < burst.size(); ++i)
        x[10000 + i] += burst[i] * float(1.0 - double(i) / 250.0);
    for (const bool copied : {true, false}) {
        Synthesis synthesis(9900);
        synthesis.marks.AppendMark(10000, 1.0f, 1.0f, 0.95f, 0.0f, 100.0f);
        for (int32_t at = 10100; at <= 20000; at += kPeriod)
            synthesis.marks.AppendPlainMark(at, 1.0f, 1.0f, 0.0f, 0.0f);
        synthesis.grains->SetTransientGrains(copied);
        synthesis.grains->SetMaxMarkDistance(500);
        synthesis.grains->SetStretchFactor(2.0f);
        const Signal out = synthesis.Run(x);
        double best = -100.0;
        const std::span attack = std::span(x).subspan(10000, 240);
        for (size_t at = 18000; at < 22000; ++at)
            best = std::max(best, CompareWith(attack, std::span(out).subspan(at, 240), 1.0, 0).snr);
        EXPECT_EQ(best > 40.0, copied) << best;
    }
}

TEST(PsolaSynthesis, SurvivesFactorsThatAreNoFactors)
{
    for (const float factor :
         {0.0f, -1.0f, 1e-30f, 1e30f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()})
        for (const bool interpolate : {false, true}) {
            Synthesis synthesis(20000);
            synthesis.grains->SetNoInterpolation(!interpolate);
            synthesis.grains->SetPitchFactor(factor);
            synthesis.Run(Noise(20000, 5, 0.5f), 30000);
            synthesis.grains->SetPitchFactor(1.0f);
            synthesis.grains->SetStretchFactor(factor);
            for (const float v : synthesis.Run(Noise(2000, 5, 0.5f), 30000))
                ASSERT_LE(std::fabs(v), 2.0f);
        }
}

}   // namespace
