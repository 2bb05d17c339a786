#include "dsp/vtnf_fft_gen.h"

#include "dsp/status.h"
#include "dsp/vtnf.h"

#include <algorithm>
#include <bit>
#include <memory>
#include <new>

CvtnfFFTGen::CvtnfFFTGen(int32_t frameLength, int32_t zeroPadFactor, int32_t type, const TransformClass& transforms)
    : CvtnfFFT_If(frameLength, zeroPadFactor, type), transformClass(transforms), transform(fftLength, transforms),
      timeBuffer(MakeAligned<float>(size_t(fftLength)))
{
    std::fill_n(timeBuffer.get(), fftLength, 0.0f);
}

void CvtnfFFTGen::Forward(float* out, const float* in) noexcept
{
    if (windowType == 0 && fftLength == windowLength)
        return transform.Forward(out, in);
    float* frame = timeBuffer.get();
    std::copy_n(in, windowLength, frame);
    if (fftLength > windowLength)
        vtnfZero(frame + windowLength, fftLength - windowLength);
    if (windowType != 0)
        vtnfMul(frame, window, windowLength);
    transform.Forward(out, frame);
}

void CvtnfFFTGen::Inverse(float* out, float* in) noexcept
{
    if (fftLength == windowLength)
        return transform.Inverse(out, in);
    transform.Inverse(timeBuffer.get(), in);
    std::copy_n(timeBuffer.get(), windowLength, out);
}

namespace {

bool ValidLengths(int32_t windowLength, int32_t zeroPadFactor)
{
    return windowLength >= 4 && zeroPadFactor >= 1 && std::has_single_bit(uint32_t(windowLength)) &&
           std::has_single_bit(uint32_t(zeroPadFactor)) && int64_t(windowLength) * zeroPadFactor <= kMaxTransformLength;
}

int32_t Create(const TransformClass& transforms, CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor,
               int32_t windowType)
{
    *ppOut = nullptr;
    if (!ValidLengths(windowLength, zeroPadFactor))
        return kInvalidArgument;
    try {
        auto fft = std::make_unique<CvtnfFFTGen>(windowLength, zeroPadFactor, windowType, transforms);
        if (fft->GetStatus() != kSuccess)
            return fft->GetStatus();
        *ppOut = fft.release();
        return kSuccess;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}

int32_t Destroy(const TransformClass& transforms, CvtnfFFT_If** ppFFT)
{
    if (*ppFFT) {
        const auto* fft = dynamic_cast<const CvtnfFFTGen*>(*ppFFT);
        if (!fft || &fft->GetClass() != &transforms)
            return kInvalidArgument;
    }
    delete *ppFFT;
    *ppFFT = nullptr;
    return kSuccess;
}

}   // namespace

int32_t CreateFFTPortable(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType)
{
    return Create(kTransformPortable, ppOut, windowLength, zeroPadFactor, windowType);
}

int32_t DestroyFFTPortable(CvtnfFFT_If** ppFFT)
{
    return Destroy(kTransformPortable, ppFFT);
}

#ifdef QX_X86_CLASSES
int32_t CreateFFTAvx2(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType)
{
    return Create(kTransformAvx2, ppOut, windowLength, zeroPadFactor, windowType);
}

int32_t DestroyFFTAvx2(CvtnfFFT_If** ppFFT)
{
    return Destroy(kTransformAvx2, ppFFT);
}

int32_t CreateFFTAvx512(CvtnfFFT_If** ppOut, int32_t windowLength, int32_t zeroPadFactor, int32_t windowType)
{
    return Create(kTransformAvx512, ppOut, windowLength, zeroPadFactor, windowType);
}

int32_t DestroyFFTAvx512(CvtnfFFT_If** ppFFT)
{
    return Destroy(kTransformAvx512, ppFFT);
}
#endif
