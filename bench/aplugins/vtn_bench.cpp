// The driver from end to end: host blocks of 4096 frames in, ten times the room out, pitch up 7 semitones.
// items_per_second counts input frames; divided by the rate it is the multiple of real time.
#include "aplugins/qxvantor/vtn.h"
#include "tests/signals.h"

#include <benchmark/benchmark.h>

namespace {

constexpr uint32_t kBlock = 4096;

// Arguments: channels, rate in Hz, stretch in percent.
void Vtn_ProcessBlock(benchmark::State& state)
{
    const auto channels = int32_t(state.range(0));
    CVtn vtn(channels, float(state.range(1)), 2048);
    QxVantorParams record{};
    record.mode = kModeEfficient;
    record.stretchPercent = double(state.range(2));
    record.pitchSemitones = 7.0;
    record.contentPitch = 7;
    vtn.SetParams(&record, true);
    vtn.UpdateRatios(false);
    if (!vtn.HasEngine()) {
        state.SkipWithError("no engine");
        return;
    }
    const Signal in = Noise(int32_t(kBlock) * channels, 1, 0.25f);
    Signal out(size_t(10 * kBlock) * size_t(channels));
    int64_t frames = 0;
    for (auto _ : state) {
        uint32_t taken = kBlock, given = 10 * kBlock;
        vtn.ProcessBlock(false, in.data(), &taken, out.data(), &given);
        frames += taken;
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(frames);
    state.counters["realtime"] =
        benchmark::Counter(double(frames) / double(state.range(1)), benchmark::Counter::kIsRate);
}
BENCHMARK(Vtn_ProcessBlock)
    ->ArgNames({"channels", "rate", "stretch"})
    ->ArgsProduct({{1, 2, 8}, {44100, 96000}, {50, 125, 200}});

}   // namespace
