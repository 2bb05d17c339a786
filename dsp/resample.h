// Streaming band-limited interpolation whose ratio may change with every call: a Kaiser-windowed sinc, tabulated at 256
// steps a zero crossing and interpolated between them (Smith and Gossett 1984). Below ratio 1 the filter is stretched by
// the ratio, so that it also keeps out what would fold back. The first output frame coincides with the first input frame;
// output starts once the filter's look-ahead has arrived. The read position carries its fraction from call to call, so a
// ratio change makes no phase jump.
//
// Quality 3 as measured, frequencies in units of the lower of both Nyquist frequencies (the gain holds 0.99 on purpose):
//   passband       -0.09 dB at 0, -0.17 at 0.2, -0.30 at 0.3, -1.0 at 0.5, -2.8 at 0.7, -6.1 at 0.9
//   folding back   -15 dB from 1.2, -25 from 1.4, -32 from 1.5, -40 from 1.6, -51 from 1.7, -68 from 1.8, -80 from 2
//   images         (ratios above 1) -84 dB beside a tone near 0, -68 at 0.2, -51 at 0.3, -32 at 0.5, -11 at 0.9
// Ripple there is none: the response falls from 0 on. Longer filters are steeper: at quality 24 an exact band-limited
// signal up to 0.7 comes back at -75 dB, at quality 60 up to 0.8 at -82 dB.
//
// A ratio that falls by more than a quarter between two calls, to below 0.4, finds less look-ahead than its longer filter
// reaches: the outermost coefficients of the last frames of that call then meet silence. When it falls by more than three
// fifths, those of the first frames do, too.
// One object serves one thread; after creation nothing allocates.
#pragma once

#include "dsp/resample_rows.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

enum ResampleType : int32_t { kResampleFloat = 0, kResampleInt16 = 1 };

class CResampleBase {
public:
    // Takes frames of interleaved in (at most the maxFrames of creation), gives the frames written to out. Only the
    // quotient outRate / inRate matters, 1/1000 or above. The caller sizes out for the ratios in use. in and out may be
    // the same array. channels is at most that of creation and stays the same until Reset. Arguments outside these
    // bounds give 0 and change nothing.
    virtual int32_t Process(const void* in, void* out, float inRate, float outRate, int32_t channels,
                            int32_t frames) noexcept = 0;
    // Back to the state after creation.
    virtual void Reset() noexcept = 0;
    virtual ~CResampleBase() = default;
    CResampleBase(const CResampleBase&) = delete;
    CResampleBase& operator=(const CResampleBase&) = delete;

    // Input frames that the next Process needs in order to yield at least outFrames; 0 when it needs none.
    int32_t InputFramesFor(int32_t outFrames, float inRate, float outRate) const noexcept;

protected:
    // One call's worth of work.
    struct Pass {
        double ratio;         // output frames per input frame
        double step;          // input frames per output frame
        double scale;         // makes up for the area of a stretched filter
        int32_t filterStep;   // table steps of 1/128 entry from one input frame to the next
        int32_t frames;       // input frames used up; below 0 while the look-ahead is short

        int32_t OutputFrames() const noexcept;
        bool Complete(int32_t outputFrame) const noexcept;
    };

    CResampleBase(int32_t quality, int32_t maxFrames, int32_t maxChannels, bool pair);
    // Fills table and deltas with the first n entries of a filter of n / 256 zero crossings a wing.
    virtual void BuildFilterTable(int32_t n) = 0;

    bool Accepts(float inRate, float outRate, int32_t channelCount, int32_t frames) const noexcept;
    size_t HistorySamples() const noexcept;
    // Widens the look-ahead that the ratio asks for; it never narrows.
    void GrowLookAhead(double ratio) noexcept;
    Pass PlanPass(double ratio) noexcept;
    // Books the pass; gives the frames by which the history moves down.
    int32_t FinishPass(const Pass& pass) noexcept;
    void Rewind() noexcept;

    int32_t tableLength;       // entries of one wing: quality zero crossings
    float rolloff;             // corner of the filter, of Nyquist
    float kaiserBeta = 9.0f;   // stop band near -90 dB, were the wing long enough
    int32_t halfTaps;          // frames that a wing reaches at ratio 1, and one to spare
    int32_t maxFramesPerCall;
    int32_t channelsAtCreation;
    ptrdiff_t headroom;   // samples below origin at the start, room for xOff to grow
    ptrdiff_t origin;     // sample of the history where logical frame 0 stands
    int32_t xOff;         // frames of history held on either side of the read position
    int32_t xRead;        // end of valid frames
    int32_t xPos;         // frame that the next block of input starts from
    int32_t pending;      // frames behind xRead; below 0: owed, after a creep or a growth
    double time;          // read position in frames, relative to origin
    bool firstCall;
    int32_t channels;
    bool pairMode;   // two channels share a pass and sum in single precision
};

// What both sample types share: the history and the road of a call.
template <typename Sample>
class CResampleOf : public CResampleBase {
public:
    int32_t Process(const void* in, void* out, float inRate, float outRate, int32_t channelCount,
                    int32_t frames) noexcept override;
    void Reset() noexcept override;

protected:
    CResampleOf(int32_t quality, int32_t maxFrames, int32_t maxChannels, bool pair);
    // Writes count frames from read position time on; gives the read position behind them.
    virtual double Interpolate(const Pass& pass, int32_t count, Sample* out) noexcept = 0;
    const Sample* Frame(int64_t frame) const noexcept { return history.data() + origin + frame * channels; }

private:
    void Append(const Sample* in, int32_t frames) noexcept;
    void MoveDown(int32_t frames) noexcept;

    std::vector<Sample> history;   // interleaved
};

class CResampleFloat final : public CResampleOf<float> {
public:
    CResampleFloat(int32_t quality, int32_t maxFrames, int32_t maxChannels, bool pair);
    void Reset() noexcept override;

private:
    void BuildFilterTable(int32_t n) override;
    double Interpolate(const Pass& pass, int32_t count, float* out) noexcept override;
    double InterpolateByTable(const Pass& pass, int32_t count, float* out) const noexcept;
    double InterpolateByRows(const Pass& pass, int32_t count, float* out) const noexcept;

    std::vector<float> table;    // one wing of the impulse response
    std::vector<float> deltas;   // table[i + 1] - table[i]; the last one 0
    ResampleRows rows;           // the same at one ratio
    int32_t lastStep = 0;        // filterStep of the latest pass
};

// 16-bit samples and coefficients, sums in 64 bits; peaks beyond full scale are held there.
class CResampleInt final : public CResampleOf<int16_t> {
public:
    CResampleInt(int32_t quality, int32_t maxFrames, int32_t maxChannels, bool pair);

private:
    void BuildFilterTable(int32_t n) override;
    double Interpolate(const Pass& pass, int32_t count, int16_t* out) noexcept override;

    std::vector<int16_t> table;    // one wing of the impulse response, 32767 is 1
    std::vector<int16_t> deltas;   // table[i + 1] - table[i]; the last one 0
};

// quality, 1 to 120, is the number of zero crossings that a wing of the filter covers; maxFrames bounds every Process;
// sampleType is a ResampleType; pairMode lets two float channels share a pass that sums in single precision. Arguments
// outside their ranges give kInvalidArgument, memory out kOutOfMemory, and *ppResampler is null then. The caller owns it
// through DestroyResampler.
int32_t CreateResampler(CResampleBase** ppResampler, int32_t quality, int32_t maxFrames, int32_t channels,
                        int32_t sampleType, int32_t pairMode);
// Destroys and nulls; accepts a null object. Always 0.
int32_t DestroyResampler(CResampleBase** ppResampler);

struct ResamplerDestroy {
    void operator()(CResampleBase* p) const { DestroyResampler(&p); }
};
using ResamplerPtr = std::unique_ptr<CResampleBase, ResamplerDestroy>;
