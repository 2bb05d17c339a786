// The driver with the engine that it is made for: lengths, block sizes, what it asks of the system.
#include "tests/allocations.h"
#include "tests/aplugins/call_counter.h"
#include "tests/aplugins/varied_stream.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr float kRates[] = {8000.0f, 44100.0f, 96000.0f, 192000.0f, 384000.0f};   // one per frame size

int64_t Promise(float stretch, int64_t frames)
{
    return int64_t(double(stretch) * double(frames));   // exact: 24 bits times less than 29
}

}   // namespace

TEST(VtnEngine, EndsAtThePromiseForEveryPairOfFactors)
{
    static constexpr double kStretches[] = {0.1, 0.2, 0.5, 0.77, 0.999, 1.0, 1.3, 2.0, 3.1, 5.0, 7.5, 10.0};
    static constexpr double kPitches[] = {-24, -17.3, -12, -5, -0.02, 0, 0.5, 3, 7, 12, 19.9, 24};
    static constexpr uint32_t kBlocks[] = {4096, 1, 44100, 777, 10, 1024, 64};
    static constexpr int32_t kChannels[] = {1, 2, 1, 6, 1, 2, 1, 32};
    static constexpr int32_t kFrames[] = {5000, 0, 1, 2, 17, 100, 1000, 1023, 1024, 1025, 2048, 3000, 9999};
    size_t i = 0;
    for (const double stretch : kStretches)
        for (const double pitch : kPitches) {
            const int32_t channels = kChannels[i % std::size(kChannels)], frames = kFrames[i % std::size(kFrames)];
            const uint32_t block = kBlocks[i % std::size(kBlocks)];
            const float rate = kRates[i++ % std::size(kRates)];
            CVtn vtn(channels, rate, 2048);
            Start(vtn, Record(100.0 * stretch, pitch));
            const auto inForce = float(vtn.GetStretch());
            const Signal in = Noise(frames * channels, 1, 0.25f),
                         out = RunDriver(vtn, in, channels, {block, 10 * block});
            EXPECT_EQ(int64_t(out.size()) / channels, Promise(inForce, frames))
                << stretch << ", " << pitch << " semitones, " << channels << " channels, " << frames << " frames at "
                << rate << ", blocks of " << block;
            EXPECT_EQ(vtn.FramesPadded(), 0) << stretch << ' ' << pitch << ' ' << frames;
            EXPECT_TRUE(std::ranges::all_of(out, [](float v) { return std::abs(v) < 4.0f; }));
        }
}

TEST(VtnEngine, EndsAtThePromiseAfterMinutes)
{
    for (const double stretch : {0.3, 1.7}) {
        CVtn vtn(1, 8000.0f, 2048);
        Start(vtn, Record(100.0 * stretch, 4.0));
        const Signal in = Noise(8000 * 180, 2, 0.25f);
        EXPECT_EQ(int64_t(RunDriver(vtn, in, 1).size()), Promise(float(vtn.GetStretch()), int64_t(in.size())));
        EXPECT_EQ(vtn.FramesPadded(), 0);
    }
}

TEST(VtnEngine, GivesTheSameSamplesForEveryHostBlock)
{
    static constexpr struct {
        double stretch, pitch;
        int32_t channels;
        float rate;
        int32_t frames;
    } kCases[] = {{1.3, 3.0, 2, 44100.0f, 20000},
                  {0.37, -7.0, 1, 22050.0f, 20000},
                  {4.0, 0.0, 1, 96000.0f, 12000},
                  {1.0, 12.0, 3, 48000.0f, 12000}};
    for (const auto& c : kCases) {
        const Signal in = Noise(c.frames * c.channels, 3, 0.25f);
        Signal first;
        for (const auto& [block, room] :
             {std::pair{4096u, 40960u}, {1u, 10u}, {7u, 3u}, {1000u, 500u}, {44100u, 441000u}}) {
            CVtn vtn(c.channels, c.rate, 2048);
            Start(vtn, Record(100.0 * c.stretch, c.pitch));
            const Signal out = RunDriver(vtn, in, c.channels, {block, room});
            if (first.empty())
                first = out;
            EXPECT_TRUE(out == first) << c.stretch << ' ' << c.pitch << ", blocks of " << block << '/' << room;
        }
    }
}

TEST(VtnEngine, AllocatesAndLocksNothingWhileStreaming)
{
    for (const int32_t channels : {1, 2, 32}) {
        CVtn vtn(channels, 44100.0f, 2048);
        Start(vtn, Record(130.0, 3.0));
        const Signal in = Noise(4096 * channels, 4, 0.25f);
        Signal room(size_t(40960 * channels));
        std::array<QxVantorParams, 3> records = {Record(130.0, 3.0), Record(40.0, -5.0), Record(250.0, 12.0)};
        const int64_t calls = HeapAndLockCalls(), allocations = AllocationCount();
        for (size_t i = 0; i < 24; ++i) {
            if (i % 8 == 7) {   // ramps and their end belong to it
                vtn.SetParams(&records[i / 8], false);
                vtn.UpdateRatios(false);
            }
            uint32_t given = i % 2 ? 4096 : 31, got = 40960;   // larger than ever before
            vtn.ProcessBlock(i == 23, in.data(), &given, room.data(), &got);
        }
        EXPECT_EQ(HeapAndLockCalls(), calls) << channels;
        EXPECT_EQ(AllocationCount(), allocations) << channels;
    }
}

class VtnHeapAndLocks : public testing::TestWithParam<int32_t> {};
INSTANTIATE_TEST_SUITE_P(Modes, VtnHeapAndLocks, testing::ValuesIn(kAllModes));

TEST_P(VtnHeapAndLocks, AreLeftAloneWhileStreaming)
{
    for (const int32_t channels : {1, 2, 7}) {
        VariedStream stream(GetParam(), channels);
        stream.Run(0, VariedStream::Settling(GetParam()));
        const int64_t calls = HeapAndLockCalls(), allocations = AllocationCount();
        stream.Run(VariedStream::Settling(GetParam()), VariedStream::kBlocks);
        EXPECT_EQ(HeapAndLockCalls(), calls) << channels;
        EXPECT_EQ(AllocationCount(), allocations) << channels;
    }
}
