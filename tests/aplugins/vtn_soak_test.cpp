// Ten minutes of audio per frame size of the engine in mode Efficient, one in the others and under a sanitizer;
// QX_SOAK_MINUTES gives all of them another length.
#include "tests/aplugins/varied_stream.h"

#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <span>
#include <tuple>

namespace {

constexpr float kRates[] = {8000.0f, 32000.0f, 64000.0f, 128000.0f, 256000.0f};   // the lowest of each frame size

double Minutes(int32_t mode)
{
    if (const char* told = std::getenv("QX_SOAK_MINUTES"))
        return std::atof(told);
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return mode == kModeEfficient ? 1.0 : 0.3;
#else
    return mode == kModeEfficient ? 10.0 : 1.0;
#endif
}

}   // namespace

// Factors that change at random all the time, with and without ramps, in blocks of random size.
class VtnSoak : public testing::TestWithParam<std::tuple<int32_t, float>> {};

TEST_P(VtnSoak, StaysFiniteAndBoundedAndDrainsToItsPromise)
{
    const auto [mode, rate] = GetParam();
    const auto enough = int64_t(Minutes(mode) * 60.0 * rate);
    CVtn vtn(1, rate, 2048);
    Start(vtn, Record(100.0, 0.0, mode));
    std::mt19937 random{unsigned(rate)};
    const auto uniform = [&random](double low, double high) {
        return low + (high - low) * double(random()) / 4294967296.0;
    };
    const Signal in = Noise(1 << 16, 6, 0.5f);
    Signal room(1 << 17);
    double loudest = 0.0;
    int64_t taken = 0, produced = 0;
    const auto pass = [&](bool flush, uint32_t count) {
        uint32_t given = count, got = uint32_t(room.size());
        const int32_t result = vtn.ProcessBlock(flush, in.data() + random() % 4096, &given, room.data(), &got);
        for (const float v : std::span(room).first(got))
            loudest = std::isfinite(v) ? std::max(loudest, double(std::abs(v))) : 1e9;
        taken += given, produced += got;
        return result;
    };
    while (taken < enough) {
        QxVantorParams record = Record(100.0 * std::exp2(uniform(-3.3, 1.5)), uniform(-24.0, 24.0), mode);
        record.formantPercent = random() % 2 ? 100.0 : uniform(0.0, 100.0);
        record.contentPitch = 3 + int32_t(random() % 7);
        record.syncPitch = random() % 2;
        vtn.SetParams(&record, random() % 4 == 0);
        vtn.UpdateRatios(false);
        for (int32_t i = int32_t(random() % 20); i >= 0; --i)
            pass(false, 1 + random() % 16384);
    }
    // Audio on its way when the stretch changes comes out at another length than it was counted for. Where that has put
    // the output beyond the promise, nothing more follows.
    const int64_t early = produced;
    int32_t result = 0;
    for (int32_t i = 0; i < 1000 && result == 0; ++i)
        result = pass(true, 0);
    EXPECT_EQ(result, 1);
    EXPECT_LT(loudest, 4.0);
    EXPECT_EQ(produced, std::max(early, vtn.FramesExpected()));
}
INSTANTIATE_TEST_SUITE_P(ModesAndRates, VtnSoak,
                         testing::Combine(testing::ValuesIn(kAllModes), testing::ValuesIn(kRates)));
