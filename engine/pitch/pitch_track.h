// The pitch tracker: a stream of audio in, one record per hop out.
//
//   samples -> CPTPreProcess -> ring -> frames -> CPTAnalysis -> record
//
// The input is mixed to mono and reduced to 11025 Hz, so the cost does not depend on its rate. Each frame is decided when
// it arrives; there is no search over several frames and there are no user parameters.
// One object serves one thread; after creation nothing allocates.
#pragma once

#include "engine/pitch/pt_analysis.h"

#include <cstdint>
#include <memory>
#include <vector>

class CPTPreProcess;

constexpr int32_t kPitchTrackMaxFrames = 16384;   // of one Process call
constexpr int32_t kPitchTrackMinRate = 11025;     // Hz

enum PitchTrackMode : int32_t {
    kPitchTrackShort = 0,   // frames of 46.4 ms every 11.6 ms, bins of 5.383 Hz
    kPitchTrackLong = 1,    // frames of 92.9 ms every 46.4 ms, bins of 1.346 Hz
};

class CPitchTrack {
public:
    // Arguments as CreatePitchTrack has checked them. Throws std::bad_alloc.
    CPitchTrack(int32_t sampleRate, int32_t channels, int32_t mode);
    virtual ~CPitchTrack();
    CPitchTrack(const CPitchTrack&) = delete;
    CPitchTrack& operator=(const CPitchTrack&) = delete;

    // Takes frames of interleaved samples, whose array is working space: its contents are lost. *record receives the
    // record of the newest complete frame (all zeros before the first). More than kPitchTrackMaxFrames gives
    // kInvalidArgument and leaves everything as it was; a hop at a high sample rate is longer than that and comes in
    // pieces. Otherwise kSuccess.
    int32_t Process(float* samples, int32_t frames, PitchRecord* record) noexcept;
    // Input frames that complete the next hop.
    int32_t GetInputFramesPerHop() const noexcept;
    // Back to the start of a stream, with the memory of past pitches at 220 Hz.
    void Reset() noexcept;

private:
    // Samples at 11025 Hz between preprocessing and framing; indices wrap at its capacity, a power of two.
    struct Ring {
        explicit Ring(int32_t capacity) : samples(size_t(capacity)), mask(capacity - 1) {}
        int32_t Ready() const { return (writeIndex - readIndex) & mask; }
        std::vector<float> samples;
        int32_t mask;
        int32_t writeIndex = 0;
        int32_t readIndex = 0;
    };
    void RewindRing() noexcept;
    void AnalyseFrame() noexcept;

    int32_t fftLength;     // N
    int32_t hop;           // samples at 11025 Hz
    int32_t frameLength;   // samples at 11025 Hz
    std::unique_ptr<CPTPreProcess> preProcess;
    std::unique_ptr<CPTAnalysis> analysis;
    Ring ring;
    std::vector<float> frame;
    PitchRecord record{};   // lives on from frame to frame
};

// *ppTrack is null unless the result is kSuccess; the caller owns it through DestroyPitchTrack. A sampleRate below 11025
// Hz gives kInvalidSampleRate, channels outside 1 .. 48 kInvalidChannelCount, a mode that is no PitchTrackMode
// kInvalidArgument, memory out kOutOfMemory.
int32_t CreatePitchTrack(CPitchTrack** ppTrack, int32_t sampleRate, int32_t channels, int32_t mode);
// Destroys and nulls; a null object gives kInvalidArgument.
int32_t DestroyPitchTrack(CPitchTrack** ppTrack);

struct PitchTrackDestroy {
    void operator()(CPitchTrack* p) const { DestroyPitchTrack(&p); }
};
using PitchTrackPtr = std::unique_ptr<CPitchTrack, PitchTrackDestroy>;
