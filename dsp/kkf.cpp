#include "dsp/kkf.h"

#include "dsp/fft.h"
#include "dsp/kernels.h"
#include "dsp/status.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <new>

namespace {

constexpr int32_t kMinSize = 8;
constexpr int32_t kMaxSize = 1 << 24;
constexpr int32_t kGuardedBins = 4;

// Levels are compared in steps of 1/kTieSteps: nearly equal peaks tie, and the earlier lag stays. Without this, noise
// lets the second period win and the pitch drops an octave.
constexpr double kTieSteps = 10000.0;

// The low bins of quiet, slow material vanish first; held at the smallest normal number they cannot turn denormal.
float Guarded(float product)
{
    if (product > -FLT_MIN && product < FLT_MIN)
        return product < 0.0f ? -FLT_MIN : FLT_MIN;
    return product;
}

}   // namespace

CKKF::CKKF(int32_t length)
    : fftSize(int32_t(std::bit_ceil(uint32_t(std::max(length, kMinSize))))), halfSize(fftSize / 2),
      bufferA(size_t(fftSize)), bufferB(size_t(fftSize)), result(size_t(fftSize))
{
    CFFT* transform = nullptr;
    if (CreateFFT(&transform, fftSize, 0) != kSuccess)
        throw std::bad_alloc();
    fft.reset(transform);
}

CKKF::~CKKF() = default;

int32_t CKKF::Correlate(const float* a, const float* b, int32_t lengthA, int32_t lengthB) noexcept
{
    std::fill(std::copy_n(a, lengthA, bufferA.begin()), bufferA.end(), 0.0f);
    std::fill(std::copy_n(b, lengthB, bufferB.begin()), bufferB.end(), 0.0f);
    fft->Forward(bufferA.data());
    fft->Forward(bufferB.data());
    MultiplySpectra(bufferA.data(), bufferB.data(), result.data());
    fft->Inverse(result.data());
    fft->FlushSmall(result.data(), fftSize);
    return 0;
}

void CKKF::MultiplySpectra(const float* a, const float* b, float* out) noexcept
{
    out[0] = Guarded(a[0] * b[0]);
    out[1] = Guarded(a[1] * b[1]);   // N/2 is even: no sign change at the Nyquist bin
    float sign = -1.0f;
    for (int32_t i = 2; i < 2 * kGuardedBins; i += 2, sign = -sign) {
        out[i] = sign * (Guarded(a[i] * b[i]) + Guarded(a[i + 1] * b[i + 1]));
        out[i + 1] = sign * (Guarded(b[i] * a[i + 1]) - Guarded(b[i + 1] * a[i]));
    }
    Kernels().CorrelationProduct(out, a, b, kGuardedBins, halfSize);
}

int32_t CKKF::FindMaxNear(int32_t halfRange, int32_t predictedLag, int32_t span) const noexcept
{
    const int32_t predicted = halfSize + predictedLag;
    int32_t lo = predicted - span, hi = predicted + span;
    if (lo < halfSize - halfRange) {
        lo = halfSize - halfRange - 1;
        hi = lo + 2 * span;
    } else if (hi > halfSize + halfRange) {
        hi = halfSize + halfRange - 1;
        lo = hi - 2 * span;
    }
    double best = 0.0;
    int32_t bestIndex = predicted;
    for (int32_t i = std::max(lo, 0); i <= std::min(hi, fftSize - 1); ++i) {
        const double level = std::floor(result[size_t(i)] * kTieSteps);
        if (level > best) {
            best = level;
            bestIndex = i;
        }
    }
    return bestIndex - halfSize;
}

int32_t CKKF::GetResult(float** p) noexcept
{
    *p = result.data();
    return fftSize;
}

int32_t CreateKKF(CKKF** ppKkf, int32_t length)
{
    *ppKkf = nullptr;
    if (length < 1 || length > kMaxSize)
        return kInvalidArgument;
    try {
        *ppKkf = new CKKF(length);
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return kSuccess;
}

int32_t DestroyKKF(CKKF* pKkf)
{
    delete pKkf;
    return 0;
}
