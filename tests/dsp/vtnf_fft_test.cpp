#include "dsp/vtnf_fft.h"

#include "dsp/status.h"
#include "dsp/vtnf.h"
#include "tests/allocations.h"
#include "tests/dsp/each_class.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <complex>
#include <limits>
#include <memory>

namespace {

struct Destroy {
    void operator()(CvtnfFFT_If* fft) const { EXPECT_EQ(vtnfDestroyFFT(&fft), kSuccess); }
};
using FftPtr = std::unique_ptr<CvtnfFFT_If, Destroy>;

FftPtr MakeFft(int32_t windowLength, int32_t zeroPadFactor = 1, int32_t windowType = 0)
{
    vtnfInit();
    CvtnfFFT_If* fft = nullptr;
    EXPECT_EQ(vtnfCreateFFT(&fft, windowLength, zeroPadFactor, windowType), kSuccess);
    return FftPtr(fft);
}

Signal Spectrum(CvtnfFFT_If& fft, const Signal& x)
{
    Signal spectrum(static_cast<size_t>(fft.GetLength()));
    fft.Forward(spectrum.data(), x.data());
    return spectrum;
}

// The weights that a window type gives, as the inverse transform shows them.
Signal Weights(int32_t m, int32_t windowType)
{
    const auto fft = MakeFft(m, 1, windowType);
    Signal spectrum = Spectrum(*fft, Signal(size_t(m), 1.0f)), weights(static_cast<size_t>(m));
    fft->Inverse(weights.data(), spectrum.data());
    for (float& w : weights)
        w /= float(m);
    return weights;
}

class FrameTransform : public EachClass {};
INSTANTIATE_TEST_SUITE_P(, FrameTransform, testing::ValuesIn(ClassesHere()), ClassName);

TEST_P(FrameTransform, RefusesLengthsThatAreNoPowerOfTwoOrNoMultipleOfFour)
{
    constexpr int32_t kLargest = 1 << 24;
    static constexpr struct {
        int32_t length, pad, status;
    } kCases[] = {{6, 1, kInvalidArgument},
                  {4, 3, kInvalidArgument},
                  {2, 1, kInvalidArgument},
                  {0, 1, kInvalidArgument},
                  {4, 0, kInvalidArgument},
                  {-4, 1, kInvalidArgument},
                  {4, -1, kInvalidArgument},
                  {kLargest, 2, kInvalidArgument},
                  {1 << 30, 1 << 30, kInvalidArgument},
                  {4, 1, kSuccess},
                  {512, 2, kSuccess}};
    for (const auto& c : kCases) {
        auto* fft = reinterpret_cast<CvtnfFFT_If*>(1);
        EXPECT_EQ(vtnfCreateFFT(&fft, c.length, c.pad, 0), c.status) << c.length << " x " << c.pad;
        EXPECT_EQ(fft != nullptr, c.status == kSuccess);
        EXPECT_EQ(vtnfDestroyFFT(&fft), kSuccess);
        EXPECT_EQ(fft, nullptr);
    }
}

TEST_P(FrameTransform, CreationSurvivesEveryFailedAllocation)
{
    for (int64_t successes = 0;; ++successes) {
        ASSERT_LT(successes, 100);
        auto* fft = reinterpret_cast<CvtnfFFT_If*>(1);
        const FailingAllocation failing(successes);
        const int32_t status = vtnfCreateFFT(&fft, 256, 2, 2);
        if (!failing.HasFailed()) {
            EXPECT_EQ(status, kSuccess);
            vtnfDestroyFFT(&fft);
            break;
        }
        EXPECT_EQ(status, kOutOfMemory) << successes;
        EXPECT_EQ(fft, nullptr) << successes;
    }
}

TEST_P(FrameTransform, IsDestroyedUnderItsOwnClassOnly)
{
    for (const ProcessorClass* other : ClassesHere()) {
        CvtnfFFT_If* fft = nullptr;
        ASSERT_EQ(vtnfCreateFFT(&fft, 64, 1, 0), kSuccess);
        SelectClass(other->name);
        const bool same = other == GetParam();
        EXPECT_EQ(vtnfDestroyFFT(&fft), same ? kSuccess : kInvalidArgument) << other->name;
        EXPECT_EQ(fft == nullptr, same);
        SelectClass(GetParam()->name);
        vtnfDestroyFFT(&fft);
    }
}

TEST_P(FrameTransform, ConstantAndAlternatingSignalsFillOneElement)
{
    for (int32_t n : {4, 8, 32, 128, 2048}) {
        const auto fft = MakeFft(n);
        Signal alternating(static_cast<size_t>(n));
        for (size_t i = 0; i < alternating.size(); ++i)
            alternating[i] = i % 2 == 0 ? 1.0f : -1.0f;
        Signal dc(static_cast<size_t>(n)), nyquist = dc;
        dc[0] = nyquist[1] = float(n);
        EXPECT_EQ(Spectrum(*fft, Signal(size_t(n), 1.0f)), dc) << n;
        EXPECT_EQ(Spectrum(*fft, alternating), nyquist) << n;
    }
}

TEST_P(FrameTransform, AToneStandsInItsBinWithItsPhase)
{
    const int32_t n = 1024;
    const Signal spectrum = Spectrum(*MakeFft(n), Tone(n, 37.0, n, 0.5, 0.7));
    for (int32_t k = 1; k < n / 2; ++k) {
        const auto expected = k == 37 ? std::polar(0.25 * n, 0.7) : std::complex<double>(0.0);
        EXPECT_NEAR(spectrum[size_t(2 * k)], expected.real(), 1e-4) << k;
        EXPECT_NEAR(spectrum[size_t(2 * k + 1)], expected.imag(), 1e-4) << k;
    }
}

TEST_P(FrameTransform, ZeroPaddingReadsAndWritesTheWindowAlone)
{
    for (int32_t windowType : {0, 2}) {
        const int32_t m = 512, n = 1024;
        const auto padded = MakeFft(m, 2, windowType);
        ASSERT_EQ(padded->GetLength(), n);
        Signal x = Noise(m, 1), whole(static_cast<size_t>(n));
        const Signal weights = Weights(m, windowType);
        for (size_t i = 0; i < size_t(m); ++i)
            whole[i] = x[i] * weights[i];
        x.resize(size_t(n), std::numeric_limits<float>::quiet_NaN());
        Signal spectrum = Spectrum(*padded, x), expected = Spectrum(*MakeFft(n), whole);
        for (size_t i = 0; i < size_t(n); ++i)
            ASSERT_NEAR(spectrum[i], expected[i], 2e-5) << i;
        Signal back(size_t(n), 7.0f);
        padded->Inverse(back.data(), spectrum.data());
        for (size_t i = 0; i < size_t(n); ++i)
            ASSERT_NEAR(back[i], i < size_t(m) ? n * whole[i] : 7.0f, 2e-3) << i;
    }
}

TEST_P(FrameTransform, WorksInPlace)
{
    for (int32_t windowType : {0, 1}) {
        const auto fft = MakeFft(256, 2, windowType);
        Signal x = Noise(512, 1), apart = Spectrum(*fft, x), back(512);
        fft->Forward(x.data(), x.data());
        EXPECT_EQ(x, apart);
        fft->Inverse(back.data(), apart.data());
        fft->Inverse(x.data(), x.data());
        EXPECT_TRUE(std::equal(back.begin(), back.begin() + 256, x.begin()));
    }
}

TEST_P(FrameTransform, WindowsHaveTheirShapes)
{
    const double pi = std::numbers::pi;
    const int32_t m = 64;
    for (int32_t type = 0; type <= 8; ++type) {
        const Signal weights = Weights(m, type);
        for (int32_t i = 0; i < m; ++i) {
            const double open = (i + 1.0) / (m + 1.0), closed = i / (m - 1.0);
            const double triangle = 1.0 - std::fabs(2.0 * closed - 1.0);
            const double expected[] = {1.0,
                                       std::sin(open * pi),
                                       0.5 - 0.5 * std::cos(2.0 * pi * open),
                                       0.54 - 0.46 * std::cos(2.0 * pi * closed),
                                       0.42 - 0.5 * std::cos(2.0 * pi * closed) + 0.08 * std::cos(4.0 * pi * closed),
                                       triangle,
                                       triangle * triangle,
                                       1.0,
                                       1.0};
            EXPECT_NEAR(weights[size_t(i)], expected[type], 2e-6) << "type " << type << " at " << i;
        }
    }
}

TEST_P(FrameTransform, AllocatesNothingAfterCreation)
{
    const auto fft = MakeFft(1024, 2, 2);
    Signal x = Noise(1024, 1), spectrum(2048);
    const int64_t allocations = AllocationCount();
    fft->Forward(spectrum.data(), x.data());
    fft->Inverse(x.data(), spectrum.data());
    EXPECT_EQ(AllocationCount(), allocations);
}

}   // namespace
