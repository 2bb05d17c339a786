#include "engine/spectral_envelope.h"

#include "dsp/status.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace {

constexpr float kLogFloor = 1e-24f;   // -480 dB: silence has a logarithm

// Noise settles in about 4 passes, partials in 3 to 20 at the orders in use, and the longest frame at the lowest order in
// about 500. The bound ends what is not finite and can never settle.
constexpr int32_t kMaxPasses = 1000;

}   // namespace

CSpectralEnvelope::CSpectralEnvelope(int32_t n)
    : size(n), order(n / 32), spectrumWork(MakeVtnfBuffer(n)), cepstrum(MakeVtnfBuffer(n)), lifter(MakeVtnfBuffer(n)),
      fft(MakeFft(n))
{
}

CSpectralEnvelope::~CSpectralEnvelope() = default;

void CSpectralEnvelope::SetOrder(int32_t n) noexcept
{
    n = std::clamp(n, 0, size / 2);
    order = 2 * n;
    vtnfZero(lifter.get(), size);
    for (int32_t q = 0; q < n; ++q) {
        const double c = std::cos(std::numbers::pi * q / (2 * n - 1));
        lifter[size_t(2) * size_t(q)] = float(c * c);
    }
}

void CSpectralEnvelope::Estimate(float* spectrum, float* envelope) noexcept
{
    const int32_t half = size / 2;
    vtnfThresholdLn(spectrum, kLogFloor, kLogFloor, half);
    spectrum[half] = spectrum[half - 1];
    std::reverse_copy(spectrum + 1, spectrum + half, spectrum + half + 1);   // even, so that its cepstrum is real
    vtnfZero(cepstrum.get(), size);

    float excess = threshold + 1.0f;
    for (int32_t pass = 0; excess > threshold && pass < kMaxPasses; ++pass) {
        Smooth(spectrum, envelope);
        excess = Raise(spectrum, envelope);
    }
    for (int32_t k = half - 1; k >= 0; --k)
        envelope[2 * k] = envelope[2 * k + 1] = envelope[k];
    vtnfExp(envelope, size);
}

void CSpectralEnvelope::Smooth(const float* logSpectrum, float* smooth) noexcept
{
    float* const work = spectrumWork.get();
    fft->Forward(work, logSpectrum);
    vtnfSub(work, cepstrum.get(), size);
    vtnfMul(work, lifter.get(), size);
    vtnfAdd(cepstrum.get(), work, size);
    std::copy_n(cepstrum.get(), size, work);
    fft->Inverse(smooth, work);
    vtnfMulScalar(smooth, 1.0f / float(size), size);
}

float CSpectralEnvelope::Raise(float* logSpectrum, const float* smooth) noexcept
{
    vtnfMaxEvery(logSpectrum, smooth, size);
    float* const excess = spectrumWork.get();
    std::copy_n(logSpectrum, size, excess);
    vtnfSub(excess, smooth, size);
    float largest = 0.0f;
    int32_t where = 0;
    vtnfMaxIndex(excess, &largest, &where, size);
    return largest;
}

int32_t CreateSpectralEnvelope(CSpectralEnvelope** ppEnvelope, int32_t size)
{
    *ppEnvelope = nullptr;
    if (size < 4 || !std::has_single_bit(uint32_t(size)))
        return kInvalidArgument;
    vtnfInit();
    try {
        *ppEnvelope = new CSpectralEnvelope(size);
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return kSuccess;
}

int32_t DestroySpectralEnvelope(CSpectralEnvelope** ppEnvelope)
{
    if (!*ppEnvelope)
        return kInvalidArgument;
    delete *ppEnvelope;
    *ppEnvelope = nullptr;
    return kSuccess;
}
