#include "engine/pitch/eq.h"

#include "dsp/status.h"
#include "engine/pitch/eq_design.h"

#include <algorithm>
#include <new>
#include <vector>

namespace {

constexpr float kAntiDenormal = 1e-24f;   // -480 dB
constexpr float kLowPassLimit = 0.45f;    // of the sample rate: a low-pass above it is not worth running
constexpr float kHighPassLimit = 0.01f;   // of the sample rate: nor is a high-pass below it

class CEQ final : public CEQIf {
public:
    CEQ(int32_t rate, int32_t channelCount, int32_t type)
        : channels(channelCount), filterType(type), sampleRate(float(rate)), states(size_t(channelCount)),
          dirty(type != kEqPeakNoDirect), newFrequency(type == kEqHighPass ? 0.0f : 0.5f)
    {
    }
    void ProcessPlanar(const float* const in[], float* const out[], int32_t frames) noexcept override;
    void ProcessInterleaved(const float* in, float* out, int32_t frames) noexcept override;
    int32_t SetParameters(float frequencyHz, float gainDb, float q) noexcept override;
    int32_t GetParameters(float* frequency, float* gain, float* q) const noexcept override;
    int32_t GetFilterType() const noexcept override { return filterType; }
    void Reset() noexcept override { std::fill(states.begin(), states.end(), State{}); }

private:
    struct State {
        float x1 = 0.0f, x2 = 0.0f;   // last two inputs
        float y1 = 0.0f, y2 = 0.0f;   // last two outputs
    };
    void Update() noexcept;
    void Filter(const float* in, float* out, int32_t frames, int32_t stride, float bias, State* state) const noexcept;

    int32_t channels;
    int32_t filterType;
    float sampleRate;   // Hz
    std::vector<State> states;
    float b0 = 0.0f, b1 = 0.0f, b2 = 0.0f, a1 = 0.0f, a2 = 0.0f;   // a1, a2 with the sign that the sum adds them
    bool dirty;                                                    // the coefficients wait for the next block
    bool bypass = true;
    float activeFrequency = 0.0f, activeGain = 0.0f, activeQ = 1.0f;   // frequencies as a fraction of sampleRate
    float newFrequency, newGain = 0.0f, newQ = 1.0f;
};

void CEQ::Update() noexcept
{
    if (!dirty || filterType > kEqOnePole)
        return;
    dirty = false;
    const auto [numerator, denominator] = DesignEq(filterType, newFrequency, newGain, newQ);
    b0 = float(numerator.c0);
    b1 = float(numerator.c1);
    b2 = float(numerator.c2);
    a1 = float(-denominator.c1);
    a2 = float(-denominator.c2);
    if (filterType == kEqLowPass)
        bypass = newFrequency > kLowPassLimit;
    else if (filterType == kEqHighPass)
        bypass = newFrequency < kHighPassLimit;
    else if (filterType == kEqPeak || filterType == kEqPeakNoDirect)
        bypass = false;
    activeFrequency = newFrequency;
    activeGain = newGain;
    activeQ = newQ;
}

void CEQ::Filter(const float* in, float* out, int32_t frames, int32_t stride, float bias, State* state) const noexcept
{
    const double c0 = b0, c1 = b1, c2 = b2, d1 = a1, d2 = a2;
    State s = *state;
    for (ptrdiff_t i = 0, end = ptrdiff_t(frames) * stride; i < end; i += stride) {
        const float x = in[i];
        const auto y = float(c0 * x + c1 * s.x1 + c2 * s.x2 + d1 * s.y1 + d2 * s.y2 + bias);
        s = {x, s.x1, y, s.y1};
        out[i] = y;
    }
    *state = s;
}

void CEQ::ProcessPlanar(const float* const in[], float* const out[], int32_t frames) noexcept
{
    Update();
    if (bypass && static_cast<const void*>(in) == static_cast<const void*>(out))
        return;
    for (int32_t c = 0; c < channels; ++c) {
        if (!bypass)
            Filter(in[c], out[c], frames, 1, 0.0f, &states[size_t(c)]);
        else if (in[c] != out[c])
            std::copy_n(in[c], frames, out[c]);
    }
}

void CEQ::ProcessInterleaved(const float* in, float* out, int32_t frames) noexcept
{
    Update();
    if (!bypass) {
        for (int32_t c = 0; c < channels; ++c)
            Filter(in + c, out + c, frames, channels, kAntiDenormal, &states[size_t(c)]);
    } else if (in != out) {
        std::copy_n(in, ptrdiff_t(frames) * channels, out);
    }
}

int32_t CEQ::SetParameters(float frequencyHz, float gainDb, float q) noexcept
{
    newFrequency = frequencyHz / sampleRate;
    newGain = gainDb;
    newQ = q;
    dirty = true;
    return 0;
}

int32_t CEQ::GetParameters(float* frequency, float* gain, float* q) const noexcept
{
    if (frequency) {
        *frequency = activeFrequency * sampleRate;
        if (bypass && filterType == kEqLowPass)
            *frequency = sampleRate * 0.5f;
        else if (bypass && filterType == kEqHighPass)
            *frequency = 0.0f;
    }
    if (gain)
        *gain = activeGain;
    if (q)
        *q = activeQ;
    return 0;
}

}   // namespace

int32_t CreateEQ(CEQIf** ppEq, int32_t sampleRate, int32_t channels, int32_t filterType)
{
    try {
        *ppEq = nullptr;
        *ppEq = new CEQ(sampleRate, channels, filterType);
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return kSuccess;
}

int32_t DestroyEQ(CEQIf** ppEq)
{
    if (!*ppEq)
        return kInvalidArgument;
    delete *ppEq;
    *ppEq = nullptr;
    return kSuccess;
}
