// What comes out of the driver, as a listener hears it.
#include "tests/aplugins/driver_run.h"
#include "tests/measure.h"
#include "tools/sample_synth.h"

#include <gtest/gtest.h>

namespace {

constexpr float kRate = 44100.0f;
constexpr double kFloor = 3.16e-5;   // -90 dBFS

// A second and a half of a tone over a faint noise floor, as any recording has one.
Signal RecordedTone(double frequency, double amplitude)
{
    Signal x = Tone(66150, frequency, kRate, amplitude);
    MixInto(&x, Noise(int32_t(x.size()), 7, float(kFloor)));
    return x;
}

std::span<const float> Middle(const Signal& x, size_t frames)
{
    return std::span(x).subspan((x.size() - frames) / 2, frames);
}

Signal Channel(const Signal& interleaved, int32_t channels, int32_t c)
{
    Signal x(interleaved.size() / size_t(channels));
    for (size_t i = 0; i < x.size(); ++i)
        x[i] = interleaved[i * size_t(channels) + size_t(c)];
    return x;
}

Signal Interleave(const Signal& left, const Signal& right)
{
    Signal x(2 * left.size());
    for (size_t i = 0; i < left.size(); ++i) {
        x[2 * i] = left[i];
        x[2 * i + 1] = right[i];
    }
    return x;
}

}   // namespace

TEST(VtnSound, PutsTonesWhereThePitchInForceSays)
{
    double worstCents = 0.0, worstLevel = 0.0;
    for (const double stretch : {0.5, 1.25, 2.0, 4.0})
        for (const double pitch : {-12.0, -5.0, 7.0, 12.0})
            for (const double frequency : {55.0, 110.0, 261.63, 440.0, 1000.0, 2000.0, 4000.0, 8000.0}) {
                CVtn vtn(1, kRate, 2048);
                Start(vtn, Record(100.0 * stretch, pitch));
                const double expected = frequency * vtn.GetPitch();
                if (expected >= kRate / 2)
                    continue;
                const Signal out = RunDriver(vtn, RecordedTone(frequency, 0.5), 1);
                const ToneFit fit = FitTone(Middle(out, size_t(out.size() * 0.5)), expected, kRate);
                const double cents = Cents(fit.frequency / expected),
                             level = Decibels(fit.amplitude * fit.amplitude / 0.25);
                EXPECT_NEAR(cents, 0.0, 0.5) << frequency << " Hz x " << stretch << ", " << pitch;
                worstCents = std::max(worstCents, std::abs(cents));
                if (frequency > 2000.0)
                    continue;
                EXPECT_NEAR(level, 0.0, 0.3) << frequency << " Hz x " << stretch << ", " << pitch;
                worstLevel = std::max(worstLevel, std::abs(level));
            }
    RecordProperty("cents", std::to_string(worstCents));
    RecordProperty("decibels", std::to_string(worstLevel));
}

// The synthesis hop is an even number of frames, cut off below: the pitch in force is never above the request, and below
// it by 2 frames of a hop at most. Where the hop is short, at the ends of the range, that is more than 10 cents.
TEST(VtnSound, TakesThePitchWithinTheGrainOfTheHop)
{
    CVtn vtn(1, kRate, 2048);
    for (double stretch = 0.1; stretch <= 10.0; stretch *= 1.07)
        for (double pitch = -24.0; pitch <= 24.0; pitch += 0.37) {
            const double total = stretch * std::exp2(pitch / 12.0);
            if (total < 0.1 || total > 10.0)
                continue;
            Start(vtn, Record(100.0 * stretch, pitch));
            const double below = 100.0 * pitch - Cents(vtn.GetPitch());
            EXPECT_GT(below, -0.01) << stretch << ' ' << pitch;
            EXPECT_LT(below, total < 0.35 ? 34.0 : total < 0.5 || total > 4.2 ? 13.0 : 10.0) << stretch << ' ' << pitch;
        }
}

TEST(VtnSound, LeavesAToneAloneAtFactorsOfOne)
{
    for (const double frequency : {55.0, 440.0, 1000.0, 5000.0, 12000.0}) {
        CVtn vtn(1, kRate, 2048);
        Start(vtn, Record(100.0, 0.0));
        const Signal out = RunDriver(vtn, RecordedTone(frequency, 0.5), 1);
        const ToneFit fit = FitTone(Middle(out, 33075), frequency, kRate);
        EXPECT_NEAR(Cents(fit.frequency / frequency), 0.0, 0.1) << frequency;
        EXPECT_NEAR(Decibels(fit.amplitude * fit.amplitude / 0.25), 0.0, 0.1) << frequency;
    }
}

TEST(VtnSound, GivesMusicAndVoiceBackAtFactorsOfOne)
{
    for (const auto& synthesise : {SynthesiseMusic, SynthesiseDrums, SynthesiseVoice}) {
        const StereoSignal signal = synthesise(kRate, 4.0);
        CVtn vtn(2, kRate, 2048);
        Start(vtn, Record(100.0, 0.0));
        const Signal in = Interleave(signal.left, signal.right), out = RunDriver(vtn, in, 2);
        for (int32_t c : {0, 1}) {
            const Reproduction back = CompareWith(Channel(in, 2, c), Channel(out, 2, c), 1.0, 4);
            RecordProperty("snr", std::to_string(back.snr));
            EXPECT_GE(back.snr, 40.0);
            EXPECT_EQ(back.delay, 2);
        }
    }
}

TEST(VtnSound, KeepsIdenticalChannelsIdentical)
{
    const Signal voice = SynthesiseVoice(kRate, 1.0).left;
    for (const auto& [stretch, pitch] : {std::pair{100.0, 0.0}, {50.0, 7.0}, {170.0, -5.0}, {400.0, 3.0}})
        for (const int32_t channels : {2, 3, 6}) {
            Signal in;
            for (const float v : voice)
                in.insert(in.end(), size_t(channels), v);
            CVtn vtn(channels, kRate, 2048);
            Start(vtn, Record(stretch, pitch));
            const Signal out = RunDriver(vtn, in, channels);
            float worst = 0.0f;
            for (size_t i = 0; i < out.size(); ++i)
                worst = std::max(worst, std::abs(out[i] - out[i - i % size_t(channels)]));
            EXPECT_LE(worst, channels == 2 ? 1e-6f : 0.0f) << channels << " channels, " << stretch << ' ' << pitch;
        }
}

TEST(VtnSound, KeepsTheImageOfAPannedTone)
{
    static constexpr struct {
        double level, phase;
    } kImages[] = {{0.5, 0.0}, {1.0, 1.2}, {0.25, -2.0}};
    for (const auto& image : kImages)
        for (const auto& [stretch, pitch] : {std::pair{125.0, 0.0}, {80.0, 7.0}, {200.0, -5.0}}) {
            Signal left = Tone(66150, 440.0, kRate, 0.5),
                   right = Tone(66150, 440.0, kRate, 0.5 * image.level, image.phase);
            MixInto(&left, Noise(66150, 8, float(kFloor)));
            MixInto(&right, Noise(66150, 9, float(kFloor)));
            CVtn vtn(2, kRate, 2048);
            Start(vtn, Record(stretch, pitch));
            const Signal out = RunDriver(vtn, Interleave(left, right), 2);
            const Signal a = Channel(out, 2, 0), b = Channel(out, 2, 1);
            const double f = 440.0 * vtn.GetPitch() / kRate;
            const auto ratio = HannProjection(Middle(b, 22050), f) / HannProjection(Middle(a, 22050), f);
            EXPECT_NEAR(std::arg(ratio * std::polar(1.0, -image.phase)), 0.0, 0.02) << image.phase << ' ' << stretch;
            EXPECT_NEAR(Decibels(std::norm(ratio) / (image.level * image.level)), 0.0, 0.1) << image.level;
        }
}
