// The portable class of the frame transform.
#pragma once

#include "dsp/transform.h"
#include "dsp/vtnf_fft.h"

#include <vector>

class CvtnfFFTGen : public CvtnfFFT_If {
public:
    CvtnfFFTGen(int32_t frameLength, int32_t zeroPadFactor, int32_t type);
    void Forward(float* out, const float* in) noexcept override;
    void Inverse(float* out, float* in) noexcept override;
    int32_t Allocate() override { return 0; }
    void Release() override {}

private:
    RealTransform<float> transform;
    std::vector<float> timeBuffer;   // fftLength samples: an inverse transform in full, of which windowLength go out
};

// The table's entries for this class; see vtnfCreateFFT and vtnfDestroyFFT.
int32_t CreateFFTGen(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType);
int32_t DestroyFFTGen(CvtnfFFT_If** ppFFT);
