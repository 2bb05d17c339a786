// The peers' libraries as renderers of a whole recording, with the settings that their own programs take for the same
// task: offline where there is a choice, without threads.
#pragma once

#include "bench/compare/material.h"

#include <span>
#include <string>

struct Peer {
    const char* name;
    // Gives the output's frames.
    int64_t (*render)(const Material&, const Setting&);
};

// Null where the library is not linked.
const Peer* RubberBandFaster();
const Peer* RubberBandFiner();
const Peer* SoundTouch();
const Peer* SoundTouchSpeech();

// "Rubber Band 3.1.2, SoundTouch 2.3.2": those that are linked.
std::string PeerVersions();
