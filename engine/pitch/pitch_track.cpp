#include "engine/pitch/pitch_track.h"

#include "dsp/status.h"
#include "engine/pitch/pt_preprocess.h"

#include <algorithm>
#include <new>

namespace {

constexpr int32_t kRingCapacity = 16384;   // samples at 11025 Hz, a power of two
constexpr int32_t kMaxChannels = 48;

// By mode. The frame is short against the transform: zero-padding buys frequency resolution without losing time.
constexpr struct {
    int32_t fftLength, hop, frameLength;
} kConfigurations[] = {{2048, 128, 512}, {8192, 512, 1024}};

}   // namespace

CPitchTrack::CPitchTrack(int32_t sampleRate, int32_t channels, int32_t mode)
    : fftLength(kConfigurations[mode].fftLength), hop(kConfigurations[mode].hop),
      frameLength(kConfigurations[mode].frameLength),
      preProcess(std::make_unique<CPTPreProcess>(sampleRate, channels, kPitchTrackMaxFrames)),
      analysis(std::make_unique<CPTAnalysis>(kPitchAnalysisRate, fftLength, frameLength)), ring(kRingCapacity),
      frame(size_t(frameLength))
{
    RewindRing();
}

CPitchTrack::~CPitchTrack() = default;

// The first frame is complete after a hop and starts with silence.
void CPitchTrack::RewindRing() noexcept
{
    std::fill(ring.samples.begin(), ring.samples.end(), 0.0f);
    ring.writeIndex = 0;
    ring.readIndex = (kRingCapacity - frameLength + hop) & ring.mask;
}

int32_t CPitchTrack::Process(float* samples, int32_t frames, PitchRecord* pRecord) noexcept
{
    if (frames < 0 || frames > kPitchTrackMaxFrames)
        return kInvalidArgument;
    const float* reduced = nullptr;
    const int32_t n = preProcess->Process(samples, frames, &reduced);
    // Frames are taken out as soon as they are complete: at the lowest rates a call brings as much as the ring holds.
    for (int32_t i = 0; i < n; ++i) {
        ring.samples[size_t(ring.writeIndex)] = reduced[i];
        ring.writeIndex = (ring.writeIndex + 1) & ring.mask;
        if (ring.Ready() >= frameLength)
            AnalyseFrame();
    }
    *pRecord = record;
    return kSuccess;
}

void CPitchTrack::AnalyseFrame() noexcept
{
    for (int32_t i = 0; i < frameLength; ++i)
        frame[size_t(i)] = ring.samples[size_t((ring.readIndex + i) & ring.mask)];
    analysis->Process(frame.data(), &record);
    ring.readIndex = (ring.readIndex + hop) & ring.mask;
}

int32_t CPitchTrack::GetInputFramesPerHop() const noexcept
{
    return preProcess->InputFramesFor(hop);
}

void CPitchTrack::Reset() noexcept
{
    RewindRing();
    record = {};
    std::fill(frame.begin(), frame.end(), 0.0f);
    preProcess->Reset();
    analysis->Reset();
}

int32_t CreatePitchTrack(CPitchTrack** ppTrack, int32_t sampleRate, int32_t channels, int32_t mode)
{
    *ppTrack = nullptr;
    if (sampleRate < kPitchTrackMinRate)
        return kInvalidSampleRate;
    if (channels < 1 || channels > kMaxChannels)
        return kInvalidChannelCount;
    if (mode != kPitchTrackShort && mode != kPitchTrackLong)
        return kInvalidArgument;
    try {
        *ppTrack = new CPitchTrack(sampleRate, channels, mode);
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return kSuccess;
}

int32_t DestroyPitchTrack(CPitchTrack** ppTrack)
{
    if (!*ppTrack)
        return kInvalidArgument;
    delete *ppTrack;
    *ppTrack = nullptr;
    return kSuccess;
}
