#include "dsp/vtnf_fft_gen.h"

#include "dsp/status.h"
#include "dsp/vtnf.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <new>
#include <numbers>

CvtnfFFTGen::CvtnfFFTGen(int32_t frameLength, int32_t zeroPadFactor, int32_t type)
    : CvtnfFFT_If(frameLength, zeroPadFactor, type), points(size_t(fftLength) / 2), twiddles(size_t(fftLength) / 2)
{
    for (size_t k = 0; k < twiddles.size(); ++k) {
        const double angle = -2.0 * std::numbers::pi * double(k) / fftLength;
        twiddles[k] = {float(std::cos(angle)), float(std::sin(angle))};
    }
}

// Radix 2 in place, decimation in time. The conjugate transform is the inverse one.
void CvtnfFFTGen::Complex(bool inverse) noexcept
{
    const size_t n = points.size();
    for (size_t i = 1, j = 0; i < n; ++i) {
        size_t bit = n >> 1;
        for (; j & bit; bit >>= 1)
            j ^= bit;
        j ^= bit;
        if (i < j)
            std::swap(points[i], points[j]);
    }
    for (size_t span = 1; span < n; span *= 2) {
        const size_t step = n / span;
        for (size_t base = 0; base < n; base += 2 * span)
            for (size_t k = 0; k < span; ++k) {
                const auto w = inverse ? std::conj(twiddles[k * step]) : twiddles[k * step];
                const auto a = points[base + k], b = points[base + k + span];
                const std::complex<float> t(b.real() * w.real() - b.imag() * w.imag(),
                                            b.real() * w.imag() + b.imag() * w.real());
                points[base + k] = a + t;
                points[base + k + span] = a - t;
            }
    }
}

void CvtnfFFTGen::Forward(float* out, const float* in) noexcept
{
    if (in != out)
        std::copy_n(in, windowLength, out);
    if (fftLength > windowLength)
        vtnfZero(out + windowLength, fftLength - windowLength);
    if (windowType != 0)
        vtnfMul(out, window, windowLength);
    std::memcpy(static_cast<void*>(points.data()), out, sizeof(float) * size_t(fftLength));
    Complex(false);
    const size_t n = points.size();
    out[0] = points[0].real() + points[0].imag();
    out[1] = points[0].real() - points[0].imag();
    for (size_t k = 1; k < n; ++k) {
        const auto a = points[k], b = std::conj(points[n - k]);
        const auto even = a + b, odd = a - b, w = twiddles[k];
        // X[k] = (even - i w odd) / 2
        const float re = odd.real() * w.real() - odd.imag() * w.imag();
        const float im = odd.real() * w.imag() + odd.imag() * w.real();
        out[2 * k] = 0.5f * (even.real() + im);
        out[2 * k + 1] = 0.5f * (even.imag() - re);
    }
}

void CvtnfFFTGen::Inverse(float* out, float* in) noexcept
{
    const size_t n = points.size();
    points[0] = {in[0] + in[1], in[0] - in[1]};
    for (size_t k = 1; k < n; ++k) {
        const std::complex<float> a(in[2 * k], in[2 * k + 1]), b(in[2 * (n - k)], -in[2 * (n - k) + 1]);
        const auto even = a + b, odd = a - b, w = std::conj(twiddles[k]);
        const float re = odd.real() * w.real() - odd.imag() * w.imag();
        const float im = odd.real() * w.imag() + odd.imag() * w.real();
        points[k] = {even.real() - im, even.imag() + re};
    }
    Complex(true);
    std::memcpy(out, points.data(), sizeof(float) * size_t(windowLength));
}

int32_t CreateFFTGen(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType)
{
    *ppOut = nullptr;
    if (windowLength < 1 || zeroPadFactor < 1 || !std::has_single_bit(uint32_t(windowLength)) ||
        !std::has_single_bit(uint32_t(zeroPadFactor)) || windowLength % 4 != 0)
        return kInvalidArgument;
    try {
        auto fft = std::make_unique<CvtnfFFTGen>(windowLength, zeroPadFactor, windowType);
        if (fft->GetStatus() != kSuccess)
            return fft->GetStatus();
        *ppOut = fft.release();
        return kSuccess;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

int32_t DestroyFFTGen(CvtnfFFT_If** ppFFT)
{
    if (*ppFFT && !dynamic_cast<CvtnfFFTGen*>(*ppFFT))
        return kInvalidArgument;
    delete *ppFFT;
    *ppFFT = nullptr;
    return kSuccess;
}
