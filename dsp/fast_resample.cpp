#include "dsp/fast_resample.h"

#include "dsp/kernels.h"
#include "dsp/vtnf.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int32_t kHistory = 4;   // frames of the past in front of position 0, of which the cubic reads three

}   // namespace

CFastResample::CFastResample(int32_t channelCount, int32_t frameCapacity)
    : channels(channelCount), capacity(frameCapacity)
{
    vtnfInit();
    for (int32_t c = 0; c < channels; ++c) {
        channelBuffers.push_back(std::make_unique<float[]>(size_t(kHistory + capacity + 1)));
        starts.push_back(channelBuffers.back().get() + kHistory);
    }
}

// Every read position below frames counts. position and ratio have few enough bits that their multiples are exact.
int32_t CFastResample::OutputFrames(int32_t frames, float ratio) const noexcept
{
    if (position >= frames)
        return 0;
    auto count = int32_t(std::ceil((frames - position) / ratio));
    while (count > 0 && position + (count - 1) * double(ratio) >= frames)
        --count;
    while (position + count * double(ratio) < frames)
        ++count;
    return count;
}

int32_t CFastResample::Process(const float* const in[], int32_t frames, float* const out[], float ratio) noexcept
{
    if (!(ratio > 0.0f))
        return 0;
    for (int32_t c = 0; c < channels; ++c)
        std::copy_n(in[c], frames, channelBuffers[size_t(c)].get() + kHistory);

    const int32_t written = OutputFrames(frames, ratio);
    Kernels().Cubic(out, starts.data(), channels, position, ratio, written);

    position += written * double(ratio) - frames;
    for (const auto& buffer : channelBuffers) {
        float* x = buffer.get() + kHistory;
        std::copy(x + frames - 3, x + frames, x - 3);
    }
    return written;
}

void CFastResample::Reset() noexcept
{
    position = 0.0;
    for (const auto& buffer : channelBuffers)
        std::fill_n(buffer.get(), kHistory, 0.0f);
}
