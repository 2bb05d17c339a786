#include "engine/peak_regions.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

namespace {

constexpr float kTwoPi = 6.2831855f;
constexpr float kFluxFloor = 1e-7f;      // a smaller change of magnitude is rounding
constexpr double kAntiZero = 1e-24;      // silence divides by this
constexpr float kTransientFlux = 1.0f;   // the change is as strong as what was there

// Next to 1.5 x 2^23 a float has whole numbers only: the sum rounds to the nearest, halves to the even one, and holds it
// in its lowest bits. For values below 2^22.
int32_t RoundToNearest(float x)
{
    constexpr float kShift = 12582912.0f;
    return std::bit_cast<int32_t>(x + kShift) - std::bit_cast<int32_t>(kShift);
}

}   // namespace

PeakRegions::PeakRegions(int32_t fftSize)
    : size(fftSize), binTarget(size_t(fftSize) / 2 + 1), nearestPeak(size_t(fftSize) / 2 + 1),
      candidates(size_t(fftSize) / 2 + 1), peakList(size_t(fftSize) / 2 + 1), peakFlag(size_t(fftSize) / 2 + 1),
      regionFlux(size_t(fftSize) / 2 + 1), energyBelow(size_t(fftSize) / 2 + 1)
{
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
    PointBins(deviation, numBins, analysisHop);
    const int32_t count = CollectCandidates(numBins);
    if (count == 0 || AcceptPeaks(magnitude, count, numBins) == 0) {
        std::copy_n(candidates.begin(), count, peakList.begin());
        peakCount = std::max(count, 1);
    }
    peakList[size_t(peakCount) - 1] = std::max(numBins - 1, 0);   // the last region reaches the top
    AssignRegions(numBins);
}

// The bin that a phase advance belongs to. One that points below the first bin, or is no number, points at itself.
void PeakRegions::PointBins(const float* deviation, int32_t numBins, int32_t analysisHop) noexcept
{
    const float bins = float(size), turn = float(analysisHop) * kTwoPi, last = float(size / 2 - 1);
    int32_t* target = binTarget.data();
    for (int32_t k = 0; k < numBins; ++k) {
        const float t = deviation[k] * bins / turn;
        target[k] = RoundToNearest(t > 0.5f ? std::min(t, last) : float(k));
    }
}

// A candidate is where the targets turn from pointing upwards to pointing here or downwards. Below the first fine bins,
// where a few bins span an octave, each bin is one. Free of branches: in noise they would be guessed wrong.
int32_t PeakRegions::CollectCandidates(int32_t numBins) noexcept
{
    const int32_t fine = std::max(1, size / 256);
    int32_t count = 0;
    for (int32_t k = 1; k < std::min(fine, numBins); ++k)
        candidates[size_t(count++)] = k;
    bool belowPointsUp = true;   // the neighbour of the first bin that is tested counts as pointing upwards
    for (int32_t k = fine; k < numBins; ++k) {
        const int32_t offset = binTarget[size_t(k)] - k;
        candidates[size_t(count)] = k;
        count += int32_t(offset < 1) & int32_t(belowPointsUp);
        belowPointsUp = offset > 0;
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
    std::ranges::fill(nearestPeak, 0);
    for (int32_t j = 1; j < peakCount; ++j)
        nearestPeak[size_t(peakList[size_t(j) - 1] + peakList[size_t(j)]) / 2 + 1] = 1;
    int32_t j = 0;
    for (int32_t& nearest : nearestPeak) {
        j += nearest;
        nearest = peakList[size_t(j)];
    }
    for (int32_t k = 0; k < numBins; ++k)
        binTarget[size_t(k)] = nearestPeak[size_t(binTarget[size_t(k)])];
}

// A region's energies are taken from its lower neighbour's peak up to its own end. As differences of running sums they
// cost the same whatever the number of peaks; in double precision the loudest spectrum hides nothing above -140 dB.
void PeakRegions::ClassifyRegions(const float* magnitude, const float* reference) noexcept
{
    SumEnergies(magnitude, reference);
    for (int32_t i = 0; i < peakCount; ++i) {
        const int32_t peak = peakList[size_t(i)];
        const Energy& from = energyBelow[size_t(peakList[size_t(std::max(i - 1, 0))])];
        const Energy& to = energyBelow[size_t(RegionEnd(peak))];
        const auto flux = float((to.change - from.change) / (to.reference - from.reference + kAntiZero));
        regionFlux[size_t(i)] = flux;
        peakFlag[size_t(i)] = flux <= kTransientFlux ? -1.0f : 1.0f;
    }
}

void PeakRegions::SumEnergies(const float* magnitude, const float* reference) noexcept
{
    double change = 0.0, energy = 0.0;
    for (int32_t k = 0; k < size / 2; ++k) {
        const float d = std::fabs(magnitude[k] - reference[k]), r = reference[k];
        const bool counts = d > kFluxFloor;
        change += counts ? d * d : 0.0f;
        energy += counts ? r * r : 0.0f;
        energyBelow[size_t(k) + 1] = {change, energy};
    }
}

// The first bin above a peak that points beyond it. Above the bins that were looked at, targets stand as they last were.
int32_t PeakRegions::RegionEnd(int32_t peak) const noexcept
{
    int32_t k = peak + 1;
    while (k < size / 2 && binTarget[size_t(k)] <= peak)
        ++k;
    return k;
}
