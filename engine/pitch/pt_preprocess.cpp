#include "engine/pitch/pt_preprocess.h"

#include "dsp/status.h"

#include <new>

namespace {

constexpr int32_t kQuality = 3;
constexpr int32_t kSpareFrames = 2;            // over the input's count: rounding may let one more frame through
constexpr float kLowPassFrequency = 4000.0f;   // Hz, the highest candidate of the harmonic sum
constexpr float kHighPassFrequency = 30.0f;    // Hz
constexpr double kAntiDenormal = 1e-15;        // -300 dB

EqPtr MakeFilter(int32_t type, float frequency)
{
    CEQIf* filter = nullptr;
    if (CreateEQ(&filter, kPitchAnalysisRate, 1, type) != kSuccess)
        throw std::bad_alloc();
    filter->SetParameters(frequency, 0.0f, 1.0f);
    return EqPtr(filter);
}

ResamplerPtr MakeResampler(int32_t maxFrames)
{
    CResampleBase* resampler = nullptr;
    if (CreateResampler(&resampler, kQuality, maxFrames, 1, kResampleFloat, 1) != kSuccess)
        throw std::bad_alloc();
    return ResamplerPtr(resampler);
}

// The mean of the channels, in place.
void MixDown(float* samples, int32_t frames, int32_t channels)
{
    if (channels == 1)
        return;
    for (int32_t i = 0; i < frames; ++i) {
        const float* frame = samples + ptrdiff_t(i) * channels;
        double sum = frame[0];
        for (int32_t c = 1; c < channels; ++c)
            sum += frame[c] + kAntiDenormal;
        samples[i] = float(sum / channels);
    }
}

}   // namespace

CPTPreProcess::CPTPreProcess(int32_t sampleRate, int32_t channelCount, int32_t maxFrames)
    : resampler(MakeResampler(maxFrames)), lowPass(MakeFilter(kEqLowPass, kLowPassFrequency)),
      highPass(MakeFilter(kEqHighPass, kHighPassFrequency)), channels(channelCount), inputRate(sampleRate),
      outputRate(kPitchAnalysisRate), output(size_t(maxFrames + kSpareFrames))
{
}

int32_t CPTPreProcess::Process(float* samples, int32_t frames, const float** reduced) noexcept
{
    MixDown(samples, frames, channels);
    float* out = output.data();
    const int32_t n = resampler->Process(samples, out, float(inputRate), float(outputRate), 1, frames);
    lowPass->ProcessInterleaved(out, out, n);
    highPass->ProcessInterleaved(out, out, n);
    *reduced = out;
    return n;
}

int32_t CPTPreProcess::InputFramesFor(int32_t outFrames) const noexcept
{
    return resampler->InputFramesFor(outFrames, float(inputRate), float(outputRate));
}

void CPTPreProcess::Reset() noexcept
{
    resampler->Reset();
    lowPass->Reset();
    highPass->Reset();
}
