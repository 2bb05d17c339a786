// The Efficient modes: the time-scale core alone, with its own resampler for the pitch.
#pragma once

#include "engine/tensio_mc.h"
#include "engine/tensio_pro_if.h"

#include <memory>

class CtensioClassic : public CTensioProIf {
public:
    // coreMode: see CTensioMC. Throws std::bad_alloc.
    CtensioClassic(int32_t blockFrames, int32_t channels, float sampleRate, int32_t coreMode)
        : core(std::make_unique<CTensioMC>(blockFrames, channels, sampleRate, coreMode))
    {
    }

    int32_t ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept override
    {
        return core->ProcessData(in, frames, out);
    }
    int32_t GetFramesNeeded() noexcept override { return core->GetFramesNeeded(); }
    int32_t SetOutputBlockSize(int32_t frames) noexcept override { return core->SetOutputBlockSize(frames); }
    int32_t GetFramesNeededAt(float stretch, float pitch) noexcept override
    {
        return core->GetFramesNeededAt(stretch, pitch);
    }
    int32_t SetStretchKeepPitch(float* stretch, float pitch, bool sync) noexcept override
    {
        return core->SetStretchKeepPitch(stretch, pitch, sync);
    }
    int32_t SetStretchPitch(float stretch, float* pitch, bool sync) noexcept override
    {
        return core->SetStretchPitch(stretch, pitch, sync);
    }
    int32_t Reset() noexcept override { return core->Reset(); }
    int32_t FlushBuffer(float* const out[]) noexcept override { return core->FlushBuffer(out); }
    int32_t GetFramesBuffered() noexcept override { return core->GetFramesBuffered(); }
    int32_t SetStereoInputMode(int32_t mode) noexcept override { return core->SetStereoInputMode(mode); }
    int32_t SetEnvelopeFactor(float) noexcept override { return kSuccess; }
    int32_t SetCutOffPitch(int32_t) noexcept override { return kSuccess; }
    double GetInputPosition() noexcept override { return core->GetInputPosition(); }

private:
    std::unique_ptr<CTensioMCIf> core;
};
