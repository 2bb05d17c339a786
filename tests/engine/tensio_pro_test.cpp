// How the Pro modes move frames: sizes, passes, lead-in, tail, refusals.
#include "engine/tensio_pro.h"

#include "dsp/status.h"
#include "tests/engine/engine_run.h"
#include "tests/measure.h"

#include <gtest/gtest.h>

namespace {

constexpr int32_t kFine = 2, kCoarse = 0;   // of the vocoder

// Runs passes as a caller of the core does; gives the frames of each.
struct Passes {
    explicit Passes(CtensioPro& pro) : core(pro), in(1 << 16, 0.1f), out(1 << 18) {}

    int32_t First() { return core.ProcessFirstBlock(&from, core.GetFirstFramesNeeded(), &to); }
    int32_t Later(int32_t frames)
    {
        if (core.PreProcessData(&from, frames) != kSuccess)
            return -2;
        for (int32_t i = 0; i < core.GetNumOfProcessCalls(); ++i)
            if (core.ProcessStep() != kSuccess)
                return kNoResult;
        return core.GetProcessedData(&to);
    }

    CtensioProDirect& core;
    Signal in, out;
    const float* from = in.data();
    float* to = out.data();
};

TEST(TensioPro, SizesFollowTheRateBand)
{
    static constexpr struct {
        float rate;
        int32_t block;
    } kCases[] = {{8000.0f, 512},   {31999.0f, 512},   {32000.0f, 1024},  {44100.0f, 1024},
                  {64000.0f, 2048}, {128000.0f, 4096}, {256000.0f, 8192}, {384000.0f, 8192}};
    for (const auto& c : kCases) {
        CtensioPro pro(1024, 1, c.rate, kFine);
        EXPECT_EQ(pro.GetFirstFramesNeeded(), c.block / 2 + 4 * c.block) << c.rate;
        EXPECT_EQ(pro.GetPreFramesOut(), 2 * c.block);
        const int32_t worst = pro.GetFramesNeededAt(0.025f, 4.0f);
        EXPECT_GE(pro.GetCapacity(), std::max(32768, worst)) << c.rate;
    }
}

TEST(TensioPro, PassesTakeAndGiveWhatTheHopsMake)
{
    static constexpr struct {
        int32_t coreMode;
        float total;
        int32_t in, out;
    } kCases[] = {{kFine, 0.5f, 512, 256},     {kFine, 1.0f, 512, 512},   {kFine, 2.0f, 512, 1024},
                  {kFine, 3.0f, 512, 1536},    {kFine, 10.0f, 512, 5120}, {kFine, 0.1f, 512, 50},
                  {kCoarse, 1.0f, 1024, 1024}, {kCoarse, 2.0f, 512, 1024}};
    for (const auto& c : kCases) {
        CtensioPro pro(1024, 1, 44100.0f, c.coreMode);
        float stretch = c.total;
        ASSERT_EQ(pro.SetStretchKeepPitch(&stretch, 1.0f, false), kSuccess);
        Passes passes(pro);
        ASSERT_GT(passes.First(), 0);
        for (int32_t pass = 0; pass < 4; ++pass) {
            const int32_t needed = pro.CtensioProDirect::GetFramesNeeded();
            EXPECT_EQ(needed, c.in) << c.total;
            EXPECT_EQ(passes.Later(needed + 1), -2) << "another count is refused";
            EXPECT_EQ(passes.Later(needed), c.out) << c.total;
        }
    }
}

TEST(TensioPro, TheCrossoverRisesWithStrongStretch)
{
    static constexpr struct {
        float stretch, hz;
    } kCases[] = {{0.5f, 2000.0f}, {1.0f, 2000.0f},  {2.5f, 2000.0f},
                  {2.6f, 2662.0f}, {3.5f, 16000.0f}, {9.0f, 22050.0f}};
    CtensioPro pro(1024, 1, 44100.0f, kFine);
    for (const auto& c : kCases) {
        SetFactors(pro, c.stretch, 1.0f);
        EXPECT_NEAR(pro.GetCrossoverHz(), c.hz, 0.5) << c.stretch;
        float stretch = c.stretch;
        pro.SetStretchKeepPitch(&stretch, 0.9f, false);   // decided by the stretch in force
        EXPECT_NEAR(pro.GetCrossoverHz(), c.hz, 0.02 * c.hz) << c.stretch;
    }
}

TEST(TensioPro, AChangeOfFactorsMovesTheLeadInUntilTheFirstBlock)
{
    CtensioPro pro(256, 1, 44100.0f, kFine);
    EXPECT_EQ(pro.GetFramesBuffered(), -2048);
    SetFactors(pro, 1.0f, 2.0f);
    EXPECT_EQ(pro.GetFramesBuffered(), -1024);
    SetFactors(pro, 2.0f, 0.5f);
    EXPECT_EQ(pro.GetFramesBuffered(), -4096);
    SetFactors(pro, 1.0f, 1.0f);
    Planar out(1);
    Planar in = {Noise(20000, 1)};
    Push(pro, in, 0, 20000, &out, 256);
    const int32_t ready = pro.GetFramesBuffered();
    SetFactors(pro, 1.0f, 2.0f);
    EXPECT_EQ(pro.GetFramesBuffered(), ready);
}

// Input frames' worth of silence, in passes of 512.
TEST(TensioPro, TheTailCoversWhatTheStagesHold)
{
    static constexpr struct {
        float stretch, pitch;
        int32_t frames;
    } kCases[] = {
        {1.0f, 1.0f, 6656}, {2.0f, 2.0f, 6656}, {2.0f, 0.5f, 13312}, {0.5f, 1.0f, 13312}, {0.125f, 1.0f, 53248}};
    for (const auto& c : kCases) {
        CtensioPro pro(1024, 1, 44100.0f, kFine);
        SetFactors(pro, c.stretch, c.pitch);
        Passes passes(pro);
        passes.First();
        int32_t flushed = 0;
        while (pro.CtensioProDirect::FlushBuffer(&passes.to) >= 0)
            flushed += 512;
        EXPECT_EQ(flushed, c.frames) << c.stretch << " x " << c.pitch;
    }
    CtensioPro unused(1024, 1, 44100.0f, kFine);
    Signal out(1024);
    float* const to = out.data();
    EXPECT_EQ(unused.FlushBuffer(&to), kNoResult) << "nothing came, nothing is left";
}

TEST(TensioPro, RefusesFactorsThatItCannotServeAndKeepsTheOldOnes)
{
    static constexpr struct {
        float stretch, pitch;
    } kRefused[] = {{10.0f, 1.5f}, {0.05f, 1.0f}, {1.0f, 0.1f},    {1.0f, 6.0f},
                    {1.0f, NAN},   {NAN, 1.0f},   {INFINITY, 1.0f}};
    const Planar in = {Noise(30000, 2)};
    const auto plain = MakeEngine(kModePro), tried = MakeEngine(kModePro);
    const float inForce = SetFactors(*tried, 1.5f, 1.2f);
    EXPECT_EQ(SetFactors(*plain, 1.5f, 1.2f), inForce);
    for (const auto& c : kRefused) {
        float stretch = c.stretch, pitch = c.pitch;
        EXPECT_EQ(tried->SetStretchPitch(stretch, &pitch, false), kInvalidArgument) << stretch << " x " << pitch;
        EXPECT_EQ(tried->SetStretchKeepPitch(&stretch, pitch, false), kInvalidArgument) << stretch << " x " << pitch;
    }
    for (const float factor : {0.0f, -1.0f, NAN, INFINITY})
        EXPECT_EQ(tried->SetEnvelopeFactor(factor), kInvalidArgument) << factor;
    for (const int32_t pitch : {-1, 7, 513})
        EXPECT_EQ(tried->SetCutOffPitch(pitch), kInvalidArgument) << pitch;
    EXPECT_EQ(tried->SetStereoInputMode(1), kNotAvailable);
    EXPECT_EQ(RunEngine(*plain, in), RunEngine(*tried, in));
}

TEST(TensioPro, RefusesMoreThanItHoldsAndLosesNothing)
{
    Planar in = {Noise(60000, 3)};
    const auto plain = MakeEngine(kModePro), flooded = MakeEngine(kModePro);
    const int32_t capacity = dynamic_cast<CtensioPro&>(*flooded).GetCapacity();
    const Signal flood(size_t(capacity) + 1, 1.0f);
    Signal out(1024);
    const float* const from = flood.data();
    float* const to = out.data();
    Planar expected(1), got(1);
    Push(*plain, in, 0, 30000, &expected);
    const int32_t at = Push(*flooded, in, 0, 30000, &got);
    EXPECT_EQ(flooded->ProcessData(&from, capacity + 1, &to), kInvalidArgument);
    EXPECT_EQ(flooded->ProcessData(&from, -1, &to), kInvalidArgument);
    EXPECT_EQ(flooded->ProcessData(nullptr, 10, &to), kInvalidArgument);
    Push(*plain, in, at, 60000, &expected);
    Push(*flooded, in, at, 60000, &got);
    EXPECT_EQ(got, expected);
}

TEST(TensioPro, HoldsTheWorstCaseThatItNames)
{
    for (const float rate : {8000.0f, 44100.0f, 96000.0f})
        for (const int32_t mode : {kModePro, kModeProCoarse}) {
            const auto engine = MakeEngine(mode, 1, rate);
            const int32_t worst = engine->GetFramesNeededAt(0.025f, 4.0f);
            SetFactors(*engine, 0.025f, 4.0f);
            EXPECT_EQ(engine->GetFramesNeeded(), worst) << rate;
            const Signal in = Noise(worst, 4);
            Signal out(1024);
            const float* const from = in.data();
            float* const to = out.data();
            EXPECT_EQ(engine->ProcessData(&from, worst, &to), kSuccess) << rate << " mode " << mode;
        }
}

// Input that comes before or after the blocks that it makes gives the same samples: nothing is read twice or dropped.
TEST(TensioPro, DeliveryInPiecesChangesNothing)
{
    Planar in = {Noise(50000, 5)};
    for (const float stretch : {0.3f, 1.0f, 2.7f}) {
        const auto asked = MakeEngine(kModePro), pieces = MakeEngine(kModePro);
        SetFactors(*asked, stretch, 1.3f);
        SetFactors(*pieces, stretch, 1.3f);
        Planar expected(1), got(1);
        Push(*asked, in, 0, 50000, &expected);
        Signal out(1024);
        float* const to = out.data();
        for (int32_t at = 0; at < 50000; at += 100) {
            const float* const from = in[0].data() + at;
            for (int32_t n = 100; pieces->ProcessData(&from, n, &to) == kSuccess; n = 0)
                got[0].insert(got[0].end(), out.begin(), out.end());
        }
        const size_t common = std::min(expected[0].size(), got[0].size());
        ASSERT_GT(double(common), 0.7 * 50000.0 * stretch);
        expected[0].resize(common);
        got[0].resize(common);
        EXPECT_EQ(got, expected) << stretch;
    }
}

TEST(TensioPro, StartsAnewAfterResetAndAfterAskingForTheWorstCase)
{
    const Planar in = {Noise(40000, 6), Noise(40000, 7)};
    const auto fresh = MakeEngine(kModePro, 2), used = MakeEngine(kModePro, 2);
    RunEngine(*used, {in[1], in[0]});
    SetFactors(*used, 0.7f, 0.5f, true);
    used->SetEnvelopeFactor(1.4f);
    used->Reset();
    used->Reset();
    for (const auto& engine : {fresh.get(), used.get()})
        SetFactors(*engine, 1.3f, 1.25f);
    EXPECT_GT(used->GetFramesNeededAt(0.025f, 4.0f), 0);
    EXPECT_EQ(used->GetFramesNeededAt(10.0f, 4.0f), kNoResult);
    EXPECT_EQ(RunEngine(*used, in), RunEngine(*fresh, in));
}

// A pulse every quarter second; the pitch changes in the middle. Synchronised, the later pulses stand where the stretch
// puts them; as a plain jump they stand off by what the delay has changed, 2048 x (1 / pitch - 1) frames.
TEST(TensioPro, ASynchronisedPitchChangeKeepsThePosition)
{
    const int32_t period = 11025, total = 17 * period;
    Signal pulses(size_t(total), 0.0f);
    for (int32_t at = period / 2; at < total; at += period)
        MixInto(&pulses, Noise(200, 8), size_t(at));
    for (const float pitch : {0.7f, 1.5f})
        for (const bool sync : {false, true}) {
            const auto engine = MakeEngine(kModePro);
            SetFactors(*engine, 1.0f, 1.0f);
            Planar in = {pulses}, out(1);
            const int32_t at = Push(*engine, in, 0, total / 2, &out);
            SetFactors(*engine, 1.0f, pitch, sync);
            Push(*engine, in, at, total, &out);
            const int32_t place = 13 * period + period / 2;
            const auto near = std::max_element(out[0].begin() + place - 4000, out[0].begin() + place + 4000,
                                               [](float a, float b) { return std::abs(a) < std::abs(b); });
            const double off = double(near - out[0].begin()) - place;
            EXPECT_NEAR(off, sync ? 0.0 : 2048.0 * (1.0 / pitch - 1.0), 250.0)
                << pitch << (sync ? " synchronised" : "");
        }
}

}   // namespace
