// Work measured in processor time of the whole process, all threads, so that who else uses the machine costs little; and
// as ratios of pieces of work that take turns, so that what it costs falls on all.
#pragma once

#include <functional>
#include <vector>

using Work = std::function<void()>;

constexpr int kRounds = 5;
constexpr int kManyRounds = 21;   // where a few per cent decide: the processor's clock alone moves by a third

// Of this process so far, all threads, s.
double CpuSeconds();
double CpuSecondsOf(const Work& work);
// The mean of the middle two when their count is even.
double Median(std::vector<double> values);

// Seconds of one run, [work][round]. In each round every work has its turn, in the reverse order every other round, and
// runs as often as it takes to fill a fifth of the longest one's time. A first run of each, which fills caches, is not
// counted.
using Turns = std::vector<std::vector<double>>;
Turns TakeTurns(const std::vector<Work>& works, int rounds = kRounds);

// The median over rounds of the ratio of two of the works.
double MedianRatio(const Turns& turns, size_t work, size_t reference);
// Of two that take turns alone.
double MedianRatio(const Work& work, const Work& reference, int rounds = kRounds);
