// One hop of the pitch tracker in mode 1 (mono), and what part of real time that is. Argument: the input's sample rate.
#include "engine/pitch/pitch_track.h"
#include "tests/signals.h"

#include <benchmark/benchmark.h>

namespace {

void PitchTrack_Hop(benchmark::State& state)
{
    const auto rate = int32_t(state.range(0));
    CPitchTrack* made = nullptr;
    CreatePitchTrack(&made, rate, 1, kPitchTrackLong);
    const PitchTrackPtr track(made);
    Signal second(static_cast<size_t>(rate), 0.0f), x(kPitchTrackMaxFrames);
    for (int h = 1; h <= 10; ++h) {
        const Signal tone = Tone(rate, 220.0 * h, rate, 0.3 / h);
        for (size_t i = 0; i < second.size(); ++i)
            second[i] += tone[i];
    }
    PitchRecord record{};
    double frames = 0.0;
    size_t at = 0;
    for (auto _ : state) {
        for (int32_t hop = track->GetInputFramesPerHop(); hop > 0; hop -= kPitchTrackMaxFrames) {
            const auto piece = size_t(std::min(hop, kPitchTrackMaxFrames));
            at = at + piece <= second.size() ? at : 0;
            std::copy_n(second.begin() + std::ptrdiff_t(at), piece, x.begin());
            track->Process(x.data(), int32_t(piece), &record);
            at += piece;
            frames += double(piece);
        }
        benchmark::DoNotOptimize(record);
    }
    using benchmark::Counter;
    state.counters["percent_of_real_time"] = Counter(frames / rate / 100.0, Counter::kIsRate | Counter::kInvert);
}

BENCHMARK(PitchTrack_Hop)->Arg(11025)->Arg(44100)->Arg(96000)->Arg(384000);

}   // namespace
