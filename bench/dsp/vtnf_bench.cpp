// The costly entries of the vector table over 2048 values, in each processor class, against loops over the C library's
// functions.
#include "bench/against.h"
#include "bench/libm_loops.h"
#include "dsp/processor_class.h"

#include <string>

namespace {

void Measure(benchmark::State& state, const ProcessorClass& processorClass, const LibmLoop& loop)
{
    Against(
        state, [&] { loop.ours(*processorClass.table); }, loop.peer);
}

const bool registered = [] {
    for (const ProcessorClass& c : ProcessorClasses())
        for (const LibmLoop& loop : LibmLoops())
            if (c.runsHere())
                benchmark::RegisterBenchmark(("Vtnf_" + std::string(loop.name) + '/' + c.name).c_str(), Measure, c,
                                             loop);
    return true;
}();

}   // namespace
