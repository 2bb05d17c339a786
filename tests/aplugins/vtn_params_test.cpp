// What a parameter record does to the driver and its engine.
#include "tests/aplugins/driver_run.h"
#include "tests/aplugins/fake_engine.h"

#include <cmath>
#include <gtest/gtest.h>

TEST(VtnParams, WritesTheClampedRecordBack)
{
    FakeScope fake;
    CVtn vtn(2, 44100.0f, 2048, &CreateFake);
    QxVantorParams r = Record(5000.0, -60.0, 7);
    r.formantPercent = 250.0;
    r.contentPitch = -2147483647;
    EXPECT_TRUE(vtn.SetParams(&r, true));
    EXPECT_NEAR(r.stretchPercent, 1000.0, 1e-9);
    EXPECT_NEAR(r.pitchSemitones, -24.0, 1e-9);
    EXPECT_EQ(r.formantPercent, 100.0);
    EXPECT_EQ(r.contentPitch, 3);
    EXPECT_EQ(r.mode, kModePro);
}

TEST(VtnParams, MakesAnEngineOnlyWhenTheModeChanges)
{
    static constexpr struct {
        int32_t asked, normal;
        bool renews;
    } kSteps[] = {
        {2, 2, true},   {2, 2, false}, {3, 2, false}, {0, 0, true},  {1, 0, false}, {6, 0, false},
        {-1, 0, false}, {4, 4, true},  {5, 5, true},  {5, 5, false}, {99, 0, true},
    };
    FakeScope fake;
    CVtn vtn(1, 44100.0f, 2048, &CreateFake);
    EXPECT_EQ(fake.made, 1);
    EXPECT_EQ(fake.mode, kModePro);   // until a record tells the mode
    for (const auto& step : kSteps) {
        const int32_t before = fake.made;
        QxVantorParams r = Record(100.0, 0.0, step.asked);
        vtn.SetParams(&r, false);
        EXPECT_EQ(r.mode, step.normal) << step.asked;
        EXPECT_EQ(fake.made - before, step.renews ? 1 : 0) << step.asked;
    }
}

TEST(VtnParams, BypassRunsANewEngineAtFactorsOfOne)
{
    FakeScope fake;
    CVtn vtn(1, 44100.0f, 2048, &CreateFake);
    Start(vtn, Record(200.0, 7.0));
    const int32_t before = fake.made;
    QxVantorParams r = Record(300.0, 5.0);
    r.bypass = 1;
    vtn.SetParams(&r, false);
    vtn.UpdateRatios(false);
    EXPECT_EQ(vtn.GetStretch(), 1.0);
    EXPECT_EQ(vtn.GetPitch(), 1.0);
    EXPECT_EQ(fake.made, before + 1);
    EXPECT_NEAR(r.stretchPercent, 300.0, 1e-9);   // the record keeps what was asked
}

TEST(VtnParams, SendsFormantsAndContentPitchInProModeAlone)
{
    FakeScope fake;
    CVtn vtn(1, 44100.0f, 2048, &CreateFake);
    for (int32_t mode : {2, 4, 5})
        Start(vtn, Record(100.0, 12.0, mode));
    EXPECT_TRUE(fake.envelope.empty());

    static constexpr struct {
        double formant, factor;
    } kCases[] = {{100.0, 1.0}, {0.0, 2.0}, {50.0, 1.41421356}};
    for (const auto& c : kCases) {
        QxVantorParams r = Record(100.0, 12.0, kModePro);
        r.formantPercent = c.formant;
        r.contentPitch = 4;
        Start(vtn, r);
        EXPECT_NEAR(fake.envelope.back(), c.factor, 1e-6) << c.formant;
        EXPECT_EQ(fake.cutOff.back(), 256);   // 2^(12 - 4)
    }
    QxVantorParams r = Record(100.0, 0.0, kModePro);
    for (const auto& [index, cutOff] : {std::pair{3, 512}, {9, 8}, {100, 8}, {0, 512}}) {
        r.contentPitch = index;
        Start(vtn, r);
        EXPECT_EQ(fake.cutOff.back(), cutOff) << index;
    }
}

TEST(VtnParams, RampsThePitchOncePerPassAndTakesTheValueInForce)
{
    FakeScope fake;
    fake.pitchGrain = 1.0f / 128.0f;
    CVtn vtn(1, 44100.0f, 2048, &CreateFake);
    Start(vtn, Record(100.0, 0.0));
    QxVantorParams r = Record(100.0, 12.0);
    r.syncPitch = 1;
    fake.accepted.clear();
    vtn.SetParams(&r, false);
    vtn.UpdateRatios(false);
    Signal out;
    Push(vtn, Noise(100000, 1), 1, {}, &out);
    ASSERT_GE(fake.accepted.size(), 9u);
    for (size_t i = 1; i < fake.accepted.size(); ++i) {
        EXPECT_GE(fake.accepted[i].pitch, fake.accepted[i - 1].pitch);
        EXPECT_LE(fake.accepted[i].pitch - fake.accepted[i - 1].pitch, 0.1f + fake.pitchGrain);
        EXPECT_TRUE(fake.accepted[i].sync);
    }
    EXPECT_NEAR(vtn.GetPitch(), 2.0, fake.pitchGrain);
}

TEST(VtnParams, NudgesARefusedPairTowardsAProductOfOne)
{
    static constexpr struct {
        double stretch;
        float lowest, highest;
        double pitch;
    } kCases[] = {{8.0, 0.1f, 7.99f, 7.99 / 8.0}, {0.2, 0.21f, 10.0f, 0.21 / 0.2}, {1.0, 0.1f, 0.9999f, 0.9999}};
    for (const auto& c : kCases) {
        FakeScope fake;
        CVtn vtn(1, 44100.0f, 2048, &CreateFake);
        fake.lowest = c.lowest, fake.highest = c.highest;
        Start(vtn, Record(100.0 * c.stretch, 0.0));
        EXPECT_NEAR(vtn.GetPitch(), c.pitch, 1e-4) << c.stretch;
        EXPECT_NEAR(vtn.GetStretch(), c.stretch, 1e-6);
    }
}

TEST(VtnParams, ReturnsToTheLastAcceptedPairWhenNothingIsAccepted)
{
    FakeScope fake;
    CVtn vtn(1, 44100.0f, 2048, &CreateFake);
    Start(vtn, Record(150.0, 0.0));
    fake.refuseAll = true;
    fake.offers = 0;
    QxVantorParams r = Record(300.0, 5.0);
    vtn.SetParams(&r, true);
    vtn.UpdateRatios(false);
    EXPECT_EQ(fake.offers, 10000);
    EXPECT_EQ(vtn.GetStretch(), 1.5);
    EXPECT_EQ(vtn.GetPitch(), 1.0);

    const Signal out = RunDriver(vtn, Noise(20000, 1), 1);   // and it streams on, without walking again at each pass
    EXPECT_EQ(fake.offers, 10000);
    EXPECT_EQ(out.size(), 30000u);
}
