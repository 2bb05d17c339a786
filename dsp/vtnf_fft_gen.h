// The portable class of the frame transform: a complex transform of half the length, and the split of its result into
// the two half spectra.
#pragma once

#include "dsp/vtnf_fft.h"

#include <complex>
#include <memory>
#include <vector>

class CvtnfFFTGen : public CvtnfFFT_If {
public:
    CvtnfFFTGen(int32_t frameLength, int32_t zeroPadFactor, int32_t type);
    void Forward(float* out, const float* in) noexcept override;
    void Inverse(float* out, float* in) noexcept override;
    int32_t Allocate() override { return 0; }
    void Release() override {}

private:
    void Complex(bool inverse) noexcept;

    std::vector<std::complex<float>> points;     // N/2
    std::vector<std::complex<float>> twiddles;   // exp(-2 pi i k / N), k below N/2
};

// The table's entries for this class; see vtnfCreateFFT and vtnfDestroyFFT.
int32_t CreateFFTGen(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType);
int32_t DestroyFFTGen(CvtnfFFT_If** ppFFT);
