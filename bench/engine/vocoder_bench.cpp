// One hop of the vocoder, and a block of the Efficient core with its resampler, on noise: the signal with most peaks.
#include "engine/tensio_mc.h"
#include "engine/vocoder.h"
#include "tests/signals.h"

#include <benchmark/benchmark.h>

namespace {

// Arguments: frame, channels. Analysis and synthesis hop a quarter of the frame.
void Vocoder_Hop(benchmark::State& state)
{
    const auto frame = int32_t(state.range(0)), channels = int32_t(state.range(1));
    const int32_t hop = frame / 4;
    VocoderState vocoder(frame, hop, hop, 1.0f, channels);
    const Signal noise = Noise(16 * frame, 1, 0.25f);
    const Signal silence(static_cast<size_t>(hop));
    std::vector<Signal> sink(static_cast<size_t>(channels), silence);
    std::vector<const float*> in(static_cast<size_t>(channels), noise.data());
    std::vector<float*> out;
    for (Signal& s : sink)
        out.push_back(s.data());
    int32_t at = 0;
    for (auto _ : state) {
        for (int32_t c = 0; c < channels; ++c)
            in[size_t(c)] = noise.data() + (at + 7 * c) % (15 * frame);
        for (int32_t step = 0; step < VocoderState::kStages * channels; ++step)
            vocoder.VocoderStep(in.data(), out.data(), step);
        at += hop;
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * hop);
}
BENCHMARK(Vocoder_Hop)
    ->ArgNames({"frame", "channels"})
    ->ArgsProduct({{2048, 4096, 8192, 16384, 32768}, {1}})
    ->Args({4096, 2})
    ->Args({4096, 8});

// Arguments: stretch and pitch in percent. Stereo at 44.1 kHz; items are input frames.
void TensioMC_Block(benchmark::State& state)
{
    constexpr int32_t kBlock = 1024;
    CTensioMC core(kBlock, 2, 44100.0f, CTensioMC::kCoarse);
    auto pitch = float(state.range(1)) / 100.0f;
    core.SetStretchPitch(float(state.range(0)) / 100.0f, &pitch, false);
    const Signal noise = Noise(1 << 20, 1, 0.25f);
    Signal left(kBlock), right(kBlock);
    float* const out[] = {left.data(), right.data()};
    size_t at = 0;
    int64_t frames = 0;
    for (auto _ : state) {
        const int32_t needed = core.GetFramesNeeded();
        at = at + size_t(needed) + 64 < noise.size() ? at : 0;
        const float* const in[] = {noise.data() + at, noise.data() + at + 64};
        core.ProcessData(in, needed, out);
        at += size_t(needed);
        frames += needed;
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(frames);
    state.counters["realtime"] = benchmark::Counter(double(frames) / 44100.0, benchmark::Counter::kIsRate);
}
BENCHMARK(TensioMC_Block)
    ->ArgNames({"stretch", "pitch"})
    ->Args({100, 100})
    ->Args({125, 100})
    ->Args({200, 100})
    ->Args({50, 100})
    ->Args({100, 150})
    ->Args({10, 100})
    ->Args({1000, 100});

}   // namespace
