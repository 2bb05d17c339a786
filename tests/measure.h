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

// Where within +-reach cents of expected, in cycles per sample, a quarter of a second shows the most.
inline double StrongestNear(std::span<const float> x, double expected, double sampleRate, double reach)
{
    const auto part = x.subspan(x.size() / 2, std::min(x.size() / 2, size_t(sampleRate / 4.0)));
    double best = expected, most = 0.0;
    for (double cents = -reach; cents <= reach; cents += reach / 40.0) {
        const double f = expected * std::exp2(cents / 1200.0);
        const double here = std::norm(HannProjection(part, f));
        if (here > most * 1.0001) {
            most = here;
            best = f;
        }
    }
    return best;
}

// The tone within 30 cents of expected Hz. From there on, the phase turns between the two halves of a stretch of signal
// by what the frequency is off; the stretch grows with the certainty.
inline ToneFit FitTone(std::span<const float> x, double expected, double sampleRate)
{
    double f = StrongestNear(x, expected / sampleRate, sampleRate, 30.0);
    for (size_t half = size_t(sampleRate / 20.0); half < x.size(); half = half * 2 < x.size() / 2 ? half * 2 : half) {
        const auto from = x.size() / 2 - half;
        const auto first = HannProjection(x.subspan(from, half), f);
        const auto second = HannProjection(x.subspan(from + half, half), f);
        const double turn = 2.0 * std::numbers::pi * f * double(half);   // what the projections left out
        const double off = std::arg(second * std::conj(first) * std::polar(1.0, -turn));
        f += off / (2.0 * std::numbers::pi * double(half));
        if (half * 4 > x.size())
            break;
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

// The mean frequency of the tone near expected Hz: how far its phase gets from frame to frame, 60 ms and half overlapped,
// weighted by its power. Also right for a tone whose phase wanders or jumps, as long as it keeps its pitch on the whole.
inline double MeanFrequency(std::span<const float> x, double expected, double sampleRate)
{
    const auto size = size_t(0.06 * sampleRate), hop = size / 2;
    const double f = expected / sampleRate;
    double turn = 0.0, weight = 0.0;
    std::complex<double> before = 0.0;
    for (size_t at = 0; at + size <= x.size(); at += hop) {
        const auto now = HannProjection(x.subspan(at, size), f);
        const auto step = now * std::conj(before) * std::polar(1.0, -2.0 * std::numbers::pi * f * double(hop));
        turn += std::abs(step) * std::arg(step);
        weight += std::abs(step);
        before = now;
    }
    return expected + turn / std::max(weight, 1e-30) / (2.0 * std::numbers::pi * double(hop)) * sampleRate;
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

struct Attack {
    double time = -1.0;   // frame at which the envelope first reaches half of its peak; below 0: none found
    double rise = 0.0;    // frames from a fifth to four fifths of it, around that place
};

// The attack near frame at, by the envelope over 1 ms within 45 ms of it.
inline Attack FindAttack(const Signal& x, double at, double sampleRate)
{
    const auto reach = int32_t(0.045 * sampleRate), smooth = int32_t(0.001 * sampleRate);
    const auto first = int32_t(at) - reach;
    Signal envelope(size_t(2 * reach), 0.0f);
    for (int32_t i = 0; i < 2 * reach; ++i) {
        const int32_t from = first + i - smooth / 2;
        if (from >= 0 && size_t(from + smooth) <= x.size())
            envelope[size_t(i)] = float(std::sqrt(Power(std::span(x).subspan(size_t(from), size_t(smooth)))));
    }
    const float peak = *std::max_element(envelope.begin(), envelope.end());
    if (peak < 0.01f)
        return {};
    const auto reaches = [peak](float share) { return [=](float v) { return v >= share * peak; }; };
    const auto half = std::find_if(envelope.begin(), envelope.end(), reaches(0.5f));
    const auto high = std::find_if(half, envelope.end(), reaches(0.8f));
    auto low = half;
    while (low > envelope.begin() && *low >= 0.2f * peak)
        --low;
    return {first + double(half - envelope.begin()), double(high - low)};
}

struct Attacks {
    int32_t found = 0;
    double meanError = 0.0, worstError = 0.0;   // ms between where attacks stand and where the stretch puts them
    double riseBefore = 0.0, riseAfter = 0.0;   // ms, means
};

inline Attacks CompareAttacks(const DrumTrack& drums, const Signal& stretched, double stretch, double sampleRate)
{
    const double ms = 1000.0 / sampleRate;
    Attacks a;
    for (const int32_t onset : drums.onsets) {
        const Attack before = FindAttack(drums.audio, onset, sampleRate);
        const Attack after = FindAttack(stretched, onset * stretch, sampleRate);
        if (after.time < 0.0)
            continue;
        const double error = std::abs(after.time - before.time - onset * (stretch - 1.0)) * ms;
        ++a.found;
        a.meanError += error;
        a.worstError = std::max(a.worstError, error);
        a.riseBefore += before.rise * ms;
        a.riseAfter += after.rise * ms;
    }
    for (double* sum : {&a.meanError, &a.riseBefore, &a.riseAfter})
        *sum /= std::max(a.found, 1);
    return a;
}
