#include "engine/peak_regions.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr float kTwoPi = 6.2831855f;
constexpr float kFluxFloor = 1e-7f;      // a smaller change of magnitude is rounding
constexpr float kAntiZero = 1e-24f;      // silence divides by this
constexpr float kTransientFlux = 1.0f;   // the change is as strong as what was there

}   // namespace

PeakRegions::PeakRegions(int32_t fftSize)
    : size(fftSize), binTarget(size_t(fftSize) / 2 + 1), candidates(size_t(fftSize) / 2 + 1),
      peakList(size_t(fftSize) / 2 + 1), peakFlag(size_t(fftSize) / 2 + 1), regionFlux(size_t(fftSize) / 2 + 1)
{
}

void PeakRegions::Reset() noexcept
{
    peakCount = 0;
    std::ranges::fill(binTarget, 0);
    std::ranges::fill(peakFlag, 0.0f);
    std::ranges::fill(regionFlux, 0.0f);
}

void PeakRegions::Find(const float* deviation, const float* magnitude, int32_t numBins, int32_t analysisHop) noexcept
{
    PointBins(deviation, numBins, analysisHop);
    const int32_t top = std::max(numBins - 1, 0);
    const int32_t count = CollectCandidates(numBins);
    const int32_t kept = count > 0 ? AcceptPeaks(magnitude, count, numBins) : 0;
    if (kept == 0)
        std::copy_n(candidates.begin(), count, peakList.begin());
    peakCount = std::max(kept > 0 ? kept : count, 1);
    peakList[size_t(peakCount) - 1] = top;   // the last region reaches the top
    AssignRegions(numBins);
}

// The bin that a phase advance belongs to; rounding is to the nearest, halves to the even bin.
void PeakRegions::PointBins(const float* deviation, int32_t numBins, int32_t analysisHop) noexcept
{
    const float turn = float(analysisHop) * kTwoPi;
    const float last = float(size / 2 - 1);
    for (int32_t k = 0; k < numBins; ++k) {
        const float t = std::nearbyint(deviation[k] * float(size) / turn);
        binTarget[size_t(k)] = t >= 1.0f ? int32_t(std::min(t, last)) : k;   // also where t is no number
    }
}

// A candidate is where the targets turn from pointing upwards to pointing here or downwards. Below the first fine bins,
// where a few bins span an octave, each bin is one.
int32_t PeakRegions::CollectCandidates(int32_t numBins) noexcept
{
    const int32_t fine = std::max(1, size / 256);
    int32_t count = 0;
    for (int32_t k = 1; k < std::min(fine, numBins); ++k)
        candidates[size_t(count++)] = k;
    bool belowPointsUp = true;   // the neighbour of the first bin that is tested counts as pointing upwards
    for (int32_t k = fine; k < numBins; ++k) {
        const int32_t offset = binTarget[size_t(k)] - k;
        if (offset < 1 && belowPointsUp)
            candidates[size_t(count++)] = k;
        belowPointsUp = offset > 0;
    }
    return count;
}

bool PeakRegions::NearerTo(int32_t bin, int32_t peak, int32_t other) const noexcept
{
    const int32_t target = binTarget[size_t(bin)];
    return std::abs(target - peak) < std::abs(target - other);
}

// Fills peakList from the candidates: the lowest all, the middle ones by the magnitude at the edges of their region, the
// high ones by the magnitude at their neighbours. A missing right neighbour counts as lower. Gives the number accepted.
int32_t PeakRegions::AcceptPeaks(const float* magnitude, int32_t count, int32_t numBins) noexcept
{
    const auto level = [&](int32_t i) { return magnitude[candidates[size_t(i)]]; };
    accepted = 0;
    int32_t i = 0;
    for (; i < count && candidates[size_t(i)] < size / 64; ++i)
        peakList[size_t(accepted++)] = candidates[size_t(i)];
    i = std::max(i, 1);
    if (i == 1) {
        if (count > 1 && (count == 2 || level(1) >= level(2) || level(1) < level(0)))
            peakList[size_t(accepted++)] = candidates[1];
        i = 2;
    }
    AcceptByWalk(magnitude, count, numBins, i);
    for (; i < count; ++i)
        if ((i + 1 == count || level(i) >= level(i + 1)) && level(i) >= level(i - 1))
            peakList[size_t(accepted++)] = candidates[size_t(i)];
    return accepted;
}

int32_t PeakRegions::AcceptByWalk(const float* magnitude, int32_t count, int32_t numBins, int32_t& i) noexcept
{
    const int32_t top = std::min(size / 8, numBins);
    if (i >= count || candidates[size_t(i)] >= top)
        return accepted;
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
        if (magnitude[p] >= magnitude[left] && magnitude[p] >= magnitude[l])
            peakList[size_t(accepted++)] = p;
    }
    return accepted;
}

// Every bin goes to the peak that its target is nearest to, the lower one of two. Targets mostly climb with the bins, so
// the search goes on from the peak of the bin before; a bin of noise can point far off, and the next one has to find all
// the way back, or it would be torn from its tone.
void PeakRegions::AssignRegions(int32_t numBins) noexcept
{
    int32_t j = 1;
    for (int32_t k = 0; k < numBins; ++k) {
        const int32_t target = binTarget[size_t(k)];
        const auto distance = [&](int32_t i) { return std::abs(target - peakList[size_t(i)]); };
        while (j > 1 && distance(j - 2) <= distance(j - 1))
            --j;
        while (j < peakCount && peakList[size_t(j)] != 0 && distance(j - 1) > distance(j))
            ++j;
        binTarget[size_t(k)] = peakList[size_t(j) - 1];
    }
}

void PeakRegions::Classify(const float* magnitude, const float* reference) noexcept
{
    for (int32_t i = 0; i < peakCount; ++i) {
        const int32_t peak = peakList[size_t(i)];
        float flux = 0.0f, energy = 0.0f;
        for (int32_t k = peakList[size_t(std::max(i - 1, 0))];
             k < size / 2 && (k <= peak || binTarget[size_t(k)] <= peak); ++k) {
            const float change = std::fabs(magnitude[k] - reference[k]);
            if (change > kFluxFloor) {
                flux += change * change;
                energy += reference[k] * reference[k];
            }
        }
        regionFlux[size_t(i)] = flux / (energy + kAntiZero);
        peakFlag[size_t(i)] = regionFlux[size_t(i)] <= kTransientFlux ? -1.0f : 1.0f;
    }
}
