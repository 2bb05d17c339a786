// The frame transform of the spectral code: real data, a power of two, in the packed layout (see dsp/vtnf.h).
//   X[k] = sum over n of x[n] exp(-2 pi i k n / N)
// No direction scales, so a forward and an inverse transform in sequence give N times the input. After construction
// nothing allocates; one object serves one thread at a time, and keeps nothing from call to call.
#pragma once

#include <cstdint>

class CvtnfFFT_If {
public:
    // Reads windowLength samples, weights them when windowType is not 0, pads with zeros to fftLength and writes
    // fftLength floats of packed spectrum. in and out may be the same array.
    virtual void Forward(float* out, const float* in) noexcept = 0;
    // Reads fftLength floats of packed spectrum, which callers must take as destroyed, and writes the first
    // windowLength samples. in and out may be the same array.
    virtual void Inverse(float* out, float* in) noexcept = 0;
    // Make and free plan and work buffer; constructor and destructor do this on their own.
    virtual int32_t Allocate() = 0;
    virtual void Release() = 0;
    virtual ~CvtnfFFT_If();

    CvtnfFFT_If(const CvtnfFFT_If&) = delete;
    CvtnfFFT_If& operator=(const CvtnfFFT_If&) = delete;

    int32_t GetLength() const { return fftLength; }
    int32_t GetStatus() const { return status; }   // kSuccess, or kOutOfMemory from construction

protected:
    CvtnfFFT_If(int32_t frameLength, int32_t zeroPadFactor, int32_t type);

    int32_t fftLength;         // N = windowLength * zeroPadFactor
    int32_t windowLength;      // samples taken from the caller per transform
    float* window = nullptr;   // windowLength coefficients
    int32_t status = 0;
    void* spec = nullptr;   // plan
    void* work = nullptr;   // its work buffer
    int32_t windowType;     // 0: no window is applied
};
