// The frame sizes of the engine in both directions, in each processor class, against FFTW in single precision, planned by
// measurement, on one thread.
#include "bench/against.h"
#include "dsp/processor_class.h"
#include "dsp/transform.h"
#include "tests/signals.h"

#include <string>

#ifdef QX_HAVE_FFTW3F
#include <fftw3.h>
#endif

namespace {

#ifdef QX_HAVE_FFTW3F
class Fftw {
public:
    explicit Fftw(int n) : time(fftwf_alloc_real(size_t(n))), spectrum(fftwf_alloc_complex(size_t(n) / 2 + 1))
    {
        forward = fftwf_plan_dft_r2c_1d(n, time, spectrum, FFTW_MEASURE);
        inverse = fftwf_plan_dft_c2r_1d(n, spectrum, time, FFTW_MEASURE);
        std::fill_n(time, n, 0.0f);
        std::fill_n(&spectrum[0][0], n + 2, 0.0f);
    }
    ~Fftw()
    {
        fftwf_destroy_plan(forward);
        fftwf_destroy_plan(inverse);
        fftwf_free(time);
        fftwf_free(spectrum);
    }
    void Forward() { fftwf_execute(forward); }
    void Inverse() { fftwf_execute(inverse); }

private:
    float* time;
    fftwf_complex* spectrum;
    fftwf_plan forward, inverse;
};
#else
struct Fftw {
    explicit Fftw(int) {}
    void Forward() {}
    void Inverse() {}
};
#endif

void Transform(benchmark::State& state, const ProcessorClass& processorClass, bool inverse)
{
    const auto n = int32_t(state.range(0));
    RealTransform<float> transform(n, *processorClass.transforms);
    const Signal in(size_t(n),
                    0.0f);   // zeros: the peer's inverse destroys its input, and growing values would slow it
    Signal out(static_cast<size_t>(n));
    Fftw peer(n);
    if (inverse)
        Against(
            state, [&] { transform.Inverse(out.data(), in.data()); }, [&] { peer.Inverse(); });
    else
        Against(
            state, [&] { transform.Forward(out.data(), in.data()); }, [&] { peer.Forward(); });
}

const bool registered = [] {
    for (const ProcessorClass& c : ProcessorClasses())
        for (const bool inverse : {false, true})
            if (c.runsHere())
                benchmark::RegisterBenchmark(
                    ("Transform_" + std::string(inverse ? "Inverse/" : "Forward/") + c.name).c_str(), Transform, c,
                    inverse)
                    ->RangeMultiplier(2)
                    ->Range(1024, 32768);
    return true;
}();

}   // namespace
