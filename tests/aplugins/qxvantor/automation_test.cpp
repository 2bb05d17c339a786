// Curves as they are heard: what comes out of the filter follows what the host drew.
#include "tests/aplugins/driver_run.h"
#include "tests/aplugins/qxvantor/filter_rig.h"
#include "tests/measure.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr DWORD kRate = 44100;
constexpr REFERENCE_TIME kSecond = 10000000;
constexpr size_t kPiece = 441;   // frames a sample: curves take effect once a piece

// The audio through the filter, under one curve.
Signal Automated(const Signal& in, DWORD param, MP_ENVELOPE_SEGMENT segment, int32_t mode)
{
    FilterRig rig;
    QxVantorParams record = Record(100, 0, mode);
    rig.filter->SetParameters(&record);
    EXPECT_EQ(rig.filter->AddEnvelope(param, 1, &segment), S_OK);
    EXPECT_EQ(rig.Start(1, kRate), S_OK);
    const std::span<const float> all(in);
    for (size_t at = 0; at < in.size(); at += kPiece)
        EXPECT_EQ(rig.Send(all.subspan(at, std::min(kPiece, in.size() - at)),
                           REFERENCE_TIME(double(at) / kRate * kSecond), at == 0),
                  S_OK);
    EXPECT_EQ(rig.feed->pin.DeliverEndOfStream(), S_OK);
    return rig.Audio();
}

struct Curve {
    MP_CURVE_TYPE type;
    double (*shape)(double);
};
constexpr Curve kCurves[] = {
    {MP_CURVE_LINEAR, [](double x) { return x; }},
    {MP_CURVE_SQUARE, [](double x) { return x * x; }},
    {MP_CURVE_INVSQUARE, [](double x) { return 1.0 - (1.0 - x) * (1.0 - x); }},
};

}   // namespace

// A value is in force from the start of the piece of input that it belongs to, and meets audio that came a little before:
// what is heard is what was drawn for a moment at most a tenth of a second later. Quantised steps add 10 cents.
TEST(Automation, ASweepOfThePitchIsHeardAsItWasDrawn)
{
    const Signal in = Tone(6 * int32_t(kRate), 440.0, kRate, 0.3);
    for (const Curve& curve : kCurves) {
        const Signal out =
            Automated(in, kParamPitch, {kSecond, 5 * kSecond, -5.0f, 7.0f, curve.type, 0}, kModeEfficient);
        ASSERT_EQ(out.size(), in.size());
        const auto drawn = [&](double t) { return -5 + 12 * curve.shape((t - 1) / 4); };
        for (double t = 1.25; t < 4.9; t += 0.25) {
            const double drawnHertz = 440.0 * std::exp2(drawn(t) / 12);
            const auto window = std::span<const float>(out).subspan(size_t((t - 0.05) * kRate), size_t(0.1 * kRate));
            const double heard = drawn(t) + Cents(MeanFrequency(window, drawnHertz, kRate) / drawnHertz) / 100;
            EXPECT_GT(heard, drawn(t) - 0.1) << "curve " << curve.type << " at " << t;
            EXPECT_LT(heard, drawn(t + 0.1) + 0.1) << "curve " << curve.type << " at " << t;
        }
    }
}

TEST(Automation, ASweepOfTheStretchTakesTheTimeThatItsCurveEncloses)
{
    const DrumTrack drums = Drums(6 * int32_t(kRate), kRate);
    for (const Curve& curve : kCurves) {
        const Signal out =
            Automated(drums.audio, kParamStretch, {kSecond, 5 * kSecond, 1.0f, 2.0f, curve.type, 0}, kModeEfficient);
        const auto drawn = [&](double t) { return t < 1 ? 1.0 : t < 5 ? 1.0 + curve.shape((t - 1) / 4) : 2.0; };
        double length = 0.0;   // frames that the curve encloses up to a frame of the input
        size_t hit = 0;
        for (int32_t i = 0; i < int32_t(drums.audio.size()); ++i) {
            const double t = double(i) / kRate;
            if (t < 2.9 &&
                drums.onsets[hit] == i) {   // as long as the tenth of a second stays within FindAttack's reach
                ++hit;
                const double late = (FindAttack(out, length, kRate).time - length) / kRate;
                EXPECT_GT(late, -0.005) << "curve " << curve.type << ", " << t;
                EXPECT_LT(late, 0.1 * (drawn(t) - 1) + 0.005) << "curve " << curve.type << ", " << t;
            }
            length += drawn(t);
        }
        EXPECT_GE(hit, 8u);
        EXPECT_NEAR(double(out.size()), length, 0.003 * length) << "curve " << curve.type;
    }
}
