// The correlation of two halves of its length with its search, against the sum written out over the lags that PSOLA
// analysis searches.
#include "bench/against.h"
#include "dsp/kkf.h"
#include "tests/signals.h"

namespace {

void Kkf_DirectSum(benchmark::State& state)
{
    const auto n = int32_t(state.range(0));
    CKKF* made = nullptr;
    CreateKKF(&made, n);
    const KkfPtr kkf(made);
    const Signal x = Noise(n, 1);
    Signal result(size_t(n), 0.0f);
    const auto ours = [&] {
        kkf->Correlate(x.data(), x.data() + n / 2, n / 2, n / 2);
        benchmark::DoNotOptimize(kkf->FindMaxNear(n / 2, n / 8, n / 8));
    };
    const auto direct = [&] {
        for (int32_t lag = 0; lag <= n / 4; ++lag) {
            float sum = 0.0f;
            for (int32_t j = 0; j + lag < n / 2; ++j)
                sum += x[size_t(j + lag)] * x[size_t(n / 2 + j)];
            result[size_t(lag)] = sum;
        }
    };
    Against(state, ours, direct);
}
BENCHMARK(Kkf_DirectSum)->Arg(256)->Arg(1024)->Arg(4096);

}   // namespace
