// Owners of what the vector table hands out: buffers and transforms. Making one allocates and may throw std::bad_alloc,
// which the factories turn into kOutOfMemory; nothing else here throws.
#pragma once

#include "dsp/vtnf.h"
#include "dsp/vtnf_fft.h"

#include <memory>
#include <new>

struct VtnfFree {
    void operator()(float* p) const noexcept { vtnfFree(&p); }
};
using VtnfBuffer = std::unique_ptr<float[], VtnfFree>;

// n zeros, n at least 1.
inline VtnfBuffer MakeVtnfBuffer(int32_t n)
{
    VtnfBuffer buffer(vtnfAlloc(n));
    if (!buffer)
        throw std::bad_alloc();
    vtnfZero(buffer.get(), n);
    return buffer;
}

struct FftDestroy {
    void operator()(CvtnfFFT_If* p) const noexcept { vtnfDestroyFFT(&p); }
};
using FftPtr = std::unique_ptr<CvtnfFFT_If, FftDestroy>;

// An unwindowed transform of length n, a power of two from 4.
inline FftPtr MakeFft(int32_t n)
{
    CvtnfFFT_If* fft = nullptr;
    if (vtnfCreateFFT(&fft, n, 1, 0) != 0)
        throw std::bad_alloc();
    return FftPtr(fft);
}
