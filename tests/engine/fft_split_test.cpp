#include "engine/fft_split.h"

#include "dsp/status.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

constexpr int32_t kFrame = 1024, kHop = 512;

FFTSplitPtr MakeSplit(int32_t channels, float crossoverHz = 2000.0f, int32_t rate = 44100, int32_t frame = kFrame)
{
    CFFTSplit* made = nullptr;
    EXPECT_EQ(CreateFFTSplit(&made, rate, channels, crossoverHz, frame, 0), kSuccess);
    return FFTSplitPtr(made);
}

struct Bands {
    std::vector<Signal> low, high;   // [channel][frame], from the split's first output frame on
};

// Feeds all channels in blocks of random length, then silence for two frames.
Bands Split(CFFTSplit& split, const std::vector<Signal>& input, unsigned seed = 1)
{
    const size_t channels = input.size();
    const auto total = int32_t(input[0].size());
    Bands bands{std::vector<Signal>(channels, Signal(size_t(total) + 8 * kFrame)), {}};
    bands.high = bands.low;
    std::mt19937 random(seed);
    std::vector<const float*> in(channels);
    std::vector<float*> low(channels), high(channels);
    int32_t done = 0;
    const auto run = [&](bool silence, int32_t at, int32_t frames) {
        for (size_t c = 0; c < channels; ++c) {
            in[c] = input[c].data() + at;
            low[c] = bands.low[c].data() + done;
            high[c] = bands.high[c].data() + done;
        }
        const int32_t got = split.Process(silence ? nullptr : in.data(), low.data(), high.data(), frames, 0.0f);
        EXPECT_EQ(got % kHop, 0);
        done += got;
    };
    for (int32_t at = 0, n = 0; at < total; at += n) {
        n = std::min(total - at, int32_t(random() % 3000));
        run(false, at, n);
    }
    for (int32_t i = 0; i < 4; ++i)
        run(true, 0, 0);
    for (size_t c = 0; c < channels; ++c) {
        bands.low[c].resize(size_t(done));
        bands.high[c].resize(size_t(done));
    }
    return bands;
}

double Energy(const Signal& x, size_t from, size_t to)
{
    double sum = 0.0;
    for (size_t i = from; i < to; ++i)
        sum += double(x[i]) * x[i];
    return sum;
}

// Share of the middle of a signal's energy that leaves in the high band.
double HighShare(CFFTSplit& split, const Signal& x)
{
    const Bands bands = Split(split, {x});
    const size_t from = 2 * kFrame, to = x.size() - 2 * kFrame;
    return Energy(bands.high[0], from, to) / Energy(x, from, to);
}

TEST(FftSplit, LowAndHighAddUpToTheDelayedInput)
{
    Signal clicks(8000, 0.0f);
    clicks[0] = clicks[3333] = clicks[7999] = 1.0f;
    const std::vector<Signal> input = {
        Noise(8000, 1),    Tone(8000, 1990.0, 44100.0, 30.0), clicks, Tone(8000, 60.0, 44100.0), Noise(8000, 2, 1e-7f),
        Signal(8000, 0.0f)};
    for (const float crossover : {0.0f, 40.0f, 2000.0f, 16000.0f, 22050.0f}) {
        const auto split = MakeSplit(int32_t(input.size()), crossover);
        const Bands bands = Split(*split, input);
        for (size_t c = 0; c < input.size(); ++c)
            for (size_t i = 0; i < bands.low[c].size(); ++i) {
                const size_t at = i - kHop;   // the first half frame belongs to time before 0
                const double expected = at < input[c].size() ? input[c][at] : 0.0;
                const double low = bands.low[c][i], high = bands.high[c][i];
                // low is rounded once, to half a step of the larger of the two
                ASSERT_NEAR(low + high, expected, 1e-12 + 6e-8 * (std::abs(low) + std::abs(high)))
                    << "crossover " << crossover << " signal " << c << " frame " << i;
            }
    }
}

TEST(FftSplit, NullInputDrainsToSilence)
{
    const auto split = MakeSplit(1);
    Split(*split, {Noise(5000, 3)});
    Signal low(kHop, 1.0f), high(kHop, 1.0f);
    float* const lows[] = {low.data()};
    float* const highs[] = {high.data()};
    for (int32_t i = 0; i < 2; ++i)
        EXPECT_EQ(split->Process(nullptr, lows, highs, 0, 0.0f), kHop);
    EXPECT_EQ(low, Signal(kHop, 0.0f));
    EXPECT_EQ(high, Signal(kHop, 0.0f));
}

TEST(FftSplit, PlacesTheCrossoverByRateAndFrame)
{
    static constexpr struct {
        int32_t rate, frame;
        float hz;
        int32_t bin;
    } kCases[] = {{44100, 1024, 2000.0f, 46},  {44100, 1024, 22050.0f, 512}, {44100, 1024, 1e9f, 512},
                  {8000, 512, 2000.0f, 128},   {96000, 2048, 2000.0f, 42},   {192000, 4096, 2000.0f, 42},
                  {384000, 8192, 2000.0f, 42}, {44100, 1024, 2662.0f, 61},   {44100, 1024, 16000.0f, 371}};
    for (const auto& c : kCases) {
        EXPECT_EQ(MakeSplit(1, c.hz, c.rate, c.frame)->GetCrossoverBin(), c.bin) << c.rate << " Hz, " << c.hz;
        const auto moved = MakeSplit(1, 100.0f, c.rate, c.frame);
        moved->SetCrossoverHz(c.hz);
        EXPECT_EQ(moved->GetCrossoverBin(), c.bin);
    }
}

// Bins of 43.07 Hz: the crossover is bin 46, the fade reaches down to bin 38.
TEST(FftSplit, DividesAtTheCrossoverAndFadesOverEightBins)
{
    const auto shareAt = [](double bin) {
        return HighShare(*MakeSplit(1), Tone(16384, bin * 44100.0 / kFrame, 44100.0));
    };
    EXPECT_GT(shareAt(60), 0.999);
    EXPECT_LT(shareAt(10), 0.001);
    EXPECT_LT(shareAt(36), 0.01);
    EXPECT_NEAR(shareAt(42), 0.25, 0.05);   // half way up the fade: half the amplitude
    EXPECT_GT(shareAt(50), 0.95);
}

// A strong low tone pulls the crossover down: its centroid near bin 3 gives ceil(46 (6/46)^0.3) = 25, and a tone at bin 36,
// which alone would stay in the low band, goes to the high one.
TEST(FftSplit, ADullFramePullsTheCrossoverDown)
{
    const Signal strong = Tone(16384, 3 * 44100.0 / kFrame, 44100.0);
    const Signal weak = Tone(16384, 36 * 44100.0 / kFrame, 44100.0, 0.05);
    Signal both = strong;
    std::transform(both.begin(), both.end(), weak.begin(), both.begin(), std::plus<>());
    const Bands bands = Split(*MakeSplit(1), {both});
    EXPECT_NEAR(Energy(bands.high[0], 2048, 14000) / Energy(weak, 2048, 14000), 1.0, 0.05);
}

// The factor next to 1 takes the formant path with every bin in its place, so it has to give the input back. A spectrum
// that the first inverse transform had spoilt would show in the high band.
TEST(FftSplit, TheFormantPathWithoutMovementGivesTheInputBack)
{
    const Signal x = Noise(16384, 5);
    const auto split = MakeSplit(1);
    split->SetEnvelopeFactor(std::nextafter(1.0f, 2.0f));
    const Bands bands = Split(*split, {x});
    for (size_t i = 2048; i < 14000; ++i)
        ASSERT_NEAR(bands.low[0][i] + bands.high[0][i], x[i - kHop], 1e-5);   // 3 transforms and a division
}

// The mean magnitude of a signal at frame bins, over half-overlapping frames.
Signal MeanSpectrum(const Signal& x)
{
    const auto fft = MakeFft(kFrame);
    Signal mean(kHop, 0.0f), frame(kFrame);
    for (size_t at = 2048; at + 3 * kFrame < x.size(); at += kHop) {
        for (size_t i = 0; i < kFrame; ++i)
            frame[i] = x[at + i] * float(std::sin(std::numbers::pi * double(i) / kFrame));
        fft->Forward(frame.data(), frame.data());
        for (size_t k = 1; k < kHop; ++k)
            mean[k] += std::hypot(frame[2 * k], frame[2 * k + 1]);
    }
    return mean;
}

// A resonance at bin centre, rung by noise.
Signal Resonance(int32_t n, double bin)
{
    Signal x = Noise(n, 9);
    const double r = 0.98, a = 2.0 * r * std::cos(2.0 * std::numbers::pi * bin / kFrame);
    for (size_t i = 2; i < x.size(); ++i)
        x[i] += float(a * x[i - 1] - r * r * x[i - 2]);
    return x;
}

TEST(FftSplit, MovesTheEnvelopeByTheFactorAndSilencesWhatComesFromAboveTheSpectrum)
{
    for (const float factor : {0.6f, 0.8f, 1.25f, 1.5f, 2.0f}) {
        const auto split = MakeSplit(1);
        split->SetEnvelopeOrder(32);
        split->SetEnvelopeFactor(factor);
        const Bands bands = Split(*split, {Resonance(100000, 150.0)});
        Signal sum = bands.low[0];
        std::transform(sum.begin(), sum.end(), bands.high[0].begin(), sum.begin(), std::plus<>());
        const Signal spectrum = MeanSpectrum(sum);
        const auto peak = std::max_element(spectrum.begin(), spectrum.end()) - spectrum.begin();
        EXPECT_NEAR(double(peak), 150.0 / factor, 0.04 * 150.0 / factor) << factor;
        const auto top = size_t(kHop / factor) + 4;   // beyond it only the window's side lobes remain
        for (size_t k = top; k < kHop - 4; ++k)       // Nyquist, the last one, keeps its place
            ASSERT_LT(spectrum[k], 2e-3f * spectrum[size_t(peak)]) << factor << " bin " << k;
    }
}

TEST(FftSplit, LimitsTheEnvelopeOrder)
{
    const Signal x = Resonance(8192, 100.0);
    const auto shifted = [&](int32_t order) {
        const auto split = MakeSplit(1);
        split->SetEnvelopeOrder(order);
        split->SetEnvelopeFactor(1.3f);
        return Split(*split, {x}).low[0];
    };
    EXPECT_EQ(shifted(4), shifted(16));
    EXPECT_EQ(shifted(100000), shifted(256));
    EXPECT_NE(shifted(16), shifted(17));
}

TEST(FftSplit, StartsAnewAfterResetWhateverTheBlocks)
{
    const std::vector<Signal> input = {Noise(9000, 7), Noise(9000, 8)};
    const auto split = MakeSplit(2);
    split->SetEnvelopeFactor(1.5f);
    Split(*split, input);
    split->Reset();
    const Bands again = Split(*split, input, 99), fresh = Split(*MakeSplit(2), input);
    EXPECT_EQ(again.low, fresh.low);
    EXPECT_EQ(again.high, fresh.high);
}

TEST(FftSplit, RefusesWhatCannotBeMadeAndWhatDoesNotFit)
{
    static constexpr struct {
        int32_t rate, channels, frame, bufSize, status;
    } kCases[] = {{7999, 1, 1024, 0, kInvalidSampleRate},     {44100, 0, 1024, 0, kInvalidChannelCount},
                  {44100, 49, 1024, 0, kInvalidChannelCount}, {44100, 1, 1000, 0, kInvalidArgument},
                  {44100, 1, 1024, 1024, kInvalidArgument},   {8000, 48, 512, 1024, kSuccess}};
    for (const auto& c : kCases) {
        CFFTSplit* split = nullptr;
        EXPECT_EQ(CreateFFTSplit(&split, c.rate, c.channels, 2000.0f, c.frame, c.bufSize), c.status);
        EXPECT_EQ(split != nullptr, c.status == kSuccess);
        EXPECT_EQ(DestroyFFTSplit(&split), c.status == kSuccess ? kSuccess : kInvalidArgument);
    }
    const auto split = MakeSplit(1);
    const Signal tooLong(size_t(split->GetRoom()) + 1, 1.0f);
    const float* const in[] = {tooLong.data()};
    EXPECT_EQ(split->Process(in, nullptr, nullptr, int32_t(tooLong.size()), 0.0f), 0);
    EXPECT_EQ(split->GetRoom(), 32 * kFrame - kHop);
}

}   // namespace
