#include "dsp/kaiser_sinc.h"
#include "dsp/resample.h"

#include "dsp/resample_tap.h"

namespace {

// The sum of one wing over adjacent channels, stepping through the history by stride samples. This is the definition, and
// serves filters of any length.
template <typename Sum, int Lanes>
inline void AddWing(const float* table, const float* deltas, int32_t h, int32_t end, int32_t filterStep, const float* x,
                    ptrdiff_t stride, Sum (&sum)[Lanes])
{
    for (; h < end; h += filterStep, x += stride) {
        const int32_t entry = h / kTableSteps;
        const Sum c = Sum(table[entry]) + Sum(h % kTableSteps) * Sum(1.0 / kTableSteps) * Sum(deltas[entry]);
        for (int lane = 0; lane < Lanes; ++lane)
            sum[lane] += c * Sum(x[lane]);
    }
}

// Two taps at a time; any float address loads.
using Float2 = float __attribute__((vector_size(8), aligned(4), may_alias));
using Float4 = float __attribute__((vector_size(16), aligned(4), may_alias));
using Double2 = double __attribute__((vector_size(16)));

inline Float2 Load2(const float* p)
{
    return *reinterpret_cast<const Float2*>(p);
}

// The coefficients of taps j and j + 1 at a phase within a row.
struct RowAt {
    const float* values;
    const float* slopes;
    float within;

    RowAt(const ResampleRows& rows, int32_t phase)
        : values(rows.Row(phase)), slopes(values + rows.Taps()), within(ResampleRows::Within(phase))
    {
    }
    Float2 Pair(int32_t j) const { return Load2(values + j) + within * Load2(slopes + j); }
};

inline float WeighMono(const RowAt& row, int32_t taps, const float* x, double scale)
{
    Double2 sum = {};
    for (int32_t j = 0; j < taps; j += 2)
        sum += __builtin_convertvector(row.Pair(j), Double2) * __builtin_convertvector(Load2(x + j), Double2);
    return float((sum[0] + sum[1]) * scale);
}

inline void WeighPair(const RowAt& row, int32_t taps, const float* x, float scale, float* out)
{
    Float4 sum = {};
    for (int32_t j = 0; j < taps; j += 2) {
        const Float2 c = row.Pair(j);
        sum += __builtin_shufflevector(c, c, 0, 0, 1, 1) * *reinterpret_cast<const Float4*>(x + 2 * j);
    }
    out[0] = (sum[0] + sum[2]) * scale;
    out[1] = (sum[1] + sum[3]) * scale;
}

template <int Lanes>
inline void WeighLanes(const float* c, int32_t taps, const float* x, ptrdiff_t stride, double scale, float* out)
{
    double sum[Lanes] = {};
    for (int32_t j = 0; j < taps; ++j, x += stride)
        for (int lane = 0; lane < Lanes; ++lane)
            sum[lane] += double(c[j]) * x[lane];
    for (int lane = 0; lane < Lanes; ++lane)
        out[lane] = float(sum[lane] * scale);
}

inline void WeighMany(const RowAt& row, int32_t taps, const float* x, int32_t channels, double scale, float* out)
{
    float c[ResampleRows::kMaxTaps];
    for (int32_t j = 0; j < taps; j += 2)
        *reinterpret_cast<Float2*>(c + j) = row.Pair(j);
    int32_t channel = 0;
    for (; channel + 4 <= channels; channel += 4)
        WeighLanes<4>(c, taps, x + channel, channels, scale, out + channel);
    for (; channel + 2 <= channels; channel += 2)
        WeighLanes<2>(c, taps, x + channel, channels, scale, out + channel);
    if (channel < channels)
        WeighLanes<1>(c, taps, x + channel, channels, scale, out + channel);
}

}   // namespace

CResampleFloat::CResampleFloat(int32_t quality, int32_t maxFrames, int32_t maxChannels, bool pair)
    : CResampleOf(quality, maxFrames, maxChannels, pair)
{
    BuildFilterTable(tableLength);
}

void CResampleFloat::BuildFilterTable(int32_t n)
{
    table.resize(size_t(n));
    deltas.resize(size_t(n));
    for (int32_t i = 0; i < n; ++i)
        table[size_t(i)] = float(KaiserSinc(i, n, rolloff, kaiserBeta));
    for (int32_t i = 0; i + 1 < n; ++i)
        deltas[size_t(i)] = table[size_t(i) + 1] - table[size_t(i)];
}

void CResampleFloat::Reset() noexcept
{
    CResampleOf::Reset();
    rows.Clear();
    lastStep = 0;
}

// Rows are worth their making when a ratio stays; while it glides the table serves.
double CResampleFloat::Interpolate(const Pass& pass, int32_t count, float* out) noexcept
{
    const bool stays = pass.filterStep == lastStep;
    lastStep = pass.filterStep;
    if (stays && rows.FilterStep() != pass.filterStep)
        rows.Build(table.data(), deltas.data(), tableLength, pass.filterStep);
    if (rows.FilterStep() == pass.filterStep)
        return InterpolateByRows(pass, count, out);
    return InterpolateByTable(pass, count, out);
}

double CResampleFloat::InterpolateByRows(const Pass& pass, int32_t count, float* out) const noexcept
{
    const int32_t taps = rows.Taps();
    double position = time;
    for (int32_t i = 0; i < count; ++i, position += pass.step, out += channels) {
        const auto p = int64_t(position * (1 << kPhaseBits));
        const RowAt row(rows, int32_t(p & kPhaseMask));
        const float* x = Frame((p >> kPhaseBits) + 1 - taps / 2);
        if (channels == 1)
            *out = WeighMono(row, taps, x, pass.scale);
        else if (channels == 2 && pairMode)
            WeighPair(row, taps, x, float(pass.scale), out);
        else
            WeighMany(row, taps, x, channels, pass.scale, out);
    }
    return position;
}

double CResampleFloat::InterpolateByTable(const Pass& pass, int32_t count, float* out) const noexcept
{
    const bool pair = pairMode && channels == 2;
    const int32_t leftEnd = tableLength * kTableSteps, rightEnd = leftEnd - kTableSteps;
    double position = time;
    for (int32_t i = 0; i < count; ++i, position += pass.step) {
        const ResampleTap tap(position, pass.filterStep);
        const float* left = Frame(tap.frame);
        const float* right = Frame(tap.frame + 1);
        if (pair) {
            float sum[2] = {};
            AddWing(table.data(), deltas.data(), tap.leftStart, leftEnd, pass.filterStep, left, -2, sum);
            AddWing(table.data(), deltas.data(), tap.rightStart, rightEnd, pass.filterStep, right, 2, sum);
            *out++ = sum[0] * float(pass.scale);
            *out++ = sum[1] * float(pass.scale);
            continue;
        }
        for (int32_t c = 0; c < channels; ++c) {
            double sum[1] = {};
            AddWing(table.data(), deltas.data(), tap.leftStart, leftEnd, pass.filterStep, left + c, -channels, sum);
            AddWing(table.data(), deltas.data(), tap.rightStart, rightEnd, pass.filterStep, right + c, channels, sum);
            *out++ = float(sum[0] * pass.scale);
        }
    }
    return position;
}
