#include "bench/libm_loops.h"

#include "dsp/transform_plan.h"
#include "tests/signals.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace {

constexpr int32_t kCount = 2048;

// Aligned like the engine's buffers.
AlignedArray<float> Aligned(const Signal& x)
{
    AlignedArray<float> copy = MakeAligned<float>(x.size());
    std::ranges::copy(x, copy.get());
    return copy;
}

const auto kValues = Aligned(Noise(2 * kCount, 1)), kLogs = Aligned(Noise(kCount, 2, 10.0f));

// Of a spectrum: 160 dB of range, a few values below the floor.
constexpr float kFloor = 2e-8f;
const auto kMagnitudes = [] {
    Signal x = Noise(kCount, 3, 9.2f);
    for (float& v : x)
        v = std::exp(v - 9.2f);
    return Aligned(x);
}();
const auto results = MakeAligned<float>(kCount);

#define QX_SCALAR [[gnu::noinline, gnu::optimize("no-tree-vectorize")]]

QX_SCALAR void ScalarExp()
{
    std::copy_n(kLogs.get(), kCount, results.get());
    for (float& v : std::span(results.get(), kCount))
        v = std::exp(v);
}

QX_SCALAR void ScalarLn()
{
    std::copy_n(kMagnitudes.get(), kCount, results.get());
    for (float& v : std::span(results.get(), kCount))
        v = std::log(v < kFloor ? kFloor : v);
}

QX_SCALAR void ScalarPhase()
{
    for (size_t k = 0; k < kCount; ++k)
        results[k] = std::atan2(kValues[2 * k + 1], kValues[2 * k]);
}

QX_SCALAR void ScalarMagnitude()
{
    for (size_t k = 0; k < kCount; ++k)
        results[k] = std::hypot(kValues[2 * k + 1], kValues[2 * k]);
}

QX_SCALAR void ScalarRoot()
{
    for (size_t k = 0; k < kCount; ++k)
        results[k] = std::sqrt(kValues[2 * k] * kValues[2 * k] + kValues[2 * k + 1] * kValues[2 * k + 1]);
}

void OurExp(const VtnfTable& t)
{
    std::copy_n(kLogs.get(), kCount, results.get());
    t.Exp(results.get(), kCount);
}

void OurLn(const VtnfTable& t)
{
    std::copy_n(kMagnitudes.get(), kCount, results.get());
    t.ThresholdLn(results.get(), kFloor, kFloor, kCount);
}

void OurPhase(const VtnfTable& t)
{
    t.Phase(results.get(), kValues.get(), kCount);
}

void OurMagnitude(const VtnfTable& t)
{
    t.Magnitude(results.get(), kValues.get(), kCount);
}

constexpr LibmLoop kLoops[] = {
    {"Phase", OurPhase, ScalarPhase},
    {"Exp", OurExp, ScalarExp},
    {"ThresholdLn", OurLn, ScalarLn},
    {"Magnitude", OurMagnitude, ScalarMagnitude},
    {"MagnitudeToPlainRoot", OurMagnitude, ScalarRoot},
};

}   // namespace

std::span<const LibmLoop> LibmLoops()
{
    return kLoops;
}
