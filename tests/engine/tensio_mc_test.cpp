#include "tests/allocations.h"
#include "tests/engine/engine_run.h"
#include "tests/measure.h"

#include <cmath>
#include <complex>
#include <limits>
#include <random>

namespace {

// The promise at the engine: all input frames times the stretch, and half a frame's share of tail behind it.
TEST(EfficientEngine, GivesItsWholeTailAndThenNothing)
{
    static constexpr struct {
        float rate;
        int32_t frame;
    } kRates[] = {{8000, 2048}, {44100, 4096}, {96000, 8192}, {192000, 16384}, {384000, 32768}};
    for (const auto& r : kRates)
        for (const auto& [stretch, semitones] : {std::pair(1.0f, 0), {0.5f, 12}, {2.0f, -12}, {3.7f, 5}, {0.13f, 3}}) {
            const auto engine = MakeEngine(kModeEfficient, 1, r.rate);
            float pitch = std::exp2(float(semitones) / 12.0f);
            ASSERT_EQ(engine->SetStretchPitch(stretch, &pitch, false), kSuccess);
            const int32_t frames = 5 * r.frame;
            const auto output = RunEngine(*engine, {Noise(frames, 1, 0.1f)});
            const double promised = double(frames) * stretch;
            EXPECT_GE(output[0].size() + 1, promised) << r.rate << " Hz, " << stretch << " x " << pitch;
            // At most the padding of one request and the tail lie behind the promise.
            const double tail = r.frame / 2.0 * stretch, padding = (r.frame + 2048.0 / stretch / pitch) * stretch;
            EXPECT_LE(double(output[0].size()), promised + tail + padding + 1024.0) << r.rate << ' ' << stretch;
            Planar out(1, Signal(1024));
            EXPECT_EQ(engine->FlushBuffer(Pointers(out).data()), kNoResult);
        }
}

TEST(EfficientEngine, StaysQuietWithoutInput)
{
    const auto engine = MakeEngine(kModeEfficient, 2);
    EXPECT_EQ(engine->Reset(), kSuccess);
    EXPECT_EQ(engine->Reset(), kSuccess);
    Planar out(2, Signal(1024, 1.0f));
    for (int32_t given = 1024, calls = 0; given == 1024; ++calls) {
        ASSERT_LT(calls, 100);
        given = engine->FlushBuffer(Pointers(out).data());
        for (int32_t i = 0; i < given; ++i)
            ASSERT_EQ(out[0][size_t(i)], 0.0f);
    }
}

TEST(EfficientEngine, GivesTheSameAgainAfterReset)
{
    const auto engine = MakeEngine(kModeEfficient, 2);
    const Planar input{Noise(40000, 1, 0.3f), Noise(40000, 2, 0.3f)};
    Planar outputs[2];
    for (Planar& output : outputs) {
        engine->Reset();
        float pitch = 1.19f;
        engine->SetStretchPitch(1.3f, &pitch, false);
        output = RunEngine(*engine, input);
    }
    EXPECT_EQ(outputs[0], outputs[1]);
}

TEST(EfficientEngine, RefusesMoreInputThanItHasRoomForAndKeepsWhatItHolds)
{
    const auto engine = MakeEngine(kModeEfficient);
    Planar out(1, Signal(1024));
    Planar input{Signal(4000000)};
    EXPECT_EQ(engine->ProcessData(Pointers(input).data(), 4000000, Pointers(out).data()), kInvalidArgument);
    EXPECT_EQ(engine->ProcessData(Pointers(input).data(), -1, Pointers(out).data()), kInvalidArgument);
    EXPECT_EQ(engine->ProcessData(Pointers(input).data(), engine->GetFramesNeeded(), Pointers(out).data()), kSuccess);
}

// Direct users may go beyond the pitch range of the plug-in; a request then comes in pieces.
TEST(EfficientEngine, ServesExtremePitches)
{
    for (const auto& [stretch, p] : {std::pair(0.004f, 32.0f), {20.0f, 0.1f}, {0.15f, 60.0f}}) {
        const auto engine = MakeEngine(kModeEfficient, 1, 8000.0f);
        float pitch = p;
        ASSERT_EQ(engine->SetStretchPitch(stretch, &pitch, false), kSuccess) << stretch << " x " << p;
        const auto output = RunEngine(*engine, {Noise(60000, 3, 0.2f)});
        EXPECT_GE(double(output[0].size()) + 1.0, 60000.0 * stretch) << stretch << " x " << p;
    }
}

// Music-like and speech-like input at unity, against the input two frames late.
TEST(EfficientEngine, ReproducesItsInputAtUnity)
{
    struct {
        const char* name;
        Signal x;
    } const cases[] = {
        {"tone", HarmonicTone(88200, 196.0, 44100.0, 0.2)},
        {"vowel", Vowel(88200, 110.0, 160.0, {{700, 90}, {1200, 110}, {2500, 150}}, 44100.0)},
        {"drums", Drums(88200, 44100.0).audio},
        {"noise", Noise(88200, 4, 0.3f)},
    };
    for (const auto& c : cases) {
        const auto engine = MakeEngine(kModeEfficient);
        float pitch = 1.0f;
        engine->SetStretchPitch(1.0f, &pitch, false);
        const auto output = RunEngine(*engine, {c.x});
        const auto found = CompareWith(c.x, output[0], 1.0, 4);
        EXPECT_EQ(found.delay, 2) << c.name;
        EXPECT_GT(found.snr, 32.0) << c.name;
    }
}

// A floor of noise at -90 dBFS: a lone clean tone loses its peak to the top of the spectrum.
Signal ToneOverFloor(int32_t n, double hz, double amplitude = 0.25, double phase = 0.0)
{
    Signal x = Tone(n, hz, 44100.0, amplitude, phase);
    MixInto(&x, Noise(n, 5, 5.5e-5f));
    return x;
}

TEST(EfficientEngine, KeepsTonesInTuneAndAtTheirLevel)
{
    for (const double hz : {55.0, 110.7, 440.0, 1001.3, 2000.0, 5000.0, 8000.0})
        for (const float stretch : {0.5f, 1.25f, 2.0f, 4.0f})
            for (const int32_t semitones : {-12, -5, 0, 7, 12}) {
                float pitch = std::exp2(float(semitones) / 12.0f);
                if (hz * pitch > 0.45 * 44100.0)
                    continue;
                const auto engine = MakeEngine(kModeEfficient);
                ASSERT_EQ(engine->SetStretchPitch(stretch, &pitch, false), kSuccess);
                const auto frames = int32_t(60000 / stretch) + 20000;
                const auto output = RunEngine(*engine, {ToneOverFloor(frames, hz)});
                const auto steady = std::span(output[0]).subspan(16000, 40000);
                const auto fit = FitTone(steady, hz * pitch, 44100.0);
                EXPECT_LT(std::fabs(Cents(fit.frequency / (hz * pitch))), 0.5)
                    << hz << " Hz, stretch " << stretch << ", " << semitones << " semitones";
                if (hz <= 2000.0) {
                    EXPECT_LT(std::fabs(Decibels(std::pow(fit.amplitude / 0.25, 2.0))), 0.3)
                        << hz << " Hz, stretch " << stretch << ", " << semitones << " semitones";
                }
            }
}

TEST(EfficientEngine, LeavesAToneAloneAtUnity)
{
    for (const double hz : {43.066, 100.0, 1000.0, 10766.6, 15000.0}) {
        const auto engine = MakeEngine(kModeEfficient);
        float pitch = 1.0f;
        engine->SetStretchPitch(1.0f, &pitch, false);
        const auto output = RunEngine(*engine, {ToneOverFloor(60000, hz)});
        const auto fit = FitTone(std::span(output[0]).subspan(8000, 44100), hz, 44100.0);
        EXPECT_LT(std::fabs(Cents(fit.frequency / hz)), 0.1) << hz;
        EXPECT_LT(std::fabs(Decibels(std::pow(fit.amplitude / 0.25, 2.0))), 0.1) << hz;
    }
}

TEST(EfficientEngine, KeepsIdenticalChannelsIdentical)
{
    for (const int32_t channels : {2, 3, 6, 48})
        for (const auto& [stretch, p] : {std::pair(1.0f, 1.0f), {1.7f, 1.1f}, {0.6f, 0.8f}}) {
            const auto engine = MakeEngine(kModeEfficient, channels, 8000.0f);
            float pitch = p;
            engine->SetStretchPitch(stretch, &pitch, false);
            const auto output = RunEngine(*engine, Planar(size_t(channels), Noise(8000, 6, 0.5f)));
            for (size_t c = 1; c < output.size(); ++c)
                for (size_t i = 0; i < output[0].size(); ++i)
                    ASSERT_NEAR(output[c][i], output[0][i], 1e-6) << channels << " channels, frame " << i;
        }
}

// A tone whose right channel lags by a third of a turn and is 6 dB softer, in every layout of channels.
TEST(EfficientEngine, KeepsTheStereoImage)
{
    for (const int32_t stereoMode : {0, 1})
        for (const int32_t channels : {2, 4})
            for (const float stretch : {0.5f, 1.5f, 3.0f}) {
                const double hz = 700.0, lag = 2.0 * std::numbers::pi / 3.0;
                const auto engine = MakeEngine(kModeEfficient, channels);
                if (channels == 2)
                    engine->SetStereoInputMode(stereoMode);
                float pitch = 1.25f;
                engine->SetStretchPitch(stretch, &pitch, false);
                Planar input(size_t(channels), ToneOverFloor(60000, hz));
                input[1] = ToneOverFloor(60000, hz, 0.125, -lag);
                const auto output = RunEngine(*engine, input);
                const auto left = HannProjection(std::span(output[0]).subspan(10000, 18000), hz * pitch / 44100.0);
                const auto right = HannProjection(std::span(output[1]).subspan(10000, 18000), hz * pitch / 44100.0);
                EXPECT_NEAR(std::arg(left / right), lag, 0.01) << channels << ' ' << stereoMode << ' ' << stretch;
                EXPECT_NEAR(std::abs(left / right), 2.0, 0.02) << channels << ' ' << stereoMode << ' ' << stretch;
            }
}

// With sync a change of pitch bends the read step: the output stays in place, where a plain change moves it by the
// difference of the delays, half a frame x (1 - 1 / pitch).
TEST(EfficientEngine, GlidesWithoutMovingTheOutput)
{
    const int32_t frames = 400000;
    int32_t lengths[2] = {};
    for (const bool sync : {false, true}) {
        const auto engine = MakeEngine(kModeEfficient);
        float pitch = 1.0f;
        engine->SetStretchPitch(1.0f, &pitch, sync);
        Planar input{Noise(frames, 7, 0.2f)}, out(1, Signal(1024));
        int32_t given = 0;
        for (int32_t taken = 0; taken < frames - 20000; ++given) {
            if (given == 100) {
                pitch = 2.0f;
                ASSERT_EQ(engine->SetStretchPitch(1.0f, &pitch, sync), kSuccess);
            }
            const int32_t needed = engine->GetFramesNeeded();
            const auto in = Pointers(input, size_t(taken));
            taken += needed;
            ASSERT_EQ(engine->ProcessData(in.data(), needed, Pointers(out).data()), kSuccess);
        }
        lengths[sync] = given * 1024 + engine->GetFramesBuffered();
    }
    EXPECT_NEAR(lengths[1] - lengths[0], 1024, 600);   // 2048 x (1 - 1/2), within a hop of either run
}

TEST(EfficientEngine, SurvivesWildFactorsAndInputThatIsNoNumberWithoutAllocating)
{
    for (const int32_t channels : {1, 2, 5}) {
        const auto engine = MakeEngine(kModeEfficient, channels, 16000.0f);
        std::mt19937 random(8);
        Planar input(size_t(channels), Noise(400000, 9, 0.5f)), out(size_t(channels), Signal(1024));
        input[0][1000] = std::numeric_limits<float>::quiet_NaN();
        input[0][90000] = std::numeric_limits<float>::infinity();
        input[size_t(channels) - 1][150000] = 1e38f;
        const auto outPointers = Pointers(out);
        for (int32_t taken = 0; taken < 250000;) {
            float pitch = std::exp2(float(random() % 4801) / 1200.0f - 2.0f);
            engine->SetStretchPitch(0.1f + float(random() % 1000) / 250.0f, &pitch, random() % 2 != 0);
            const int32_t needed = std::min(engine->GetFramesNeeded(), 140000);
            const auto in = Pointers(input, size_t(taken));
            const int64_t inCall = AllocationCount();
            engine->ProcessData(in.data(), needed, outPointers.data());
            EXPECT_EQ(AllocationCount(), inCall);
            taken += needed;
        }
    }
}

}   // namespace
