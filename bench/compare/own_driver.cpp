#include "bench/compare/own_driver.h"

#include "aplugins/qxvantor/vtn.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

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

void Push(CVtn* vtn, const Material& in, std::vector<float>* room)
{
    const auto channels = size_t(in.channels);
    for (int64_t at = 0; at < in.Frames();) {
        auto taken = uint32_t(std::min<int64_t>(kBlock, in.Frames() - at)), given = kRoom;
        vtn->ProcessBlock(false, in.interleaved.data() + size_t(at) * channels, &taken, room->data(), &given);
        at += taken;
    }
}

void Drain(CVtn* vtn, std::vector<float>* room)
{
    uint32_t none = 0, given = 0;
    do
        given = kRoom;
    while (vtn->ProcessBlock(true, nullptr, &none, room->data(), &given) == 0);
}

}   // namespace

int64_t RenderOurs(const Mode& mode, const Material& in, const Setting& setting, int times, void (*between)())
{
    CVtn vtn(in.channels, float(in.rate), 2048);
    vtn.Reset();
    QxVantorParams record = MakeRecord(mode, setting);
    vtn.SetParams(&record, true);
    vtn.UpdateRatios(false);
    if (!vtn.HasEngine())
        std::exit((std::fprintf(stderr, "compare: no engine for %s\n", mode.name), 1));
    std::vector<float> room(size_t(kRoom) * size_t(in.channels));
    for (int i = 0; i < times; ++i) {
        Push(&vtn, in, &room);
        if (between)
            between();
    }
    Drain(&vtn, &room);
    return vtn.FramesOut();
}
