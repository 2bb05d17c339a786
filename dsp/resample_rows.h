// The resampler's filter at one ratio, cut into 256 phases of the read position: the coefficients of an output frame stand
// side by side in the order of the input frames, each with its slope over the phase. Then they are two vector operations
// instead of a walk through the table. At ratios of 1 and above, where the walk's steps are whole table entries, both ways
// give the same to rounding. Below, the walk cuts each position to a step, and a row cuts a knee of the table: they differ
// by up to 3e-5 of the filter's peak, which is as much as cutting the read position itself costs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class ResampleRows {
public:
    static constexpr int32_t kMaxTaps = 32;

    // Throws std::bad_alloc.
    ResampleRows();
    // Rows for wings of tableLength entries at this step. False, and nothing changed, when they are too long.
    bool Build(const float* table, const float* deltas, int32_t tableLength, int32_t step) noexcept;
    void Clear() noexcept { filterStep = 0; }
    // The step that the rows are for; 0: none.
    int32_t FilterStep() const noexcept { return filterStep; }
    // Coefficients of an output frame, even, the first one for frame - Taps() / 2 + 1.
    int32_t Taps() const noexcept { return taps; }
    // Taps() coefficients at phase 0, then Taps() slopes by a 1/32768 of a frame, of the row that holds the phase.
    const float* Row(int32_t phase) const noexcept { return rows.data() + (phase >> kRowBits) * 2 * taps; }
    // The phase within its row.
    static float Within(int32_t phase) noexcept { return float(phase & ((1 << kRowBits) - 1)); }

private:
    static constexpr int32_t kRowBits = 7;   // of the phase's 15: 256 rows
    static constexpr int32_t kRows = 256;

    std::vector<float> rows;
    int32_t filterStep = 0;
    int32_t taps = 0;
};
