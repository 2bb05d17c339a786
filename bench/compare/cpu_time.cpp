#include "bench/compare/cpu_time.h"

#include <algorithm>
#include <ctime>

namespace {

constexpr double kShortest = 2e-4;   // s between two readings of the clock, which take a fraction of a microsecond
constexpr double kShare = 0.2;

void Run(const Work& work, int times)
{
    for (int i = 0; i < times; ++i)
        work();
}

}   // namespace

double CpuSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

double CpuSecondsOf(const Work& work)
{
    const double start = CpuSeconds();
    work();
    return CpuSeconds() - start;
}

double Median(std::vector<double> values)
{
    std::ranges::sort(values);
    const size_t n = values.size();
    return 0.5 * (values[(n - 1) / 2] + values[n / 2]);
}

Turns TakeTurns(const std::vector<Work>& works, int rounds)
{
    std::vector<double> first;
    for (const Work& work : works)
        first.push_back(std::max(CpuSecondsOf(work), 1e-7));
    const double share = std::max(kShortest, kShare * std::ranges::max(first));
    Turns turns(works.size());
    for (int round = 0; round < rounds; ++round)
        for (size_t turn = 0; turn < works.size(); ++turn) {
            const size_t i = round % 2 == 0 ? turn : works.size() - 1 - turn;
            const int times = 1 + int(share / first[i]);
            turns[i].push_back(CpuSecondsOf([&] { Run(works[i], times); }) / times);
        }
    return turns;
}

double MedianRatio(const Turns& turns, size_t work, size_t reference)
{
    std::vector<double> ratios;
    for (size_t round = 0; round < turns[work].size(); ++round)
        ratios.push_back(turns[work][round] / turns[reference][round]);
    return Median(ratios);
}

double MedianRatio(const Work& work, const Work& reference, int rounds)
{
    return MedianRatio(TakeTurns({work, reference}, rounds), 0, 1);
}
