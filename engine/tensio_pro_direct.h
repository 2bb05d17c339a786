// The core of the Pro modes. The signal is divided at a crossover; the peak-locked vocoder stretches the low band, PSOLA
// the high band, both by the total factor (stretch x pitch) at pitch 1; their read positions are tied together once per
// pass; the sum is resampled by the pitch factor. Formants move inside the band split, before all this.
//
// A pass takes half a split frame (more when the vocoder's hop is longer) and gives what the vocoder makes of it. All
// buffers are sized at creation for the worst case, total factor 0.1 at the highest pitch; after it nothing allocates.
#pragma once

#include "dsp/resample.h"
#include "engine/fft_split.h"
#include "engine/pitch_glide.h"
#include "engine/psola/pitch_marks.h"
#include "engine/psola/psola_analysis.h"
#include "engine/psola/psola_synthesis.h"
#include "engine/tensio_mc.h"
#include "engine/tensio_pro_direct_if.h"
#include "engine/tensio_pro_if.h"

#include <cstdint>
#include <memory>
#include <vector>

class CtensioProDirect : public CTensioProDirectIf, public CTensioProIf {
public:
    // Pitch factors beyond these are refused: the buffers would not hold a pass. Wider than two octaves, since the
    // quantised pitch and a caller that looks for an accepted pair stray beyond them.
    static constexpr float kMinPitch = 0.2f;
    static constexpr float kMaxPitch = 5.0f;

    ~CtensioProDirect() override;

    int32_t ProcessFirstBlock(const float* const in[], int32_t frames, float* const out[]) noexcept override;
    int32_t GetPreFramesOut() noexcept override;
    int32_t ProcessLastBlock(const float* const in[], int32_t frames, float* const out[],
                             int32_t tailFrames) noexcept override;
    int32_t ProcessStep() noexcept override;
    int32_t PreProcessData(const float* const in[], int32_t frames) noexcept override;
    int32_t GetProcessedData(float* const out[]) noexcept override;
    int32_t GetNumOfProcessCalls() noexcept override;
    int32_t GetMaxFramesOut() noexcept override;
    int32_t GetFirstFramesNeeded() noexcept override;
    int32_t GetFramesNeeded() noexcept override;
    int32_t GetFramesNeededAt(float stretch, float pitch) noexcept override;
    int32_t SetStretchKeepPitch(float* stretch, float pitch, bool sync) noexcept override;
    int32_t SetStretchPitch(float stretch, float* pitch, bool sync) noexcept override;
    int32_t Reset() noexcept override;
    double GetInputPosition() noexcept override;
    int32_t FlushBuffer(float* const out[]) noexcept override;
    int32_t SetStereoInputMode(int32_t mode) noexcept override;
    // kInvalidArgument unless finite and above 0.
    int32_t SetEnvelopeFactor(float factor) noexcept override;
    // kInvalidArgument outside 8 .. 512.
    int32_t SetCutOffPitch(int32_t pitch) noexcept override;

    // Upper limit of the low band, in Hz: both stages always hear of the same.
    float GetCrossoverHz() const { return crossoverHz; }
    // The most frames that may wait in the engine.
    int32_t GetCapacity() const { return bufSize; }

protected:
    // May throw std::bad_alloc.
    CtensioProDirect(int32_t channels, float sampleRate, int32_t coreMode);

    // A whole pass; frames must be what GetFramesNeeded asked for. Gives the frames written to out, or kNoResult.
    int32_t RunPass(const float* const in[], int32_t frames, float* const out[]) noexcept;
    // Hops of the vocoder in a pass, and the frames that a pass takes and gives before the resampler.
    int32_t HopsPerPass() const noexcept;
    int32_t PassInput() const noexcept;
    int32_t PassOutput() const noexcept;
    // Input for missing more output frames, over-estimated by up to a pass. readStep: of the resampler.
    int32_t InputFor(int32_t missing, float readStep) const noexcept;

    int32_t channels;
    int32_t block;           // frame of the band split
    int32_t bufSize = 0;     // frames per channel of a work buffer: the most that a caller may have delivered
    int32_t maxLeadIn;       // GetPreFramesOut at the lowest pitch
    int32_t maxPassOutput;   // frames that a pass may give
    float pitchFactor = 1.0f;
    PitchGlide glide;

private:
    void CreateStages(int32_t coreMode);
    int32_t WorkBufferFrames();
    int32_t SetFactors(float total, float pitch) noexcept;
    void SetPitch(float pitch, float stretch, bool sync) noexcept;
    int32_t FlushLength() const noexcept;
    void ApplyEnvelopeOrder() noexcept;

    void SplitBands(const float* const in[], int32_t frames) noexcept;
    void FindMarks() noexcept;
    int32_t StretchLowBand() noexcept;
    void StretchHighBand() noexcept;
    void SumBands() noexcept;
    int32_t ChangePitch() noexcept;

    float sampleRate;
    float crossoverHz;
    float totalFactor = 1.0f;   // quantised stretch x pitch
    float synthTotal = 1.0f;    // the total factor last given to the synthesis
    float ratioNow = 1.0f;      // read step of the resampler in this pass
    float envelopeFactor = 1.0f;
    int32_t envelopeOrder = 0;   // cepstral order at this sample rate, before the envelope factor
    int32_t passFrames = 0;      // output frames of both bands in this pass
    int32_t passesDone = 0;
    int32_t lookAhead = 0;   // half of the vocoder's analysis hop
    int32_t passOut = 0;     // frames in mixBuf
    int32_t bandFill = 0;    // frames of each band that this pass takes
    int32_t stepIndex = 0;
    int32_t expectFrames = 0;   // what the next PreProcessData must bring
    int32_t flushLeft = 0;      // input frames' worth of tail still to run
    int32_t flushDone = 0;      // and already run
    bool marksClosed = false;
    double mcPosition = 0.0;   // input position of the low band in this pass

    std::unique_ptr<CTensioMC> core;
    PitchMarksPtr marks;
    ResamplerPtr resampler;
    PSOLAAnalysisPtr analysis;
    PSOLASynthesisPtr synthesis;
    FFTSplitPtr split;
    VtnfBuffer mixBuf;                         // interleaved
    std::vector<VtnfBuffer> lowBuf, highBuf;   // the bands, and in place what the stages make of them
    std::vector<float*> low, high;             // the same as arrays of pointers
};
