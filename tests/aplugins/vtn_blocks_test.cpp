// How the driver moves frames: block sizes, lengths, the end of the stream, engines that give nothing or little.
#include "tests/aplugins/call_counter.h"
#include "tests/aplugins/driver_run.h"
#include "tests/aplugins/fake_engine.h"

#include <gtest/gtest.h>

namespace {

// What FakeEngine makes of a whole stream: each output frame holds the input frame that it falls on.
Signal Held(const Signal& in, int32_t channels, float stretch)
{
    const auto frames = int64_t(double(stretch) * double(in.size() / size_t(channels)));
    Signal out;
    double position = 0.0;
    for (int64_t k = 0; k < frames; ++k, position += 1.0 / stretch)
        for (int32_t c = 0; c < channels; ++c)
            out.push_back(in[size_t(position + 1e-6) * size_t(channels) + size_t(c)]);
    return out;
}

}   // namespace

TEST(VtnBlocks, RendersTheWholeInputWhateverTheBlocks)
{
    static constexpr struct {
        uint32_t in, out;
    } kBlocks[] = {{4096, 40960}, {1, 10}, {1, 1}, {1000, 100}, {7, 1500}, {48000, 480000}, {3, 1023}, {64, 1}};
    for (int32_t channels : {1, 2, 6, 32})
        for (float stretch : {0.1f, 0.75f, 1.0f, 2.5f, 10.0f})
            for (const auto& b : kBlocks) {
                FakeScope fake;
                CVtn vtn(channels, 44100.0f, 2048, &CreateFake);
                Start(vtn, Record(100.0 * stretch, 0.0));
                const Signal in = Noise(channels * (channels == 32 ? 700 : 3001), 1);
                const Signal out = RunDriver(vtn, in, channels, {b.in, b.out});
                EXPECT_TRUE(out == Held(in, channels, stretch))
                    << channels << " channels, stretch " << stretch << ", blocks " << b.in << '/' << b.out;
                EXPECT_EQ(vtn.FramesPadded(), 0);
            }
}

TEST(VtnBlocks, KeepsThePromiseForEveryShortInput)
{
    for (int32_t frames = 0; frames < 1400; frames += frames < 20 ? 1 : 97)
        for (float stretch : {0.1f, 0.7f, 1.0f, 3.0f}) {
            FakeScope fake;
            CVtn vtn(1, 44100.0f, 2048, &CreateFake);
            Start(vtn, Record(100.0 * stretch, 0.0));
            const Signal out = RunDriver(vtn, Noise(frames, 2), 1);
            EXPECT_EQ(int64_t(out.size()), int64_t(double(stretch) * frames)) << frames << " x " << stretch;
        }
}

TEST(VtnBlocks, TakesWhatAPassSaysItGave)
{
    FakeScope fake;
    fake.emptyPasses = 3;
    fake.shortPasses = 4;
    CVtn vtn(2, 44100.0f, 2048, &CreateFake);
    Start(vtn, Record(200.0, 0.0));
    const Signal in = Noise(2 * 30000, 3);
    EXPECT_TRUE(RunDriver(vtn, in, 2) == Held(in, 2, 2.0f));
}

TEST(VtnBlocks, FillsWithSilenceWhatTheTailLacks)
{
    FakeScope fake;
    fake.tail = -200;   // ends before the end of its input
    CVtn vtn(1, 44100.0f, 2048, &CreateFake);
    Start(vtn, Record(100.0, 0.0));
    const Signal in = Noise(1724 + 3 * 1024, 4);   // four whole passes, and nothing to pad the stage for
    for (const uint32_t room : {1u, 50000u}) {
        Start(vtn, Record(100.0, 0.0, room == 1 ? 2 : 4));   // a new engine each
        const Signal out = RunDriver(vtn, in, 1, {4096, room});
        ASSERT_EQ(out.size(), in.size());
        EXPECT_EQ(vtn.FramesPadded(), 200);
        EXPECT_TRUE(std::equal(in.begin(), in.end() - vtn.FramesPadded(), out.begin()));
    }
}

TEST(VtnBlocks, NeitherSpinsNorInventsWhenTheEngineFails)
{
    for (int32_t status : {kNoResult, kInvalidArgument, kOutOfMemory}) {
        FakeScope fake;
        fake.status = status;
        CVtn vtn(1, 44100.0f, 2048, &CreateFake);
        Start(vtn, Record(100.0, 0.0));
        Signal out;
        Push(vtn, Noise(20000, 5), 1, {}, &out);
        EXPECT_TRUE(out.empty()) << status;
    }
}

TEST(VtnBlocks, GivesNothingAndSaysSoWhileTheInputIsShort)
{
    FakeScope fake;
    CVtn vtn(1, 44100.0f, 2048, &CreateFake);
    Start(vtn, Record(100.0, 0.0));
    Signal in = Noise(100, 6), room(4096);
    uint32_t given = 100, got = 4096;
    EXPECT_EQ(vtn.ProcessBlock(false, in.data(), &given, room.data(), &got), 0);
    EXPECT_EQ(given, 100u);
    EXPECT_EQ(got, 0u);
    given = 0, got = 4096;
    EXPECT_EQ(vtn.ProcessBlock(false, nullptr, &given, room.data(), &got), 1);
    EXPECT_EQ(got, 0u);
    given = 0, got = 0;
    EXPECT_EQ(vtn.ProcessBlock(true, nullptr, &given, nullptr, &got), 0);   // no room: there may be more
}

TEST(VtnBlocks, PadsAStageUnderFlushToTheNeedAndNoFurther)
{
    // The first pass of 1024 frames at stretch 1 needs 1724 of them.
    constexpr int32_t kNeed = 1024 + FakePlan::kLookAhead;
    static constexpr struct {
        int32_t frames;
        size_t passes;
    } kCases[] = {{0, 0}, {1, 1}, {kNeed - 1, 1}, {kNeed, 1}, {kNeed + 1, 2}};
    for (const auto& c : kCases) {
        FakeScope fake;
        CVtn vtn(1, 44100.0f, 2048, &CreateFake);
        Start(vtn, Record(100.0, 0.0));
        const Signal in = Noise(c.frames, 7);
        EXPECT_TRUE(RunDriver(vtn, in, 1) == in) << c.frames;
        ASSERT_EQ(fake.asked.size(), c.passes) << c.frames;
        if (c.passes > 0) {
            EXPECT_EQ(fake.asked[0], kNeed);
        }
    }
}

TEST(VtnBlocks, GrowsWhenTheEngineAsksForMoreThanItsWorstCase)
{
    for (int32_t worst : {kNoResult, 10}) {
        FakeScope fake;
        fake.worstCase = worst;
        CVtn vtn(2, 44100.0f, 2048, &CreateFake);
        Start(vtn, Record(15.0, 0.0));
        const Signal in = Noise(2 * 40000, 8);
        EXPECT_TRUE(RunDriver(vtn, in, 2, {500, 5000}) == Held(in, 2, 0.15f)) << worst;
    }
}

TEST(VtnBlocks, CountsOnlyWhatAResetLeaves)
{
    FakeScope fake;
    CVtn vtn(1, 44100.0f, 2048, &CreateFake);
    Start(vtn, Record(200.0, 0.0));
    Signal out;
    Push(vtn, Noise(10000, 9), 1, {}, &out);
    const int64_t before = vtn.FramesOut(), lost = vtn.FramesExpected() - before;
    ASSERT_GT(lost, 0);
    Start(vtn, Record(200.0, 0.0));
    const Signal in = Noise(5000, 10), rest = RunDriver(vtn, in, 1);
    EXPECT_EQ(vtn.FramesPadded(), 0);   // silence is not owed for what a discontinuity dropped
    const Signal expected = Held(in, 1, 2.0f);
    ASSERT_GE(rest.size(), expected.size());   // with what still stood in the stage before it
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), rest.end() - std::ptrdiff_t(expected.size())));
}

TEST(VtnBlocks, WithoutAnEngineTakesNothingAndGivesNothing)
{
    static constexpr struct {
        int32_t channels;
        float rate;
    } kCases[] = {{2, 7999.0f}, {2, 384001.0f}, {0, 44100.0f}, {-1, 44100.0f}, {2, NAN}};
    Signal room(4096);
    for (const auto& c : kCases) {
        CVtn vtn(c.channels, c.rate, 2048);
        Start(vtn, Record(100.0, 0.0));
        EXPECT_FALSE(vtn.HasEngine());
        for (bool flush : {false, true}) {
            uint32_t given = 64, got = 1024;
            EXPECT_EQ(vtn.ProcessBlock(flush, room.data(), &given, room.data() + 2048, &got), 1);
            EXPECT_EQ(given, 0u);
            EXPECT_EQ(got, 0u);
        }
    }
    FakeScope fake;
    fake.createStatus = kOutOfMemory;
    EXPECT_FALSE(CVtn(2, 44100.0f, 2048, &CreateFake).HasEngine());
}

TEST(VtnBlocks, LimitsTheChannelsToThirtyTwo)
{
    FakeScope fake;
    CVtn vtn(48, 44100.0f, 2048, &CreateFake);
    Start(vtn, Record(100.0, 0.0));
    const Signal in = Noise(32 * 100, 11);
    EXPECT_TRUE(RunDriver(vtn, in, 32) == in);
}

TEST(VtnBlocks, LivesWithAnyBlockSize)
{
    for (int32_t blockSize : {-5, 0, 1, 100, 1023, 1024, 100000}) {
        FakeScope fake;
        CVtn vtn(2, 44100.0f, blockSize, &CreateFake);
        Start(vtn, Record(150.0, 3.0));
        const Signal in = Noise(2 * 900, 12);
        EXPECT_TRUE(RunDriver(vtn, in, 2, {64, 640}) == Held(in, 2, 1.5f)) << blockSize;
    }
}

TEST(VtnBlocks, AsksNothingOfTheSystem)
{
    for (int32_t channels : {1, 2, 32}) {
        FakeScope fake;
        CVtn vtn(channels, 44100.0f, 2048, &CreateFake);
        Start(vtn, Record(150.0, 3.0));
        const Signal in = Noise(512 * channels, 13);
        Signal room(size_t(5120 * channels));
        const int64_t before = HeapAndLockCalls();
        for (int i = 0; i < 40; ++i) {
            uint32_t given = 512, got = 5120;
            vtn.ProcessBlock(i == 39, in.data(), &given, room.data(), &got);
        }
        EXPECT_EQ(HeapAndLockCalls(), before) << channels;
    }
}
