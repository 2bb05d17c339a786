#include "tools/analyze.h"

#include "tools/analyze_envelope.h"
#include "tools/analyze_marks.h"
#include "tools/analyze_pitch.h"
#include "tools/failure.h"
#include "tools/standard_output.h"

#include <string>
#include <vector>

namespace {

struct Analysis {
    const char* name;
    // arguments: those after the name. Gives the exit status; throws a Failure.
    int (*run)(std::span<char* const> arguments);
};

const std::vector<Analysis> kAnalyses = {
    {"envelope", AnalyzeEnvelope},
    {"marks", AnalyzeMarks},
    {"pitch", AnalyzePitch},
};

constexpr char kHelp[] =
    "usage: vantor analyze pitch INPUT [--csv FILE] [--plot FILE.png]\n"
    "       vantor analyze marks INPUT [--csv FILE] [--plot FILE.png]\n"
    "       vantor analyze envelope INPUT --time S [--content 3..9] [--csv FILE] [--plot FILE.png]\n"
    "Shows what the engine hears in a recording: its pitch, the marks at which the Soloist modes cut it, or\n"
    "the spectrum and the envelope around S seconds. Without --csv and --plot the table goes to standard output.\n";

std::string Names()
{
    std::string names;
    for (const Analysis& analysis : kAnalyses)
        names += (names.empty() ? "" : ", ") + std::string(analysis.name);
    return names.empty() ? "this program has none" : "known: " + names;
}

}   // namespace

int Analyze(std::span<char* const> arguments)
{
    if (arguments.empty())
        throw UsageFailure("analyze: what? " + Names());
    const std::string name = arguments.front();
    if (name == "--help" || name == "-h") {
        Print(kHelp);
        return 0;
    }
    for (const Analysis& analysis : kAnalyses)
        if (name == analysis.name)
            return analysis.run(arguments.subspan(1));
    throw UsageFailure("analyze " + name + ": no such analysis; " + Names());
}
