// The time-scale core for many channels: blocks, positions, factors and the channel matrix around the phase vocoder. On
// its own it is the Efficient mode, where it also changes the pitch by cubic resampling; in the Pro modes it stretches
// the low band at pitch 1.
//
// Channels go into the vocoder coded, since it follows the peaks of its first channel only: two as a weighted sum and
// difference, more than two behind an additional channel with their mean, which is dropped at the output.
// One object serves one thread; after construction nothing allocates.
#pragma once

#include "dsp/fast_resample.h"
#include "dsp/status.h"
#include "dsp/vtnf_buffer.h"
#include "engine/pitch_glide.h"
#include "engine/vocoder.h"

#include <cstdint>
#include <memory>
#include <vector>

class CTensioMCIf {
public:
    virtual ~CTensioMCIf() = default;
    // Appends frames of in[channel], 0 or more, and writes one output block: kSuccess; kNoResult when fewer frames are
    // ready, the input then stays for the next call. A null in is the end of the input: the tail is run. in and out may
    // be the same arrays. More frames than GetFramesNeeded could ever ask for give kInvalidArgument, and nothing is
    // taken. The first call has to bring what GetFramesNeeded asked for.
    virtual int32_t ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept = 0;
    // Input frames for the next output block, a multiple of the analysis hop.
    virtual int32_t GetFramesNeeded() noexcept = 0;
    // Frames per block, limited to three frames of the vocoder; gives GetFramesNeeded.
    virtual int32_t SetOutputBlockSize(int32_t frames) noexcept = 0;
    // The same at other factors; those in force stay. kNoResult when they are refused.
    virtual int32_t GetFramesNeededAt(float stretch, float pitch) noexcept = 0;
    // Factors, see CTensioProIf. kInvalidArgument outside the limits of their product, and nothing changes.
    virtual int32_t SetStretchKeepPitch(float* stretch, float pitch, bool sync) noexcept = 0;
    virtual int32_t SetStretchPitch(float stretch, float* pitch, bool sync) noexcept = 0;
    virtual int32_t Reset() noexcept = 0;
    // The tail: frames written, at most a block, then kNoResult.
    virtual int32_t FlushBuffer(float* const out[]) noexcept = 0;
    // Frames ready; negative in the lead-in.
    virtual int32_t GetFramesBuffered() noexcept = 0;
    // 0 codes two channels as a matrix, 1 leaves them; kNotAvailable unless there are two.
    virtual int32_t SetStereoInputMode(int32_t mode) noexcept = 0;
    // Bins above hz are not treated and come out silent.
    virtual int32_t SetCutOffFreq(float hz) noexcept = 0;
    // Input time, in frames, of the next frame that is read out.
    virtual int32_t GetInputPosition() noexcept = 0;
};

class CTensioMC : public CTensioMCIf {
public:
    enum CoreMode : int32_t { kCoarse = 0, kCoarseAlias = 1, kFineHop = 2 };

    // outBlock: frames per ProcessData, at most three frames of the vocoder. channels 1 to 48. Throws std::bad_alloc.
    CTensioMC(int32_t outBlock, int32_t channels, float sampleRate, int32_t coreMode);

    int32_t ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept override;
    int32_t GetFramesNeeded() noexcept override;
    int32_t SetOutputBlockSize(int32_t frames) noexcept override;
    int32_t GetFramesNeededAt(float stretch, float pitch) noexcept override;
    int32_t SetStretchKeepPitch(float* stretch, float pitch, bool sync) noexcept override;
    int32_t SetStretchPitch(float stretch, float* pitch, bool sync) noexcept override;
    int32_t Reset() noexcept override;
    int32_t FlushBuffer(float* const out[]) noexcept override;
    int32_t GetFramesBuffered() noexcept override { return outFill; }
    int32_t SetStereoInputMode(int32_t mode) noexcept override;
    int32_t SetCutOffFreq(float hz) noexcept override;
    int32_t GetInputPosition() noexcept override;

    // For a stage that keeps its own time.
    int32_t GetAnalysisHop() const noexcept { return factors.hopA; }
    int32_t GetSynthesisHop() const noexcept { return factors.hopS; }
    void SetOutputFill(int32_t frames) noexcept { outFill = frames; }
    void SetAnalysisPosition(double position) noexcept { analysisPos = position; }

private:
    void AllocateBuffers();
    bool ChooseFactors(double total, float pitch) noexcept;
    void ApplyFactors(bool sync) noexcept;
    void TakeInput(const float* const in[], int32_t frames) noexcept;
    void GiveOutput(float* const out[], int32_t frames) noexcept;
    int32_t TailLength() const noexcept;
    void FillFirstWindow() noexcept;
    void CloseInputGap() noexcept;
    bool RunHop(bool atEnd) noexcept;
    void RunWholeHop() noexcept;
    void RunFlushHop() noexcept;
    void PrimeWindow() noexcept;
    void BeginHop() noexcept;
    void UpdateReadStep() noexcept;
    void LimitBins() noexcept;
    void RunVocoder() noexcept;
    int32_t Resample() noexcept;
    void DropInput() noexcept;

    int32_t realChannels;
    int32_t channels;   // with the mean in front when there are more than two
    float mixScale;     // weight of a channel in the mean
    float sampleRate;   // Hz
    int32_t frame;
    bool fineHop;
    int32_t outBlock;
    int32_t inCapacity, outCapacity;

    // The factors in force, as the hops realise them.
    struct Factors {
        float total = 1.0f;   // stretch x pitch
        double invTotal = 1.0;
        float pitch = 1.0f;
        int32_t hopA = 0, hopS = 0;   // analysis and synthesis hop, frames
    };
    Factors factors;
    double invTotalActive = 1.0;   // the reciprocal that positionOffset belongs to
    float ratioNow = 1.0f;         // read step of the resampler in the coming hop
    bool resampleAlways = false;
    int32_t stereoMode = 0;
    int32_t cutBin;

    bool firstHop = true;       // the analysis window has not been primed
    int32_t inRead = 0;         // where what waits begins in inBuf, while hops run
    int32_t inFill = 0;         // frames that wait
    int32_t outFill = 0;        // frames ready; negative in the lead-in: the next frames are dropped
    int32_t tailOut = 0;        // frames given while flushing
    int32_t positionBase = 0;   // lead-in position, -frame/2
    int32_t positionOffset = 0;
    double analysisPos = 0.0;   // input position of the current frame
    PitchGlide glide;

    std::vector<VtnfBuffer> inBuf;    // inCapacity each
    std::vector<VtnfBuffer> outBuf;   // outCapacity each, of which half stands before outOrigin
    std::vector<float*> outOrigin, hopIn, hopOut;
    std::unique_ptr<VocoderState> vocoder;
    std::unique_ptr<CFastResample> resampler;
};
