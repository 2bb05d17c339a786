#include "tests/allocations.h"
#include "tests/engine/engine_run.h"

#include <cmath>
#include <limits>

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST(EngineFactory, ChecksItsArgumentsInTheirOrder)
{
    static constexpr struct {
        int32_t block, channels;
        float rate;
        int32_t mode, status;
    } kCases[] = {
        {1024, 48, 8000.0f, 2, kSuccess},
        {1024, 1, 384000.0f, 2, kSuccess},
        {1025, 0, 1.0f, 9, kInvalidArgument},
        {1024, 0, 7999.9f, 9, kInvalidSampleRate},
        {1024, 1, 384000.1f, 2, kInvalidSampleRate},
        {1024, 1, kNaN, 2, kInvalidSampleRate},
        {1024, 0, 44100.0f, 9, kInvalidChannelCount},
        {1024, 49, 44100.0f, 2, kInvalidChannelCount},
        {1024, 2, 44100.0f, 6, kInvalidArgument},
        {1024, 2, 44100.0f, -1, kInvalidArgument},
    };
    for (const auto& c : kCases) {
        auto* engine = reinterpret_cast<CTensioProIf*>(1);
        EXPECT_EQ(CreateInstance(&engine, c.block, c.channels, c.rate, c.mode), c.status)
            << c.block << ' ' << c.channels << ' ' << c.rate << ' ' << c.mode;
        EXPECT_EQ(engine != nullptr, c.status == kSuccess);
        EXPECT_EQ(DeleteInstance(&engine), c.status == kSuccess ? kSuccess : kInvalidArgument);
        EXPECT_EQ(engine, nullptr);
    }
}

TEST(EngineFactory, TellsWhenMemoryIsOut)
{
    for (int32_t mode : {kModeEfficient, kModeSoloistMono, kModeSoloistSpeech}) {
        int32_t status = kOutOfMemory;
        for (int64_t successes = 0; status == kOutOfMemory; ++successes) {
            CTensioProIf* engine = nullptr;
            {
                const FailingAllocation failing(successes);
                status = CreateInstance(&engine, 1024, 2, 8000.0f, mode);
            }
            ASSERT_EQ(engine != nullptr, status == kSuccess) << "mode " << mode << ", allocation " << successes;
            DeleteInstance(&engine);
        }
        EXPECT_EQ(status, kSuccess) << "mode " << mode;
    }
}

class Efficient : public ::testing::TestWithParam<int32_t> {};

TEST_P(Efficient, RefusesFactorsOutsideItsRangeAndKeepsTheOldOnes)
{
    const auto engine = MakeEngine(GetParam());
    float pitch = 1.0f;
    ASSERT_EQ(engine->SetStretchPitch(2.0f, &pitch, false), kSuccess);
    const int32_t needed = engine->GetFramesNeeded();
    static constexpr struct {
        float stretch, pitch;
        int32_t status;
    } kCases[] = {{10.0f, 1.5f, kInvalidArgument},  {0.0999f, 1.0f, kInvalidArgument},
                  {kNaN, 1.0f, kInvalidArgument},   {1.0f, kNaN, kInvalidArgument},
                  {-1.0f, -1.0f, kInvalidArgument}, {1e30f, 1e-30f, kInvalidArgument}};
    for (const auto& c : kCases) {
        float p = c.pitch, s = c.stretch;
        EXPECT_EQ(engine->SetStretchPitch(c.stretch, &p, false), c.status) << c.stretch << " x " << c.pitch;
        EXPECT_EQ(engine->SetStretchKeepPitch(&s, c.pitch, false), c.status) << c.stretch << " x " << c.pitch;
        EXPECT_EQ(engine->GetFramesNeededAt(c.stretch, c.pitch), kNoResult);
        EXPECT_EQ(engine->GetFramesNeeded(), needed);
    }
    for (const auto& [s, p] : {std::pair(0.1f, 1.0f), {0.025f, 4.0f}, {10.0f, 1.0f}}) {
        float inForce = p;
        EXPECT_EQ(engine->SetStretchPitch(s, &inForce, false), kSuccess) << s << " x " << p;
    }
}

// hopS / hopA with hopS even: 44100 Hz has frames of 4096.
TEST_P(Efficient, HandsBackTheFactorsOfAnEvenHop)
{
    static constexpr struct {
        float total;
        int32_t hopA, hopS;
    } kCases[] = {{1.0f, 1024, 1024}, {0.3333f, 1024, 340}, {1.5f, 1024, 1536}, {1.5000001f, 512, 768},
                  {2.0f, 512, 1024},  {2.2f, 512, 1126},    {3.2f, 256, 818},   {4.2f, 128, 536},
                  {5.0f, 64, 320},    {0.1f, 1024, 102},    {10.0f, 64, 640}};
    const auto engine = MakeEngine(GetParam());
    for (const auto& c : kCases) {
        float stretch = c.total;
        ASSERT_EQ(engine->SetStretchKeepPitch(&stretch, 1.0f, false), kSuccess) << c.total;
        EXPECT_EQ(stretch, float(c.hopS) / float(c.hopA)) << c.total;
        EXPECT_EQ(engine->GetFramesNeeded() % c.hopA, 0) << c.total;
    }
    for (float s = 0.3f; s < 2.5f; s += 0.0371f)
        for (float p = 0.4f; p < 4.0f; p *= 1.0595f) {
            float first = p;
            if (engine->SetStretchPitch(s, &first, false) != kSuccess)
                continue;
            EXPECT_LT(std::fabs(first - p), 2.0f / 64.0f);
            float again = first;
            ASSERT_EQ(engine->SetStretchPitch(s, &again, false), kSuccess);
            EXPECT_NEAR(again, first, 1e-6f) << s << " x " << p;   // what was handed back is in force as it is
        }
}

TEST_P(Efficient, AnswersForOtherFactorsWithoutTouchingThoseInForce)
{
    const Planar input{HarmonicTone(30000, 220.0, 44100.0, 0.2)};
    const auto asked = MakeEngine(GetParam()), left = MakeEngine(GetParam());
    for (CTensioProIf* engine : {asked.get(), left.get()}) {
        float pitch = 1.26f;
        engine->SetStretchPitch(1.7f, &pitch, false);
    }
    EXPECT_GE(asked->GetFramesNeededAt(0.025f, 4.0f), 30 * asked->GetFramesNeeded());
    EXPECT_EQ(RunEngine(*asked, input), RunEngine(*left, input));
}

TEST_P(Efficient, TakesAStereoModeWithTwoChannelsOnly)
{
    for (int32_t channels : {1, 2, 6})
        EXPECT_EQ(MakeEngine(GetParam(), channels)->SetStereoInputMode(1), channels == 2 ? kSuccess : kNotAvailable);
}

INSTANTIATE_TEST_SUITE_P(Modes, Efficient, ::testing::Values(kModeEfficient, kModeEfficientAlias));

}   // namespace
