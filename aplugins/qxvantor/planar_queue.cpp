#include "aplugins/qxvantor/planar_queue.h"

#include "dsp/kernels.h"

#include <algorithm>
#include <new>
#include <utility>

bool PlanarBlock::Create(int32_t channels, int32_t frames)
{
    const auto stride = size_t(frames);
    memory.reset(new (std::nothrow) float[size_t(channels) * stride]());
    for (size_t c = 0; c < rows.size(); ++c)
        rows[c] = memory && c < size_t(channels) ? memory.get() + c * stride : nullptr;
    return memory != nullptr;
}

void PlanarBlock::Release()
{
    memory.reset();
    rows.fill(nullptr);
}

bool PlanarQueue::Create(int32_t channelCount, int32_t frames)
{
    channels = channelCount;
    fill = 0;
    capacity = block.Create(channels, frames) ? frames : 0;
    return capacity == frames;
}

bool PlanarQueue::Grow(int32_t frames)
{
    PlanarBlock larger;
    if (!larger.Create(channels, frames))
        return false;
    for (int32_t c = 0; c < channels; ++c)
        std::copy_n(block.Row(c), fill, larger.Row(c));
    block = std::move(larger);
    capacity = frames;
    return true;
}

void PlanarQueue::Release()
{
    block.Release();
    capacity = fill = 0;
}

void PlanarQueue::AppendInterleaved(const float* in, int32_t frames) noexcept
{
    std::array<float*, kMaxDriverChannels> rows;
    for (int32_t c = 0; c < channels; ++c)
        rows[size_t(c)] = block.Row(c) + fill;
    Kernels().Deinterleave(rows.data(), in, channels, frames);
    fill += frames;
}

void PlanarQueue::AppendPlanar(const float* const rows[], int32_t frames) noexcept
{
    for (int32_t c = 0; c < channels; ++c)
        std::copy_n(rows[c], frames, block.Row(c) + fill);
    fill += frames;
}

void PlanarQueue::AppendSilence(int32_t frames) noexcept
{
    for (int32_t c = 0; c < channels; ++c)
        std::fill_n(block.Row(c) + fill, frames, 0.0f);
    fill += frames;
}

void PlanarQueue::TakeInterleaved(float* out, int32_t frames) noexcept
{
    Kernels().Interleave(out, block.Rows(), channels, frames);
    RemoveFront(frames);
}

void PlanarQueue::TakePlanar(float* const rows[], int32_t frames) noexcept
{
    for (int32_t c = 0; c < channels; ++c)
        std::copy_n(block.Row(c), frames, rows[c]);
    RemoveFront(frames);
}

void PlanarQueue::RemoveFront(int32_t frames) noexcept
{
    for (int32_t c = 0; c < channels; ++c)
        std::copy(block.Row(c) + frames, block.Row(c) + fill, block.Row(c));   // towards the front: may overlap
    fill -= frames;
}
