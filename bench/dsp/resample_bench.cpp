// The resampler at quality 3 against two well-known libraries, streaming blocks of 1024 input frames. Arguments: channels,
// and the output frames per thousand input frames. per_frame is our time for an output frame. The peers' filters are
// longer, so their shares tell the cost of a choice: of libsamplerate its fastest sinc; of soxr its low quality at a rate
// that is fixed for good, and its variable rate, which is what the engine needs.
#include "bench/against.h"
#include "dsp/resample.h"
#include "tests/signals.h"

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
        CResampleBase* made = nullptr;
        CreateResampler(&made, 3, kBlock, channels, kResampleFloat, 1);
        resampler.reset(made);
    }
    void Ours()
    {
        frames += resampler->Process(in.data(), out.data(), 1.0f, float(ratio), channels, kBlock);
        ++calls;
    }
    template <class Peer>
    void Run(benchmark::State& state, Peer peer)
    {
        Against(
            state, [this] { Ours(); }, peer);
        using benchmark::Counter;
        state.counters["per_frame"] =
            Counter(frames / calls * double(state.iterations()), Counter::kIsRate | Counter::kInvert);
    }
    int32_t channels;
    double ratio;
    Signal in, out;
    ResamplerPtr resampler;
    double frames = 0.0, calls = 0.0;
};

#ifdef QX_HAVE_SAMPLERATE
void Resample_Samplerate(benchmark::State& state)
{
    Work work(state);
    int error = 0;
    SRC_STATE* src = src_new(SRC_SINC_FASTEST, work.channels, &error);
    work.Run(state, [&] {
        SRC_DATA data = {};
        data.data_in = work.in.data();
        data.data_out = work.out.data();
        data.input_frames = kBlock;
        data.output_frames = kBlock * 5;
        data.src_ratio = work.ratio;
        src_process(src, &data);
    });
    src_delete(src);
}
#endif

#ifdef QX_HAVE_SOXR
void Resample_Soxr(benchmark::State& state, unsigned long recipe, unsigned long flags)
{
    Work work(state);
    const soxr_quality_spec_t quality = soxr_quality_spec(recipe, flags);
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    soxr_error_t error = nullptr;
    soxr_t soxr = soxr_create(1.0, work.ratio, unsigned(work.channels), &error, &io, &quality, nullptr);
    if (flags & SOXR_VR)
        soxr_set_io_ratio(soxr, 1.0 / work.ratio, 0);
    work.Run(state, [&] {
        size_t done = 0;
        soxr_process(soxr, work.in.data(), kBlock, nullptr, work.out.data(), kBlock * 5, &done);
    });
    soxr_delete(soxr);
}
#endif

#if !defined(QX_HAVE_SAMPLERATE) && !defined(QX_HAVE_SOXR)
void Resample_Alone(benchmark::State& state)
{
    Work(state).Run(state, [] {});
}
#endif

#define QX_CASES ArgsProduct({{1, 2}, {500, 749, 1335, 2000}})
#ifdef QX_HAVE_SAMPLERATE
BENCHMARK(Resample_Samplerate)->QX_CASES;
#endif
#ifdef QX_HAVE_SOXR
BENCHMARK_CAPTURE(Resample_Soxr, low, SOXR_LQ, 0)->QX_CASES;
BENCHMARK_CAPTURE(Resample_Soxr, variable, SOXR_HQ, SOXR_VR)->QX_CASES;
#endif
#if !defined(QX_HAVE_SAMPLERATE) && !defined(QX_HAVE_SOXR)
BENCHMARK(Resample_Alone)->QX_CASES;
#endif

}   // namespace
