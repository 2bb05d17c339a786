#include "engine/peak_regions.h"

#include "dsp/kernels.h"
#include "dsp/vtnf.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

namespace {

constexpr float kTwoPi = 6.2831855f;
constexpr float kFluxFloor = 1e-7f;      // a smaller change of magnitude is rounding
constexpr double kAntiZero = 1e-24;      // silence divides by this
constexpr float kTransientFlux = 1.0f;   // the change is as strong as what was there

constexpr int32_t kStride = 8;   // targets that are filled in at once

}   // namespace

PeakRegions::PeakRegions(int32_t fftSize)
    : size(fftSize), binTarget(size_t(fftSize) / 2 + 1), pointsDown(size_t(fftSize) / 128 + 1),
      nearestPeak(size_t(fftSize) / 2 + 1 + kStride), candidates(size_t(fftSize) / 2 + 1),
      peakList(size_t(fftSize) / 2 + 1), peakFlag(size_t(fftSize) / 2 + 1), regionFlux(size_t(fftSize) / 2 + 1),
      regionEnds(size_t(fftSize) / 2 + 1), energyBelow(size_t(fftSize) / 2 + 1)
{
    vtnfInit();
}

void PeakRegions::Reset() noexcept
{
    peakCount = 0;
    std::ranges::fill(binTarget, 0);
    std::ranges::fill(peakFlag, 0.0f);
    std::ranges::fill(regionFlux, 0.0f);
}

void PeakRegions::FindPeaks(const float* deviation, const float* magnitude, int32_t numBins,
                            int32_t analysisHop) noexcept
{
    Kernels().PointBins(binTarget.data(), pointsDown.data(), deviation, float(size), float(analysisHop) * kTwoPi,
                        numBins);
    const int32_t count = CollectCandidates(numBins);
    if (count == 0 || AcceptPeaks(magnitude, count, numBins) == 0) {
        std::copy_n(candidates.begin(), count, peakList.begin());
        peakCount = std::max(count, 1);
    }
    peakList[size_t(peakCount) - 1] = std::max(numBins - 1, 0);   // the last region reaches the top
    AssignRegions(numBins);
}

// A candidate is where the targets turn from pointing upwards to pointing here or downwards; the neighbour of the first bin
// that is tested counts as pointing upwards. Below the first fine bins, where a few bins span an octave, each bin is one.
int32_t PeakRegions::CollectCandidates(int32_t numBins) noexcept
{
    const int32_t fine = std::max(1, size / 256);
    int32_t count = 0;
    for (int32_t k = 1; k < std::min(fine, numBins); ++k)
        candidates[size_t(count++)] = k;
    uint64_t tested = ~uint64_t(0) << fine % 64, below = 0;
    for (int32_t word = fine / 64; 64 * word < numBins; ++word) {
        const uint64_t down = pointsDown[size_t(word)] & tested;
        for (uint64_t turns = down & ~(down << 1 | below); turns != 0; turns &= turns - 1)
            candidates[size_t(count++)] = 64 * word + std::countr_zero(turns);
        below = down >> 63;
        tested = ~uint64_t(0);
    }
    return count;
}

void PeakRegions::Accept(int32_t bin, bool condition) noexcept
{
    peakList[size_t(peakCount)] = bin;
    peakCount += int32_t(condition);
}

// Fills peakList from the candidates: the lowest all, the middle ones by the magnitude at the edges of their region, the
// high ones by the magnitude at their neighbours. A missing right neighbour counts as lower. Gives the number accepted.
int32_t PeakRegions::AcceptPeaks(const float* magnitude, int32_t count, int32_t numBins) noexcept
{
    const auto level = [&](int32_t i) { return magnitude[candidates[size_t(i)]]; };
    peakCount = 0;
    int32_t i = 0;
    for (; i < count && candidates[size_t(i)] < size / 64; ++i)
        Accept(candidates[size_t(i)], true);
    i = std::max(i, 1);
    if (i == 1) {
        if (count > 1)
            Accept(candidates[1], count == 2 || level(1) >= level(2) || level(1) < level(0));
        i = 2;
    }
    AcceptByNeighbours(magnitude, count, AcceptByWalk(magnitude, count, numBins, i));
    return peakCount;
}

bool PeakRegions::NearerTo(int32_t bin, int32_t peak, int32_t other) const noexcept
{
    const int32_t target = binTarget[size_t(bin)];
    return std::abs(target - peak) < std::abs(target - other);
}

// A candidate's region is what points nearer to it than to its neighbours. Gives the first candidate not looked at.
int32_t PeakRegions::AcceptByWalk(const float* magnitude, int32_t count, int32_t numBins, int32_t i) noexcept
{
    const int32_t top = std::min(size / 8, numBins);
    if (i >= count || candidates[size_t(i)] >= top)
        return i;
    int32_t l = candidates[size_t(i)];
    while (l >= 1 && NearerTo(l, candidates[size_t(i)], candidates[size_t(i) - 1]))
        --l;
    for (; i < count && candidates[size_t(i)] < top; ++i) {
        const int32_t p = candidates[size_t(i)];
        const int32_t left = l + 1;
        int32_t r = p;
        while (r < size / 2 - 1 && r <= numBins - 2 && (i + 1 == count || NearerTo(r, p, candidates[size_t(i) + 1])))
            ++r;
        l = std::min(r - 1, numBins - 2);
        Accept(p, magnitude[p] >= magnitude[left] && magnitude[p] >= magnitude[l]);
    }
    return i;
}

void PeakRegions::AcceptByNeighbours(const float* magnitude, int32_t count, int32_t i) noexcept
{
    const auto level = [&](int32_t c) { return magnitude[candidates[size_t(c)]]; };
    for (; i + 1 < count; ++i)
        Accept(candidates[size_t(i)], (int32_t(level(i) >= level(i + 1)) & int32_t(level(i) >= level(i - 1))) != 0);
    if (i < count)
        Accept(candidates[size_t(i)], level(i) >= level(i - 1));
}

// Every bin goes to the peak that its target is nearest to, the lower one of two. The answer is looked up by the target,
// so that a bin of noise, which can point far off, takes no bin above it along.
void PeakRegions::AssignRegions(int32_t numBins) noexcept
{
    int32_t from = 0;
    for (int32_t j = 0; j < peakCount; ++j) {
        const int32_t peak = peakList[size_t(j)];
        const int32_t to = j + 1 < peakCount ? (peak + peakList[size_t(j) + 1]) / 2 + 1 : size / 2 + 1;
        for (int32_t k = from; k < to; k += kStride)   // what is filled too far is filled again
            std::fill_n(nearestPeak.begin() + k, kStride, peak);
        from = to;
    }
    for (int32_t k = 0; k < numBins; ++k)
        binTarget[size_t(k)] = nearestPeak[size_t(binTarget[size_t(k)])];
}

// A region's energies are taken from its lower neighbour's peak up to its own end. As differences of running sums they
// cost the same whatever the number of peaks; in double precision the loudest spectrum hides nothing above -140 dB. Above the
// bins that were looked at, targets stand as they last were.
void PeakRegions::ClassifyRegions(const float* magnitude, const float* reference) noexcept
{
    Kernels().SumEnergies(energyBelow.data(), magnitude, reference, kFluxFloor, size / 2);
    Kernels().RegionEnds(regionEnds.data(), binTarget.data(), peakList.data(), peakCount, size / 2);
    for (int32_t i = 0; i < peakCount; ++i) {
        const BinEnergy& from = energyBelow[size_t(peakList[size_t(std::max(i - 1, 0))])];
        const BinEnergy& to = energyBelow[size_t(regionEnds[size_t(i)])];
        const auto flux = float((to.change - from.change) / (to.reference - from.reference + kAntiZero));
        regionFlux[size_t(i)] = flux;
        peakFlag[size_t(i)] = flux <= kTransientFlux ? -1.0f : 1.0f;
    }
}
