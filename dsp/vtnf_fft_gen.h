// The frame transform on the product's one transform, for any processor class.
#pragma once

#include "dsp/transform.h"
#include "dsp/vtnf_fft.h"

class CvtnfFFTGen : public CvtnfFFT_If {
public:
    // Throws std::bad_alloc, but for the window, whose failure GetStatus tells.
    CvtnfFFTGen(int32_t frameLength, int32_t zeroPadFactor, int32_t type, const TransformClass& transforms);
    void Forward(float* out, const float* in) noexcept override;
    // Leaves in unchanged.
    void Inverse(float* out, float* in) noexcept override;
    int32_t Allocate() override { return 0; }
    void Release() override {}

    const TransformClass& GetClass() const { return transformClass; }

private:
    const TransformClass& transformClass;
    RealTransform<float> transform;
    AlignedArray<float> timeBuffer;   // fftLength samples
};

// The entries vtnfCreateFFT and vtnfDestroyFFT of each class's table.
int32_t CreateFFTPortable(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType);
int32_t DestroyFFTPortable(CvtnfFFT_If** ppFFT);
int32_t CreateFFTAvx2(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType);
int32_t DestroyFFTAvx2(CvtnfFFT_If** ppFFT);
int32_t CreateFFTAvx512(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType);
int32_t DestroyFFTAvx512(CvtnfFFT_If** ppFFT);
