// The driver over the Soloist modes: lengths, tails, changes while running, the heap.
#include "tests/aplugins/call_counter.h"
#include "tests/aplugins/driver_run.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

const std::vector<Resonance> kVowel = {{700, 90}, {1220, 100}, {2600, 140}};

class VtnSolo : public ::testing::TestWithParam<int32_t> {};
INSTANTIATE_TEST_SUITE_P(Modes, VtnSolo, ::testing::Values(kModeSoloistMono, kModeSoloistSpeech));

bool AllWithin(const Signal& x, float bound)
{
    return std::ranges::all_of(x, [bound](float v) { return std::abs(v) <= bound; });
}

TEST_P(VtnSolo, EndsAtThePromisedFrame)
{
    const struct {
        const char* name;
        Signal x;
    } kInputs[] = {{"voice", Vowel(22050, 120.0, 180.0, kVowel, 44100.0)},
                   {"silence", Signal(20000, 0.0f)},
                   {"noise", Noise(20000, 1, 0.5f)},
                   {"short", Noise(700, 2, 0.5f)},
                   {"one frame", Signal(1, 0.5f)},
                   {"nothing", {}}};
    for (const auto& input : kInputs)
        for (const double stretch : {0.1, 0.3, 0.77, 1.0, 2.5, 10.0})
            for (const double semitones : {-24.0, -7.0, 0.0, 5.0, 24.0}) {
                CVtn vtn(1, 44100.0f, 2048);
                Start(vtn, Record(100.0 * stretch, semitones, GetParam()));
                const auto promised = int64_t(vtn.GetStretch() * double(input.x.size()));
                const Signal out = RunDriver(vtn, input.x, 1);
                EXPECT_EQ(int64_t(out.size()), promised) << input.name << ", " << stretch << ", " << semitones;
                EXPECT_TRUE(AllWithin(out, 4.0f)) << input.name << ", " << stretch << ", " << semitones;
            }
}

TEST_P(VtnSolo, KeepsItsPromiseForEveryRateChannelCountAndBlock)
{
    const struct {
        int32_t channels;
        float rate;
        HostBlocks host;
    } kCases[] = {{1, 8000.0f, {1, 10}},         {2, 22050.0f, {100, 1000}},   {6, 48000.0f, {4096, 700}},
                  {1, 96000.0f, {96000, 96000}}, {32, 192000.0f, {512, 5120}}, {1, 384000.0f, {4096, 40960}}};
    for (const auto& c : kCases)
        for (const double stretch : {0.1, 0.5, 1.3})
            for (const float level : {0.3f, 0.0f}) {
                CVtn vtn(c.channels, c.rate, 2048);
                Start(vtn, Record(100.0 * stretch, 3.0, GetParam()));
                const Signal out = RunDriver(vtn, Noise(9001 * c.channels, 3, level), c.channels, c.host);
                EXPECT_EQ(int64_t(out.size()), c.channels * int64_t(vtn.GetStretch() * 9001))
                    << c.rate << " Hz, stretch " << stretch << ", level " << level;
            }
}

// Periods that round the same way for as long as a tone lasts, and strong compression, where a grain stands for many
// periods of input: neither may let the output leave its time. What was given too early could not be taken back.
TEST_P(VtnSolo, StaysInTimeOverLongTones)
{
    static constexpr struct {
        int32_t period;   // frames
        double stretch, semitones;
    } kCases[] = {{49, 1.5, 12.0}, {147, 1.0, 12.0}, {333, 0.4, 12.0}, {455, 0.1, 3.0}, {455, 0.1, -5.0}};
    for (const auto& c : kCases)
        for (const int32_t frames : {441000, 397123}) {
            Signal in(size_t(frames), 0.0f);
            for (size_t i = 0; i < in.size(); ++i)   // a sawtooth
                in[i] = 0.3f - 0.6f * float(i % size_t(c.period)) / float(c.period);
            CVtn vtn(1, 44100.0f, 2048);
            Start(vtn, Record(100.0 * c.stretch, c.semitones, GetParam()));
            const auto promised = int64_t(vtn.GetStretch() * double(frames));
            EXPECT_EQ(int64_t(RunDriver(vtn, in, 1).size()), promised) << c.period << " frames, stretch " << c.stretch;
            EXPECT_EQ(vtn.FramesPadded(), 0) << c.period << " frames, stretch " << c.stretch;
        }
}

// A minute with settings that change at random: finite, bounded, drained, and without the heap once it has settled.
TEST_P(VtnSolo, SoaksWithoutTheHeap)
{
    for (const float rate : {8000.0f, 44100.0f}) {
        std::mt19937 random(4);
        const auto uniform = [&](double low, double high) {
            return low + (high - low) * double(random()) / 4294967295.0;
        };
        CVtn vtn(2, rate, 2048);
        Start(vtn, Record(100.0, 0.0, GetParam()));
        Signal voice = Vowel(int32_t(rate), 90.0, 400.0, kVowel, rate, 0.05);
        MixInto(&voice, Noise(int32_t(rate / 4), 5, 0.2f), size_t(rate / 2));
        Signal in, out, room(2 * 40960);
        for (const float v : voice)
            in.insert(in.end(), {v, -0.5f * v});
        int64_t settled = 0, framesOut = 0;
        for (int32_t block = 0, at = 0; block < int32_t(60 * rate / 1024);
             ++block, at = (at + 1024) % int32_t(rate - 1024)) {
            if (block % 16 == 0) {
                auto record = Record(100.0 * std::exp2(uniform(-3.0, 2.0)), uniform(-24.0, 24.0), GetParam());
                vtn.SetParams(&record, false);
                vtn.UpdateRatios(false);
            }
            uint32_t given = 1024, got = 40960;
            const int64_t calls = HeapAndLockCalls();
            vtn.ProcessBlock(false, in.data() + 2 * at, &given, room.data(), &got);
            framesOut += got;
            settled = HeapAndLockCalls() == calls ? settled + 1 : 0;
            for (uint32_t i = 0; i < 2 * got; ++i)
                ASSERT_LE(std::abs(room[i]), 2.0f) << "block " << block;
        }
        EXPECT_GT(settled, int32_t(30 * rate / 1024))
            << "the second half minute of " << rate << " Hz took from the heap";
        Drain(vtn, 2, {}, &out);
        EXPECT_EQ(framesOut + int64_t(out.size()) / 2, vtn.FramesExpected());
    }
}

}   // namespace
