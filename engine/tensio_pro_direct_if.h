// The Pro core as seen by a caller that takes its passes as they come: input and output sizes vary from pass to pass.
//   first pass    ProcessFirstBlock with GetFirstFramesNeeded frames
//   later passes  PreProcessData with GetFramesNeeded frames, ProcessStep GetNumOfProcessCalls times, GetProcessedData
// The first GetPreFramesOut frames of output belong to time before 0. Counts are frames; kNoResult (-1) where nothing
// can be given.
#pragma once

#include <cstdint>

class CTensioProDirectIf {
public:
    virtual ~CTensioProDirectIf() = default;
    // The first pass after creation or Reset. Gives the frames written.
    virtual int32_t ProcessFirstBlock(const float* const in[], int32_t frames, float* const out[]) noexcept = 0;
    // Output frames to drop at the start.
    virtual int32_t GetPreFramesOut() noexcept = 0;
    // Streams end by FlushBuffer: this does nothing and gives 0.
    virtual int32_t ProcessLastBlock(const float* const in[], int32_t frames, float* const out[],
                                     int32_t tailFrames) noexcept = 0;
    // The next third of a pass: marks; low band; high band, sum and pitch. kSuccess or kNoResult.
    virtual int32_t ProcessStep() noexcept = 0;
    // Begins a pass. Another count than GetFramesNeeded asked for gives kInvalidArgument and changes nothing. A null in
    // with 0 frames stands for silence.
    virtual int32_t PreProcessData(const float* const in[], int32_t frames) noexcept = 0;
    // Ends a pass: writes its output, gives the frames written.
    virtual int32_t GetProcessedData(float* const out[]) noexcept = 0;
    virtual int32_t GetNumOfProcessCalls() noexcept = 0;
    // Output frames of one hop of the low band at the pitch in force, rounded up.
    virtual int32_t GetMaxFramesOut() noexcept = 0;
    virtual int32_t GetFirstFramesNeeded() noexcept = 0;
    virtual int32_t GetFramesNeeded() noexcept = 0;
    // GetFramesNeeded at these factors. Meant for start-up: it resets the stream.
    virtual int32_t GetFramesNeededAt(float stretch, float pitch) noexcept = 0;
    // As in CTensioProIf.
    virtual int32_t SetStretchKeepPitch(float* stretch, float pitch, bool sync) noexcept = 0;
    virtual int32_t SetStretchPitch(float stretch, float* pitch, bool sync) noexcept = 0;
    virtual int32_t Reset() noexcept = 0;
    virtual double GetInputPosition() noexcept = 0;
    // One pass on silence: frames written, possibly 0; kNoResult when the tail has run out.
    virtual int32_t FlushBuffer(float* const out[]) noexcept = 0;
    virtual int32_t SetStereoInputMode(int32_t mode) noexcept = 0;
    virtual int32_t SetEnvelopeFactor(float factor) noexcept = 0;
    virtual int32_t SetCutOffPitch(int32_t pitch) noexcept = 0;
};
