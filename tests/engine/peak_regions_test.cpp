#include "engine/peak_regions.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr int32_t kSize = 4096, kHalf = kSize / 2, kHop = 1024;

// The phase advance of a bin whose energy stands at another one.
float Pointing(double bin)
{
    return float(bin * 2.0 * std::numbers::pi * kHop / kSize);
}

struct Spectrum {
    Signal deviation = Signal(kHalf + 1), magnitude = Signal(kHalf + 1);

    // A component that fills +-reach bins.
    void Add(int32_t bin, int32_t reach, float level)
    {
        for (int32_t k = bin - reach; k <= bin + reach; ++k) {
            deviation[size_t(k)] = Pointing(bin);
            magnitude[size_t(k)] = level / float(1 + (k - bin) * (k - bin));
        }
    }
    PeakRegions Find(int32_t numBins = kHalf) const
    {
        PeakRegions regions(kSize);
        regions.FindPeaks(deviation.data(), magnitude.data(), numBins, kHop);
        return regions;
    }
};

TEST(PeakRegions, GiveEachBinToTheComponentThatItPointsAt)
{
    Spectrum x;
    const int32_t bins[] = {100, 121, 400, 900, 1500};   // below and above the parts that are searched in other ways
    for (const int32_t bin : bins)
        x.Add(bin, 10, float(bin) / 1500.0f);
    for (const int32_t quiet : {300, 600, 1200, 1900})   // high up only a local maximum is a peak
        x.Add(quiet, 5, 1e-4f);
    x.Add(2000, 5, 1e-3f);   // the topmost peak gives way to the top of the spectrum
    const PeakRegions regions = x.Find();
    for (const int32_t bin : bins) {
        EXPECT_TRUE(std::ranges::binary_search(regions.Peaks(), bin)) << bin;
        for (int32_t k = bin - 10; k <= bin + 10; ++k)
            EXPECT_EQ(regions.Targets()[k], bin) << k;
    }
    EXPECT_EQ(regions.Peaks().back(), kHalf - 1);
}

TEST(PeakRegions, AlwaysHoldAPeakWhateverTheBins)
{
    Spectrum noise;
    const Signal random = Noise(2 * kHalf, 1);
    for (int32_t k = 0; k <= kHalf; ++k) {
        noise.deviation[size_t(k)] = Pointing(k + 8.0 * random[size_t(k)]);
        noise.magnitude[size_t(k)] = std::fabs(random[size_t(2 * kHalf - 1 - k)]);
    }
    for (const int32_t numBins : {0, 1, 2, 15, 16, 17, 63, 64, 65, 186, 511, 512, 513, 2047, 2048})
        for (const Spectrum& x : {Spectrum{}, noise}) {
            const PeakRegions regions = x.Find(numBins);
            const auto peaks = regions.Peaks();
            ASSERT_FALSE(peaks.empty());
            EXPECT_TRUE(std::ranges::is_sorted(peaks, std::ranges::less_equal{}) || peaks.size() == 1) << numBins;
            EXPECT_EQ(peaks.back(), std::max(numBins - 1, 0));
            for (int32_t k = 0; k < numBins; ++k)
                ASSERT_TRUE(std::ranges::binary_search(peaks, regions.Targets()[k])) << numBins << ' ' << k;
        }
}

// Flux is (level - 1)^2 of the reference's energy: at twice the level it reaches 1, and more than that is a jump.
TEST(PeakRegions, CallARegionTransientWhenItMoreThanDoubles)
{
    Spectrum x;
    x.Add(300, 8, 1.0f);
    x.Add(700, 8, 1.0f);
    x.Add(2000, 8, 1.0f);
    PeakRegions regions = x.Find();
    const auto index = size_t(std::ranges::find(regions.Peaks(), 700) - regions.Peaks().begin());
    ASSERT_LT(index, regions.Peaks().size());
    for (const auto& [gain, transient] : {std::pair(0.0f, false), {1.0f, false}, {1.98f, false}, {2.02f, true}}) {
        Signal now = x.magnitude;
        for (int32_t k = 600; k < 800; ++k)
            now[size_t(k)] *= gain;
        regions.ClassifyRegions(now.data(), x.magnitude.data());
        for (size_t i = 0; i <= index; ++i)   // the next region shares the upper half of this one
            EXPECT_EQ(regions.IsTransient(i), transient && i == index) << "gain " << gain << ", peak " << i;
    }
}

}   // namespace
