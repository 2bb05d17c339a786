// The time of one piece of work as a share of a peer's, both in turn in the same run, so that whoever else uses the
// machine slows both.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

template <class Work>
double SecondsOf(Work work, int times)
{
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i) {
        work();
        benchmark::ClobberMemory();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Shows the median of 25 ratios as the counter "of_peer", and our time as the benchmark's.
template <class Ours, class Peer>
void Against(benchmark::State& state, Ours ours, Peer peer)
{
    const int times = 1 + int(2e-4 / SecondsOf(peer, 1));
    std::vector<double> ratios;
    for (int i = 0; i < 25; ++i) {
        const double ourTime = SecondsOf(ours, times);
        ratios.push_back(ourTime / SecondsOf(peer, times));
    }
    std::nth_element(ratios.begin(), ratios.begin() + 12, ratios.end());
    for (auto _ : state) {
        ours();
        benchmark::ClobberMemory();
    }
    state.counters["of_peer"] = ratios[12];
}
