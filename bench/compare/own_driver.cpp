#include "bench/compare/own_driver.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr uint32_t kBlock = 4096;
constexpr uint32_t kRoom = 10 * kBlock;

QxVantorParams MakeRecord(const Mode& mode, const Setting& setting)
{
    QxVantorParams record{};
    record.mode = mode.mode;
    record.stretchPercent = 100.0 * setting.stretch;
    record.pitchSemitones = setting.semitones;
    record.formantPercent = setting.holdFormants ? 0.0 : 100.0;
    record.contentPitch = setting.holdFormants ? 4 : 7;
    return record;
}

}   // namespace

OwnDriver::OwnDriver(const Mode& mode, int32_t channels, int32_t rate, const Setting& setting)
    : vtn(channels, float(rate), 2048, &CreateInstance, mode.mode), room(size_t(kRoom) * size_t(channels))
{
    QxVantorParams record = MakeRecord(mode, setting);
    vtn.SetParams(&record, true);
    vtn.UpdateRatios(false);
    if (!vtn.HasEngine())
        std::exit((std::fprintf(stderr, "no engine for %s\n", mode.name), 1));
}

void OwnDriver::Push(const Material& in)
{
    for (int64_t at = 0; at < in.Frames();) {
        auto taken = uint32_t(std::min<int64_t>(kBlock, in.Frames() - at)), given = kRoom;
        vtn.ProcessBlock(false, in.interleaved.data() + at * in.channels, &taken, room.data(), &given);
        at += taken;
    }
}

void OwnDriver::Drain()
{
    uint32_t none = 0, given = 0;
    do
        given = kRoom;
    while (vtn.ProcessBlock(true, nullptr, &none, room.data(), &given) == 0);
}

int64_t RenderOurs(const Mode& mode, const Material& in, const Setting& setting, int times)
{
    OwnDriver driver(mode, in.channels, in.rate, setting);
    for (int i = 0; i < times; ++i)
        driver.Push(in);
    driver.Drain();
    return driver.FramesOut();
}
