// Divides a spectrum into regions around its peaks, and tells the regions whose level has just jumped. Peaks are looked
// for where the instantaneous frequencies point, not where the magnitudes happen to stand, so that a region holds the
// bins that one component really fills (after Laroche and Dolson 1999, with the reassigned bin as the neighbourhood).
// One object serves one thread; after construction nothing allocates.
#pragma once

#include "dsp/kernels_table.h"

#include <cstdint>
#include <span>
#include <vector>

class PeakRegions {
public:
    // fftSize: N, a power of two from 1024. Throws std::bad_alloc.
    explicit PeakRegions(int32_t fftSize);

    // deviation[k]: phase advance of bin k over one analysis hop, radians; magnitude[k]: its level; the numBins lowest
    // bins are looked at, 0 .. N/2. Afterwards Peaks() holds at least one bin and Targets() the peak of each bin.
    void FindPeaks(const float* deviation, const float* magnitude, int32_t numBins, int32_t analysisHop) noexcept;

    // A region is transient when the energy of its change against the reference spectrum exceeds the reference's own.
    // Both have N/2 entries.
    void ClassifyRegions(const float* magnitude, const float* reference) noexcept;

    void Reset() noexcept;

    // Bins, ascending. The last one is the highest bin that was looked at: its region reaches the top.
    std::span<const int32_t> Peaks() const noexcept { return {peakList.data(), size_t(peakCount)}; }
    bool IsTransient(size_t peak) const noexcept { return peakFlag[peak] > 0.0f; }
    // Peak of the region that bin k belongs to, for k below numBins.
    const int32_t* Targets() const noexcept { return binTarget.data(); }

private:
    int32_t CollectCandidates(int32_t numBins) noexcept;
    int32_t AcceptPeaks(const float* magnitude, int32_t count, int32_t numBins) noexcept;
    int32_t AcceptByWalk(const float* magnitude, int32_t count, int32_t numBins, int32_t i) noexcept;
    void AcceptByNeighbours(const float* magnitude, int32_t count, int32_t i) noexcept;
    void Accept(int32_t bin, bool condition) noexcept;
    bool NearerTo(int32_t bin, int32_t peak, int32_t other) const noexcept;
    void AssignRegions(int32_t numBins) noexcept;

    int32_t size;   // N, points of the transform
    int32_t peakCount = 0;
    std::vector<int32_t> binTarget;       // N/2 + 1: where the energy of a bin points, then the peak of its region
    std::vector<uint64_t> pointsDown;     // a bit per bin: it points to itself or below
    std::vector<int32_t> nearestPeak;     // N/2 + 1 and a stride: the peak that a target at this bin is nearest to
    std::vector<int32_t> candidates;      // N/2 + 1
    std::vector<int32_t> peakList;        // N/2 + 1
    std::vector<float> peakFlag;          // per peak: 1 transient, -1 stationary
    std::vector<float> regionFlux;        // per peak: energy of the change / energy of the reference
    std::vector<int32_t> regionEnds;      // per peak: the first bin above it that points beyond it
    std::vector<BinEnergy> energyBelow;   // N/2 + 1
};
