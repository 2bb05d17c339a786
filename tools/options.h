// The command line of a rendering.
#pragma once

#include "tools/audio_file.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

struct Options {
    enum class Action { kRender, kHelp, kVersion };

    Action action = Action::kRender;
    std::string input, output;
    double stretch = 1.0;             // output duration / input duration, 0.1 to 10
    std::optional<double> duration;   // seconds of output, in place of the stretch
    double pitch = 0.0;               // semitones, -24 to 24
    double formant = 100.0;           // percent
    int32_t content = 7;              // 3 to 9
    std::optional<int32_t> mode;      // TensioMode; the best one that is built when not told
    bool sync = false;
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
