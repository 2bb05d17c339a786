// PSOLA analysis: walks through the input and places one pitch mark per period. It needs no frequency in advance: the
// period comes from a cross-correlation of the signal with itself half a frame later, searched near the last period.
// With the tracker, which runs ahead of the marks, frame length and search range follow the pitch.
//   periodMode -1     the high band of the Pro modes
//   periodMode  0     speech, correlation alone
//   periodMode above  a monophonic voice, with the tracker; the value sizes the frames (1024 is in use)
// One object serves one thread. After creation nothing allocates but the list of marks, see CPitchMarks.
#pragma once

#include "dsp/kkf.h"
#include "engine/pitch/pitch_track.h"
#include "engine/psola/transient_rating.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

class CPitchMarks;

constexpr int32_t kPeriodModePro = -1;
constexpr int32_t kPeriodModeSpeech = 0;
constexpr int32_t kPeriodModeMono = 1024;

class CPSOLAAnalysisIf {
public:
    virtual ~CPSOLAAnalysisIf() = default;
    // Back to the start of a stream: an emptied list with a plain mark at 0.
    virtual void Reset() noexcept = 0;
    // Takes frames of planes[channel], whose sum is analysed; null works on what is buffered. Always 0. A frame that
    // cannot be completed yet waits for the next call.
    virtual int32_t ProcessBlock(const float* const planes[], int32_t frames) noexcept = 0;
};

class CPSOLAAnalysisEnhIf : public CPSOLAAnalysisIf {
public:
    virtual void CloseLastMark() noexcept = 0;
    // Closes the list at the end of the input: its last mark stands behind the last sample.
    virtual void FinishMarks() noexcept = 0;
    virtual int32_t GetBufferHeadroom() noexcept = 0;
};

class CPSOLAAnalysis : public CPSOLAAnalysisEnhIf {
public:
    // Arguments as CreatePSOLAAnalysis has checked them. Throws std::bad_alloc.
    CPSOLAAnalysis(CPitchMarks* marks, float sampleRate, int32_t periodMode, int32_t channels, bool trackPitch,
                   int32_t bufferSize);

    void Reset() noexcept override;
    int32_t ProcessBlock(const float* const planes[], int32_t frames) noexcept override;
    void CloseLastMark() noexcept override;
    void FinishMarks() noexcept override;
    int32_t GetBufferHeadroom() noexcept override { return bufferSize - bufferFill; }

private:
    void MakeCorrelators();
    void TakeInput(const float* const planes[], int32_t first, int32_t frames) noexcept;
    void PlaceMarks() noexcept;
    bool PlaceMark() noexcept;
    void FollowTracker() noexcept;
    void RunTracker() noexcept;
    void SetFrame(float spanFactor, bool withinHalf) noexcept;
    void Correlate() noexcept;
    CKKF& Correlator() noexcept;
    void CheckEnergy() noexcept;
    bool CheckSpacing() noexcept;
    void Commit() noexcept;
    void Remove(int32_t frames) noexcept;

    CPitchMarks* marks;
    float sampleRate;
    int32_t channels;
    bool trackPitch;
    int32_t baseLength;   // W, the largest frame scale
    int32_t bufferSize;
    int32_t minPeriod;   // frames
    int32_t tailStep;    // what CloseLastMark adds
    int32_t padChunk;    // level that FinishMarks fills the buffer to

    int32_t frameLength, half, quarter;   // L, L/2, L/4 of the correlation
    int32_t searchSpan;                   // half width of the lag search
    int32_t lastMark = 0;                 // position of the latest mark, and of buffer[0]
    int32_t candidate = 0;                // position of the mark being placed
    int32_t lag = 0;                      // half minus the period
    int32_t predictedLag = 0;
    int32_t period = 0, lastPeriod = 0;
    int32_t bufferFill = 0, pitchFill = 0;
    int32_t trackerStep = 0;      // input frames per hop of the tracker
    float trackedPeriod = 0.0f;   // frames
    PitchRecord record{};

    std::vector<float> buffer;           // the sum of the channels from lastMark on; zeros behind bufferFill
    std::vector<float> pitchBuffer;      // what the tracker has not seen
    std::array<KkfPtr, 5> correlators;   // W/4 to 4 W with the tracker, else the one of 2 W
    TransientRating rating;
    PitchTrackPtr tracker;
};

// kInvalidArgument for null marks and for a rate of 512000 Hz and more; otherwise 0, and *ppAnalysis is null when memory
// is out. offline has to be 1, the one form there is, else kNotAvailable. bufferSize 0 takes the default of the rate. A
// rate that the tracker does not work at goes without it. The caller owns the object through DestroyPSOLAAnalysis, which
// refuses null with kInvalidArgument; the marks stay the caller's.
int32_t CreatePSOLAAnalysis(CPSOLAAnalysis** ppAnalysis, CPitchMarks* marks, float sampleRate, int32_t periodMode,
                            int32_t channels, int32_t trackPitch, int32_t offline, int32_t bufferSize);
int32_t DestroyPSOLAAnalysis(CPSOLAAnalysis* pAnalysis);

struct PSOLAAnalysisDestroy {
    void operator()(CPSOLAAnalysis* p) const { DestroyPSOLAAnalysis(p); }
};
using PSOLAAnalysisPtr = std::unique_ptr<CPSOLAAnalysis, PSOLAAnalysisDestroy>;
