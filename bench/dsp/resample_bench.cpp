// Nanoseconds per output frame, streaming, at quality 3 and of two well-known libraries. Arguments: channels, and the
// output frames per thousand input frames. The peers' filters are longer, so the ratio tells the cost of a choice.
#include "dsp/resample.h"
#include "tests/signals.h"

#include <benchmark/benchmark.h>

#ifdef QX_HAVE_SAMPLERATE
#include <samplerate.h>
#endif
#ifdef QX_HAVE_SOXR
#include <soxr.h>
#endif

namespace {

constexpr int32_t kBlock = 1024;   // input frames of a call

struct Work {
    explicit Work(const benchmark::State& state)
        : channels(int32_t(state.range(0))), ratio(double(state.range(1)) / 1000.0),
          in(Noise(kBlock * channels, 1, 0.5f)), out(size_t(kBlock * channels) * 5)
    {
    }
    // Calls process(work), which gives output frames, for as long as the state asks.
    template <typename Process>
    void Run(benchmark::State& state, Process process)
    {
        double frames = 0.0;
        for (auto _ : state) {
            frames += process(*this);
            benchmark::ClobberMemory();
        }
        using benchmark::Counter;
        state.counters["per_frame"] = Counter(frames, Counter::kIsRate | Counter::kInvert);
    }
    int32_t channels;
    double ratio;
    Signal in, out;
};

void Resample_Quality3(benchmark::State& state)
{
    Work work(state);
    CResampleBase* made = nullptr;
    CreateResampler(&made, 3, kBlock, work.channels, kResampleFloat, 1);
    const ResamplerPtr resampler(made);
    work.Run(state, [&](Work& w) {
        return resampler->Process(w.in.data(), w.out.data(), 1.0f, float(w.ratio), w.channels, kBlock);
    });
}

#ifdef QX_HAVE_SAMPLERATE
void Samplerate_SincFastest(benchmark::State& state)
{
    Work work(state);
    int error = 0;
    SRC_STATE* src = src_new(SRC_SINC_FASTEST, work.channels, &error);
    work.Run(state, [&](Work& w) {
        SRC_DATA data = {};
        data.data_in = w.in.data();
        data.data_out = w.out.data();
        data.input_frames = kBlock;
        data.output_frames = kBlock * 5;
        data.src_ratio = w.ratio;
        src_process(src, &data);
        return data.output_frames_gen;
    });
    src_delete(src);
}
#endif

#ifdef QX_HAVE_SOXR
// Variable rate, as the engine needs it; without it soxr takes a rate that is fixed for good.
void Soxr(benchmark::State& state, unsigned long recipe, unsigned long flags)
{
    Work work(state);
    const soxr_quality_spec_t quality = soxr_quality_spec(recipe, flags);
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    soxr_error_t error = nullptr;
    soxr_t soxr = soxr_create(1.0, work.ratio, unsigned(work.channels), &error, &io, &quality, nullptr);
    if (flags & SOXR_VR)
        soxr_set_io_ratio(soxr, 1.0 / work.ratio, 0);
    work.Run(state, [&](Work& w) {
        size_t done = 0;
        soxr_process(soxr, w.in.data(), kBlock, nullptr, w.out.data(), kBlock * 5, &done);
        return done;
    });
    soxr_delete(soxr);
}
void Soxr_LowQuality(benchmark::State& state)
{
    Soxr(state, SOXR_LQ, 0);
}
void Soxr_VariableRate(benchmark::State& state)
{
    Soxr(state, SOXR_HQ, SOXR_VR);
}
#endif

#define QX_CASES ArgsProduct({{1, 2}, {500, 749, 1335, 2000}})
BENCHMARK(Resample_Quality3)->QX_CASES;
#ifdef QX_HAVE_SAMPLERATE
BENCHMARK(Samplerate_SincFastest)->QX_CASES;
#endif
#ifdef QX_HAVE_SOXR
BENCHMARK(Soxr_LowQuality)->QX_CASES;
BENCHMARK(Soxr_VariableRate)->QX_CASES;
#endif

}   // namespace
