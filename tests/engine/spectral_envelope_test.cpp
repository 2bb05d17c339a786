#include "engine/spectral_envelope.h"

#include "dsp/status.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace {

SpectralEnvelopePtr MakeEnvelope(int32_t size, int32_t order)
{
    CSpectralEnvelope* made = nullptr;
    EXPECT_EQ(CreateSpectralEnvelope(&made, size), kSuccess);
    made->SetOrder(order);
    return SpectralEnvelopePtr(made);
}

// Bin magnitudes in the first half of size floats, as the estimator takes them.
Signal Magnitudes(Signal x)
{
    const auto n = int32_t(x.size());
    for (int32_t i = 0; i < n; ++i)
        x[size_t(i)] *= float(std::sin(std::numbers::pi * i / n));
    MakeFft(n)->Forward(x.data(), x.data());
    Signal magnitude(x.size(), 0.0f);
    for (size_t k = 1; k < x.size() / 2; ++k)
        magnitude[k] = std::hypot(x[2 * k], x[2 * k + 1]);
    magnitude[0] = std::abs(x[0]);
    return magnitude;
}

// The envelope, one value a bin.
Signal Envelope(CSpectralEnvelope& estimator, Signal magnitude)
{
    Signal pairs(magnitude.size()), bins(magnitude.size() / 2);
    estimator.Estimate(magnitude.data(), pairs.data());
    for (size_t k = 0; k < bins.size(); ++k) {
        bins[k] = pairs[2 * k];
        EXPECT_EQ(pairs[2 * k + 1], bins[k]) << k;
    }
    return bins;
}

TEST(SpectralEnvelope, NoBinStandsMoreThanTheThresholdAboveIt)
{
    for (const int32_t order : {16, 32, 128, 256})
        for (unsigned seed = 0; seed < 8; ++seed) {
            const auto estimator = MakeEnvelope(1024, order);
            const Signal spectrum =
                Magnitudes(seed % 2 ? Noise(1024, seed) : HarmonicTone(1024, 90.0 + 40.0 * seed, 44100.0));
            const Signal envelope = Envelope(*estimator, spectrum);
            for (size_t k = 0; k < envelope.size(); ++k)
                ASSERT_GE(std::log(envelope[k]) + 1.001f, std::log(spectrum[k]))   // 0.001: the rounding of both logs
                    << "order " << order << " seed " << seed << " bin " << k;
        }
}

TEST(SpectralEnvelope, PassesWithinTheThresholdOfEachPartial)
{
    const double f0 = 12 * 44100.0 / 1024;   // partials every 12 bins: the order of a period resolves them
    const auto estimator = MakeEnvelope(1024, 44);
    const Signal spectrum = Magnitudes(HarmonicTone(1024, f0, 44100.0));
    const Signal envelope = Envelope(*estimator, spectrum);
    for (size_t k = 12; k < 450; k += 12)
        EXPECT_NEAR(std::log(envelope[k]), std::log(spectrum[k]), 1.0) << "partial at bin " << k;
    const auto fine = MakeEnvelope(1024, 128);
    const Signal sine = Magnitudes(Tone(1024, 100 * 44100.0 / 1024, 44100.0));
    EXPECT_NEAR(std::log(Envelope(*fine, sine)[100]), std::log(sine[100]), 1.0);
}

TEST(SpectralEnvelope, LeavesAFlatSpectrumFlatAndSilenceAtItsFloor)
{
    for (const float level : {0.0f, 1e-6f, 1.0f, 3000.0f})
        for (const int32_t order : {1, 16, 128}) {
            const float expected = std::max(level, 1e-24f);
            for (const float v : Envelope(*MakeEnvelope(1024, order), Signal(1024, level)))
                ASSERT_NEAR(v / expected, 1.0f, 2e-5f) << level;   // a log near -55 has steps of 4e-6
        }
}

TEST(SpectralEnvelope, AHigherOrderFollowsCloserAndTheOrderIsLimited)
{
    const Signal spectrum = Magnitudes(HarmonicTone(1024, 700.0, 44100.0));
    const auto roughness = [&](int32_t order) {
        const Signal e = Envelope(*MakeEnvelope(1024, order), spectrum);
        double sum = 0.0;
        for (size_t k = 1; k < e.size(); ++k)
            sum += std::abs(std::log(e[k] / e[k - 1]));
        return sum;
    };
    EXPECT_LT(2.0 * roughness(16), roughness(128));
    EXPECT_EQ(roughness(512), roughness(100000));
    EXPECT_LT(roughness(256), roughness(512));
    EXPECT_EQ(roughness(0), roughness(-3));
}

TEST(SpectralEnvelope, ReturnsOnInputThatIsNotFinite)
{
    for (const float bad : {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(),
                            std::numeric_limits<float>::max()}) {
        Signal spectrum(1024, 1.0f), envelope(1024);
        spectrum[40] = bad;
        const auto estimator = MakeEnvelope(1024, 64);
        estimator->Estimate(spectrum.data(), envelope.data());
        EXPECT_NEAR(Envelope(*estimator, Signal(1024, 1.0f))[40], 1.0f, 1e-5f) << "the next frame is free of it";
    }
}

TEST(SpectralEnvelope, RefusesWhatCannotBeMade)
{
    CSpectralEnvelope* envelope = nullptr;
    for (const int32_t size : {-4, 0, 2, 1000})
        EXPECT_EQ(CreateSpectralEnvelope(&envelope, size), kInvalidArgument) << size;
    EXPECT_EQ(DestroySpectralEnvelope(&envelope), kInvalidArgument);
}

}   // namespace
