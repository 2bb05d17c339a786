#include "dsp/transform_plan.h"

#include <bit>
#include <cmath>
#include <complex>
#include <map>
#include <mutex>
#include <new>
#include <numbers>
#include <utility>
#include <vector>

namespace {

constexpr std::align_val_t kAlignment{64};   // a cache line, and the widest vector

// Place, among the points that a vector holds, of the one in this lane: interleaved points are taken apart within groups
// of 128 bits, so each group holds G/2 points of the first half of the run and G/2 of the second.
template <class T>
int32_t LaneOrder(int32_t lane, int32_t lanes)
{
    if (lanes == 1)
        return 0;
    constexpr int32_t groupSize = 16 / sizeof(T), half = groupSize / 2;
    const int32_t group = lane / groupSize, in = lane % groupSize;
    return (in < half ? 0 : lanes / 2) + group * half + in % half;
}

// Widest first; W lanes need W columns at least.
template <class T>
const TransformKernel<T>& ChooseKernel(const TransformClass& processorClass, int32_t points)
{
    const TransformKernel<T>* kernel;
    if constexpr (sizeof(T) == sizeof(float))
        kernel = processorClass.floats;
    else
        kernel = processorClass.doubles;
    while (int64_t(kernel->lanes) * kernel->lanes > points)
        ++kernel;
    return *kernel;
}

}   // namespace

void AlignedDelete::operator()(void* p) const
{
    ::operator delete[](p, kAlignment);
}

template <class T>
AlignedArray<T> MakeAligned(size_t count)
{
    return AlignedArray<T>(static_cast<T*>(::operator new[](count * sizeof(T), kAlignment)));
}
template AlignedArray<float> MakeAligned(size_t);
template AlignedArray<double> MakeAligned(size_t);

// exp(-2 pi i j / n) for any j, from the first eighth of the circle: exact symmetry, and few calls of the library.
template <class T>
class TransformPlan<T>::Roots {
public:
    explicit Roots(int64_t count) : n(count)
    {
        for (int64_t j = 0; j <= n / 8; ++j)
            eighth.push_back(std::polar(1.0, -2.0 * std::numbers::pi * double(j) / double(n)));
    }

    std::complex<double> operator()(int64_t j) const
    {
        j %= n;
        if (2 * j > n)
            return std::conj((*this)(n - j));
        if (4 * j > n)
            return -std::conj((*this)(n / 2 - j));
        if (8 * j <= n)
            return eighth[size_t(j)];
        if (n % 4 != 0)   // n = 2: no quarter circle to mirror at
            return {j == 0 ? 1.0 : -1.0, 0.0};
        const auto mirrored = (*this)(n / 4 - j);
        return {-mirrored.imag(), -mirrored.real()};
    }

    const int64_t n;

private:
    std::vector<std::complex<double>> eighth;
};

template <class T>
TransformPlan<T>::TransformPlan(const TransformClass& processorClass, int32_t points)
    : kernel(ChooseKernel<T>(processorClass, points))
{
    tables.points = points;
    tables.columns = points / kernel.lanes;
    ChooseRadices();
    const size_t m = size_t(points), w = size_t(kernel.lanes);
    twiddles = MakeAligned<T>(4 * (m / w) + 2 * (m / w) * (w - 1) + 2 * (m / 2 + w));
    const Roots roots(2 * int64_t(points));
    T* at = FillLaneTwiddles(roots, twiddles.get());
    at = FillRealTwiddles(roots, at);
    FillStageTwiddles(roots, at);
    FillOrder();
}

// Radix 8 as far as it goes, and as few of the others as possible.
template <class T>
void TransformPlan<T>::ChooseRadices()
{
    int32_t bits = std::countr_zero(uint32_t(tables.columns));
    while (bits > 0) {
        const int32_t step = bits == 4 || bits == 2 ? 2 : bits == 1 ? 1 : 3;
        tables.radix[tables.stageCount++] = 1 << step;
        bits -= step;
    }
}

template <class T>
T* TransformPlan<T>::FillStageTwiddles(const Roots& roots, T* at)
{
    int32_t length = tables.columns;
    for (int32_t stage = 0; stage < tables.stageCount; ++stage) {
        const int32_t radix = tables.radix[stage];
        tables.stageTwiddles[stage] = at;
        for (int32_t p = 0; p < length / radix; ++p)
            for (int32_t s = 1; s < radix; ++s) {
                const auto root = roots(roots.n / length * s * p);
                *at++ = T(root.real());
                *at++ = T(root.imag());
            }
        length /= radix;
    }
    return at;
}

template <class T>
T* TransformPlan<T>::FillLaneTwiddles(const Roots& roots, T* at)
{
    tables.laneTwiddles = at;
    const int32_t lanes = kernel.lanes;
    for (int32_t k = 0; k < tables.columns; k += lanes)
        for (int32_t w = 1; w < lanes; ++w, at += 2 * lanes)
            for (int32_t lane = 0; lane < lanes; ++lane) {
                const auto root = roots(2 * int64_t(w) * (k + LaneOrder<T>(lane, lanes)));
                at[lane] = T(root.real());
                at[lanes + lane] = T(root.imag());
            }
    return at;
}

template <class T>
T* TransformPlan<T>::FillRealTwiddles(const Roots& roots, T* at)
{
    tables.realTwiddles = at;
    const int32_t lanes = kernel.lanes;
    for (int32_t k = 1; k <= tables.points / 2; k += lanes, at += 2 * lanes)
        for (int32_t lane = 0; lane < lanes; ++lane) {
            const auto root = 0.5 * roots(k + LaneOrder<T>(lane, lanes));
            at[lane] = T(root.real());
            at[lanes + lane] = T(root.imag());
        }
    return at;
}

// A stage sends frequency k = radix k' + s of its length to block s, place k' of the shorter transform.
template <class T>
void TransformPlan<T>::FillOrder()
{
    order = std::make_unique<uint32_t[]>(size_t(tables.columns));
    const int32_t lanes = kernel.lanes;
    for (int32_t i = 0; i < tables.columns; ++i) {
        int32_t k = i - i % lanes + LaneOrder<T>(i % lanes, lanes), length = tables.columns;
        uint32_t column = 0;
        for (int32_t stage = 0; stage < tables.stageCount; ++stage) {
            length /= tables.radix[stage];
            column += uint32_t(k % tables.radix[stage] * length);
            k /= tables.radix[stage];
        }
        order[size_t(i)] = column;
    }
    tables.order = order.get();
}

template class TransformPlan<float>;
template class TransformPlan<double>;

template <class T>
std::shared_ptr<const TransformPlan<T>> SharedPlan(const TransformClass& processorClass, int32_t points)
{
    static std::mutex mutex;
    static std::map<std::pair<const TransformClass*, int32_t>, std::weak_ptr<const TransformPlan<T>>> plans;
    const std::lock_guard lock(mutex);
    auto& known = plans[{&processorClass, points}];
    if (auto plan = known.lock())
        return plan;
    auto plan = std::make_shared<const TransformPlan<T>>(processorClass, points);
    known = plan;
    return plan;
}
template std::shared_ptr<const TransformPlan<float>> SharedPlan(const TransformClass&, int32_t);
template std::shared_ptr<const TransformPlan<double>> SharedPlan(const TransformClass&, int32_t);
