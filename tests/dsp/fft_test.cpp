#include "dsp/fft.h"

#include "dsp/status.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <complex>
#include <memory>

namespace {

std::unique_ptr<CFFT> MakeFft(int32_t length, int32_t windowType = 0)
{
    CFFT* fft = nullptr;
    EXPECT_EQ(CreateFFT(&fft, length, windowType), kSuccess);
    return std::unique_ptr<CFFT>(fft);
}

std::complex<double> Bin(const Signal& x, int32_t k)
{
    std::complex<double> sum = 0.0;
    for (size_t i = 0; i < x.size(); ++i)
        sum += double(x[i]) * std::polar(1.0, -2.0 * std::numbers::pi * double(i) * k / double(x.size()));
    return sum;
}

TEST(Fft, RefusesLengthsThatAreNoPowerOfTwoFromFourUp)
{
    for (int32_t length : {-8, 0, 1, 2, 3, 5, 12, 1000, 1 << 25, 0x7fffffff}) {
        CFFT* fft = reinterpret_cast<CFFT*>(1);
        EXPECT_EQ(CreateFFT(&fft, length, 0), kInvalidArgument) << length;
        EXPECT_EQ(fft, nullptr);
    }
}

TEST(Fft, MagnitudesAreCompactedWithoutNyquist)
{
    const int32_t n = 64;
    const auto fft = MakeFft(n);
    Signal x = Noise(n, 3);
    for (float& v : x)
        v -= 0.5f;   // a negative bin 0
    const Signal original = x;
    fft->Forward(x.data());
    Signal power = x;
    fft->ToMagnitude(x.data());
    fft->ToPower(power.data());
    for (int32_t k = 0; k < n / 2; ++k) {
        const double expected = std::abs(Bin(original, k));
        EXPECT_NEAR(x[size_t(k)], expected, 1e-5) << k;
        EXPECT_EQ(x[size_t(n / 2 + k)], 0.0f) << k;
        EXPECT_NEAR(power[size_t(2 * k)], expected * expected, 1e-3) << k;
        EXPECT_EQ(power[size_t(2 * k + 1)], 0.0f) << k;
    }
}

TEST(Fft, WindowsWeighTheInputOfForwardAlone)
{
    const int32_t n = 32;
    const double pi = std::numbers::pi;
    for (int32_t type : {0, 1, 2, 3}) {
        const auto fft = MakeFft(n, type);
        const Signal original = Noise(n, 5);
        Signal x = original;
        fft->Forward(x.data());
        fft->Inverse(x.data());
        for (int32_t i = 0; i < n; ++i) {
            const double s = std::sin(pi * i / n);
            const double blackman = 0.42 - 0.5 * std::cos(2 * pi * i / n) + 0.08 * std::cos(4 * pi * i / n);
            const double weight = type == 1 ? s * s : type == 2 ? blackman : 1.0;
            EXPECT_NEAR(x[size_t(i)] / n, original[size_t(i)] * weight, 1e-6) << "type " << type << " at " << i;
        }
    }
}

TEST(Fft, FlushSmallTestsTheSignedValue)
{
    const auto fft = MakeFft(4);
    Signal x = {1e-36f, 9e-38f, 0.0f, -1e-40f, -5.0f, 1e-37f, 2.0f, -3.0f};
    fft->FlushSmall(x.data(), 7);
    EXPECT_EQ(x, (Signal{1e-36f, 0.0f, 0.0f, 0.0f, 0.0f, 1e-37f, 2.0f, -3.0f}));
}

}   // namespace
