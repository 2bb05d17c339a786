#include "engine/pitch/pt_analysis.h"

#include "dsp/fft.h"
#include "dsp/status.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <numbers>

namespace {

constexpr float kPitchAtCreation = 440.0f;             // Hz
constexpr float kPitchAtReset = 220.0f;                // Hz
constexpr float kHarmonicityNeeded = 5.0f;             // dB, of a frame at or above kLowVoice
constexpr double kHarmonicityNeededLow = 3.5;          // dB, below it, where fewer harmonics stand clear of each other
constexpr double kLowVoice = 160.0;                    // Hz
constexpr double kSecondsPerSample = 9.0702946e-05f;   // at 11025 Hz

constexpr int32_t kLowestHz = 25;   // what lies below is no pitch
constexpr double kPeaksOnlyBelow =
    0.01814059;                     // of the sample rate, 200 Hz: below it only surroundings of peaks count
constexpr int32_t kPeakReach = 4;   // bins on either side of a peak: the main lobe
constexpr int32_t kMinPeakBin = 6;
constexpr int32_t kHighestHz = 4000;   // highest candidate of the harmonic sum

constexpr int32_t kProductHarmonics = 5;
constexpr float kProductFloor = 0.05f;   // a missing harmonic weakens a candidate and does not erase it
constexpr int32_t kSumHarmonics = 9;

constexpr double kOctaveTolerance = 0.3;   // of the product's bin
constexpr double kJumpFactor = 1.8;        // a rise beyond it needs proof
constexpr double kJumpFloor = 80.0;        // Hz: lower pitches are not held against it
constexpr float kJumpPeak = 0.0625f;       // -24 dB: a peak near the previous pitch that is strong enough to stay
constexpr double kUnreliableDrift = 0.2;   // an unreliable frame further away than this falls back on the memory
constexpr size_t kFallBackEntry = 5;       // of the memory

constexpr double kSilentPower = 1e-7;   // -70 dB
constexpr double kTinyRatio = 1e-24;
constexpr double kDbPerNeper = 4.3429446;   // 10 / ln(10), for ratios of magnitudes
constexpr int32_t kParabolaSteps = 30;      // a bin

// The weight of harmonic h: later ones count a little less.
constexpr auto kHarmonicWeight = [] {
    std::array<float, kSumHarmonics + 1> weight{};
    for (int32_t h = 1; h <= kSumHarmonics; ++h)
        weight[size_t(h)] = 31.0f / float(30 + h);
    return weight;
}();

// The index of the largest positive value, the first of equals; 0 if there is none.
int32_t LargestPositive(const float* v, int32_t n)
{
    float best = 0.0f;
    int32_t index = 0;
    for (int32_t i = 0; i < n; ++i)
        if (v[i] > best) {
            best = v[i];
            index = i;
        }
    return index;
}

// Where the parabola through three neighbours peaks, in bins from the first one, 0 to 2, in steps of 1/30.
double ParabolaPeak(double y0, double y1, double y2)
{
    constexpr double n = kParabolaSteps;
    const double d = (y1 - y0) / n;
    const double c = (y2 - y0 - 2.0 * n * d) / (2.0 * n * n);
    double last = -1e-25;
    for (int32_t i = 0; i <= 2 * kParabolaSteps; ++i) {
        const double v = ((i - n) * c + d) * i + y0;
        if (v <= last)
            return (i - 1) / n;
        last = v;
    }
    return 0.0;
}

}   // namespace

CPTAnalysis::CPTAnalysis(int32_t sampleRate, int32_t transformLength, int32_t frameSamples)
    : analysisRate(sampleRate), fftLength(transformLength), frameLength(frameSamples),
      octaveLowBin(transformLength * 44 / 8192), sumLowBin(transformLength * 28 / 8192), window(size_t(frameSamples)),
      spectrum(size_t(transformLength)), peaks(size_t(transformLength)), product(size_t(transformLength / 2))
{
    CFFT* transform = nullptr;
    if (CreateFFT(&transform, fftLength, 0) != kSuccess)
        throw std::bad_alloc();
    fft.reset(transform);
    for (int32_t i = 0; i < frameLength; ++i)
        window[size_t(i)] = float((1.0 - std::cos(2.0 * std::numbers::pi * i / (frameLength - 1))) * 0.5);
    ForgetPitch(kPitchAtCreation);
}

CPTAnalysis::~CPTAnalysis() = default;

void CPTAnalysis::ForgetPitch(float frequency) noexcept
{
    pitchHistory.fill(frequency);
    lastVoiced = frequency;
    previous = frequency;
    octaveHold = false;
    harmonicityThreshold = kHarmonicityNeeded;
    previousLevel = 0.0f;
}

void CPTAnalysis::Reset() noexcept
{
    std::fill(spectrum.begin(), spectrum.end(), 0.0f);
    std::fill(peaks.begin(), peaks.end(), 0.0f);
    std::fill(product.begin(), product.end(), 0.0f);
    ForgetPitch(kPitchAtReset);
}

void CPTAnalysis::Process(const float* frame, PitchRecord* record) noexcept
{
    MeasureLevel(frame, record);
    MakeSpectrum(frame);
    KeepPeaks();
    const int32_t productBin = HarmonicProductBin();
    Decide(productBin, HarmonicSumBin(), record);
}

// Negative samples count as silence.
void CPTAnalysis::MeasureLevel(const float* x, PitchRecord* record) noexcept
{
    double sum = 0.0;
    for (int32_t i = 0; i < frameLength; ++i)
        sum += x[i] > 1e-24f ? double(x[i]) * x[i] : 1e-24;
    record->level = float(std::sqrt(sum / frameLength));
    record->levelChange = (record->level - previousLevel) / (record->level + 1e-32f);
    previousLevel = record->level;
}

// Magnitudes, the largest at 1, nothing below 25 Hz and nothing from N/2 up, so that harmonics may run out of the band.
void CPTAnalysis::MakeSpectrum(const float* x) noexcept
{
    float* s = spectrum.data();
    for (int32_t i = 0; i < frameLength; ++i)
        s[i] = std::fabs(x[i]) >= 1e-15f ? window[size_t(i)] * x[i] : 0.0f;
    std::fill(s + frameLength, s + fftLength, 0.0f);
    fft->Forward(s);
    fft->ToMagnitude(s);

    const int32_t half = fftLength / 2;
    const float largest = std::max(1e-25f, *std::max_element(s, s + half));
    for (int32_t k = 0; k < half; ++k)
        s[k] /= largest;
    std::fill(s + half, s + fftLength, 0.0f);
    std::fill_n(s, LowestBin(), 0.0f);
}

int32_t CPTAnalysis::LowestBin() const noexcept
{
    return fftLength * kLowestHz / analysisRate;
}

// P: at low frequencies only what surrounds a local peak, where the main lobes of neighbours would otherwise add up to
// candidates between the harmonics; above 200 Hz all.
void CPTAnalysis::KeepPeaks() noexcept
{
    const float* s = spectrum.data();
    float* p = peaks.data();
    const int32_t lo = std::max(LowestBin(), kMinPeakBin), hi = int32_t(fftLength * kPeaksOnlyBelow);
    std::fill(p, p + fftLength, 0.0f);
    std::fill_n(p, lo, 1e-25f);
    for (int32_t k = lo; k < hi; ++k)
        if (s[k - 1] < s[k] && s[k + 1] <= s[k])
            std::copy_n(s + k - kPeakReach, 2 * kPeakReach + 1, p + k - kPeakReach);
    std::copy(s + hi - kPeakReach, s + fftLength / 2, p + hi - kPeakReach);
}

// The maximum of P[k] * P[2k] * ... * P[5k], every factor but the first lifted by the floor.
int32_t CPTAnalysis::HarmonicProductBin() noexcept
{
    const int32_t half = fftLength / 2;
    const float* p = peaks.data();
    float* q = product.data();
    std::copy_n(p, half, q);
    for (int32_t h = 2; h <= kProductHarmonics; ++h) {
        const auto divisor = float(h);
        const int32_t within = half / h;
        for (int32_t k = 0; k < within; ++k)
            q[k] *= (p[h * k] + kProductFloor) / divisor;
        for (int32_t k = within; k < half; ++k)
            q[k] *= kProductFloor / divisor;
    }
    return LargestPositive(q, half);
}

// The maximum of the mean weighted harmonic, less a share of what stands where a fundamental an octave or a twelfth
// lower would have its harmonics.
int32_t CPTAnalysis::HarmonicSumBin() noexcept
{
    const float* s = spectrum.data();
    float* t = peaks.data();
    const int32_t end = int32_t(int64_t(fftLength) * kHighestHz / analysisRate);
    int32_t harmonics = kSumHarmonics,
            within = kSumHarmonics;   // of the transform; of its lower half, which alone holds any
    std::fill_n(t, end, 0.0f);
    for (int32_t k = sumLowBin; k < end; ++k) {
        while (harmonics * k >= fftLength)
            --harmonics;
        while (within * k >= fftLength / 2)
            --within;
        double sum = 0.0;
        for (int32_t h = 1; h <= within; ++h)
            sum += s[h * k] * kHarmonicWeight[size_t(h)];
        sum -= 0.25 * s[k / 2];
        sum -= 0.1 * s[int32_t(k * 0.6666)];
        sum -= 0.1 * s[int32_t(k * 0.3333)];
        t[k] = float(sum / harmonics);
    }
    return LargestPositive(t, end);
}

double CPTAnalysis::BinFrequency(double bin) const noexcept
{
    return bin * analysisRate / fftLength;
}

int32_t CPTAnalysis::NearestBin(float frequency) const noexcept
{
    return int32_t(std::floor(double(frequency) * fftLength * kSecondsPerSample + 0.5));
}

// The product tends to pick an octave or a twelfth too high. Where it rises above the recent pitch, the sum's candidate
// takes over if it stands at a half or a third of it, and keeps that right for one frame more.
int32_t CPTAnalysis::ResolveOctave(int32_t productBin, int32_t sumBin) noexcept
{
    const bool risen = 0.75 * (double(pitchHistory[0]) + previous) < BinFrequency(productBin);
    if (!risen && !octaveHold)
        return productBin;
    const double tolerance = kOctaveTolerance * productBin;
    octaveHold = sumBin > octaveLowBin &&
                 (std::abs(productBin - 2 * sumBin) <= tolerance || std::abs(productBin - 3 * sumBin) <= tolerance);
    return octaveHold ? sumBin : productBin;
}

// A rise beyond 1.8 stays at the previous pitch if a peak that is strong enough still stands there.
int32_t CPTAnalysis::ResolveJump(int32_t bin) const noexcept
{
    if (!(BinFrequency(bin) > kJumpFactor * previous && previous > kJumpFloor))
        return bin;
    const float* s = spectrum.data();
    const int32_t expected = NearestBin(previous);
    const int32_t reach = std::clamp(expected >> 1, 2, 16);
    for (int32_t j = -reach; j < reach; ++j) {
        const int32_t i = std::max(expected + j, 2);
        if (s[i - 1] < s[i] && s[i + 1] < s[i] && s[bin] * kJumpPeak < s[i])
            return i;
    }
    return bin;
}

// The mean magnitude on the harmonics below N/4 over the mean of all bins from the fundamental up.
double CPTAnalysis::HarmonicRatio(int32_t bin, float level) const noexcept
{
    if (bin <= 0)
        return kTinyRatio;
    if (double(level) * level <= kSilentPower)
        return 1.0;
    const float* s = spectrum.data();
    const int32_t half = fftLength / 2;
    double all = 0.0, harmonic = 0.0;
    for (int32_t k = bin; k < half; ++k)
        all += s[k];
    int32_t count = 0;
    for (int32_t k = bin; k < fftLength / 4; k += bin, ++count)
        harmonic += s[k];
    const double ratio = harmonic / (all / (half - bin) * std::max(count, 1));
    return std::max(ratio, kTinyRatio);   // no harmonic below N/4 gives 0, which has no logarithm
}

// What stands below bin 0 reads as 0.
float CPTAnalysis::RefinedFrequency(int32_t bin) const noexcept
{
    const float* s = spectrum.data();
    const float below = bin > 0 ? s[bin - 1] : 0.0f;
    return float(BinFrequency(bin - 1 + ParabolaPeak(below, s[bin], s[bin + 1])));
}

void CPTAnalysis::Decide(int32_t productBin, int32_t sumBin, PitchRecord* record) noexcept
{
    const float last = record->frequency;
    const int32_t bin = ResolveJump(ResolveOctave(productBin, sumBin));
    const double frequency = BinFrequency(bin);
    const double harmonicity = kDbPerNeper * std::log(HarmonicRatio(bin, record->level));
    const bool reliable =
        harmonicity >= harmonicityThreshold || (harmonicity >= kHarmonicityNeededLow && frequency < kLowVoice);
    if (reliable) {
        record->frequency = RefinedFrequency(bin);
        std::shift_right(pitchHistory.begin(), pitchHistory.end(), 1);
        pitchHistory[0] = lastVoiced;
        lastVoiced = last;
    } else {
        const bool drifted = std::fabs(last - frequency) > kUnreliableDrift * last;
        record->frequency = RefinedFrequency(drifted ? NearestBin(pitchHistory[kFallBackEntry]) : bin);
    }
    previous = last;
    record->harmonicity = reliable ? float(harmonicity) : 0.0f;
    record->frequencyChange = (previous - record->frequency) / (1.0f + record->frequency + previous);
}
