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

inline void MixInto(Signal* sum, const Signal& x, size_t at = 0, float gain = 1.0f)
{
    for (size_t i = 0; i < x.size() && at + i < sum->size(); ++i)
        (*sum)[at + i] += gain * x[i];
}

// Partials of f0 up to 0.45 of the rate, falling by 6 dB an octave, in phases that keep the peak low.
inline Signal HarmonicTone(int32_t n, double f0, double sampleRate, double amplitude = 1.0)
{
    Signal x(size_t(n), 0.0f);
    for (int32_t h = 1; h * f0 < 0.45 * sampleRate; ++h)
        MixInto(&x, Tone(n, h * f0, sampleRate, amplitude / h, h * h));
    return x;
}

struct DrumTrack {
    Signal audio;
    std::vector<int32_t> onsets;   // frames
};

// Kick, snare and hat in turn, five hits in two seconds at uneven distances: each an abrupt start and a decay.
inline DrumTrack Drums(int32_t n, double sampleRate)
{
    DrumTrack track{Signal(size_t(n), 0.0f), {}};
    std::mt19937 random(11);
    int32_t hit = 0;
    for (double at = 0.25; at * sampleRate < n - 0.5 * sampleRate; ++hit) {
        const auto onset = int32_t(at * sampleRate);
        track.onsets.push_back(onset);
        Signal sound = Noise(int32_t(0.3 * sampleRate), unsigned(hit) + 100);
        for (size_t i = 0; i < sound.size(); ++i) {
            const double t = double(i) / sampleRate;
            const double kick = std::sin(2.0 * std::numbers::pi * (50.0 * t + 4.0 * (1.0 - std::exp(-t / 0.03))));
            const double noise = hit % 3 == 2 && i > 0 ? sound[i] - 0.9 * sound[i - 1] : sound[i];
            const double decay = std::exp(-t / (hit % 3 == 2 ? 0.03 : 0.07));
            sound[i] = float(decay * (hit % 3 == 0 ? 0.8 * kick + 0.1 * noise * std::exp(-t / 0.005) : 0.4 * noise));
        }
        MixInto(&track.audio, sound, size_t(onset));
        at += 0.3 + 0.2 * double(random()) / 4294967295.0;
    }
    return track;
}

struct Resonance {
    double hz, bandwidth;
};

// A vowel whose pitch glides evenly from f0 to f1 Hz: partials that fall by 12 dB an octave, weighted by the resonances.
// The glide lets the partials pass over all of the spectrum, so that its envelope can be measured between them.
inline Signal Vowel(int32_t n, double f0, double f1, const std::vector<Resonance>& formants, double sampleRate,
                    double level = 0.1)
{
    const auto gain = [&](double f) {
        double g = 1.0;
        for (const Resonance& r : formants) {
            const double a = 1.0 - f * f / (r.hz * r.hz), b = f * r.bandwidth / (r.hz * r.hz);
            g /= std::sqrt(a * a + b * b);
        }
        return g;
    };
    std::vector<double> table;   // gain every 2 Hz
    for (double f = 0.0; f < sampleRate / 2.0 + 2.0; f += 2.0)
        table.push_back(gain(f));
    Signal x(size_t(n), 0.0f);
    double phase = 0.0;   // cycles of the fundamental
    for (int32_t i = 0; i < n; ++i) {
        const double f = f0 + (f1 - f0) * i / n;
        phase += f / sampleRate;
        phase -= std::floor(phase);
        double sum = 0.0;
        for (int32_t h = 1; h * f < 0.45 * sampleRate; ++h)
            sum += table[size_t(h * f / 2.0)] / (h * h) * std::cos(2.0 * std::numbers::pi * h * phase);
        x[size_t(i)] = float(level * sum);
    }
    return x;
}
