// Divides each channel into a low and a high band that add up to the input, and moves the formants on the way. A
// short-time Fourier loop with a sine window, applied on the way in and on the way out, at 50 percent overlap. The
// crossover is a limit in bins that each frame of each channel may pull downwards by its spectral centroid: dull frames
// leave the low band less. Only the high band is transformed back; the low band is what the delayed input has left, so
// the two add up to the input as long as no formant shift is active.
// The delay is one frame; the first half frame that comes out belongs to time before 0.
// One object serves one thread; after creation nothing allocates.
#pragma once

#include "dsp/vtnf_buffer.h"
#include "engine/spectral_envelope.h"

#include <cstdint>
#include <memory>
#include <vector>

class CFFTSplit {
public:
    virtual ~CFFTSplit();
    CFFTSplit(const CFFTSplit&) = delete;
    CFFTSplit& operator=(const CFFTSplit&) = delete;

    // Takes frames of in[channel], at most GetRoom(), adding dcOffset to each sample; gives the frames written to
    // low[channel] and high[channel], a multiple of half a frame. A null in stands for half a frame of silence. More
    // than GetRoom() frames are refused: 0, and nothing changes.
    int32_t Process(const float* const in[], float* const low[], float* const high[], int32_t frames,
                    float dcOffset) noexcept;
    // Upper limit of the crossover. [between calls of Process, as all setters]
    void SetCrossoverHz(float hz) noexcept;
    // Above 1.0 moves the formants down by that factor, below 1.0 up; 1.0 leaves the spectrum alone. Greater than 0.
    void SetEnvelopeFactor(float factor) noexcept { envelopeFactor = factor; }
    // Cepstral coefficients of the envelope, limited to 16 .. frame / 4. Bins below frame / order keep their place: there
    // the envelope follows single partials.
    void SetEnvelopeOrder(int32_t order) noexcept;
    // Empty again and without formant shift; crossover and order stay.
    void Reset() noexcept;

    int32_t GetFrame() const { return frame; }
    int32_t GetCrossoverBin() const { return crossoverBin; }
    int32_t GetRoom() const { return bufSize - inFill; }

private:
    friend int32_t CreateFFTSplit(CFFTSplit** ppSplit, int32_t sampleRate, int32_t channels, float crossoverHz,
                                  int32_t frame, int32_t bufSize);
    CFFTSplit(int32_t sampleRate, int32_t channels, float crossoverHz, int32_t frame, int32_t bufSize);

    struct Channel {
        VtnfBuffer in;          // bufSize floats
        VtnfBuffer low, high;   // N floats: the half frame that is complete, and the one that waits for its other half
    };

    void Append(const float* const in[], int32_t frames, float dcOffset) noexcept;
    // Splits the frame at in; the first half of channel.low and channel.high is complete then.
    void SplitFrame(const float* in, Channel& channel) noexcept;
    // Hands out the complete half frame and makes room for the next.
    void Emit(Channel& channel, float* low, float* high) const noexcept;
    // The bin that divides the spectrum in work.
    int32_t FindCrossover() const noexcept;
    void ZeroBelow(int32_t crossover) noexcept;
    // Moves the formants of the spectrum in work; overlaps the result into low.
    void ShiftFormants(float* low) noexcept;
    void WarpEnvelope() noexcept;

    float sampleRate;
    float envelopeFactor = 1.0f;   // 1.0: no formant shift
    int32_t inFill;                // frames waiting; half a frame of silence at the start
    int32_t bufSize;               // room for input
    int32_t frame;                 // N
    int32_t hop;                   // N / 2
    int32_t crossoverBin = 0;
    int32_t protectedBins = 0;   // bins below this are not warped
    std::vector<Channel> channels;
    VtnfBuffer work;        // N floats, the spectrum being worked on
    VtnfBuffer magnitude;   // 2 N floats: bin magnitudes, then scratch of the formant path
    VtnfBuffer envelope;    // N floats, packed pairs
    VtnfBuffer window;      // N floats: sine, with the scale that the transforms leave out
    FftPtr fft;
    SpectralEnvelopePtr estimator;
};

// frame is a power of two from 128, channels 1 .. 48; bufSize is the room for input, at least two frames, or 0 for 32
// frames. sampleRate below 8000 gives kInvalidSampleRate, channels outside kInvalidChannelCount, a bad
// size kInvalidArgument, memory out kOutOfMemory; *ppSplit is null then. The caller owns it through DestroyFFTSplit.
int32_t CreateFFTSplit(CFFTSplit** ppSplit, int32_t sampleRate, int32_t channels, float crossoverHz, int32_t frame,
                       int32_t bufSize);
// Destroys and nulls; a null object gives kInvalidArgument.
int32_t DestroyFFTSplit(CFFTSplit** ppSplit);

struct FFTSplitDestroy {
    void operator()(CFFTSplit* p) const noexcept { DestroyFFTSplit(&p); }
};
using FFTSplitPtr = std::unique_ptr<CFFTSplit, FFTSplitDestroy>;
