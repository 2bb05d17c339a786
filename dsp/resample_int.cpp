#include "dsp/kaiser_sinc.h"
#include "dsp/resample.h"

#include "dsp/resample_tap.h"

#include <algorithm>
#include <cmath>

CResampleInt::CResampleInt(int32_t quality, int32_t maxFrames, int32_t maxChannels, bool pair)
    : CResampleOf(quality, maxFrames, maxChannels, pair)
{
    BuildFilterTable(tableLength);
}

void CResampleInt::BuildFilterTable(int32_t n)
{
    table.resize(size_t(n));
    deltas.resize(size_t(n));
    for (int32_t i = 0; i < n; ++i)
        table[size_t(i)] = int16_t(std::rint(KaiserSinc(i, n, rolloff, kaiserBeta) * 32767.0));
    for (int32_t i = 0; i + 1 < n; ++i)
        deltas[size_t(i)] = int16_t(table[size_t(i) + 1] - table[size_t(i)]);
}

double CResampleInt::Interpolate(const Pass& pass, int32_t count, int16_t* out) noexcept
{
    const int32_t leftEnd = tableLength * kTableSteps, rightEnd = leftEnd - kTableSteps;
    const auto scale = int32_t(pass.scale * 32768.0);
    const auto wing = [&](const int16_t* x, int32_t h, int32_t end, ptrdiff_t stride) {
        int64_t sum = 0;
        for (; h < end; h += pass.filterStep, x += stride) {
            const auto entry = size_t(h / kTableSteps);
            const int32_t c = table[entry] + ((h % kTableSteps * deltas[entry]) >> 7);
            sum += (c * *x) >> 8;
        }
        return sum;
    };
    double position = time;
    for (int32_t i = 0; i < count; ++i, position += pass.step) {
        const ResampleTap tap(position, pass.filterStep);
        for (int32_t c = 0; c < channels; ++c) {
            const int64_t sum = wing(Frame(tap.frame) + c, tap.leftStart, leftEnd, -channels) +
                                wing(Frame(tap.frame + 1) + c, tap.rightStart, rightEnd, channels);
            *out++ = int16_t(std::clamp<int64_t>(((sum >> 7) * scale) >> 15, INT16_MIN, INT16_MAX));
        }
    }
    return position;
}
