// The command line of a rendering.
#pragma once

#include "tools/audio_file.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

struct Options {
    enum class Action { kRender, kSaveState, kListPresets, kListParams, kHelp, kVersion };

    Action action = Action::kRender;
    std::string input, output;   // both empty for kSaveState

    // Where the filter starts: a preset (number or name), or a saved state; its own start without either.
    std::optional<std::string> preset, loadState;
    // What is told by itself goes over that.
    std::optional<double> stretch;    // output duration / input duration, 0.1 to 10
    std::optional<double> duration;   // seconds of output, in place of the stretch
    std::optional<double> pitch;      // semitones, -24 to 24
    std::optional<double> formant;    // percent
    std::optional<int32_t> content;   // 3 to 9
    std::optional<int32_t> mode;      // TensioMode
    std::optional<bool> sync;
    std::optional<std::string> automation;   // a file of curves
    std::optional<std::string> saveState;    // a file for the filter's state as rendering starts

    uint32_t block = 4096;   // frames of a host block
    std::optional<Container> container;
    std::optional<Encoding> encoding;
    bool quiet = false;
    bool json = false;
};

// Throws a usage Failure that names the argument and what is wrong with it.
Options ParseOptions(std::span<char* const> arguments);

// At most 24 lines of 80 columns.
const char* HelpText();

// The name of an engine mode as the command line takes it.
const char* ModeName(int32_t mode);
