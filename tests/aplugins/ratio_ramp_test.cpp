#include "aplugins/qxvantor/ratio_ramp.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kTenth = 0.1f;   // the bound, in single precision

float Product(const RatioRamp& r)
{
    return float(r.TargetStretch()) * float(r.TargetPitch());
}

}   // namespace

TEST(RatioRamp, ClampsEachFactorToItsRange)
{
    static constexpr struct {
        double stretch, pitch, expectedStretch, expectedPitch;
    } kCases[] = {
        {0.0, 1.0, kTenth, 1.0}, {11.0, 1.0, 10.0, 1.0}, {-kInf, 1.0, kTenth, 1.0}, {kInf, 1.0, 10.0, 1.0},
        {1.0, 0.1, 1.0, 0.25},   {1.0, 5.0, 1.0, 4.0},   {1.0, kInf, 1.0, 4.0},     {kNan, kNan, 1.0, 1.0},
    };
    for (const auto& c : kCases) {
        RatioRamp ramp;
        ramp.SetTargets(c.stretch, c.pitch);
        EXPECT_EQ(ramp.TargetStretch(), c.expectedStretch) << c.stretch << ' ' << c.pitch;
        EXPECT_EQ(ramp.TargetPitch(), c.expectedPitch) << c.stretch << ' ' << c.pitch;
    }
}

TEST(RatioRamp, LeavesAProductOnTheBoundAlone)
{
    static constexpr struct {
        double stretch, pitch;
    } kCases[] = {{kTenth, 1.0}, {10.0, 1.0}, {2.5, 4.0}, {5.0, 2.0}};
    for (const auto& c : kCases) {
        RatioRamp ramp;
        ramp.SetTargets(c.stretch, c.pitch);
        EXPECT_EQ(ramp.TargetStretch(), c.stretch);
        EXPECT_EQ(ramp.TargetPitch(), c.pitch);
    }
}

TEST(RatioRamp, TakesAnExcessFromTheFactorThatMoved)
{
    RatioRamp ramp;
    ramp.SetTargets(8.0, 2.0);   // 16: the stretch has moved
    EXPECT_DOUBLE_EQ(ramp.TargetStretch(), 10.0 / 2.0 - 4.9999e-5);
    EXPECT_EQ(ramp.TargetPitch(), 2.0);

    const double corrected = ramp.TargetStretch();
    ramp.SetTargets(corrected, 4.0);   // the stretch stands where it was put: now the pitch gives way
    EXPECT_EQ(ramp.TargetStretch(), corrected);
    EXPECT_DOUBLE_EQ(ramp.TargetPitch(), 10.0 / corrected - 4.9999e-5);

    ramp.SetTargets(0.2, 0.25);   // 0.05: the other bound, again by the stretch
    EXPECT_DOUBLE_EQ(ramp.TargetStretch(), kTenth / 0.25 + 4.9999e-5);
    EXPECT_EQ(ramp.TargetPitch(), 0.25);
}

TEST(RatioRamp, BringsEveryPairIntoBounds)
{
    RatioRamp ramp;
    for (double stretch = 0.05; stretch < 12.0; stretch *= 1.13)
        for (double pitch = 0.2; pitch < 5.0; pitch *= 1.17) {
            ramp.SetTargets(stretch, pitch);
            EXPECT_GE(Product(ramp), 0.1f) << stretch << ' ' << pitch;
            EXPECT_LE(Product(ramp), 10.0f) << stretch << ' ' << pitch;
        }
}

TEST(RatioRamp, ChangesTheStretchAloneInOneStep)
{
    RatioRamp ramp;
    ramp.SetTargets(7.0, 1.0);
    ramp.SetSteps(2);
    EXPECT_TRUE(ramp.NeedsStep());
    ramp.Step();
    EXPECT_EQ(ramp.CurStretch(), 7.0);
    EXPECT_FALSE(ramp.NeedsStep());
}

TEST(RatioRamp, MovesThePitchByATenthAPassAndTheStretchWithIt)
{
    RatioRamp ramp;
    ramp.SetTargets(2.0, 1.5);
    ramp.SetSteps(2);
    for (int pass = 1; pass < 5; ++pass) {
        ramp.Step();
        EXPECT_NEAR(ramp.CurPitch(), 1.0 + 0.1 * pass, 1e-12);
        EXPECT_NEAR(ramp.CurStretch(), 1.0 + 0.1 * pass, 1e-12);
    }
    ramp.Step();
    EXPECT_EQ(ramp.CurPitch(), 1.5);
    EXPECT_EQ(ramp.CurStretch(), 2.0);   // with the pitch arrived, nothing holds the stretch
}

TEST(RatioRamp, CoversHalfOfAShortWayInOnePass)
{
    RatioRamp ramp;
    ramp.SetTargets(1.0, 1.1);
    ramp.SetSteps(2);
    ramp.Step();
    EXPECT_NEAR(ramp.CurPitch(), 1.05, 1e-12);
}

TEST(RatioRamp, StepsOnUntilTheProductIsInBounds)
{
    RatioRamp ramp;
    ramp.JumpTo(10.0, 1.0);
    ramp.SetTargets(1.0, 4.0);
    ramp.SetSteps(2);
    for (int pass = 0; pass < 100 && ramp.CurPitch() != ramp.TargetPitch(); ++pass) {
        ramp.Step();
        EXPECT_LE(float(ramp.CurStretch()) * float(ramp.CurPitch()), 10.0f) << "pass " << pass;
    }
    EXPECT_EQ(ramp.CurStretch(), 1.0);
    EXPECT_EQ(ramp.CurPitch(), 4.0);
}

TEST(RatioRamp, EndsAlsoWhenAStepLeadsNowhere)
{
    RatioRamp ramp;
    ramp.JumpTo(10.0, 2.0);   // a pair that no record can ask for, and no steps sized
    ramp.SetTargets(1.0, 1.0);
    ramp.Step();
    EXPECT_EQ(ramp.CurStretch(), 1.0);
    EXPECT_EQ(ramp.CurPitch(), 1.0);
}
