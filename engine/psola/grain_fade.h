// The flanks of grains: a rise by the cube of a sine, and the fall that is its complement. A table, so that no grain
// computes a sine.
#pragma once

#include <cstdint>
#include <vector>

class GrainFade {
public:
    // Throws std::bad_alloc.
    GrainFade();

    // The rise over a number of frames: weights from 0 (frame 0) to 1 (the last frame).
    class Rise {
    public:
        float operator[](int32_t i) const noexcept { return table[int32_t(float(i) * step + 0.5f)]; }

    private:
        friend class GrainFade;
        Rise(const float* fade, float tableStep) : table(fade), step(tableStep) {}
        const float* table;
        float step;   // table entries per frame
    };
    Rise Over(int32_t frames) const noexcept
    {
        return {table.data(), frames < 2 ? float(kSize) : float(kSize - 1) / float(frames - 1)};
    }

private:
    static constexpr int32_t kSize = 32768;
    std::vector<float> table;
};
