#include "engine/fft_split.h"

#include "dsp/status.h"
#include "engine/tensio_pro_if.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace {

constexpr int32_t kMinFrame = 128;
constexpr int32_t kMinOrder = 16;
constexpr int32_t kMaxFadeElements = 16;   // the high band fades in over half as many bins
constexpr float kSilence = 1e-12f;         // -240 dB: what the transform leaves of silence
constexpr double kTiny = 1e-24;            // keeps the centroid of silence a number

// How far a dull frame pulls the crossover down: 1 would follow its centroid, 0 not move at all. The single-precision
// value of 0.3.
constexpr double kCentroidExponent = 0.30000001192092896;

}   // namespace

CFFTSplit::CFFTSplit(int32_t rate, int32_t channelCount, float hz, int32_t n, int32_t room)
    : sampleRate(float(rate)), inFill(n / 2), bufSize(room ? room : 32 * n), frame(n), hop(n / 2),
      channels(size_t(channelCount)), work(MakeVtnfBuffer(n)), magnitude(MakeVtnfBuffer(2 * n)),
      envelope(MakeVtnfBuffer(n)), window(MakeVtnfBuffer(n)), fft(MakeFft(n))
{
    for (Channel& channel : channels) {
        channel.in = MakeVtnfBuffer(bufSize);
        channel.low = MakeVtnfBuffer(n);
        channel.high = MakeVtnfBuffer(n);
    }
    for (int32_t i = 0; i < n; ++i)
        window[size_t(i)] = float(std::sin(std::numbers::pi * i / n) * std::sqrt(1.0 / n));
    CSpectralEnvelope* made = nullptr;
    if (CreateSpectralEnvelope(&made, n) != kSuccess)
        throw std::bad_alloc();
    estimator.reset(made);
    SetCrossoverHz(hz);
    SetEnvelopeOrder(128);
}

CFFTSplit::~CFFTSplit() = default;

void CFFTSplit::SetCrossoverHz(float hz) noexcept
{
    crossoverBin = int32_t(std::clamp(std::floor(double(frame) / sampleRate * hz), 0.0, double(hop)));
}

void CFFTSplit::SetEnvelopeOrder(int32_t order) noexcept
{
    order = std::clamp(order, kMinOrder, frame / 4);
    estimator->SetOrder(order);
    protectedBins = frame / order;
}

void CFFTSplit::Reset() noexcept
{
    envelopeFactor = 1.0f;
    inFill = hop;
    for (Channel& channel : channels) {
        vtnfZero(channel.in.get(), bufSize);
        vtnfZero(channel.low.get(), frame);
        vtnfZero(channel.high.get(), frame);
    }
    vtnfZero(work.get(), frame);
}

int32_t CFFTSplit::Process(const float* const in[], float* const low[], float* const high[], int32_t frames,
                           float dcOffset) noexcept
{
    if (!in)
        frames = hop;
    if (frames > GetRoom())
        return 0;
    Append(in, frames, dcOffset);
    int32_t done = 0;
    for (; inFill - done >= frame; done += hop)
        for (size_t c = 0; c < channels.size(); ++c) {
            SplitFrame(channels[c].in.get() + done, channels[c]);
            Emit(channels[c], low[c] + done, high[c] + done);
        }
    inFill -= done;
    for (Channel& channel : channels)
        std::copy_n(channel.in.get() + done, inFill, channel.in.get());
    return done;
}

void CFFTSplit::Append(const float* const in[], int32_t frames, float dcOffset) noexcept
{
    for (size_t c = 0; c < channels.size(); ++c) {
        float* const to = channels[c].in.get() + inFill;
        if (in)
            std::transform(in[c], in[c] + frames, to, [dcOffset](float v) { return v + dcOffset; });
        else
            vtnfZero(to, frames);
    }
    inFill += frames;
}

void CFFTSplit::SplitFrame(const float* in, Channel& channel) noexcept
{
    std::copy_n(in, frame, work.get());
    vtnfMul(work.get(), window.get(), frame);
    fft->Forward(work.get(), work.get());
    const int32_t crossover = FindCrossover();
    if (envelopeFactor == 1.0f)
        std::copy_n(in, hop, channel.low.get());
    else
        ShiftFormants(channel.low.get());
    ZeroBelow(crossover);
    fft->Inverse(work.get(), work.get());
    std::replace_if(
        work.get(), work.get() + frame, [](float v) { return std::fabs(v) < kSilence; }, 0.0f);
    vtnfMul(work.get(), window.get(), frame);
    vtnfAdd(channel.high.get(), work.get(), frame);
    vtnfSub(channel.low.get(), channel.high.get(), hop);
}

void CFFTSplit::Emit(Channel& channel, float* low, float* high) const noexcept
{
    for (auto [band, out] : {std::pair(channel.low.get(), low), std::pair(channel.high.get(), high)}) {
        std::copy_n(band, hop, out);
        std::copy_n(band + hop, hop, band);
        std::fill_n(band + hop, hop, 0.0f);
    }
}

// The centroid is in half bins, since the index counts two elements to a bin, DC and Nyquist sharing the first pair.
int32_t CFFTSplit::FindCrossover() const noexcept
{
    double moment = kTiny;
    double power = kTiny;
    for (int32_t i = 0; i < frame; i += 2) {
        const double re = work[size_t(i)], im = work[size_t(i) + 1];
        const double p = re * re + im * im;
        moment += i * p;
        power += p;
    }
    if (crossoverBin == 0)
        return 0;
    const double pulled = crossoverBin * std::pow(moment / power / crossoverBin, kCentroidExponent);
    return pulled < crossoverBin ? int32_t(std::ceil(pulled)) : crossoverBin;   // also when the input is not a number
}

// The high band fades in linearly over the bins below the crossover and is whole from there. A fade that would begin below
// DC weakens DC alone for what it lacks.
void CFFTSplit::ZeroBelow(int32_t crossover) noexcept
{
    const int32_t fade = std::min(kMaxFadeElements, frame / 64);
    const int32_t first = 2 * crossover - fade;
    std::fill_n(work.get(), std::max(first, 0), 0.0f);
    for (int32_t i = 0; i < fade; i += 2)
        for (const int32_t at : {first + i, first + i + 1})
            work[size_t(std::max(at, 0))] *= float(i) / float(fade);
}

void CFFTSplit::ShiftFormants(float* low) noexcept
{
    for (int32_t k = 0; k < hop; ++k) {   // the first pair, DC and Nyquist, counts as one bin
        const double re = work[size_t(2 * k)], im = work[size_t(2 * k) + 1];
        magnitude[size_t(k)] = float(std::sqrt(re * re + im * im));
    }
    estimator->Estimate(magnitude.get(), envelope.get());
    vtnfDiv(work.get(), envelope.get(), frame);
    WarpEnvelope();
    float* const shifted = magnitude.get();
    std::copy_n(work.get(), frame, shifted);   // the transform destroys its source, and work goes on to the high band
    fft->Inverse(shifted, shifted);
    vtnfMul(shifted, window.get(), frame);
    vtnfAdd(low, shifted, frame);
}

// Gives the flattened spectrum in work an envelope again: each bin that of the bin at factor times its frequency. What
// would come from above the spectrum is silent.
void CFFTSplit::WarpEnvelope() noexcept
{
    vtnfMul(work.get(), envelope.get(), 2 * protectedBins);
    for (int32_t k = protectedBins; k < hop; ++k) {
        const float source = std::floor(float(k) * envelopeFactor + 0.5f);
        const float weight = source < float(hop) ? envelope[size_t(2) * size_t(source)] : 0.0f;
        work[size_t(2 * k)] *= weight;
        work[size_t(2 * k) + 1] *= weight;
    }
}

int32_t CreateFFTSplit(CFFTSplit** ppSplit, int32_t sampleRate, int32_t channels, float crossoverHz, int32_t frame,
                       int32_t bufSize)
{
    *ppSplit = nullptr;
    if (sampleRate < int32_t(kMinSampleRate))
        return kInvalidSampleRate;
    if (channels < 1 || channels > kMaxEngineChannels)
        return kInvalidChannelCount;
    if (frame < kMinFrame || !std::has_single_bit(uint32_t(frame)) || (bufSize != 0 && bufSize < 2 * frame))
        return kInvalidArgument;
    vtnfInit();
    try {
        *ppSplit = new CFFTSplit(sampleRate, channels, crossoverHz, frame, bufSize);
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return kSuccess;
}

int32_t DestroyFFTSplit(CFFTSplit** ppSplit)
{
    if (!*ppSplit)
        return kInvalidArgument;
    delete *ppSplit;
    *ppSplit = nullptr;
    return kSuccess;
}
