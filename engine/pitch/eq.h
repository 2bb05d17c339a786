// One second-order recursive filter over any number of channels, with a choice of seven responses (see
// eq_design.h). The pitch tracker uses the low-pass and the high-pass.
//
// A filter starts in bypass. A low-pass above 0.45 of the sample rate and a high-pass below 0.01 of it stay there, since
// they would change next to nothing; the peaks leave it with their first parameters, the shelves and the one-pole never.
//
// New parameters take effect at the start of the next block, without a ramp, and the state runs through the change.
// One object serves one thread; after creation nothing allocates.
#pragma once

#include <cstdint>
#include <memory>

enum EqType : int32_t {
    kEqLowShelf = 0,
    kEqHighShelf = 1,
    kEqPeak = 2,
    kEqLowPass = 3,        // Butterworth, whatever Q says
    kEqHighPass = 4,       // Butterworth, whatever Q says
    kEqPeakNoDirect = 5,   // peak without its direct path
    kEqOnePole = 6,        // low-pass
};

class CEQIf {
public:
    // One array per channel, frames each; in and out may be the same arrays.
    virtual void ProcessPlanar(const float* const in[], float* const out[], int32_t frames) noexcept = 0;
    // Channels interleaved; in and out may be the same array.
    virtual void ProcessInterleaved(const float* in, float* out, int32_t frames) noexcept = 0;
    // frequencyHz is the corner or centre, gainDb enters the shelves and peaks, q the peaks. Always 0, and cheap: the
    // coefficients are made at the start of the next block. Not from another thread than the one that processes.
    virtual int32_t SetParameters(float frequencyHz, float gainDb, float q) noexcept = 0;
    // The values in force; any pointer may be null. In bypass the frequency reads as the limit of the response: half
    // the sample rate for the low-pass, 0 for the high-pass. Always 0.
    virtual int32_t GetParameters(float* frequency, float* gain, float* q) const noexcept = 0;
    virtual int32_t GetFilterType() const noexcept = 0;
    // Clears the filter's memory; parameters stay.
    virtual void Reset() noexcept = 0;
    virtual ~CEQIf() = default;
};

// *ppEq is null unless the result is kSuccess; the caller owns it through DestroyEQ. filterType is an EqType; one above
// 6 makes a filter that passes samples unchanged. Memory out gives kOutOfMemory.
int32_t CreateEQ(CEQIf** ppEq, int32_t sampleRate, int32_t channels, int32_t filterType);
// Destroys and nulls; a null object gives kInvalidArgument.
int32_t DestroyEQ(CEQIf** ppEq);

struct EqDestroy {
    void operator()(CEQIf* p) const { DestroyEQ(&p); }
};
using EqPtr = std::unique_ptr<CEQIf, EqDestroy>;
