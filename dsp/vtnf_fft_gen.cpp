#include "dsp/vtnf_fft_gen.h"

#include "dsp/status.h"
#include "dsp/vtnf.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <new>

CvtnfFFTGen::CvtnfFFTGen(int32_t frameLength, int32_t zeroPadFactor, int32_t type)
    : CvtnfFFT_If(frameLength, zeroPadFactor, type), transform(fftLength), timeBuffer(size_t(fftLength))
{
}

void CvtnfFFTGen::Forward(float* out, const float* in) noexcept
{
    if (in != out)
        std::copy_n(in, windowLength, out);
    if (fftLength > windowLength)
        vtnfZero(out + windowLength, fftLength - windowLength);
    if (windowType != 0)
        vtnfMul(out, window, windowLength);
    transform.Forward(out, out);
}

void CvtnfFFTGen::Inverse(float* out, float* in) noexcept
{
    transform.Inverse(timeBuffer.data(), in);
    std::copy_n(timeBuffer.data(), windowLength, out);
}

int32_t CreateFFTGen(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType)
{
    *ppOut = nullptr;
    if (windowLength < 1 || zeroPadFactor < 1 || !std::has_single_bit(uint32_t(windowLength)) ||
        !std::has_single_bit(uint32_t(zeroPadFactor)) || windowLength % 4 != 0)
        return kInvalidArgument;
    try {
        auto fft = std::make_unique<CvtnfFFTGen>(windowLength, zeroPadFactor, windowType);
        if (fft->GetStatus() != kSuccess)
            return fft->GetStatus();
        *ppOut = fft.release();
        return kSuccess;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

int32_t DestroyFFTGen(CvtnfFFT_If** ppFFT)
{
    if (*ppFFT && !dynamic_cast<CvtnfFFTGen*>(*ppFFT))
        return kInvalidArgument;
    delete *ppFFT;
    *ppFFT = nullptr;
    return kSuccess;
}
