#include "dsp/vtnf_fft.h"

#include "dsp/status.h"
#include "dsp/vtnf.h"

#include <cmath>

namespace {

constexpr float kPi = 3.1415927f;
constexpr float kTwoPi = 6.2831855f;

// Sine and Hann have no zero end points (the period is M + 1), Hamming and Blackman have (M - 1).
float WindowValue(int32_t type, int32_t i, int32_t m)
{
    const float open = float(i + 1) / float(m + 1);
    const float closed = float(i) / float(m - 1);
    switch (type) {
    case 1:
        return std::sin(open * kPi);
    case 2:
        return (1.0f - std::cos(open * kTwoPi)) * 0.5f;
    case 3:
        return 0.54f - 0.46f * std::cos(closed * kTwoPi);
    case 4:
        return 0.42f - 0.5f * std::cos(closed * kTwoPi) + 0.08f * std::cos(2.0f * closed * kTwoPi);
    case 5:
    case 6: {
        const int32_t mirrored = i < m / 2 ? i : m - 1 - i;
        const float half = float(m - 1) / 2.0f;
        const float rise = 1.0f - (half - float(mirrored)) / half;
        return type == 5 ? rise : rise * rise;
    }
    default:
        return 1.0f;
    }
}

}   // namespace

CvtnfFFT_If::CvtnfFFT_If(int32_t frameLength, int32_t zeroPadFactor, int32_t type)
    : fftLength(frameLength * zeroPadFactor), windowLength(frameLength), windowType(type)
{
    window = vtnfAlloc(windowLength);
    if (!window) {
        status = kOutOfMemory;
        return;
    }
    for (int32_t i = 0; i < windowLength; ++i)
        window[i] = WindowValue(windowType, i, windowLength);
}

CvtnfFFT_If::~CvtnfFFT_If()
{
    vtnfFree(&window);
}
