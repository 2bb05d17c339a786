#include "engine/vocoder.h"

#include "dsp/kernels.h"
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
                               &peakAngle, &peakCos, &peakSin, &binAdvance})
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
    for (VtnfBuffer* buffer : {&phase, &prevPhase, &synthPhase, &deviation, &magNow, &magPrev, &magPrev2, &rotation})
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
    Kernels().WindowZeroPhase(spectrum.get(), channel.analysisBuf.get(), window.Weights(), frame);
    fft->Forward(spectrum.get(), spectrum.get());
}

// The levels of DC and Nyquist belong to the channel at hand, all else to channel 0.
void VocoderState::MeasurePhases(bool first) noexcept
{
    const int32_t half = frame / 2;
    const float toAmplitude = 2.0f / float(frame), dc = spectrum[0], nyquist = spectrum[1];
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
        vtnfMulScalar(magNow.get(), toAmplitude, half);
    }
    magNow[0] = std::fabs(dc) * toAmplitude * 0.5f;
    magNow[size_t(half)] = std::fabs(nyquist) * toAmplitude * 0.5f;
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
        peakAngle[i] = rotation[k] = target - phase[k];
    }
}

// What a region is multiplied by stands at its peak, and makes up for the gain of the transforms there and back. Every bin
// of channel 0 goes on from the angle of its peak.
void VocoderState::SpreadTurns() noexcept
{
    const auto peaks = regions.Peaks();
    Kernels().SinCos(peakSin.get(), peakCos.get(), peakAngle.get(), int32_t(peaks.size()));
    const float scale = 1.0f / float(frame);
    for (size_t i = 0; i < peaks.size(); ++i) {
        const auto k = size_t(peaks[i]);
        turns[2 * k] = peakCos[i] * scale;
        turns[2 * k + 1] = peakSin[i] * scale;
    }
    if (numBins > 1)
        Kernels().GatherAdd(synthPhase.get() + 1, rotation.get(), regions.Targets() + 1, phase.get() + 1, numBins - 1);
    std::swap(prevPhase, phase);
}

// DC and Nyquist have no angle to turn and come out with their magnitude.
void VocoderState::TurnBins() noexcept
{
    const int32_t treated = std::max(numBins, 1);
    float* x = spectrum.get();
    Kernels().RotateBins(x, x, regions.Targets(), turns.get(), 1, treated);
    std::fill(x + 2 * treated, x + frame, 0.0f);
    x[0] = magNow[0];
    x[1] = magNow[size_t(frame) / 2];
}

void VocoderState::Synthesise(Channel& channel, float* out) noexcept
{
    float* sum = channel.olaBuf.get();
    fft->Inverse(spectrum.get(), spectrum.get());
    Kernels().OverlapAddZeroPhase(sum, spectrum.get(), window.Weights(), frame);
    std::copy_n(sum, hopS, out);
    vtnfMul(out, window.Norm(), hopS);
    std::copy(sum + hopS, sum + frame, sum);
    std::fill_n(sum + frame - hopS, hopS, 0.0f);
}
