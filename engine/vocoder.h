// The phase vocoder proper: it knows frames and hops only. Every hop a windowed frame is transformed, its regions are
// turned by the angle that their peak has to gain, and the frames are overlapped again at the synthesis hop. Phases of
// the other bins of a region stay locked to its peak (Laroche and Dolson 1999); a region whose level jumps restarts from
// the phase that was analysed, which keeps attacks sharp. Peaks and angles are found on channel 0 alone and serve all
// channels: each bin of each channel is multiplied by the very numbers that channel 0 used, so that what is between the
// channels stays as it is, and identical channels stay identical.
// The arithmetic of phases is single precision. A sample that is no number is heard for as long as a frame holds it, and
// no longer. One object serves one thread; after construction nothing allocates.
#pragma once

#include "dsp/vtnf_buffer.h"
#include "engine/overlap_window.h"
#include "engine/peak_regions.h"

#include <cstdint>
#include <vector>

class VocoderState {
public:
    // frame: samples per frame and points of the transform, a power of two; stretch = hopS / hopA. Throws std::bad_alloc.
    VocoderState(int32_t frame, int32_t hopS, int32_t hopA, float stretch, int32_t channels);

    // New hops, in force from the next frame on; what is already summed up keeps its level.
    void VocoderSetHops(int32_t hopS, int32_t hopA, float stretch) noexcept;
    // Bins treated, 0 to frame/2; those above come out silent.
    void VocoderSetBins(int32_t n) noexcept { numBins = n; }
    // One stage of one channel: step = 5 x channel + stage, in order. hopA frames of in[channel] go in with stage 0,
    // hopS frames of out[channel] come out with stage 4. step = -1 - channel only takes the frames in. Gives hopS.
    int32_t VocoderStep(const float* const in[], float* const out[], int32_t step) noexcept;
    // As constructed, but with the hops in force.
    void VocoderReset() noexcept;

    static constexpr int32_t kStages = 5;

private:
    struct Channel {
        VtnfBuffer analysisBuf;   // frame: the sliding input
        VtnfBuffer olaBuf;        // frame: the sum of the frames that are not complete yet
    };

    void SetBinAdvance() noexcept;
    void ShiftInput(Channel& channel, const float* in) noexcept;
    void Analyse(const Channel& channel) noexcept;
    void MeasurePhases(bool first) noexcept;
    void PropagatePhases() noexcept;
    void SpreadTurns() noexcept;
    void TurnBins() noexcept;
    void Synthesise(Channel& channel, float* out) noexcept;

    int32_t frame;
    int32_t hopA, hopS;   // analysis and synthesis hop, frames
    int32_t numBins;
    int64_t framesDone = 0;
    float stretchActive, stretchNext;   // a new stretch reaches the phases one frame after the hops
    OverlapWindow window;
    PeakRegions regions;
    FftPtr fft;
    std::vector<Channel> channels;

    VtnfBuffer spectrum;   // packed, frame floats: one channel after the other passes through here
    VtnfBuffer turns;      // packed, frame floats: what a region is multiplied by, at its peak's bin

    // Channel 0, frame/2 + 1 entries each.
    VtnfBuffer phase, prevPhase;   // analysed in this frame and the one before
    VtnfBuffer synthPhase;         // given out in the frame before
    VtnfBuffer deviation;          // instantaneous phase advance over one analysis hop
    VtnfBuffer magNow, magPrev, magPrev2;
    VtnfBuffer rotation;                      // what a region is turned by, at its peak's bin
    VtnfBuffer peakAngle, peakSin, peakCos;   // the same, peak by peak
    VtnfBuffer binAdvance;                    // k x hopA x 2 pi / frame
};
