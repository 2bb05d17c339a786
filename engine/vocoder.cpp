#include "engine/vocoder.h"

#include "dsp/vtnf.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace {

constexpr float kPi = 3.1415927f;
constexpr float kTwoPi = 6.2831855f;

// Spectra are scaled by 2 / frame on the way in, which makes a magnitude an amplitude; the inverse transform multiplies
// by the frame, so this is left for the way out. It rides on the turns.
constexpr float kOutScale = 0.5f;

// Wraps an angle; results lie above -pi and reach pi itself.
float PrincipalArgument(float x)
{
    const float shifted = x + kPi;
    return shifted - kTwoPi * std::ceil(shifted / kTwoPi) + kPi;
}

}   // namespace

VocoderState::VocoderState(int32_t frameSize, int32_t synthesisHop, int32_t analysisHop, float stretch,
                           int32_t channelCount)
    : frame(frameSize), hopA(analysisHop), hopS(synthesisHop), numBins(frameSize / 2), stretchActive(stretch),
      stretchNext(stretch), window(frameSize, synthesisHop, analysisHop), regions(frameSize)
{
    vtnfInit();
    fft = MakeFft(frame);
    for (int32_t c = 0; c < channelCount; ++c)
        channels.push_back({MakeVtnfBuffer(frame), MakeVtnfBuffer(frame)});
    for (VtnfBuffer* buffer : {&spectrum, &turns})
        *buffer = MakeVtnfBuffer(frame);
    for (VtnfBuffer* buffer : {&phase, &prevPhase, &synthPhase, &deviation, &magNow, &magPrev, &magPrev2, &rotation,
                               &rotCos, &rotSin, &binAdvance})
        *buffer = MakeVtnfBuffer(frame / 2 + 1);
    SetBinAdvance();
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
    for (VtnfBuffer* buffer : {&spectrum, &turns})
        vtnfZero(buffer->get(), frame);
    for (VtnfBuffer* buffer :
         {&phase, &prevPhase, &synthPhase, &deviation, &magNow, &magPrev, &magPrev2, &rotation, &rotCos, &rotSin})
        vtnfZero(buffer->get(), frame / 2 + 1);
}

void VocoderState::SetBinAdvance() noexcept
{
    const double perBin = hopA * 2.0 * std::numbers::pi / frame;
    for (int32_t k = 0; k <= frame / 2; ++k)
        binAdvance[size_t(k)] = float(k * perBin);
}

void VocoderState::VocoderSetHops(int32_t synthesisHop, int32_t analysisHop, float stretch) noexcept
{
    if (hopS == synthesisHop && hopA == analysisHop && framesDone > 0)
        return;
    const bool newAdvance = hopA != analysisHop;
    if (framesDone > 0)
        for (Channel& channel : channels)
            vtnfMul(channel.olaBuf.get(), window.Norm(), frame);
    hopA = analysisHop;
    hopS = synthesisHop;
    stretchNext = stretch;
    window.SetHops(hopS, hopA);
    if (newAdvance)
        SetBinAdvance();
    if (framesDone > 0)
        for (Channel& channel : channels)
            vtnfDiv(channel.olaBuf.get(), window.Norm(), frame);
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
            regions.FindPeaks(deviation.get(), magNow.get(), numBins, hopA);
            ++framesDone;
        }
        break;
    case 3:
        if (c == 0) {
            PropagatePhases();
            SpreadTurns();
        }
        TurnBins();
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
    const float scale = 1.0f / float(half);   // a power of two: it moves no rounding
    const float *samples = channel.analysisBuf.get(), *weights = window.Weights();
    float* x = spectrum.get();
    for (int32_t i = 0; i < half; ++i)
        x[i] = samples[half + i] * weights[half + i] * scale;
    for (int32_t i = 0; i < half; ++i)
        x[half + i] = samples[i] * weights[i] * scale;
    fft->Forward(x, x);
}

// The levels of DC and Nyquist belong to the channel at hand, all else to channel 0.
void VocoderState::MeasurePhases(bool first) noexcept
{
    const int32_t half = frame / 2;
    const float dc = spectrum[0], nyquist = spectrum[1];
    if (first) {
        float *now = phase.get(), *advance = deviation.get();
        const float *before = prevPhase.get(), *expected = binAdvance.get();
        vtnfPhase(now, spectrum.get(), half);
        for (int32_t k = 0; k < half; ++k)
            advance[k] = now[k] - before[k] - expected[k];
        vtnfPrincipalArgument(advance, advance, half);
        vtnfAdd(advance, expected, half);
        now[0] = dc >= 0.0f ? 0.0f : kPi;
        now[half] = nyquist >= 0.0f ? 0.0f : kPi;
        std::swap(magPrev2, magPrev);
        std::swap(magPrev, magNow);
        vtnfMagnitude(magNow.get(), spectrum.get(), half);
    }
    magNow[0] = std::fabs(dc) * 0.5f;
    magNow[size_t(half)] = std::fabs(nyquist) * 0.5f;
}

// A stationary peak goes on by what it advanced, stretched; a transient one restarts from the phase that was analysed, and
// so does one whose past holds what is no number.
void VocoderState::PropagatePhases() noexcept
{
    const float stretch = stretchActive;
    const bool lastFrame = stretch > 1.0f && hopA == frame / 4;   // frames close enough to compare neighbours
    regions.ClassifyRegions(magNow.get(), lastFrame ? magPrev.get() : magPrev2.get());
    stretchActive = stretchNext;

    const auto peaks = regions.Peaks();
    for (size_t i = 0; i < peaks.size(); ++i) {
        const auto k = size_t(peaks[i]);
        float advance = deviation[k] * stretch;
        if (regions.IsTransient(i))
            advance = PrincipalArgument(phase[k] - synthPhase[k] - binAdvance[k]) + binAdvance[k];
        float target = PrincipalArgument(advance + synthPhase[k]);
        if (!std::isfinite(target))
            target = phase[k];
        rotation[k] = target - phase[k];
        rotCos[k] = std::cos(rotation[k]);
        rotSin[k] = std::sin(rotation[k]);
    }
}

// Every bin takes the angle of its region's peak.
void VocoderState::SpreadTurns() noexcept
{
    const int32_t* target = regions.Targets();
    const float *angle = rotation.get(), *cosine = rotCos.get(), *sine = rotSin.get(), *now = phase.get();
    float *turn = turns.get(), *given = synthPhase.get();
    for (int32_t k = 1; k < numBins; ++k) {
        const int32_t peak = target[k];
        turn[2 * k] = cosine[peak] * kOutScale;
        turn[2 * k + 1] = sine[peak] * kOutScale;
        given[k] = angle[peak] + now[k];
    }
    std::swap(prevPhase, phase);
}

// DC and Nyquist have no angle to turn and come out with their magnitude.
void VocoderState::TurnBins() noexcept
{
    const int32_t treated = std::max(numBins, 1), half = frame / 2;
    float* x = spectrum.get();
    vtnfMulPacked(x, turns.get(), treated);
    std::fill(x + 2 * treated, x + frame, 0.0f);
    x[0] = magNow[0] * 2.0f * kOutScale;
    x[1] = magNow[size_t(half)] * 2.0f * kOutScale;
}

void VocoderState::Synthesise(Channel& channel, float* out) noexcept
{
    const int32_t half = frame / 2;
    float *x = spectrum.get(), *sum = channel.olaBuf.get();
    fft->Inverse(x, x);
    vtnfAddProduct(sum, x + half, window.Weights(), half);
    vtnfAddProduct(sum + half, x, window.Weights() + half, half);
    std::copy_n(sum, hopS, out);
    vtnfMul(out, window.Norm(), hopS);
    std::copy(sum + hopS, sum + frame, sum);
    std::fill_n(sum + frame - hopS, hopS, 0.0f);
}
