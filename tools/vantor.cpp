// The command line host: renders a file through the stream driver.
#include "tools/analyze.h"
#include "tools/failure.h"
#include "tools/interruption.h"
#include "tools/options.h"
#include "tools/render.h"
#include "tools/report.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace {

int Run(std::span<char* const> arguments)
{
    if (!arguments.empty() && std::strcmp(arguments[0], "analyze") == 0)
        return Analyze(arguments.subspan(1));
    const Options options = ParseOptions(arguments);
    if (options.action == Options::Action::kHelp) {
        std::fputs(HelpText(), stdout);
        return 0;
    }
    if (options.action == Options::Action::kVersion) {
        std::puts("vantor " QX_VERSION);
        return 0;
    }
    Report report;
    if (const int signal = Render(options, &report)) {
        std::fprintf(stderr, "vantor: interrupted; %s is as it was\n", options.output.c_str());
        EndBy(signal);
    }
    if (options.json)
        std::fputs(ReportAsJson(report, options).c_str(), stdout);
    return 0;
}

// One line whatever a file's name holds.
int Tell(int status, std::string what)
{
    for (char& c : what)
        if (static_cast<unsigned char>(c) < 0x20)
            c = '?';
    std::fprintf(stderr, "vantor: %s\n", what.c_str());
    return status;
}

}   // namespace

int main(int argc, char** argv)
try {
    return Run(std::span(argv + 1, size_t(argc > 0 ? argc - 1 : 0)));
} catch (const Failure& failure) {
    return Tell(failure.Status(), failure.what());
} catch (const std::bad_alloc&) {
    return Tell(kExitData, "memory is short");
} catch (const std::exception& error) {
    return Tell(kExitData, error.what());
}
