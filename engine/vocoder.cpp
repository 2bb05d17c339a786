#include "engine/vocoder.h"

#include "dsp/vtnf.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace {

constexpr float kPi = 3.1415927f;
constexpr float kTwoPi = 6.2831855f;

// Wraps an angle; results lie above -pi and reach pi itself.
float PrincipalArgument(float x)
{
    const float shifted = x + kPi;
    return shifted - kTwoPi * std::ceil(shifted / kTwoPi) + kPi;
}

// The shorter the hop, the steeper the window: 2 at a quarter of the frame, 3 from an eighth down.
int32_t WindowPower(int32_t frame, int32_t hop)
{
    return std::min(3, int32_t(std::floor(std::log2(double(frame) / hop + 1.0))));
}

}   // namespace

VocoderState::VocoderState(int32_t frameSize, int32_t synthesisHop, int32_t analysisHop, float stretch,
                           int32_t channelCount)
    : frame(frameSize), hopA(analysisHop), hopS(synthesisHop), numBins(frameSize / 2), stretchActive(stretch),
      stretchNext(stretch), regions(frameSize)
{
    vtnfInit();
    fft = MakeFft(frame);
    for (int32_t c = 0; c < channelCount; ++c)
        channels.push_back({MakeVtnfBuffer(frame), MakeVtnfBuffer(frame)});
    for (VtnfBuffer* buffer : {&spectrum, &outSpectrum, &scratch, &window, &synthNorm})
        *buffer = MakeVtnfBuffer(frame);
    for (VtnfBuffer* buffer : {&phase, &prevPhase, &synthPhase, &deviation, &magNow, &magPrev, &magPrev2, &rotation,
                               &rotCos, &rotSin, &binAdvance})
        *buffer = MakeVtnfBuffer(frame / 2 + 1);
    BuildWindow();
    BuildNorm();
}

void VocoderState::VocoderReset() noexcept
{
    framesDone = 0;
    numBins = frame / 2;
    stretchActive = 1.0f;   // the first frame of a stream keeps its phases
    regions.Reset();
    for (Channel& channel : channels) {
        vtnfZero(channel.analysisBuf.get(), frame);
        vtnfZero(channel.olaBuf.get(), frame);
    }
    for (VtnfBuffer* buffer : {&spectrum, &outSpectrum, &scratch})
        vtnfZero(buffer->get(), frame);
    for (VtnfBuffer* buffer :
         {&phase, &prevPhase, &synthPhase, &deviation, &magNow, &magPrev, &magPrev2, &rotation, &rotCos, &rotSin})
        vtnfZero(buffer->get(), frame / 2 + 1);
}

void VocoderState::BuildWindow() noexcept
{
    const int32_t power = WindowPower(frame, hopA);
    for (int32_t i = 0; i < frame / 2; ++i) {
        const double w = 0.53836 - 0.46164 * std::cos(2.0 * std::numbers::pi * i / (frame - 1));
        window[size_t(i)] = window[size_t(frame - 1 - i)] = float(std::pow(w, power));
    }
    for (int32_t k = 0; k <= frame / 2; ++k)
        binAdvance[size_t(k)] = float(double(k) * hopA * 2.0 * std::numbers::pi / frame);
}

void VocoderState::BuildNorm() noexcept
{
    for (int32_t i = 0; i < frame; ++i) {
        double sum = 0.0;
        for (int32_t at = i; at <= frame; at += hopS) {
            const double w = window[size_t(at % frame)];
            sum += w * w;
        }
        synthNorm[size_t(i)] = sum == 0.0 ? 1.0f : float(1.0 / sum);
    }
}

void VocoderState::VocoderSetHops(int32_t synthesisHop, int32_t analysisHop, float stretch) noexcept
{
    if (hopS == synthesisHop && hopA == analysisHop && framesDone > 0)
        return;
    const bool newWindow = hopA != analysisHop;
    if (framesDone > 0)
        for (Channel& channel : channels)
            vtnfMul(channel.olaBuf.get(), synthNorm.get(), frame);
    hopA = analysisHop;
    hopS = synthesisHop;
    stretchNext = stretch;
    if (newWindow)
        BuildWindow();
    BuildNorm();
    if (framesDone > 0)
        for (Channel& channel : channels)
            vtnfDiv(channel.olaBuf.get(), synthNorm.get(), frame);
}

int32_t VocoderState::VocoderStep(const float* const in[], float* const out[], int32_t step) noexcept
{
    if (step < 0) {
        ShiftInput(channels[size_t(-1 - step)], in[-1 - step]);
        return hopS;
    }
    const int32_t c = step / kStages;
    Channel& channel = channels[size_t(c)];
    switch (step % kStages) {
    case 0:
        ShiftInput(channel, in[c]);
        Analyse(channel);
        break;
    case 1:
        MeasurePhases(c == 0);
        break;
    case 2:
        if (c == 0) {
            regions.Find(deviation.get(), magNow.get(), numBins, hopA);
            ++framesDone;
        }
        break;
    case 3:
        if (c == 0)
            PropagatePhases();
        RotateRegions(c == 0);
        break;
    default:
        Synthesise(channel, out[c]);
        break;
    }
    return hopS;
}

void VocoderState::ShiftInput(Channel& channel, const float* in) noexcept
{
    float* buffer = channel.analysisBuf.get();
    std::copy(buffer + hopA, buffer + frame, buffer);
    std::copy_n(in, hopA, buffer + frame - hopA);
}

// The frame's centre stands at sample 0, so that a phase is the phase at the centre.
void VocoderState::Analyse(const Channel& channel) noexcept
{
    const int32_t half = frame / 2;
    const float* samples = channel.analysisBuf.get();
    float* x = spectrum.get();
    for (int32_t i = 0; i < half; ++i) {
        x[i] = samples[half + i] * window[size_t(half + i)];
        x[half + i] = samples[i] * window[size_t(i)];
    }
    fft->Forward(x, x);
    vtnfMulScalar(x, 1.0f / float(half), frame);
}

void VocoderState::MeasurePhases(bool first) noexcept
{
    const int32_t half = frame / 2;
    const float dc = spectrum[0], nyquist = spectrum[1];
    if (first) {
        vtnfPhase(phase.get(), spectrum.get(), half);
        for (int32_t k = 0; k < half; ++k)
            deviation[size_t(k)] = phase[size_t(k)] - prevPhase[size_t(k)] - binAdvance[size_t(k)];
        vtnfPrincipalArgument(deviation.get(), deviation.get(), half);
        vtnfAdd(deviation.get(), binAdvance.get(), half);
        deviation[0] = 0.0f;   // a change of sign says nothing about where the energy of DC points
        phase[0] = dc >= 0.0f ? 0.0f : kPi;
        phase[size_t(half)] = nyquist >= 0.0f ? 0.0f : kPi;
        std::swap(magPrev2, magPrev);
        std::swap(magPrev, magNow);
        vtnfMagnitude(magNow.get(), spectrum.get(), half);
    }
    magNow[0] = std::fabs(dc) * 0.5f;
    magNow[size_t(half)] = std::fabs(nyquist) * 0.5f;
}

// A stationary peak goes on by what it advanced, stretched; a transient one restarts from the phase that was analysed.
void VocoderState::PropagatePhases() noexcept
{
    const float stretch = stretchActive;
    const bool lastFrame = stretch > 1.0f && hopA == frame / 4;   // frames close enough to compare neighbours
    regions.Classify(magNow.get(), lastFrame ? magPrev.get() : magPrev2.get());
    stretchActive = stretchNext;

    const auto peaks = regions.Peaks();
    for (size_t i = 0; i < peaks.size(); ++i) {
        const auto k = size_t(peaks[i]);
        float advance = deviation[k] * stretch;
        if (regions.IsTransient(i)) {
            advance = PrincipalArgument(phase[k] - synthPhase[k] - binAdvance[k]) + binAdvance[k];
            deviation[k] = advance;
        }
        rotation[k] = PrincipalArgument(advance + synthPhase[k]) - phase[k];
        rotCos[k] = std::cos(rotation[k]);
        rotSin[k] = std::sin(rotation[k]);
    }
}

void VocoderState::RotateRegions(bool first) noexcept
{
    vtnfZero(outSpectrum.get(), frame);
    const int32_t* target = regions.Targets();
    const float* x = spectrum.get();
    float* y = outSpectrum.get();
    for (int32_t k = 1; k < numBins; ++k) {
        const auto peak = size_t(target[k]);
        const float re = x[2 * k], im = x[2 * k + 1];
        y[2 * k] = re * rotCos[peak] - im * rotSin[peak];
        y[2 * k + 1] = im * rotCos[peak] + re * rotSin[peak];
    }
    y[0] = magNow[0] * 2.0f;   // DC and Nyquist have no angle to turn
    y[1] = magNow[size_t(frame) / 2] * 2.0f;
    if (!first)
        return;
    for (int32_t k = 1; k < numBins; ++k)
        synthPhase[size_t(k)] = rotation[size_t(target[k])] + phase[size_t(k)];
    std::swap(prevPhase, phase);
}

void VocoderState::Synthesise(Channel& channel, float* out) noexcept
{
    const int32_t half = frame / 2;
    fft->Inverse(scratch.get(), outSpectrum.get());
    vtnfMulScalar(scratch.get(), 0.5f, frame);
    float* sum = channel.olaBuf.get();
    for (int32_t i = 0; i < half; ++i) {
        sum[i] += scratch[size_t(half + i)] * window[size_t(i)];
        sum[half + i] += scratch[size_t(i)] * window[size_t(half + i)];
    }
    vtnfMul(sum, synthNorm.get(), hopS);
    std::copy_n(sum, hopS, out);
    std::copy(sum + hopS, sum + frame, sum);
    std::fill_n(sum + frame - hopS, hopS, 0.0f);
}
