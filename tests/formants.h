// Formants by linear prediction, over a whole signal.
#pragma once

#include "dsp/vtnf_buffer.h"
#include "tests/signals.h"

#include <complex>
#include <cstdint>
#include <numbers>

// The mean power spectrum over Hann frames of size points, half overlapped: size / 2 bins.
inline std::vector<double> MeanPowerSpectrum(const Signal& x, int32_t size)
{
    vtnfInit();
    const FftPtr fft = MakeFft(size);
    std::vector<double> power(size_t(size) / 2, 0.0);
    Signal frame(static_cast<size_t>(size));
    for (size_t at = 0; at + size_t(size) <= x.size(); at += size_t(size) / 2) {
        for (size_t i = 0; i < frame.size(); ++i)
            frame[i] = x[at + i] * float(0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * double(i) / size));
        fft->Forward(frame.data(), frame.data());
        for (size_t k = 1; k < power.size(); ++k)
            power[k] += double(frame[2 * k]) * frame[2 * k] + double(frame[2 * k + 1]) * frame[2 * k + 1];
    }
    return power;
}

// Predictor 1, a1, ... of the given order for an autocorrelation (Levinson and Durbin).
inline std::vector<double> Predictor(const std::vector<double>& r, size_t order)
{
    std::vector<double> a(order + 1, 0.0);
    a[0] = 1.0;
    double error = r[0];
    for (size_t m = 1; m <= order; ++m) {
        double k = r[m];
        for (size_t i = 1; i < m; ++i)
            k += a[i] * r[m - i];
        k /= -error;
        std::vector<double> next = a;
        for (size_t i = 1; i <= m; ++i)
            next[i] += k * a[m - i];
        a = next;
        error *= 1.0 - k * k;
    }
    return a;
}

// The resonances below topHz in Hz, lowest first: peaks of a linear prediction fitted to that part of the spectrum alone
// (selective linear prediction: Makhoul 1975), after a rise of 12 dB an octave that takes out the tilt of a voice.
inline std::vector<double> Formants(const Signal& x, double sampleRate, double topHz = 5000.0, size_t order = 16)
{
    constexpr int32_t kSize = 4096;
    const std::vector<double> power = MeanPowerSpectrum(x, kSize);
    const auto bins = size_t(topHz / sampleRate * kSize);
    std::vector<double> r(order + 1, 0.0);
    for (size_t m = 0; m <= order; ++m)
        for (size_t k = 1; k < bins; ++k) {
            const double emphasis = std::pow(2.0 * std::sin(std::numbers::pi * double(k) / double(2 * bins)), 4.0);
            r[m] += power[k] * emphasis * std::cos(std::numbers::pi * double(m * k) / double(bins));
        }
    const std::vector<double> a = Predictor(r, order);
    const auto gain = [&](double hz) {
        std::complex<double> sum = 0.0;
        for (size_t m = 0; m <= order; ++m)
            sum += a[m] * std::polar(1.0, -std::numbers::pi * hz / topHz * double(m));
        return 1.0 / std::norm(sum);
    };
    std::vector<double> formants;
    for (double hz = 100.0; hz < topHz - 100.0; hz += 1.0)
        if (gain(hz) > gain(hz - 1.0) && gain(hz) >= gain(hz + 1.0))
            formants.push_back(hz);
    return formants;
}
