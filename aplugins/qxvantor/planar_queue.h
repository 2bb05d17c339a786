// Frames of several channels, one row of floats per channel: the shape in which the engine reads and writes. Host audio
// is interleaved, frame f of channel c at [f * channels + c]; the crossing between both shapes is here and nowhere else.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

constexpr int32_t kMaxDriverChannels = 32;

// Rows of equal length in one piece of memory, zero-filled when made.
class PlanarBlock {
public:
    // False when memory is out; the rows are then gone.
    bool Create(int32_t channels, int32_t frames);
    void Release();
    float* const* Rows() const noexcept { return rows.data(); }
    float* Row(int32_t channel) const noexcept { return rows[size_t(channel)]; }

private:
    std::unique_ptr<float[]> memory;
    std::array<float*, kMaxDriverChannels> rows{};
};

// A first-in first-out store. Its frames always stand from index 0; what is taken from the front makes the rest move up.
// Only Create and Grow allocate. The counts passed in are the caller's to keep within Fill() and Room().
class PlanarQueue {
public:
    bool Create(int32_t channels, int32_t capacity);
    // Keeps the frames. False when memory is out: nothing has changed then.
    bool Grow(int32_t capacity);
    void Release();
    int32_t Fill() const noexcept { return fill; }
    int32_t Capacity() const noexcept { return capacity; }
    int32_t Room() const noexcept { return capacity - fill; }

    void AppendInterleaved(const float* in, int32_t frames) noexcept;
    void AppendPlanar(const float* const rows[], int32_t frames) noexcept;
    void AppendSilence(int32_t frames) noexcept;
    void TakeInterleaved(float* out, int32_t frames) noexcept;
    void TakePlanar(float* const rows[], int32_t frames) noexcept;

private:
    void RemoveFront(int32_t frames) noexcept;

    PlanarBlock block;
    int32_t channels = 0;
    int32_t capacity = 0;
    int32_t fill = 0;
};
