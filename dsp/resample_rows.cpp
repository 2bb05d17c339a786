#include "dsp/resample_rows.h"

#include "dsp/resample_tap.h"

ResampleRows::ResampleRows() : rows(std::size_t(kRows) * 2 * kMaxTaps) {}

bool ResampleRows::Build(const float* table, const float* deltas, int32_t tableLength, int32_t step) noexcept
{
    const int32_t leftEnd = tableLength * kTableSteps, rightEnd = leftEnd - kTableSteps;
    const int32_t wing = (leftEnd + step - 1) / step;
    if (2 * wing > kMaxTaps)
        return false;
    filterStep = step;
    taps = 2 * wing;
    const auto coefficient = [&](double position, int32_t end) {
        if (position >= end)
            return 0.0;
        const auto entry = int32_t(position / kTableSteps);
        return table[entry] + (position / kTableSteps - entry) * deltas[entry];
    };
    // The right wing ends where a row begins; a line through inner phases keeps that edge sharp.
    constexpr double kFirst = 1.0, kLast = (1 << kRowBits) - 1.0;
    constexpr double kPhases = 1 << kPhaseBits;
    for (int32_t row = 0; row < kRows; ++row) {
        float* values = rows.data() + row * 2 * taps;
        const double first = ((row << kRowBits) + kFirst) / kPhases, last = ((row << kRowBits) + kLast) / kPhases;
        const auto set = [&](int32_t tap, double atFirst, double atLast) {
            const double slope = (atLast - atFirst) / (kLast - kFirst);
            values[tap] = float(atFirst - kFirst * slope);
            values[taps + tap] = float(slope);
        };
        for (int32_t j = 0; j < wing; ++j) {
            set(wing - 1 - j, coefficient((first + j) * step, leftEnd), coefficient((last + j) * step, leftEnd));
            set(wing + j, coefficient((1.0 - first + j) * step, rightEnd),
                coefficient((1.0 - last + j) * step, rightEnd));
        }
    }
    return true;
}
