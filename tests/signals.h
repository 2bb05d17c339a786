// Test signals, all with fixed seeds, in one place.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

using Signal = std::vector<float>;

// Uniform in -peak .. peak.
inline Signal Noise(int32_t n, unsigned seed, float peak = 1.0f)
{
    std::mt19937 generator(seed);
    Signal x(static_cast<size_t>(n));
    for (float& v : x)
        v = peak * (2.0f * float(double(generator()) / 4294967295.0) - 1.0f);
    return x;
}

// amplitude * cos(2 pi frequency n / sampleRate + phase)
inline Signal Tone(int32_t n, double frequency, double sampleRate, double amplitude = 1.0, double phase = 0.0)
{
    Signal x(static_cast<size_t>(n));
    for (int32_t i = 0; i < n; ++i)
        x[size_t(i)] = float(amplitude * std::cos(2.0 * std::numbers::pi * frequency * i / sampleRate + phase));
    return x;
}
