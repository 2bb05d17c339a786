#include "tools/sample_synth.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <numbers>
#include <numeric>
#include <random>

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kBeat = 0.5;   // seconds: 120 beats per minute

double MidiToHz(double note)
{
    return 440.0 * std::exp2((note - 69.0) / 12.0);
}

StereoSignal Silence(double sampleRate, double seconds)
{
    const auto n = size_t(sampleRate * seconds);
    return {std::vector<float>(n), std::vector<float>(n)};
}

// Adds one sample at constant power; pan from -1, left, to 1, right.
void Mix(StereoSignal& out, size_t at, double value, double pan)
{
    if (at >= out.left.size())
        return;
    const double angle = (pan + 1.0) * kPi / 4.0;
    out.left[at] += float(value * std::cos(angle));
    out.right[at] += float(value * std::sin(angle));
}

// White noise in -1 .. 1.
class NoiseSource {
public:
    explicit NoiseSource(unsigned seed) : generator(seed) {}
    double Next() { return double(generator()) / 2147483648.0 - 1.0; }

private:
    std::mt19937 generator;
};

// A plucked string after Karplus and Strong 1983: a burst of noise circles in a delay line with a two-point average.
void Pluck(StereoSignal& out, double sampleRate, double start, double note, double level, double pan)
{
    const double period = sampleRate / MidiToHz(note);
    std::vector<double> line(size_t(period - 0.5));   // the average delays by half a sample
    NoiseSource noise(unsigned(note * 97.0 + start * 1000.0));
    std::ranges::generate(line, [&] { return noise.Next(); });
    const double mean = std::accumulate(line.begin(), line.end(), 0.0) / double(line.size());
    for (double& v : line)
        v -= mean;   // the average in the loop would keep it for seconds
    const auto first = size_t(start * sampleRate);
    const auto length = size_t(1.8 * sampleRate);
    for (size_t i = 0, k = 0; i < length; ++i, k = (k + 1) % line.size()) {
        Mix(out, first + i, level * line[k] * std::min(1.0, double(length - i) / (0.05 * sampleRate)), pan);
        line[k] = 0.998 * 0.5 * (line[k] + line[(k + 1) % line.size()]);
    }
}

// A held tone of a few partials that swells and fades; its two sides beat slowly against each other.
void Hold(StereoSignal& out, double sampleRate, double start, double seconds, double note, double level)
{
    const auto first = size_t(start * sampleRate);
    const auto length = size_t(seconds * sampleRate);
    for (size_t i = 0; i < length && first + i < out.left.size(); ++i) {
        const double t = double(i) / sampleRate;
        const double envelope = std::min({1.0, t / 0.15, (seconds - t) / 0.25});
        double sides[2] = {};
        for (int side = 0; side < 2; ++side)
            for (int partial = 1; partial <= 6; ++partial) {
                const double hz = MidiToHz(note + (side ? 0.04 : -0.04)) * partial;
                sides[side] += std::sin(2.0 * kPi * hz * t) / (partial * partial);
            }
        out.left[first + i] += float(level * envelope * sides[0]);
        out.right[first + i] += float(level * envelope * sides[1]);
    }
}

void Kick(StereoSignal& out, double sampleRate, double start)
{
    double phase = 0.0;
    for (size_t i = 0; i < size_t(0.3 * sampleRate); ++i) {
        const double t = double(i) / sampleRate;
        phase += 2.0 * kPi * (48.0 + 130.0 * std::exp(-t / 0.03)) / sampleRate;
        Mix(out, size_t(start * sampleRate) + i, 0.7 * std::exp(-t / 0.09) * std::sin(phase), 0.0);
    }
}

void Snare(StereoSignal& out, double sampleRate, double start)
{
    NoiseSource noise(unsigned(start * 1000.0) + 1);
    for (size_t i = 0; i < size_t(0.2 * sampleRate); ++i) {
        const double t = double(i) / sampleRate;
        const double body = std::sin(2.0 * kPi * 190.0 * t) * std::exp(-t / 0.05);
        Mix(out, size_t(start * sampleRate) + i, 0.3 * body + 0.3 * noise.Next() * std::exp(-t / 0.06), 0.15);
    }
}

void Hat(StereoSignal& out, double sampleRate, double start)
{
    NoiseSource noise(unsigned(start * 1000.0) + 2);
    double last = 0.0;
    for (size_t i = 0; i < size_t(0.06 * sampleRate); ++i) {
        const double now = noise.Next();   // the difference of neighbours takes the low end away
        Mix(out, size_t(start * sampleRate) + i, 0.12 * (now - last) * std::exp(-double(i) / sampleRate / 0.015), -0.4);
        last = now;
    }
}

// A two-pole resonance of unit gain at its centre.
class Resonator {
public:
    void Tune(double hz, double bandwidth, double sampleRate)
    {
        const double r = std::exp(-kPi * bandwidth / sampleRate), angle = 2.0 * kPi * hz / sampleRate;
        b1 = 2.0 * r * std::cos(angle);
        b2 = -r * r;
        gain = (1.0 - r) * std::sqrt(1.0 + r * r - 2.0 * r * std::cos(2.0 * angle));
    }
    double Process(double x)
    {
        const double y = gain * x + b1 * y1 + b2 * y2;
        y2 = y1;
        y1 = y;
        return y;
    }

private:
    double b1 = 0.0, b2 = 0.0, gain = 0.0, y1 = 0.0, y2 = 0.0;
};

constexpr int kFormants = 4;
struct Syllable {
    double beats;                             // length
    double note;                              // pitch, MIDI numbers
    double consonant;                         // seconds of hiss in front
    std::array<double, kFormants> formants;   // Hz; averages for a male speaker after Peterson and Barney 1952
};
constexpr Syllable kPhrase[] = {
    {1.0, 50, 0.00, {730, 1090, 2440, 3400}},   // a
    {1.0, 53, 0.09, {270, 2290, 3010, 3700}},   // si
    {1.0, 55, 0.00, {300, 870, 2240, 3300}},    // u
    {2.0, 57, 0.07, {530, 1840, 2480, 3500}},   // se
    {1.0, 55, 0.00, {570, 840, 2410, 3300}},    // o
    {2.0, 50, 0.00, {730, 1090, 2440, 3400}},   // a
};
constexpr std::array<double, kFormants> kBandwidths = {80, 100, 140, 200};   // Hz
constexpr std::array<double, kFormants> kLevels = {1.0, 0.7, 0.4, 0.25};

// Glottal flow, differentiated, over one period (phase 0 .. 1): a slow opening and a sharp closure, after Rosenberg 1971.
double GlottalPulse(double phase)
{
    if (phase < 0.4)
        return std::sin(kPi * phase / 0.4) * 0.5;
    return phase < 0.56 ? -std::sin(kPi * (phase - 0.4) / 0.32) : 0.0;
}

// Sings one syllable from a given time; the formants glide from the syllable before.
void Sing(StereoSignal& out, double sampleRate, double start, const Syllable& now, const Syllable& before,
          std::array<Resonator, kFormants>& tract, double& phase, NoiseSource& noise)
{
    const double seconds = now.beats * kBeat;
    for (size_t i = 0; i < size_t(seconds * sampleRate); ++i) {
        const double t = double(i) / sampleRate;
        const double glide = std::min(1.0, t / 0.08);
        const double vibrato = 0.25 * std::sin(2.0 * kPi * 5.5 * t) * std::min(1.0, t / 0.4);
        const double note = before.note + (now.note - before.note) * glide + vibrato;
        phase += MidiToHz(note) / sampleRate;
        phase -= std::floor(phase);

        const double voiced = std::clamp((t - now.consonant) / 0.03, 0.0, 1.0) * std::min(1.0, (seconds - t) / 0.06);
        const double source = voiced * (GlottalPulse(phase) + 0.01 * noise.Next());
        double value = 0.0;
        for (size_t f = 0; f < tract.size(); ++f) {
            tract[f].Tune(before.formants[f] + (now.formants[f] - before.formants[f]) * glide, kBandwidths[f],
                          sampleRate);
            value += kLevels[f] * tract[f].Process(source) * (f % 2 ? -1.0 : 1.0);
        }
        if (t < now.consonant)
            value += 0.06 * noise.Next() * std::sin(kPi * t / now.consonant);
        Mix(out, size_t(start * sampleRate) + i, 1.6 * value, 0.0);
    }
}

}   // namespace

StereoSignal SynthesiseMusic(double sampleRate, double seconds)
{
    static constexpr std::array<std::array<int, 4>, 4> kChords = {
        {{50, 57, 62, 65}, {46, 58, 62, 65}, {48, 55, 60, 64}, {45, 57, 61, 64}}};
    StereoSignal out = Silence(sampleRate, seconds);
    for (int beat = 0; beat * kBeat < seconds; ++beat) {
        const auto& chord = kChords[size_t(beat / 4) % kChords.size()];
        if (beat % 4 == 0)
            for (const int note : chord)
                Hold(out, sampleRate, beat * kBeat, 4.0 * kBeat, note, 0.025);
        if (beat % 2 == 0)
            Pluck(out, sampleRate, beat * kBeat, chord[0] - 12, 0.2, 0.0);
        for (int half = 0; half < 2; ++half)
            Pluck(out, sampleRate, (beat + 0.5 * half) * kBeat, chord[size_t(beat * 2 + half + 1) % 4] + 12, 0.14,
                  half ? 0.5 : -0.5);
    }
    return out;
}

StereoSignal SynthesiseDrums(double sampleRate, double seconds)
{
    StereoSignal out = Silence(sampleRate, seconds);
    for (int beat = 0; beat * kBeat < seconds; ++beat) {
        beat % 2 ? Snare(out, sampleRate, beat * kBeat) : Kick(out, sampleRate, beat * kBeat);
        Hat(out, sampleRate, beat * kBeat);
        Hat(out, sampleRate, (beat + 0.5) * kBeat);
    }
    return out;
}

StereoSignal SynthesiseVoice(double sampleRate, double seconds)
{
    StereoSignal out = Silence(sampleRate, seconds);
    std::array<Resonator, kFormants> tract;
    NoiseSource noise(7);
    double phase = 0.0, start = 0.0;
    const Syllable* before = &kPhrase[0];
    for (size_t i = 0; start < seconds; i = (i + 1) % std::size(kPhrase)) {
        Sing(out, sampleRate, start, kPhrase[i], *before, tract, phase, noise);
        start += kPhrase[i].beats * kBeat;
        before = &kPhrase[i];
    }
    return out;
}
