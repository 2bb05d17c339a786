// The Soloist modes: PSOLA on the whole signal, for one voice at a time. Time and pitch change in the grains; factors are
// neither quantised nor refused, and there is no formant control.
//   monophonic  with the pitch tracker; plain grains, so the formants stay
//   speech      correlation alone; grains are resampled, so the formants follow the pitch
// The streaming path allocates only where CPSOLASynthesis and CPitchMarks say so.
#pragma once

#include "engine/psola/pitch_marks.h"
#include "engine/psola/psola_analysis.h"
#include "engine/psola/psola_synthesis.h"
#include "engine/tensio_pro_if.h"

#include <array>
#include <cstdint>

class CtensioSOLO : public CTensioProIf {
public:
    // mode: kModeSoloistMono or kModeSoloistSpeech. Throws std::bad_alloc.
    CtensioSOLO(int32_t blockFrames, int32_t channels, float sampleRate, int32_t mode);

    // Besides the results of the interface: the number of frames written when the marks end within the block. The rest
    // of the block is then silent. Null in, whatever frames says, is the end of the input, which lasts until Reset.
    int32_t ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept override;
    int32_t GetFramesNeeded() noexcept override;
    int32_t SetOutputBlockSize(int32_t frames) noexcept override;
    int32_t GetFramesNeededAt(float, float) noexcept override { return kNoResult; }
    int32_t SetStretchKeepPitch(float* stretch, float pitch, bool sync) noexcept override;
    int32_t SetStretchPitch(float stretch, float* pitch, bool sync) noexcept override;
    int32_t Reset() noexcept override;
    int32_t FlushBuffer(float* const out[]) noexcept override;
    int32_t GetFramesBuffered() noexcept override { return synthesis->GetOutputReady(); }
    int32_t SetStereoInputMode(int32_t) noexcept override { return kSuccess; }
    int32_t SetEnvelopeFactor(float) noexcept override { return kSuccess; }
    int32_t SetCutOffPitch(int32_t) noexcept override { return kSuccess; }
    double GetInputPosition() noexcept override { return 0.0; }

private:
    int32_t FillBlock(const float* const in[], int32_t frames, float* const out[]) noexcept;
    void PruneMarks() noexcept;
    int32_t DefaultNeeded() const noexcept;

    int32_t outBlock;
    int32_t channels;
    int32_t frameSize;
    int32_t synthBlock;        // output frames per call of the synthesis
    bool inputEnded = false;   // latched by the first null input
    PitchMarksPtr marks;
    PSOLASynthesisPtr synthesis;
    PSOLAAnalysisPtr analysis;
    std::array<float*, kMaxEngineChannels> outPointers{};
};
