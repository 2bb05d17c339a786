#include "tests/allocations.h"
#include "tests/engine/engine_run.h"
#include "tests/formants.h"
#include "tests/measure.h"

#include <cmath>

namespace {

class Soloist : public ::testing::TestWithParam<int32_t> {
protected:
    static Planar Run(const Planar& input, float stretch, float pitch, float rate = 44100.0f)
    {
        const auto engine = MakeEngine(GetParam(), int32_t(input.size()), rate);
        float inForce = pitch;
        EXPECT_EQ(engine->SetStretchPitch(stretch, &inForce, false), kSuccess);
        EXPECT_EQ(inForce, pitch);   // nothing is quantised
        return RunEngine(*engine, input);
    }
};
INSTANTIATE_TEST_SUITE_P(Modes, Soloist, ::testing::Values(kModeSoloistMono, kModeSoloistSpeech));

const std::vector<Resonance> kVowel = {{700, 90}, {1220, 100}, {2600, 140}};

TEST_P(Soloist, TakesFactorsAsTheyAreAndHasNoOtherControls)
{
    const auto engine = MakeEngine(GetParam(), 2);
    EXPECT_EQ(engine->GetFramesNeededAt(1.0f, 1.0f), kNoResult);
    EXPECT_EQ(engine->GetFramesNeeded(), 5120);   // 2.5 frames of 2048 while no marks lie ahead
    EXPECT_EQ(engine->SetStereoInputMode(1), kSuccess);
    EXPECT_EQ(engine->SetEnvelopeFactor(0.5f), kSuccess);
    EXPECT_EQ(engine->SetCutOffPitch(64), kSuccess);
    EXPECT_EQ(engine->GetInputPosition(), 0.0);
    float pitch = 1.5f;
    EXPECT_EQ(engine->SetStretchPitch(20.0f, &pitch, false), kSuccess);
    Planar out(2, Signal(1024));
    EXPECT_EQ(engine->FlushBuffer(Pointers(out).data()), kNoResult);
    EXPECT_EQ(engine->FlushBuffer(Pointers(out).data()), kNoResult);
    EXPECT_EQ(engine->Reset(), kSuccess);
    EXPECT_EQ(engine->Reset(), kSuccess);
}

TEST_P(Soloist, CutsTheLastWriteAtTheBlock)
{
    for (const int32_t block : {1, 15, 1000, 1023}) {
        const auto engine = MakeEngine(GetParam(), 1, 44100.0f, block);
        Planar input{HarmonicTone(8000, 200.0, 44100.0, 0.2)};
        Planar out{Signal(size_t(block) + 1, 7.0f)};
        ASSERT_EQ(engine->ProcessData(Pointers(input).data(), 8000, Pointers(out).data()), kSuccess);
        EXPECT_EQ(out[0].back(), 7.0f) << block;
    }
}

TEST_P(Soloist, ReproducesAVoiceAtUnity)
{
    const Signal x = Vowel(66150, 120.0, 170.0, kVowel, 44100.0);
    const auto output = Run({x}, 1.0f, 1.0f);
    const auto found = CompareWith(x, output[0], 1.0, 0);
    EXPECT_GT(found.snr, 100.0);   // measured 130 dB and more: both flanks of a crossfade hold the same samples
}

TEST_P(Soloist, GivesTheLengthOfItsStretch)
{
    for (const float rate : {8000.0f, 44100.0f, 384000.0f}) {
        const auto frames = int32_t(rate / 4);
        const Signal x = rate < 100000.0f ? Vowel(frames, 140.0, 150.0, kVowel, rate) : Noise(frames, 2, 0.2f);
        const double request = std::max(rate / 44100.0, 0.5) * 5120.0 * 2.0;   // the last one is padded
        for (const float stretch : {0.1f, 0.5f, 1.3f, 4.0f, 20.0f})
            for (const float pitch : {0.25f, 1.0f, 4.0f}) {
                const auto given = double(Run({x}, stretch, pitch, rate)[0].size());
                EXPECT_GE(given, frames * stretch - rate / 60.0 / pitch) << stretch << " x " << pitch;
                EXPECT_LE(given, (frames + request) * stretch + rate / 60.0 / pitch + 1024)
                    << stretch << " x " << pitch << " at " << rate;
            }
    }
}

// The strongest frequency within a semitone of expected.
double FundamentalNear(std::span<const float> x, double expected)
{
    double best = expected, level = 0.0;
    for (double cents = -100.0; cents <= 100.0; cents += 2.0) {
        const double hz = expected * std::exp2(cents / 1200.0);
        if (const double here = std::abs(HannProjection(x, hz / 44100.0)); here > level) {
            level = here;
            best = hz;
        }
    }
    return best;
}

// The hop of a grain is a whole number of frames: the pitch lands within half a frame of the output period.
TEST_P(Soloist, LandsOnThePitchThatWholeFramesAllow)
{
    for (const double hz : {100.0, 220.0, 440.0, 880.0})
        for (const float pitch : {0.7f, 1.0f, 1.3f}) {
            const auto output = Run({HarmonicTone(44100, hz, 44100.0, 0.2)}, 1.0f, pitch);
            const double target = hz * pitch, halfFrame = Cents(1.0 + 0.5 * target / 44100.0);
            const double found = FundamentalNear(std::span(output[0]).subspan(20000, 16000), target);
            EXPECT_LT(std::fabs(Cents(found / target)), halfFrame + 2.0) << hz << " Hz x " << pitch;
        }
}

TEST_P(Soloist, KeepsFormantsWithPlainGrainsAndMovesThemWithResampledOnes)
{
    const Signal x = Vowel(132300, 118.0, 132.0, kVowel, 44100.0);
    const auto before = Formants(x, 44100.0);
    ASSERT_GE(before.size(), 2u);
    for (const float pitch : {0.8f, 1.25f}) {
        const auto after = Formants(Run({x}, 1.0f, pitch)[0], 44100.0);
        const double moved = GetParam() == kModeSoloistSpeech ? pitch : 1.0;
        ASSERT_GE(after.size(), 2u) << pitch;
        for (size_t i = 0; i < 2; ++i)
            EXPECT_NEAR(after[i], before[i] * moved, 0.06 * before[i] * moved) << "formant " << i << " x " << pitch;
    }
}

TEST_P(Soloist, KeepsIdenticalChannelsIdenticalToTheBit)
{
    for (const int32_t channels : {2, 6}) {
        const auto output =
            Run(Planar(size_t(channels), Vowel(30000, 120.0, 170.0, kVowel, 44100.0, 0.02)), 1.4f, 1.2f);
        for (size_t c = 1; c < output.size(); ++c)
            EXPECT_TRUE(output[c] == output[0]) << c;
    }
}

TEST_P(Soloist, GivesTheSameAgainAfterReset)
{
    const auto engine = MakeEngine(GetParam());
    Planar outputs[2];
    for (Planar& output : outputs) {
        engine->Reset();
        float pitch = 1.2f;
        engine->SetStretchPitch(1.6f, &pitch, false);
        output = RunEngine(*engine, {Noise(30000, 1, 0.3f)});
        // The filters of the transient rating run on; the marks do not depend on them here.
    }
    EXPECT_EQ(outputs[0], outputs[1]);
}

// For hours: marks are pruned, stores stay as they are once they have settled.
TEST_P(Soloist, AllocatesNothingOnceItHasSettled)
{
    const auto engine = MakeEngine(GetParam(), 2);
    Planar input(2, HarmonicTone(120000, 150.0, 44100.0, 0.2)), out(2, Signal(1024));
    const auto outPointers = Pointers(out);
    for (size_t i = 0, at = 0; i < 3000; ++i) {
        float pitch = 1.0f + 0.5f * float(std::sin(double(i)));
        engine->SetStretchPitch(0.7f + 0.3f * float(i % 3), &pitch, false);
        const auto needed = size_t(engine->GetFramesNeeded());
        if (at + needed > input[0].size())
            at = 0;
        const auto in = Pointers(input, at);
        const int64_t inCall = AllocationCount();
        engine->ProcessData(in.data(), int32_t(needed), outPointers.data());
        if (i >= 1000) {
            ASSERT_EQ(AllocationCount(), inCall) << i;
        }
        at += needed;
    }
}

}   // namespace
