#include "bench/compare/cpu_time.h"
#include "bench/compare/own_driver.h"
#include "bench/compare/row.h"

namespace {

// No other engine lives, so that the tables which engines share are made each time.
void CreateAndDelete(int32_t mode)
{
    CTensioProIf* engine = nullptr;
    if (CreateInstance(&engine, kMaxBlockFrames, 2, 44100.0f, mode) == kSuccess)
        DeleteInstance(&engine);
}

}   // namespace

Section StartRows()
{
    Section section{"Start", "Creating and deleting an engine, stereo at 44.1 kHz, none other alive.", {}};
    for (const Mode& mode : kModes) {
        std::vector<double> seconds;
        for (int i = 0; i < 15; ++i)
            seconds.push_back(CpuSecondsOf([&] { CreateAndDelete(mode.mode); }));
        section.rows.push_back({mode.name, 1e3 * Median(seconds), Bar::kAtMost, 5.0, " ms"});
    }
    return section;
}
