// The Pro modes behind the engine's interface: buffers that turn the core's passes, whose sizes vary, into fixed output
// blocks, and drop the lead-in.
#pragma once

#include "engine/tensio_pro_direct.h"

#include <array>
#include <cstdint>
#include <vector>

class CtensioPro final : public CtensioProDirect {
public:
    // coreMode: 2 for the fine hop, 0 for the coarse one. May throw std::bad_alloc.
    CtensioPro(int32_t blockFrames, int32_t channels, float sampleRate, int32_t coreMode);

    // More frames than the buffers hold (GetFramesNeeded never asks for that many) give kInvalidArgument, and nothing
    // is taken or lost.
    int32_t ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept override;
    int32_t GetFramesNeeded() noexcept override;
    int32_t SetOutputBlockSize(int32_t frames) noexcept override;
    int32_t SetStretchKeepPitch(float* stretch, float pitch, bool sync) noexcept override;
    int32_t SetStretchPitch(float stretch, float* pitch, bool sync) noexcept override;
    int32_t Reset() noexcept override;
    int32_t FlushBuffer(float* const out[]) noexcept override;
    int32_t GetFramesBuffered() noexcept override { return outFill; }

private:
    using Pointers = std::array<float*, kMaxEngineChannels>;

    int32_t NextPassInput() noexcept;
    // Runs a pass on the frames of inBuf from at on.
    void RunNextPass(int32_t at, int32_t frames) noexcept;
    // Runs a pass on the oldest frames of inBuf, with silence behind them if need be.
    void RunPaddedPass() noexcept;
    void DropInput(int32_t frames) noexcept;
    void HandOut(int32_t frames, float* const out[]) noexcept;
    Pointers At(const std::vector<VtnfBuffer>& buffers, int32_t frame) const noexcept;

    int32_t outBlock;
    int32_t outFill = 0;              // frames ready, negative during the lead-in
    int32_t inFill = 0;               // frames waiting
    bool firstBlock = true;           // until the first pass
    std::vector<VtnfBuffer> outBuf;   // maxLeadIn frames in front of frame 0, so that outFill may be negative
    std::vector<VtnfBuffer> inBuf;    // bufSize frames
};
