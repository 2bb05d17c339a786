#include "dsp/vtnf_fft.h"

#include "dsp/status.h"
#include "dsp/vtnf.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <complex>
#include <memory>

namespace {

struct Destroy {
    void operator()(CvtnfFFT_If* fft) const { vtnfDestroyFFT(&fft); }
};
using FftPtr = std::unique_ptr<CvtnfFFT_If, Destroy>;

FftPtr MakeFft(int32_t windowLength, int32_t zeroPadFactor = 1, int32_t windowType = 0)
{
    vtnfInit();
    CvtnfFFT_If* fft = nullptr;
    EXPECT_EQ(vtnfCreateFFT(&fft, windowLength, zeroPadFactor, windowType), kSuccess);
    return FftPtr(fft);
}

// Bin k by the sum written out.
std::complex<double> DirectBin(const Signal& x, int32_t k, int32_t n)
{
    std::complex<double> sum = 0.0;
    for (size_t i = 0; i < x.size(); ++i)
        sum += double(x[i]) * std::polar(1.0, -2.0 * std::numbers::pi * double(i) * k / n);
    return sum;
}

TEST(FrameTransform, RefusesLengthsThatAreNoPowerOfTwoOrNoMultipleOfFour)
{
    static constexpr struct {
        int32_t length, pad, status;
    } kCases[] = {{6, 1, kInvalidArgument}, {4, 3, kInvalidArgument}, {2, 1, kInvalidArgument},
                  {0, 1, kInvalidArgument}, {4, 0, kInvalidArgument}, {-4, 1, kInvalidArgument},
                  {4, 1, kSuccess},         {512, 2, kSuccess}};
    for (const auto& c : kCases) {
        CvtnfFFT_If* fft = nullptr;
        EXPECT_EQ(vtnfCreateFFT(&fft, c.length, c.pad, 0), c.status) << c.length << " x " << c.pad;
        EXPECT_EQ(fft != nullptr, c.status == kSuccess);
        vtnfDestroyFFT(&fft);
        EXPECT_EQ(fft, nullptr);
    }
}

TEST(FrameTransform, AgreesWithTheSumAndComesBackTimesN)
{
    for (int32_t n : {4, 8, 16, 64, 1024, 4096}) {
        const auto fft = MakeFft(n);
        const Signal x = Noise(n, unsigned(n));
        Signal spectrum(static_cast<size_t>(n)), back(static_cast<size_t>(n));
        fft->Forward(spectrum.data(), x.data());
        const double tolerance = 3e-7 * n;   // a few roundings of sums as large as n^(1/2), per stage
        EXPECT_NEAR(spectrum[0], DirectBin(x, 0, n).real(), tolerance) << n;
        EXPECT_NEAR(spectrum[1], DirectBin(x, n / 2, n).real(), tolerance) << n;
        for (int32_t k = 1; k < n / 2; k += 1 + n / 64) {
            const auto expected = DirectBin(x, k, n);
            EXPECT_NEAR(spectrum[size_t(2 * k)], expected.real(), tolerance) << n << " bin " << k;
            EXPECT_NEAR(spectrum[size_t(2 * k + 1)], expected.imag(), tolerance) << n << " bin " << k;
        }
        fft->Inverse(back.data(), spectrum.data());
        for (int32_t i = 0; i < n; ++i)
            ASSERT_NEAR(back[size_t(i)] / float(n), x[size_t(i)], 1e-6) << n << " sample " << i;
    }
}

}   // namespace
