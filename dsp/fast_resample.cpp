#include "dsp/fast_resample.h"

#include <algorithm>

namespace {

constexpr int32_t kHistory = 4;   // frames of the past in front of position 0, of which the cubic reads three

}   // namespace

CFastResample::CFastResample(int32_t channelCount, int32_t frameCapacity)
    : channels(channelCount), capacity(frameCapacity)
{
    for (int32_t c = 0; c < channels; ++c)
        channelBuffers.push_back(std::make_unique<float[]>(size_t(kHistory + capacity)));
}

int32_t CFastResample::Process(const float* const in[], int32_t frames, float* const out[], float ratio) noexcept
{
    for (int32_t c = 0; c < channels; ++c)
        std::copy_n(in[c], frames, channelBuffers[size_t(c)].get() + kHistory);

    int32_t written = 0;
    for (; readIndex < frames; ++written) {
        const float t = fraction, t2 = t * t, t3 = t2 * t;
        const float h00 = 2.0f * t3 - 3.0f * t2 + 1.0f;
        const float h10 = t3 - 2.0f * t2 + t;
        const float h11 = t3 - t2;
        const float h01 = 3.0f * t2 - 2.0f * t3;
        for (int32_t c = 0; c < channels; ++c) {
            const float* x = channelBuffers[size_t(c)].get() + kHistory + readIndex;
            const float m0 = (x[-1] - x[-3]) / 2.0f;
            const float m1 = (x[0] - x[-2]) / 2.0f;
            out[c][written] = h00 * x[-2] + h01 * x[-1] + h10 * m0 + h11 * m1;
        }
        position += ratio;
        readIndex = int32_t(position);
        fraction = float(position - readIndex);
    }

    position -= frames;
    readIndex = int32_t(position);
    for (int32_t c = 0; c < channels; ++c) {
        float* x = channelBuffers[size_t(c)].get() + kHistory;
        std::copy(x + frames - 3, x + frames, x - 3);
    }
    return written;
}

void CFastResample::Reset() noexcept
{
    position = 0.0;
    readIndex = 0;
    fraction = 0.0f;
    for (auto& buffer : channelBuffers)
        std::fill_n(buffer.get(), kHistory, 0.0f);
}
