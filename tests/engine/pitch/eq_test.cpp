#include "engine/pitch/eq.h"

#include "dsp/status.h"
#include "engine/pitch/eq_design.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <complex>
#include <utility>

namespace {

EqPtr Make(int32_t type, float frequency, float gain = 0.0f, float q = 1.0f, int32_t channels = 1)
{
    CEQIf* eq = nullptr;
    EXPECT_EQ(CreateEQ(&eq, 11025, channels, type), kSuccess);
    eq->SetParameters(frequency, gain, q);
    return EqPtr(eq);
}

double DbAt(const EqResponse& r, double f)
{
    const std::complex<double> z1 = std::polar(1.0, -2.0 * std::numbers::pi * f), z2 = z1 * z1;
    const auto value = [&](const EqPolynomial& p) { return std::abs(p.c0 + p.c1 * z1 + p.c2 * z2); };
    return 20.0 * std::log10(value(r.numerator) / value(r.denominator) + 1e-12);
}

TEST(Eq, DesignsMeetTheirResponses)
{
    constexpr double kHalfPower = -3.0103, kNull = -200.0;
    static constexpr struct {
        int32_t type;
        double frequency, gain, q;
        double atZero, atFrequency, atNyquist;   // dB
    } kCases[] = {
        {kEqLowShelf, 0.1, 12.0, 1.0, 12.0, 9.2555, 0.0},   // sqrt((V^2 + 1) / 2)
        {kEqLowShelf, 0.1, 0.0, 1.0, 0.0, 0.0, 0.0},
        {kEqHighShelf, 0.1, 12.0, 1.0, 0.0, 9.2555, 12.0},
        {kEqHighShelf, 0.1, 0.0, 1.0, 0.0, 0.0, 0.0},
        {kEqPeak, 0.2, 9.0, 2.0, 0.0, 9.0, 0.0},
        {kEqPeak, 0.2, -9.0, 2.0, 0.0, 9.0, 0.0},
        {kEqLowPass, 0.3628, 0.0, 5.0, 0.0, kHalfPower, kNull},
        {kEqHighPass, 0.1, 0.0, 5.0, kNull, kHalfPower, 0.0},
        {kEqOnePole, 0.05, 0.0, 1.0, 0.0, kHalfPower, -16.2184},
    };
    for (const auto& c : kCases) {
        const EqResponse r = DesignEq(c.type, c.frequency, c.gain, c.q);
        for (const auto& [f, db] : {std::pair{0.0, c.atZero}, {c.frequency, c.atFrequency}, {0.5, c.atNyquist}}) {
            if (db == kNull)
                EXPECT_LT(DbAt(r, f), -150.0) << "type " << c.type << " at " << f;
            else
                EXPECT_NEAR(DbAt(r, f), db, 0.01) << "type " << c.type << " at " << f;
        }
    }
    const EqResponse peak = DesignEq(kEqPeak, 0.2, 9.0, 2.0), behind = DesignEq(kEqPeakNoDirect, 0.2, 9.0, 2.0);
    EXPECT_EQ(behind.numerator.c0, 0.0);
    EXPECT_EQ(behind.numerator.c1, peak.numerator.c1);
    EXPECT_EQ(behind.denominator.c2, peak.denominator.c2);
}

TEST(Eq, FiltersAsDesigned)
{
    const Signal x = Noise(500, 1);
    for (const auto& [type, frequency] :
         {std::pair{kEqPeak, 900.0f}, {kEqLowPass, 4000.0f}, {kEqHighPass, 300.0f}, {kEqPeakNoDirect, 900.0f}}) {
        const auto [n, d] = DesignEq(type, frequency / 11025.0f, 6.0, 0.7);
        Signal y(500);
        Make(type, frequency, 6.0f, 0.7f)->ProcessInterleaved(x.data(), y.data(), 500);
        std::array<double, 2> in{}, out{};   // the recursion in double precision
        for (size_t i = 0; i < 500; ++i) {
            const double v = n.c0 * x[i] + n.c1 * in[0] + n.c2 * in[1] - d.c1 * out[0] - d.c2 * out[1];
            in = {x[i], in[0]};
            out = {v, out[0]};
            ASSERT_NEAR(y[i], v, 1e-5) << "type " << type << " sample " << i;   // coefficients and state are floats
        }
    }
}

TEST(Eq, BypassAndWhatItReports)
{
    static constexpr struct {
        int32_t type;
        float frequency;
        bool bypass;
        float reported;
    } kCases[] = {{kEqHighPass, 30.0f, true, 0.0f},      {kEqHighPass, 111.0f, false, 111.0f},
                  {kEqLowPass, 4000.0f, false, 4000.0f}, {kEqLowPass, 5000.0f, true, 5512.5f},
                  {kEqPeak, 1000.0f, false, 1000.0f},    {kEqPeakNoDirect, 1000.0f, false, 1000.0f},
                  {kEqLowShelf, 1000.0f, true, 1000.0f}, {kEqHighShelf, 1000.0f, true, 1000.0f},
                  {kEqOnePole, 1000.0f, true, 1000.0f}};
    const Signal x = Noise(100, 1);
    for (const auto& c : kCases) {
        const auto eq = Make(c.type, c.frequency, 3.0f, 2.0f);
        Signal y(100), inPlace = x;
        eq->ProcessInterleaved(x.data(), y.data(), 100);
        EXPECT_EQ(x == y, c.bypass) << "type " << c.type << " at " << c.frequency;
        float frequency = 0.0f, gain = 0.0f, q = 0.0f;
        eq->GetParameters(&frequency, &gain, &q);
        eq->GetParameters(nullptr, nullptr, nullptr);
        EXPECT_NEAR(frequency, c.reported, 1e-3) << "type " << c.type;
        EXPECT_EQ(std::pair(gain, q), std::pair(3.0f, 2.0f));
        float* planes[] = {inPlace.data()};
        eq->Reset();
        eq->ProcessPlanar(planes, planes, 100);
        EXPECT_EQ(x == inPlace, c.bypass) << "planar, type " << c.type;
    }
    for (int32_t type : {int32_t(kEqPeakNoDirect), int32_t(kEqLowPass), int32_t(kEqHighPass), 7}) {   // as created
        CEQIf* eq = nullptr;
        ASSERT_EQ(CreateEQ(&eq, 11025, 1, type), kSuccess);
        Signal y(100);
        eq->ProcessInterleaved(x.data(), y.data(), 100);
        EXPECT_EQ(x, y) << "type " << type;
        EXPECT_EQ(eq->GetFilterType(), type);
        EXPECT_EQ(DestroyEQ(&eq), kSuccess);
        EXPECT_EQ(DestroyEQ(&eq), kInvalidArgument);
    }
}

TEST(Eq, PlanarInterleavedAndCutBlocksAgree)
{
    constexpr int32_t kFrames = 200, kChannels = 3;
    const Signal mixed = Noise(kFrames * kChannels, 1);
    Signal interleaved(mixed.size()), planes = mixed;
    const auto a = Make(kEqLowPass, 2000.0f, 0.0f, 1.0f, kChannels),
               b = Make(kEqLowPass, 2000.0f, 0.0f, 1.0f, kChannels);
    for (int32_t at = 0, n = 1; at < kFrames; at += n, n = std::min(2 * n, kFrames - at))
        a->ProcessInterleaved(mixed.data() + at * kChannels, interleaved.data() + at * kChannels, n);
    float* pointers[kChannels];
    for (int32_t c = 0; c < kChannels; ++c) {
        pointers[c] = planes.data() + c * kFrames;
        for (int32_t i = 0; i < kFrames; ++i)
            pointers[c][i] = mixed[size_t(i * kChannels + c)];
    }
    b->ProcessPlanar(pointers, pointers, kFrames);
    for (int32_t c = 0; c < kChannels; ++c)
        for (int32_t i = 0; i < kFrames; ++i)
            ASSERT_EQ(pointers[c][i], interleaved[size_t(i * kChannels + c)]);
    a->Reset();
    const float one[kChannels] = {1.0f, 0.0f, 0.0f};
    float y[kChannels];
    a->ProcessInterleaved(one, y, 1);
    EXPECT_EQ(y[0], float(DesignEq(kEqLowPass, 2000.0f / 11025.0f, 0.0, 1.0).numerator.c0)) << "nothing of the past";
    EXPECT_EQ(y[1], 1e-24f) << "kept out of denormals";
}

}   // namespace
