// How time and memory grow with length, channels and rate.
#include "bench/compare/cpu_time.h"
#include "bench/compare/own_driver.h"
#include "bench/compare/row.h"

#include <malloc.h>

namespace {

constexpr Setting kSetting{1.25, 0.0};
constexpr int kTimes = 5;   // of six seconds: what an engine costs to make has rows of its own

Row Growth(const Mode& mode, const char* what, double ratio, double bar)
{
    return {std::string(mode.name) + ", " + what, ratio, Bar::kAtMost, bar};
}

double LengthRatio(const Mode& mode, const Material& minute)
{
    return MedianRatio([&] { RenderOurs(mode, minute, kSetting, 10); }, [&] { RenderOurs(mode, minute, kSetting); },
                       kManyRounds);
}

// Bytes that the process holds from the free store.
double Held()
{
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks + info.hblkhd);
}

}   // namespace

Section GrowthRows()
{
    Section section{
        "Growth",
        "Time of ten minutes to one minute, and of half a minute in 8 channels to 2 and at 384 kHz to 44.1 kHz; "
        "stretch 1.25.",
        {}};
    const Material minute = Music(60.0), two = Music(6.0), eight = Music(6.0, 8), high = Music(6.0, 2, 384000);
    for (const Mode& mode : kModes) {
        const auto run = [&](const Material& m) { return [&] { RenderOurs(mode, m, kSetting, kTimes); }; };
        section.rows.push_back(Growth(mode, "length", LengthRatio(mode, minute), 10.3));
        section.rows.push_back(Growth(mode, "channels", 1.0 / MedianRatio(run(two), run(eight), kManyRounds), 4.2));
        section.rows.push_back(Growth(mode, "rate", 1.0 / MedianRatio(run(two), run(high), kManyRounds), 9.2));
    }
    return section;
}

Section MemoryRows()
{
    Section section{"Memory",
                    "Of a driver with its engine, stereo at 44.1 kHz, in the midst of a stream; and its growth "
                    "from the first minute to the tenth.",
                    {}};
    const Material minute = Music(60.0);
    for (const Mode& mode : kModes) {
        const double before = Held();
        OwnDriver driver(mode, minute.channels, minute.rate, kSetting);
        driver.Push(minute);
        const double first = Held();
        for (int i = 1; i < 10; ++i)
            driver.Push(minute);
        const double growth = Held() - first;
        section.rows.push_back({mode.name, (first - before) / 1e6, Bar::kAtMost, {}, " MB"});
        section.rows.push_back({std::string(mode.name) + ", growth", growth, Bar::kAtMost, 0.0, " bytes"});
    }
    return section;
}
