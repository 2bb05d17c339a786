// The product at driver level, as a host drives it: blocks of 4096 frames in, the output thrown away, then the flush.
#pragma once

#include "bench/compare/material.h"
#include "engine/tensio_pro_if.h"

struct Mode {
    const char* name;
    int32_t mode;
};
constexpr Mode kEfficient{"Efficient", kModeEfficient}, kPro{"Pro", kModePro},
    kSoloistMono{"Soloist mono", kModeSoloistMono}, kSoloistSpeech{"Soloist speech", kModeSoloistSpeech};
constexpr Mode kModes[] = {kEfficient, kPro, kSoloistMono, kSoloistSpeech};

// Renders the material, `times` times in a row as one stream; gives the output's frames. between, when given, is called
// after each time.
int64_t RenderOurs(const Mode& mode, const Material& in, const Setting& setting, int times = 1,
                   void (*between)() = nullptr);
