// What a listener hears, as numbers: the frequency, level and cleanness of a tone, and the noise of a reproduction.
#pragma once

#include "tests/signals.h"

#include <algorithm>
#include <complex>
#include <cstdint>
#include <limits>
#include <span>

inline double Decibels(double powerRatio)
{
    return 10.0 * std::log10(std::max(powerRatio, 1e-30));
}

inline double Cents(double frequencyRatio)
{
    return 1200.0 * std::log2(frequencyRatio);
}

inline double Power(std::span<const float> x)
{
    double sum = 0.0;
    for (const float v : x)
        sum += double(v) * v;
    return x.empty() ? 0.0 : sum / double(x.size());
}

// Mean of x[i] exp(-i 2 pi f n), Hann-weighted so that other components do not leak in: half the amplitude of the tone at
// f, with the phase that it has at the middle of x.
inline std::complex<double> HannProjection(std::span<const float> x, double cyclesPerSample)
{
    std::complex<double> sum = 0.0;
    double weights = 0.0;
    const double middle = double(x.size() - 1) / 2.0;
    for (size_t i = 0; i < x.size(); ++i) {
        const double w = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * (double(i) + 0.5) / double(x.size()));
        sum += w * double(x[i]) * std::polar(1.0, -2.0 * std::numbers::pi * cyclesPerSample * (double(i) - middle));
        weights += w;
    }
    return sum / weights;
}

struct ToneFit {
    double frequency;   // Hz
    double amplitude;
    double sidebands;   // power of all that is not the tone, in dB below it (negative)
};

// The tone near expected Hz. Between the two halves of x its phase turns by what the frequency is off.
inline ToneFit FitTone(std::span<const float> x, double expected, double sampleRate)
{
    double f = expected / sampleRate;
    const size_t half = x.size() / 2;
    for (int32_t round = 0; round < 8; ++round) {
        const auto first = HannProjection(x.first(half), f), second = HannProjection(x.subspan(half, half), f);
        const double turn = 2.0 * std::numbers::pi * f * double(half);   // what the projections left out
        f += std::arg(second * std::conj(first) * std::polar(1.0, -turn)) / (2.0 * std::numbers::pi * double(half));
    }
    const auto tone = HannProjection(x, f);
    const double middle = double(x.size() - 1) / 2.0;
    double rest = 0.0;
    for (size_t i = 0; i < x.size(); ++i) {
        const double t = 2.0 * (tone * std::polar(1.0, 2.0 * std::numbers::pi * f * (double(i) - middle))).real();
        rest += (x[i] - t) * (x[i] - t);
    }
    const double power = 2.0 * std::norm(tone);
    return {f * sampleRate, 2.0 * std::abs(tone), Decibels(rest / double(x.size()) / power)};
}

struct Reproduction {
    double snr;      // dB
    int32_t delay;   // frames by which the reproduction is late
};

// The signal-to-noise ratio of y against gain * x, at the delay within +-maxDelay where it is best.
inline Reproduction CompareWith(std::span<const float> x, std::span<const float> y, double gain, int32_t maxDelay)
{
    Reproduction best{-std::numeric_limits<double>::infinity(), 0};
    for (int32_t d = -maxDelay; d <= maxDelay; ++d) {
        double signal = 0.0, noise = 0.0;
        for (int32_t i = std::max(0, -d); i < int32_t(x.size()) && i + d < int32_t(y.size()); ++i) {
            const double expected = gain * x[size_t(i)], error = y[size_t(i + d)] - expected;
            signal += expected * expected;
            noise += error * error;
        }
        const double snr = Decibels(signal / std::max(noise, 1e-30));
        if (snr > best.snr)
            best = {snr, d};
    }
    return best;
}
