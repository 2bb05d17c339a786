// The correlation of two halves of its length, and the sum written out over the lags that PSOLA analysis searches.
#include "dsp/kkf.h"
#include "tests/signals.h"

#include <benchmark/benchmark.h>

namespace {

void Kkf_Correlate(benchmark::State& state)
{
    const auto n = int32_t(state.range(0));
    CKKF* made = nullptr;
    CreateKKF(&made, n);
    const KkfPtr kkf(made);
    const Signal x = Noise(n, 1);
    for (auto _ : state) {
        kkf->Correlate(x.data(), x.data() + n / 2, n / 2, n / 2);
        benchmark::DoNotOptimize(kkf->FindMaxNear(n / 2, n / 8, n / 8));
    }
}

void Direct_Correlate(benchmark::State& state)
{
    const auto n = int32_t(state.range(0));
    const Signal x = Noise(n, 1);
    Signal result(size_t(n), 0.0f);
    for (auto _ : state) {
        for (int32_t lag = 0; lag <= n / 4; ++lag) {
            float sum = 0.0f;
            for (int32_t j = 0; j + lag < n / 2; ++j)
                sum += x[size_t(j + lag)] * x[size_t(n / 2 + j)];
            result[size_t(lag)] = sum;
        }
        benchmark::ClobberMemory();
    }
}

BENCHMARK(Kkf_Correlate)->Arg(256)->Arg(1024)->Arg(4096);
BENCHMARK(Direct_Correlate)->Arg(256)->Arg(1024)->Arg(4096);

}   // namespace
