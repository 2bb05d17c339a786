// The vector kernels of each processor class against their portable forms, on a frame of 2048 (1024 bins).
#include "bench/against.h"
#include "dsp/processor_class.h"
#include "dsp/transform_plan.h"
#include "tests/signals.h"

#include <cmath>
#include <string>

namespace {

constexpr int32_t kFrame = 2048;
constexpr int32_t kBins = kFrame / 2;

// Aligned like the engine's buffers.
AlignedArray<float> Aligned(const Signal& x)
{
    AlignedArray<float> copy = MakeAligned<float>(x.size());
    std::ranges::copy(x, copy.get());
    return copy;
}

Signal Turns()
{
    Signal turns;
    for (float angle : Noise(kBins, 3, 6.0f)) {
        turns.push_back(std::cos(angle));
        turns.push_back(std::sin(angle));
    }
    return turns;
}

std::vector<int32_t> Targets()
{
    std::vector<int32_t> target;
    for (int32_t k = 0; k < kBins; ++k)
        target.push_back(k / 11 * 11);
    return target;
}

const auto kFirst = Aligned(Noise(kFrame, 1)), kSecond = Aligned(Noise(kFrame, 2)),
           kAngles = Aligned(Noise(kBins, 3, 6.0f)), kTurns = Aligned(Turns());
const auto out = Aligned(Signal(2 * kFrame)), other = Aligned(Signal(kFrame));
const std::vector<int32_t> kTargets = Targets();

const AlignedArray<float> kAdvances = [] {   // of a noise: every fourth bin or so is a peak
    Signal x = Noise(kBins, 4, 4.0f);
    for (int32_t k = 0; k < kBins; ++k)
        x[size_t(k)] += float(k);
    return Aligned(x);
}();
const std::vector<int32_t> kPeaks = [] {
    std::vector<int32_t> peaks;
    for (int32_t k = 0; k < kBins; k += 11)
        peaks.push_back(k);
    return peaks;
}();
std::vector<int32_t> bins(kBins);
std::vector<uint64_t> words(kBins / 64);
std::vector<int16_t> shorts(kFrame);
std::vector<BinEnergy> energies(kBins + 1);

const float* const kIn[] = {kFirst.get() + 4, kSecond.get() + 4};
float* const kOut[] = {out.get(), other.get()};

struct Case {
    const char* name;
    void (*run)(const VectorKernels&);
};
constexpr Case kCases[] = {
    {"SinCos", [](const VectorKernels& k) { k.SinCos(out.get(), other.get(), kAngles.get(), kBins); }},
    {"RotateBins",
     [](const VectorKernels& k) { k.RotateBins(out.get(), kFirst.get(), kTargets.data(), kTurns.get(), 1, kBins); }},
    {"GatherAdd",
     [](const VectorKernels& k) { k.GatherAdd(out.get(), kAngles.get(), kTargets.data(), kFirst.get(), kBins); }},
    {"WindowZeroPhase",
     [](const VectorKernels& k) { k.WindowZeroPhase(out.get(), kFirst.get(), kSecond.get(), kFrame); }},
    {"OverlapAddZeroPhase",
     [](const VectorKernels& k) { k.OverlapAddZeroPhase(out.get(), kFirst.get(), kSecond.get(), kFrame); }},
    {"OverlapAdd", [](const VectorKernels& k) { k.OverlapAdd(out.get(), kFirst.get(), kSecond.get(), kFrame); }},
    {"InterleaveStereo", [](const VectorKernels& k) { k.Interleave(out.get(), kIn, 2, kFrame - 8); }},
    {"DeinterleaveStereo", [](const VectorKernels& k) { k.Deinterleave(kOut, kFirst.get(), 2, kFrame / 2); }},
    {"CorrelationProduct",
     [](const VectorKernels& k) { k.CorrelationProduct(out.get(), kFirst.get(), kSecond.get(), 4, kBins); }},
    {"PointBins",
     [](const VectorKernels& k) {
         k.PointBins(bins.data(), words.data(), kAdvances.get(), float(kFrame), float(kFrame), kBins);
     }},
    {"SumEnergies",
     [](const VectorKernels& k) { k.SumEnergies(energies.data(), kFirst.get(), kSecond.get(), 1e-7f, kBins); }},
    {"RegionEnds",
     [](const VectorKernels& k) {
         k.RegionEnds(bins.data(), kTargets.data(), kPeaks.data(), int32_t(kPeaks.size()), kBins);
     }},
    {"PeakMagnitude", [](const VectorKernels& k) { out[0] = k.PeakMagnitude(kFirst.get(), kFrame); }},
    {"FromInt16", [](const VectorKernels& k) { k.FromInt16(out.get(), shorts.data(), kFrame); }},
    {"ToInt16", [](const VectorKernels& k) { bins[0] = k.ToInt16(shorts.data(), kFirst.get(), 32768.0f, kFrame); }},
    {"CubicMono", [](const VectorKernels& k) { k.Cubic(kOut, kIn, 1, 0.25, 1.3f, 1024); }},
    {"CubicStereo", [](const VectorKernels& k) { k.Cubic(kOut, kIn, 2, 0.25, 1.3f, 1024); }},
};

const bool registered = [] {
    for (const ProcessorClass& c : ProcessorClasses())
        for (const Case& kernel : kCases)
            if (c.runsHere() && c.kernels != &kKernelsPortable)
                benchmark::RegisterBenchmark(("Kernel_" + std::string(kernel.name) + '/' + c.name).c_str(),
                                             [&c, &kernel](benchmark::State& state) {
                                                 Against(
                                                     state, [&] { kernel.run(*c.kernels); },
                                                     [&] { kernel.run(kKernelsPortable); });
                                             });
    return true;
}();

}   // namespace
