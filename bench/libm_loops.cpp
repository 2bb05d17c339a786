#include "bench/libm_loops.h"

#include "tests/signals.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int32_t kCount = 2048;
const Signal kValues = Noise(2 * kCount, 1);
const Signal kLogs = Noise(kCount, 2, 10.0f);

// Of a spectrum: 160 dB of range, a few values below the floor.
constexpr float kFloor = 2e-8f;
const Signal kMagnitudes = [] {
    Signal x = Noise(kCount, 3, 9.2f);
    for (float& v : x)
        v = std::exp(v - 9.2f);
    return x;
}();
Signal results(kCount);

#define QX_SCALAR [[gnu::noinline, gnu::optimize("no-tree-vectorize")]]

QX_SCALAR void ScalarExp()
{
    std::ranges::copy(kLogs, results.begin());
    for (float& v : results)
        v = std::exp(v);
}

QX_SCALAR void ScalarLn()
{
    std::ranges::copy(kMagnitudes, results.begin());
    for (float& v : results)
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
    std::ranges::copy(kLogs, results.begin());
    t.Exp(results.data(), kCount);
}

void OurLn(const VtnfTable& t)
{
    std::ranges::copy(kMagnitudes, results.begin());
    t.ThresholdLn(results.data(), kFloor, kFloor, kCount);
}

void OurPhase(const VtnfTable& t)
{
    t.Phase(results.data(), kValues.data(), kCount);
}

void OurMagnitude(const VtnfTable& t)
{
    t.Magnitude(results.data(), kValues.data(), kCount);
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
