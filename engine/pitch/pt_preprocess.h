// The pitch tracker's input stage: interleaved audio of any rate from 11025 Hz to mono at 11025 Hz, low-passed at 4000 Hz.
// One object serves one thread; after creation nothing allocates.
#pragma once

#include "dsp/resample.h"
#include "engine/pitch/eq.h"

#include <cstdint>
#include <vector>

constexpr int32_t kPitchAnalysisRate = 11025;   // Hz

class CPTPreProcess {
public:
    // Throws std::bad_alloc.
    CPTPreProcess(int32_t sampleRate, int32_t channelCount, int32_t maxFrames);
    virtual ~CPTPreProcess() = default;
    CPTPreProcess(const CPTPreProcess&) = delete;
    CPTPreProcess& operator=(const CPTPreProcess&) = delete;

    // frames of interleaved samples, at most maxFrames, which are overwritten. Gives the count of reduced frames, which
    // stand in *reduced until the next call.
    int32_t Process(float* samples, int32_t frames, const float** reduced) noexcept;
    // Input frames that the next Process needs in order to give outFrames.
    int32_t InputFramesFor(int32_t outFrames) const noexcept;
    void Reset() noexcept;

private:
    ResamplerPtr resampler;
    EqPtr lowPass;
    EqPtr highPass;
    int32_t channels;
    int32_t inputRate;           // Hz
    int32_t outputRate;          // Hz
    std::vector<float> output;   // what a full call can give
};
