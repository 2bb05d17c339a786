#include "dsp/fft.h"

#include "dsp/status.h"
#include "dsp/vtnf.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <new>
#include <numbers>

namespace {

constexpr float kSmall = 1e-37f;   // just above the smallest normal float

double WindowValue(int32_t type, int32_t i, int32_t n)
{
    const double turn = 2.0 * std::numbers::pi * i / n;
    if (type == 1)
        return 0.5 - 0.5 * std::cos(turn);   // sin^2 of half the angle
    return 0.42 - 0.5 * std::cos(turn) + 0.08 * std::cos(2.0 * turn);
}

}   // namespace

CFFT::CFFT(int32_t fftLength) : length(fftLength), transform(fftLength) {}

int32_t CFFT::Forward(float* data) noexcept
{
    ApplyWindow(data);
    transform.Forward(data, data);
    return kSuccess;
}

int32_t CFFT::Inverse(float* data) noexcept
{
    transform.Inverse(data, data);
    return kSuccess;
}

void CFFT::ToMagnitude(float* data) noexcept
{
    vtnfMagnitude(data, data, length / 2);
    vtnfZero(data + length / 2, length / 2);
}

void CFFT::ToPower(float* data) noexcept
{
    data[0] *= data[0];
    data[1] = 0.0f;
    for (int32_t i = 2; i < length; i += 2) {
        data[i] = data[i] * data[i] + data[i + 1] * data[i + 1];
        data[i + 1] = 0.0f;
    }
}

void CFFT::FlushSmall(float* data, int32_t n) noexcept
{
    vtnfThresholdLT(data, kSmall, 0.0f, n);
}

int32_t CFFT::Init(int32_t windowType) noexcept
{
    if (windowType != 1 && windowType != 2) {
        windowTable.reset();
        return kSuccess;
    }
    std::unique_ptr<float[]> table(new (std::nothrow) float[size_t(length)]);
    if (!table)
        return kOutOfMemory;
    for (int32_t i = 0; i < length; ++i)
        table[size_t(i)] = float(WindowValue(windowType, i, length));
    windowTable = std::move(table);
    return kSuccess;
}

void CFFT::ApplyWindow(float* data) noexcept
{
    if (windowTable)
        vtnfMul(data, windowTable.get(), length);
}

int32_t CreateFFT(CFFT** ppOut, int32_t length, int32_t windowType)
{
    *ppOut = nullptr;
    if (length < 4 || length > kMaxTransformLength || !std::has_single_bit(uint32_t(length)))
        return kInvalidArgument;
    vtnfInit();
    try {
        auto fft = std::make_unique<CFFT>(length);
        if (const int32_t status = fft->Init(windowType); status != kSuccess)
            return status;
        *ppOut = fft.release();
        return kSuccess;
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
}
