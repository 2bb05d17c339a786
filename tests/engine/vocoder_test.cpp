// The vocoder and the core around it, beyond what the interface of the engine shows.
#include "engine/tensio_mc.h"
#include "tests/engine/engine_run.h"
#include "tests/measure.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace {

constexpr int32_t kBlock = 1024;

bool IsFinite(std::span<const float> x)
{
    return std::ranges::all_of(x, [](float v) { return std::isfinite(v); });
}

// What the core gives for as much of the input as it takes block by block.
Signal RunCore(CTensioMC& core, Signal input)
{
    Signal output, block(kBlock);
    float* const out[] = {block.data()};
    for (size_t taken = 0;;) {
        const auto needed = size_t(core.GetFramesNeeded());
        if (taken + needed > input.size())
            return output;
        const float* const in[] = {input.data() + taken};
        taken += needed;
        if (core.ProcessData(in, int32_t(needed), out) == kSuccess)
            output.insert(output.end(), block.begin(), block.end());
    }
}

TEST(TensioMC, KnowsWhereInTheInputItsOutputStands)
{
    for (const int32_t coreMode : {CTensioMC::kCoarse, CTensioMC::kFineHop})
        for (float stretch : {0.1f, 0.6f, 1.0f, 1.5f, 2.0f, 3.0f, 9.0f}) {
            CTensioMC core(kBlock, 1, 44100.0f, coreMode);
            core.SetStretchKeepPitch(&stretch, 1.0f, false);
            const auto given = double(RunCore(core, Noise(100000, 1, 0.1f)).size());
            EXPECT_NEAR(core.GetInputPosition(), given / stretch, 3.0) << "core " << coreMode << ", " << stretch;
        }
}

TEST(TensioMC, ReproducesItsInputWithBothHopTables)
{
    const Signal x = HarmonicTone(60000, 196.0, 44100.0, 0.2);
    for (const int32_t coreMode : {CTensioMC::kCoarse, CTensioMC::kCoarseAlias, CTensioMC::kFineHop}) {
        CTensioMC core(kBlock, 1, 44100.0f, coreMode);
        float stretch = 1.0f;
        core.SetStretchKeepPitch(&stretch, 1.0f, false);
        EXPECT_EQ(core.GetAnalysisHop(), coreMode == CTensioMC::kFineHop ? 512 : 1024);
        const auto found = CompareWith(x, RunCore(core, x), 1.0, 3);
        EXPECT_EQ(found.delay, 0);   // without the resampler nothing comes late
        EXPECT_GT(found.snr, 32.0);
    }
}

TEST(TensioMC, SilencesWhatLiesAboveItsCutOff)
{
    CTensioMC core(kBlock, 1, 44100.0f, CTensioMC::kFineHop);
    float stretch = 1.0f;
    core.SetStretchKeepPitch(&stretch, 1.0f, false);
    core.SetCutOffFreq(2000.0f);
    Signal x = Tone(60000, 1000.0, 44100.0, 0.25);
    MixInto(&x, Tone(60000, 3000.0, 44100.0, 0.25));
    const Signal y = RunCore(core, x);
    const auto steady = std::span(y).subspan(8000, 40000);
    EXPECT_NEAR(2.0 * std::abs(HannProjection(steady, 1000.0 / 44100.0)), 0.25, 0.003);
    EXPECT_LT(2.0 * std::abs(HannProjection(steady, 3000.0 / 44100.0)), 1e-4);
}

// What would lie above half the rate after the pitch change is not there to fold back.
TEST(TensioMC, LetsNothingAliasWhenThePitchRises)
{
    CTensioMC core(kBlock, 1, 44100.0f, CTensioMC::kCoarse);
    float pitch = 2.0f;
    core.SetStretchPitch(1.0f, &pitch, false);
    Signal x = Tone(90000, 1000.0, 44100.0, 0.25);
    MixInto(&x, Tone(90000, 15000.0, 44100.0, 0.25));
    const Signal y = RunCore(core, x);
    const auto steady = std::span(y).subspan(8000, 40000);
    EXPECT_NEAR(2.0 * std::abs(HannProjection(steady, 1000.0 * pitch / 44100.0)), 0.25, 0.005);
    EXPECT_LT(2.0 * std::abs(HannProjection(steady, (44100.0 - 15000.0 * pitch) / 44100.0)), 1e-4);
}

// Within a row of the hop table only the synthesis hop changes, across rows both.
TEST(TensioMC, GoesOnAtAChangedStretch)
{
    Signal x = Tone(200000, 440.0, 44100.0, 0.25);
    MixInto(&x, Noise(200000, 5, 5.5e-5f));
    for (const float changed : {0.4f, 1.4f, 2.0f}) {
        CTensioMC core(kBlock, 1, 44100.0f, CTensioMC::kCoarse);
        float stretch = 1.0f;
        core.SetStretchKeepPitch(&stretch, 1.0f, false);
        const auto before = double(RunCore(core, Signal(x.begin(), x.begin() + 60000)).size());
        const double position = core.GetInputPosition();
        stretch = changed;
        core.SetStretchKeepPitch(&stretch, 1.0f, false);
        const Signal after = RunCore(core, x);
        EXPECT_NEAR(position, before, 3.0);
        // What was under way at the change, at most a frame, still came out at the old stretch.
        EXPECT_NEAR(core.GetInputPosition() - position, double(after.size()) / stretch, 4096.0) << changed;
        const auto fit = FitTone(std::span(after).subspan(20000, 40000), 440.0, 44100.0);
        EXPECT_NEAR(Cents(fit.frequency / 440.0), 0.0, 0.5) << changed;
        EXPECT_NEAR(fit.amplitude, 0.25, 0.005) << changed;
    }
}

// A change of hops in running audio keeps the level of what is half summed up.
TEST(TensioMC, ChangesItsHopsWithoutABump)
{
    CTensioMC core(kBlock, 1, 44100.0f, CTensioMC::kCoarse);
    Signal x = Tone(200000, 440.0, 44100.0, 0.25);
    MixInto(&x, Noise(200000, 5, 5.5e-5f));
    Signal block(kBlock);
    float* const out[] = {block.data()};
    const float stretches[] = {1.0f, 1.02f, 0.97f, 1.51f, 1.49f, 2.3f, 2.25f, 0.7f};
    size_t taken = 0;
    for (int32_t pass = 0; pass < 64; ++pass) {
        float stretch = stretches[pass / 8];
        core.SetStretchKeepPitch(&stretch, 1.0f, false);
        const int32_t needed = core.GetFramesNeeded();
        const float* const in[] = {x.data() + taken};
        taken += size_t(needed);
        ASSERT_EQ(core.ProcessData(in, needed, out), kSuccess);
        if (pass >= 3) {
            const auto [lowest, highest] = std::ranges::minmax(block);
            EXPECT_NEAR(highest, 0.25, 0.03) << pass;
            EXPECT_NEAR(lowest, -0.25, 0.03) << pass;
        }
    }
}

TEST(TensioMC, ForgetsASampleThatWasNoNumber)
{
    for (const float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 3e38f})
        for (float stretch : {1.0f, 2.0f}) {
            CTensioMC core(kBlock, 1, 44100.0f, CTensioMC::kCoarse);
            core.SetStretchKeepPitch(&stretch, 1.0f, false);
            Signal x = HarmonicTone(100000, 196.0, 44100.0, 0.2);
            const double power = Power(x);
            x[20000] = bad;
            const Signal y = RunCore(core, x);
            const auto after = std::span(y).subspan(size_t((20000 + 4 * 4096) * stretch));
            EXPECT_TRUE(IsFinite(after)) << bad << ", stretch " << stretch;
            EXPECT_GT(Power(after), 0.9 * power) << stretch;
        }
}

// A direct user may flush before the first window is full.
TEST(TensioMC, HearsAStreamShorterThanItsWindow)
{
    const auto engine = MakeEngine(kModeEfficient);
    float pitch = 1.0f;
    engine->SetStretchPitch(1.0f, &pitch, false);
    Planar input{Signal(500)}, piece{Signal(kBlock)}, output(1);
    input[0][100] = 0.5f;
    EXPECT_EQ(engine->ProcessData(Pointers(input).data(), 500, Pointers(piece).data()), kNoResult);
    for (int32_t given = kBlock; given == kBlock;) {
        given = engine->FlushBuffer(Pointers(piece).data());
        Append(output, piece, std::max(given, 0));
    }
    ASSERT_GE(output[0].size(), 500u);
    EXPECT_EQ(std::ranges::max_element(output[0]) - output[0].begin(), 102);   // two frames late
}

// Pitches whose hop or lead-in would not fit are refused; the lowest that do glide within the buffers.
TEST(TensioMC, KeepsExtremePitchesWithinItsBuffers)
{
    CTensioMC core(kBlock, 1, 8000.0f, CTensioMC::kCoarse);
    for (const auto& [stretch, p] : {std::pair(50.0f, 0.002f), {100.0f, 0.1f}, {15.0f, 0.1f}, {1e-6f, 1e5f}}) {
        float pitch = p;
        EXPECT_EQ(core.SetStretchPitch(stretch, &pitch, false), kInvalidArgument) << stretch << " x " << p;
    }
    const Signal x = Noise(300000, 2, 0.2f);
    for (const float lowest : {0.1f, 0.12f}) {
        float pitch = 4.0f;
        ASSERT_EQ(core.SetStretchPitch(0.25f, &pitch, true), kSuccess);
        RunCore(core, x);
        pitch = lowest;
        ASSERT_EQ(core.SetStretchPitch(10.0f, &pitch, true), kSuccess);
        EXPECT_TRUE(IsFinite(RunCore(core, x)));
    }
}

}   // namespace
