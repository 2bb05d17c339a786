#include "tools/analyze.h"

#include "tools/analyze_envelope.h"
#include "tools/analyze_marks.h"
#include "tools/analyze_pitch.h"
#include "tools/failure.h"

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
    for (const Analysis& analysis : kAnalyses)
        if (name == analysis.name)
            return analysis.run(arguments.subspan(1));
    throw UsageFailure("analyze " + name + ": no such analysis; " + Names());
}
