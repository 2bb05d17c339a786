#include "bench/compare/cpu_time.h"
#include "bench/compare/row.h"
#include "bench/fftw_peer.h"
#include "bench/libm_loops.h"
#include "dsp/processor_class.h"
#include "dsp/transform.h"

#include <string>

namespace {

constexpr int kShortRounds = 25;

void AddTransforms(int32_t n, std::vector<Row>* rows)
{
    RealTransform<float> transform(n);
    const std::vector<float> in(size_t(n), 0.0f);   // as the peer's
    std::vector<float> out(in);
    Fftw peer(n);
    const double forward =
        MedianRatio([&] { transform.Forward(out.data(), in.data()); }, [&] { peer.Forward(); }, kShortRounds);
    const double inverse =
        MedianRatio([&] { transform.Inverse(out.data(), in.data()); }, [&] { peer.Inverse(); }, kShortRounds);
    rows->push_back({"forward, " + std::to_string(n), forward, Bar::kAtMost, 1.0});
    rows->push_back({"inverse, " + std::to_string(n), inverse, Bar::kAtMost, 1.0});
}

}   // namespace

Section TransformRows()
{
    Section section{"Transform", "Time as a share of FFTW3f's (`FFTW_MEASURE`, one thread), real data.", {}};
    if (kHaveFftw)
        for (int32_t n = 1024; n <= 32768; n *= 2)
            AddTransforms(n, &section.rows);
    return section;
}

Section TableRows()
{
    Section section{"Vector table", "Times as fast as a scalar loop over the C library's function, 2048 values.", {}};
    for (const LibmLoop& loop : LibmLoops().first(4)) {
        const VtnfTable& table = *ActiveClass().table;
        const double ratio = MedianRatio([&] { loop.ours(table); }, [&] { loop.peer(); }, kShortRounds);
        section.rows.push_back({"`vtnf" + std::string(loop.name) + '`', 1.0 / ratio, Bar::kAtLeast, 8.0});
    }
    return section;
}
