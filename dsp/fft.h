// The transform of the analysis side: real data in place, with an optional window, and the step from a spectrum to
// magnitudes. Packed layout, no scaling in either direction (see dsp/transform.h). One object serves one thread at a
// time and keeps nothing from call to call; after Init nothing allocates.
#pragma once

#include "dsp/transform.h"

#include <cstdint>
#include <memory>

class CFFT {
public:
    // length: a power of two from 4 to kMaxTransformLength. Throws std::bad_alloc; CreateFFT is the way in.
    explicit CFFT(int32_t length);
    virtual ~CFFT() = default;
    CFFT(const CFFT&) = delete;
    CFFT& operator=(const CFFT&) = delete;

    // data: N floats. Applies the window, then transforms in place. Always 0.
    virtual int32_t Forward(float* data) noexcept;
    // In place, without the window. Always 0.
    virtual int32_t Inverse(float* data) noexcept;
    // Packed spectrum to magnitudes of bins 0 .. N/2-1 at the front, zeros behind; the Nyquist bin is dropped.
    virtual void ToMagnitude(float* data) noexcept;
    // Packed spectrum to squared magnitudes, bin k at 2k with a 0 at 2k+1; the Nyquist bin is dropped.
    virtual void ToPower(float* data) noexcept;
    // Sets every element below 1e-37 to 0: the denormals, and with them all negative values.
    virtual void FlushSmall(float* data, int32_t n) noexcept;
    // windowType 0: no window; 1: sin(pi i/N)^2; 2: 0.42 - 0.5 cos(2 pi i/N) + 0.08 cos(4 pi i/N); others count as 0.
    // kOutOfMemory leaves the window as it was.
    virtual int32_t Init(int32_t windowType) noexcept;
    virtual void ApplyWindow(float* data) noexcept;

    int32_t GetLength() const { return length; }

private:
    int32_t length;                         // N
    std::unique_ptr<float[]> windowTable;   // N coefficients, null without a window
    RealTransform<float> transform;
};

// *ppOut is null unless the result is kSuccess; the caller deletes it. A length that is no power of two from 4 to
// kMaxTransformLength gives kInvalidArgument, memory out kOutOfMemory.
int32_t CreateFFT(CFFT** ppOut, int32_t length, int32_t windowType);
