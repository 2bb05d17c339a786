// The frame sizes of the engine in both directions, in each processor class, against FFTW in single precision, planned by
// measurement, on one thread.
#include "bench/against.h"
#include "bench/fftw_peer.h"
#include "dsp/processor_class.h"
#include "dsp/transform.h"
#include "tests/signals.h"

#include <string>

namespace {

void Transform(benchmark::State& state, const ProcessorClass& processorClass, bool inverse)
{
    const auto n = int32_t(state.range(0));
    RealTransform<float> transform(n, *processorClass.transforms);
    const Signal in(size_t(n), 0.0f);   // as the peer's
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
