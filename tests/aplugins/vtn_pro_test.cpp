// The driver over the Pro modes: lengths, tails, changes while running, the heap.
#include "tests/aplugins/call_counter.h"
#include "tests/aplugins/driver_run.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int32_t kShare = 8;   // of the audio of the long tests
#else
constexpr int32_t kShare = 1;
#endif

QxVantorParams ProRecord(double stretch, double semitones, double formant = 100.0)
{
    QxVantorParams r = Record(100.0 * stretch, semitones, kModePro);
    r.formantPercent = formant;
    return r;
}

// Random settings within and beyond what the driver accepts.
QxVantorParams RandomRecord(std::mt19937& random)
{
    const auto uniform = [&](double low, double high) { return low + (high - low) * double(random()) / 4294967295.0; };
    QxVantorParams r =
        ProRecord(std::exp2(uniform(-3.5, 3.5)), uniform(-26.0, 26.0), random() % 2 ? 100.0 : uniform(0.0, 100.0));
    r.contentPitch = int32_t(2 + random() % 9);
    r.syncPitch = int32_t(random() % 2);
    return r;
}

bool AllFinite(const Signal& x, float bound)
{
    return std::ranges::all_of(x, [bound](float v) { return std::abs(v) <= bound; });
}

}   // namespace

TEST(VtnPro, EndsAtThePromisedFrame)
{
    for (const double stretch : {0.1, 0.25, 0.5, 0.77, 1.0, 1.5, 2.6, 5.0, 10.0})
        for (const double semitones : {-24.0, -7.0, 0.0, 7.0, 24.0}) {
            CVtn vtn(1, 44100.0f, 2048);
            Start(vtn, ProRecord(stretch, semitones));
            const int32_t frames = stretch > 3.0 ? 6007 : 20011;
            const auto promised = int64_t(vtn.GetStretch() * frames);
            const Signal out = RunDriver(vtn, Noise(frames, 1, 0.5f), 1);
            EXPECT_EQ(int64_t(out.size()), promised) << stretch << ", " << semitones;
            EXPECT_EQ(vtn.FramesPadded(), 0) << stretch << ", " << semitones << ": the engine's tail fell short";
            EXPECT_TRUE(AllFinite(out, 4.0f)) << stretch << ", " << semitones;
        }
}

TEST(VtnPro, EndsAtThePromisedFrameWhateverTheInput)
{
    for (const int32_t channels : {1, 2, 6, 32})
        for (const int32_t frames : {0, 1, 511, 513, 4608, 4609, 9999})
            for (const double stretch : {0.5, 1.0, 1.7}) {
                if (channels > 2 && frames > 1000)
                    continue;
                CVtn vtn(channels, 44100.0f, 2048);
                Start(vtn, ProRecord(stretch, 3.0));
                const Signal out = RunDriver(vtn, Noise(channels * frames, 2), channels);
                EXPECT_EQ(int64_t(out.size()), channels * int64_t(vtn.GetStretch() * frames)) << frames;
                EXPECT_EQ(vtn.FramesPadded(), 0) << channels << " x " << frames << ", stretch " << stretch;
            }
}

TEST(VtnPro, KeepsItsPromiseInEveryRateBandAndInTheCoarseMode)
{
    for (const float rate : {8000.0f, 32000.0f, 96000.0f, 192000.0f, 384000.0f})
        for (const double stretch : {0.4, 1.0, 2.2}) {
            CVtn vtn(2, rate, 2048);
            Start(vtn, ProRecord(stretch, -3.0, 40.0));
            const Signal out = RunDriver(vtn, Noise(2 * 30000, 3), 2);
            EXPECT_EQ(int64_t(out.size()), 2 * int64_t(vtn.GetStretch() * 30000)) << rate;
            EXPECT_EQ(vtn.FramesPadded(), 0) << rate << ", stretch " << stretch;
        }
    // The driver maps the coarse mode to the fine one, so it is asked from behind its back.
    const CVtn::EngineFactory coarse = [](CTensioProIf** engine, int32_t block, int32_t channels, float rate, int32_t) {
        return CreateInstance(engine, block, channels, rate, kModeProCoarse);
    };
    for (const double stretch : {0.1, 0.7, 1.0, 1.5, 4.0}) {
        CVtn vtn(1, 44100.0f, 2048, coarse);
        Start(vtn, ProRecord(stretch, 2.0));
        RunDriver(vtn, Noise(20000, 4), 1);
        EXPECT_EQ(vtn.FramesPadded(), 0) << stretch;
    }
}

// Also where the engine quantises the pitch, and where its answer differs by a rounding from one offer to the next.
TEST(VtnPro, GivesTheSameSamplesWhateverTheBlocks)
{
    const Signal in = Noise(2 * 20000, 5, 0.5f);
    static constexpr struct {
        double stretch, pitch;
    } kFactors[] = {{1.3, 4.0}, {0.8, -4.0}, {2.7, -7.3}, {0.6, 11.1}};
    for (const auto& f : kFactors) {
        const auto run = [&](const HostBlocks& blocks) {
            CVtn vtn(2, 44100.0f, 2048);
            Start(vtn, ProRecord(f.stretch, f.pitch, 0.0));
            return RunDriver(vtn, in, 2, blocks);
        };
        const Signal expected = run({});
        for (const HostBlocks& blocks : {HostBlocks{1, 10}, HostBlocks{999, 2000}, HostBlocks{20000, 300000}})
            EXPECT_TRUE(run(blocks) == expected) << f.stretch << ", " << f.pitch << ", block " << blocks.in;
    }
}

TEST(VtnPro, TouchesNeitherHeapNorLocksWhileItRuns)
{
    for (const int32_t channels : {1, 5}) {
        CVtn vtn(channels, 44100.0f, 2048);
        Start(vtn, ProRecord(1.0, 0.0));
        const Signal in = Noise(4096 * channels, 6, 0.5f);
        Signal out(size_t(40960) * size_t(channels));
        std::mt19937 random(7);
        int64_t calls = 0;
        for (int32_t block = 0; block < 60; block += kShare) {
            QxVantorParams record =
                block % 3 ? ProRecord(0.1 * std::pow(100.0, block / 60.0), block - 30) : RandomRecord(random);
            uint32_t given = 4096, got = 40960;
            const int64_t before = HeapAndLockCalls();
            vtn.SetParams(&record, false);
            vtn.UpdateRatios(false);
            vtn.ProcessBlock(block >= 56, in.data(), &given, out.data(), &got);
            calls += HeapAndLockCalls() - before;
        }
        EXPECT_EQ(calls, 0) << channels << " channels";
    }
}

// Every parameter changes at random, with discontinuities, over every frame size; the output stays finite and bounded, and
// the stream drains.
TEST(VtnPro, SurvivesChangesOfEverythingWhileItRuns)
{
    static constexpr struct {
        float rate;
        int32_t channels, seconds;
    } kCases[] = {{8000.0f, 1, 60}, {44100.0f, 2, 40}, {96000.0f, 1, 10}, {192000.0f, 1, 5}, {384000.0f, 1, 3}};
    for (const auto& c : kCases) {
        std::mt19937 random(unsigned(c.rate));
        Signal in = HarmonicTone(int32_t(c.rate) * c.channels, 150.0, c.rate, 0.2);
        MixInto(&in, Noise(int32_t(in.size()) / 2, 9, 0.4f), in.size() / 4);
        CVtn vtn(c.channels, c.rate, 2048);
        Start(vtn, ProRecord(1.0, 0.0));
        HostBlocks host;
        host.between = [&](CVtn& v) {
            host.in = 1 + random() % 8000;
            if (random() % 3 == 0) {
                QxVantorParams record = RandomRecord(random);
                v.SetParams(&record, random() % 4 == 0);
                v.UpdateRatios(false);
            }
            if (random() % 50 == 0)
                v.Reset();
        };
        for (int32_t second = 0; second < (c.seconds + kShare - 1) / kShare; ++second) {
            Signal out;
            Push(vtn, in, c.channels, host, &out);
            ASSERT_TRUE(AllFinite(out, 20.0f)) << c.rate << " Hz, second " << second;
        }
        Signal tail;
        Drain(vtn, c.channels, host, &tail, size_t(1) << 22);
        EXPECT_TRUE(AllFinite(tail, 20.0f));
        EXPECT_GE(vtn.FramesOut(), vtn.FramesExpected()) << c.rate;   // more was out before a setting was lowered
    }
}
