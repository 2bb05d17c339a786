#include "bench/compare/cpu_time.h"
#include "bench/compare/own_driver.h"
#include "bench/compare/peers.h"
#include "bench/compare/row.h"

#include <cmath>
#include <cstdio>

namespace {

std::string Describe(const Setting& setting)
{
    char text[64];
    if (setting.semitones == 0.0)
        std::snprintf(text, sizeof text, "stretch %g", setting.stretch);
    else
        std::snprintf(text, sizeof text, "pitch %+g", setting.semitones);
    return text + std::string(setting.holdFormants ? ", formants held" : "");
}

struct Contender {
    const Peer* peer;   // null: left out
    double bar;
};

// Times as fast as each peer; all modes and peers take turns.
void AddRows(const std::vector<Mode>& modes, const std::vector<Contender>& contenders, const Material& in,
             const Setting& setting, std::vector<Row>* rows)
{
    std::vector<Work> works;
    for (const Mode& mode : modes)
        works.push_back([&] { RenderOurs(mode, in, setting); });
    for (const Contender& c : contenders)
        if (c.peer)
            works.push_back([&] { c.peer->render(in, setting); });
    const Turns turns = TakeTurns(works);
    size_t at = modes.size();
    for (const Contender& c : contenders) {
        for (size_t m = 0; c.peer && m < modes.size(); ++m)
            rows->push_back({std::string(modes[m].name) + ", " + Describe(setting) + ", to " + c.peer->name,
                             MedianRatio(turns, at, m), Bar::kAtLeast, c.bar});
        at += c.peer != nullptr;
    }
}

}   // namespace

Section EfficientRows()
{
    Section section{"Efficient", "Times as fast, 6 s of stereo at 44.1 kHz, from the driver down.", {}};
    const Material in = Music(6.0);
    for (const Setting& setting : kSettings)
        AddRows({kEfficient}, {{RubberBandFaster(), 12.0}, {SoundTouch(), 0.8}}, in, setting, &section.rows);
    return section;
}

Section ProRows()
{
    Section section{"Pro", "Times as fast, 6 s of stereo at 44.1 kHz; formants held on both sides, or on none.", {}};
    const Material in = Music(6.0);
    for (const bool hold : {false, true})
        for (const Setting& setting : kSettings)
            AddRows({kPro}, {{RubberBandFiner(), 12.0}}, in, {setting.stretch, setting.semitones, hold}, &section.rows);
    return section;
}

Section SoloistRows()
{
    Section section{"Soloist", "Times as fast, 20 s of one voice, mono at 44.1 kHz.", {}};
    const Material in = Voice(20.0);
    for (const Setting& setting : kSettings)
        AddRows({kSoloistMono, kSoloistSpeech}, {{RubberBandFiner(), 15.0}, {SoundTouchSpeech(), 0.5}}, in, setting,
                &section.rows);
    return section;
}
