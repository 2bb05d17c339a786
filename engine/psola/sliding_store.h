// Frames of several channels that are written at the end and dropped at the front. Dropping is free: what is held moves to
// the front of the memory only when the room behind it runs out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class SlidingStore {
public:
    // Room for frames of each channel. Throws std::bad_alloc.
    SlidingStore(int32_t channels, int32_t frames)
        : rows(std::size_t(channels), std::vector<float>(std::size_t(frames))), capacity(frames)
    {
    }
    // Frame 0 of what is held; valid until the next Reserve.
    float* Row(int32_t channel) noexcept { return rows[std::size_t(channel)].data() + head; }
    // Makes room for frames from frame 0 on, of which the first held keep their content; allocates only beyond the most
    // that was ever asked for. False when memory is out: what is held stays.
    bool Reserve(int64_t frames, int32_t held) noexcept;
    // The oldest frames are gone; frames at most what is held.
    void Drop(int32_t frames) noexcept { head += frames; }
    void Clear() noexcept { head = 0; }

private:
    bool Grow(int64_t frames) noexcept;

    std::vector<std::vector<float>> rows;
    int64_t capacity;   // of each row
    int32_t head = 0;   // where frame 0 stands
};
