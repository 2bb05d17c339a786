#include "dsp/transform.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

template <class T>
RealTransform<T>::RealTransform(int32_t length) : points(size_t(length) / 2), twiddles(size_t(length) / 2)
{
    for (size_t k = 0; k < twiddles.size(); ++k) {
        const double angle = -2.0 * std::numbers::pi * double(k) / length;
        twiddles[k] = {T(std::cos(angle)), T(std::sin(angle))};
    }
}

// Radix 2 in place, decimation in time. The conjugate transform is the inverse one.
template <class T>
void RealTransform<T>::Complex(bool inverse) noexcept
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
                const std::complex<T> t(b.real() * w.real() - b.imag() * w.imag(),
                                        b.real() * w.imag() + b.imag() * w.real());
                points[base + k] = a + t;
                points[base + k + span] = a - t;
            }
    }
}

template <class T>
void RealTransform<T>::Forward(T* out, const T* in) noexcept
{
    const size_t n = points.size();
    std::memcpy(static_cast<void*>(points.data()), in, sizeof(T) * 2 * n);
    Complex(false);
    out[0] = points[0].real() + points[0].imag();
    out[1] = points[0].real() - points[0].imag();
    for (size_t k = 1; k < n; ++k) {
        const auto a = points[k], b = std::conj(points[n - k]);
        const auto even = a + b, odd = a - b, w = twiddles[k];
        // X[k] = (even - i w odd) / 2
        const T re = odd.real() * w.real() - odd.imag() * w.imag();
        const T im = odd.real() * w.imag() + odd.imag() * w.real();
        out[2 * k] = T(0.5) * (even.real() + im);
        out[2 * k + 1] = T(0.5) * (even.imag() - re);
    }
}

template <class T>
void RealTransform<T>::Inverse(T* out, const T* in) noexcept
{
    const size_t n = points.size();
    points[0] = {in[0] + in[1], in[0] - in[1]};
    for (size_t k = 1; k < n; ++k) {
        const std::complex<T> a(in[2 * k], in[2 * k + 1]), b(in[2 * (n - k)], -in[2 * (n - k) + 1]);
        const auto even = a + b, odd = a - b, w = std::conj(twiddles[k]);
        const T re = odd.real() * w.real() - odd.imag() * w.imag();
        const T im = odd.real() * w.imag() + odd.imag() * w.real();
        points[k] = {even.real() - im, even.imag() + re};
    }
    Complex(true);
    std::memcpy(out, points.data(), sizeof(T) * 2 * n);
}

template class RealTransform<float>;
template class RealTransform<double>;
