// What the analyses of the command line share: their arguments, their input and how results reach files.
#pragma once

#include "tools/audio_file.h"

#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>

class Plot;

struct AnalysisArguments {
    std::string input;
    std::map<std::string, std::string> values;   // of the options given, by name without the dashes

    std::optional<std::string> Value(const std::string& name) const;
    // A finite number; throws a usage Failure otherwise.
    std::optional<double> Number(const std::string& name) const;
};

// arguments: those after the analysis' name; options: the names of those that it takes, each with a value. Throws a usage
// Failure that names what is wrong.
AnalysisArguments ParseAnalysis(const std::string& analysis, std::span<char* const> arguments,
                                std::initializer_list<const char*> options);

// The recording under analysis: 1 to 32 channels, 8000 to 384000 Hz, and at least a frame. Throws a data Failure for
// others.
class AnalysisInput {
public:
    explicit AnalysisInput(const std::string& path);
    const AudioFormat& Format() const { return reader->Format(); }
    int64_t Frames() const { return reader->Frames(); }
    // Interleaved frames, fewer than asked for at the end; samples that are no number become 0. After Ctrl-C and its kin
    // the process ends here.
    int64_t Read(float* out, int64_t frames);

private:
    std::unique_ptr<AudioReader> reader;
};

// Writes table to --csv and plot to --plot, as far as they were asked for; without either the table goes to the standard
// output. The files appear both or not at all. Throws a Failure.
void WriteAnalysis(const AnalysisArguments& arguments, const std::string& table, const Plot& plot);
