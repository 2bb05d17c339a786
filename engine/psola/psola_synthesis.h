// Pitch-synchronous overlap-add (Moulines and Charpentier 1990). For every output grain the mark nearest to a running
// read position is looked up, and the signal around it is crossfaded into the output, one output period behind the grain
// before. The read position moves by that distance divided by the stretch, so marks are used more than once or skipped.
// The distance is a whole number of frames, and so the read position counts it: what rounding adds to a period would pile
// up otherwise, 2 % for a period of 24.5 frames, and the stream would leave its time.
//   plain grains      repeat the waveform of a period at another spacing: the spectral envelope stays
//   resampled grains  read it at the pitch as well: the envelope moves with the pitch
// All channels share the marks, so grains are cut at the same places in every channel.
// One object serves one thread. After creation only three places allocate, all rarely: the input store when a caller
// brings more than it has room for, and output store and scratch when a grain is longer than any before.
#pragma once

#include "engine/psola/grain_fade.h"
#include "engine/psola/grain_interpolator.h"
#include "engine/psola/sliding_store.h"

#include <cstdint>
#include <memory>
#include <vector>

class CPitchMarks;

namespace PSOLASynthForTensioPro {

class CPSOLASynthesisIf {
public:
    virtual ~CPSOLASynthesisIf() = default;
    // Reads on from the mark nearest to position, or from a negative position as it is. The input is emptied; the next
    // frame delivered is the one at the read position, or frame 0.
    virtual void ResetMarkPosition(int32_t position) noexcept = 0;
    virtual int32_t Reset() noexcept = 0;
    // The list has lost its -delta oldest marks.
    virtual void ShiftMarkIndex(int32_t delta) noexcept = 0;
    // Stores frames of in[channel] and writes one output block: kSuccess. kNoResult when no mark lies ahead (the input
    // stays stored), kOutOfMemory when a store could not grow; out is then silent, as it is before the first input. in
    // and out may be the same arrays.
    virtual int32_t ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept = 0;
    virtual int32_t SetOutputBlockSize(int32_t frames) noexcept = 0;   // gives GetFramesNeeded
    // Frames that the next block needs beyond those delivered; kNoResult when the marks at hand do not tell.
    virtual int32_t GetFramesNeeded() noexcept = 0;
    // Factors far outside 1/64 .. 64 (pitch) and 1/1024 .. 1024 (stretch) are held at these bounds.
    virtual void SetPitchFactor(float factor) noexcept = 0;
    virtual void SetNoInterpolation(int32_t off) noexcept = 0;   // nonzero: plain grains only
    virtual void SetStretchFactor(float factor) noexcept = 0;
    virtual void SetTransientGrains(int32_t on) noexcept = 0;   // nonzero: attacks are copied, not made of grains
    virtual void SetMaxMarkDistance(int32_t frames) noexcept = 0;
    virtual void SetTransientThreshold(float threshold) noexcept = 0;
    virtual int32_t GetOutputReady() noexcept = 0;
    // Frames, as the correlation found it, at the read position; -1 where the signal is not harmonic.
    virtual float GetCurrentPeriod() noexcept = 0;
    virtual float GetCurrentPower() noexcept = 0;
    virtual float GetCurrentFrequencyChange() noexcept = 0;
    virtual void SetFreeze(int32_t on) noexcept = 0;   // nonzero: the read position stands still
    virtual double GetReadPosition() noexcept = 0;
    // anchor: the input time, in frames, that belongs to the front of the output.
    virtual void SetReadPosition(double anchor) noexcept = 0;
    virtual void SetBlockOnly(int32_t frames) noexcept = 0;   // SetOutputBlockSize without its question
    virtual int32_t GetPreviousMarkIndex() noexcept = 0;
};

class CPSOLASynthesis : public CPSOLASynthesisIf {
public:
    // marks are shared with the analysis and owned by the caller. bufferFrames 0: 131072. Throws std::bad_alloc.
    CPSOLASynthesis(CPitchMarks* marks, int32_t blockFrames, int32_t channels, int32_t bufferFrames);

    void ResetMarkPosition(int32_t position) noexcept override;
    int32_t Reset() noexcept override;
    void ShiftMarkIndex(int32_t delta) noexcept override;
    int32_t ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept override;
    int32_t SetOutputBlockSize(int32_t frames) noexcept override;
    int32_t GetFramesNeeded() noexcept override;
    void SetPitchFactor(float factor) noexcept override;
    void SetNoInterpolation(int32_t off) noexcept override { interpolate = off == 0; }
    void SetStretchFactor(float factor) noexcept override;
    void SetTransientGrains(int32_t on) noexcept override { transientGrains = on != 0; }
    void SetMaxMarkDistance(int32_t frames) noexcept override { maxMarkDistance = frames; }
    void SetTransientThreshold(float threshold) noexcept override { transientThreshold = threshold; }
    int32_t GetOutputReady() noexcept override { return outReady; }
    float GetCurrentPeriod() noexcept override;
    float GetCurrentPower() noexcept override;
    float GetCurrentFrequencyChange() noexcept override;
    void SetFreeze(int32_t on) noexcept override;
    double GetReadPosition() noexcept override { return readPos; }
    void SetReadPosition(double anchor) noexcept override;
    void SetBlockOnly(int32_t frames) noexcept override { outBlock = frames; }
    int32_t GetPreviousMarkIndex() noexcept override { return prevIdx; }

private:
    int32_t Store(const float* const in[], int32_t frames) noexcept;
    int32_t FillOutput() noexcept;
    int32_t ChooseMark() const noexcept;
    int32_t SpacingOf(int32_t periodFrames) const noexcept;
    int32_t BridgeStart() noexcept;
    void ReleaseInput() noexcept;
    void HandOut(float* const out[]) noexcept;
    bool ReserveOutput(int64_t frames) noexcept { return outRing.Reserve(frames + 1, outEnd + 1); }
    // Grains, in psola_grains.cpp.
    int32_t AddGrain() noexcept;
    void AddPlainGrain(int32_t channel, const float* centre, int32_t rise, int32_t fall, int32_t spacing) noexcept;
    void AddResampledGrain(int32_t channel, const float* centre, int32_t rise, int32_t spacing) noexcept;
    int32_t AddTransient() noexcept;
    int32_t NextAttack() const noexcept;
    void CopyAttack(int32_t channel, int32_t lead, int32_t run, int32_t fall) noexcept;
    bool ReserveScratch(int64_t frames) noexcept;
    const float* Read(int32_t channel, int64_t first, int32_t count) noexcept;

    CPitchMarks* marks;
    int32_t channels;
    int32_t outBlock;
    SlidingStore inRing, outRing;
    std::vector<float> scratch;   // a stretch of input with silence where none was received
    GrainFade fade;
    GrainInterpolator interpolator;

    int32_t inFill = 0;                        // frames in inRing
    int32_t inTotal = 0;                       // frames received: position p is index p - inTotal + inFill
    int32_t outEnd = 0;                        // end of written output; the frame at it is 0 or about to be written
    int32_t outReady = 0;                      // frames finished; the rising flank of the next grain starts here
    double readPos = 0.0;                      // input frames, in the coordinates of the marks
    float stretch = 1.0f, invStretch = 1.0f;   // invStretch is 0 while frozen
    float pitch = 1.0f, invPitch = 1.0f;
    float maxStretchLen = 1.0f;   // a grain reaches this many periods ahead by the stretch
    float maxPitchLen = 1.0f;     // and by the pitch
    int32_t hop = 0;              // output distance to the next grain's centre
    int32_t period = 0;           // of the current mark, input frames
    int32_t markPos = 0;
    int32_t markIdx = 0, prevIdx = 0;
    int32_t repeats = 1;      // grains in a row that used this mark
    bool started = false;     // a grain has been made since Reset
    bool tailFaded = false;   // the last grain fades out by itself
    bool inTransient = false;
    int32_t lastTransientPos = 0;
    bool interpolate = true;
    bool transientGrains = false;
    float transientThreshold = 0.7f;
    int32_t maxMarkDistance = 1024;   // frames
};

}   // namespace PSOLASynthForTensioPro

using PSOLASynthForTensioPro::CPSOLASynthesis;

// Always 0; *ppSynthesis is null when memory is out. The caller owns it through DestroyPSOLASynthesis, which accepts null.
int32_t CreatePSOLASynthesis(CPSOLASynthesis** ppSynthesis, CPitchMarks* marks, int32_t blockFrames, int32_t channels,
                             int32_t bufferFrames);
int32_t DestroyPSOLASynthesis(CPSOLASynthesis* pSynthesis);

struct PSOLASynthesisDestroy {
    void operator()(CPSOLASynthesis* p) const { DestroyPSOLASynthesis(p); }
};
using PSOLASynthesisPtr = std::unique_ptr<CPSOLASynthesis, PSOLASynthesisDestroy>;
