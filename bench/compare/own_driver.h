// The product at driver level, as a host drives it: blocks of 4096 frames in, the output thrown away, then the flush.
#pragma once

#include "aplugins/qxvantor/vtn.h"
#include "bench/compare/material.h"

#include <vector>

struct Mode {
    const char* name;
    int32_t mode;
};
constexpr Mode kEfficient{"Efficient", kModeEfficient}, kPro{"Pro", kModePro},
    kSoloistMono{"Soloist mono", kModeSoloistMono}, kSoloistSpeech{"Soloist speech", kModeSoloistSpeech};
constexpr Mode kModes[] = {kEfficient, kPro, kSoloistMono, kSoloistSpeech};

class OwnDriver {
public:
    // Ends the process when there is no engine of the mode.
    OwnDriver(const Mode& mode, int32_t channels, int32_t rate, const Setting& setting);
    void Push(const Material& in);
    void Drain();
    int64_t FramesOut() const { return vtn.FramesOut(); }

private:
    CVtn vtn;
    std::vector<float> room;
};

// Renders the material, `times` times in a row as one stream; gives the output's frames.
int64_t RenderOurs(const Mode& mode, const Material& in, const Setting& setting, int times = 1);
