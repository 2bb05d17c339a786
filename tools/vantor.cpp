// The command line host: renders a file through the plug-in.
#include "platform/component_runtime.h"
#include "dsp/vtnf.h"
#include "tools/analyze.h"
#include "tools/failure.h"
#include "tools/filter_settings.h"
#include "tools/interruption.h"
#include "tools/listing.h"
#include "tools/options.h"
#include "tools/output_file.h"
#include "tools/plugin_module.h"
#include "tools/render.h"
#include "tools/report.h"
#include "tools/standard_output.h"
#include "tools/system.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <span>
#include <string>
#include <vector>

namespace {

void SaveState(const Options& options)
{
    const PluginModule module;
    const auto filter = module.CreateFilter();
    ApplyStart(filter.Get(), options);
    ApplyValues(filter.Get(), options, options.stretch);
    OutputFile file(*options.saveState, "");
    file.Write(SavedState(filter.Get()));
    file.Commit();
}

void List(std::string (*listing)(IBaseFilter*))
{
    const PluginModule module;
    Print(listing(module.CreateFilter().Get()).c_str());
}

void RenderAndTell(const Options& options)
{
    Report report;
    if (const int signal = Render(options, &report)) {
        std::fprintf(stderr, "vantor: interrupted; %s is as it was\n", options.output.c_str());
        EndBy(signal);
    }
    if (options.json)
        Print(ReportAsJson(report, options).c_str());
}

int Run(std::span<char* const> arguments)
{
    if (!arguments.empty() && std::strcmp(arguments[0], "analyze") == 0)
        return Analyze(arguments.subspan(1));
    const Options options = ParseOptions(arguments);
    switch (options.action) {
    case Options::Action::kHelp:
        Print(HelpText());
        break;
    case Options::Action::kVersion:
        Print("vantor " QX_VERSION "\n");
        break;
    case Options::Action::kListPresets:
        List(PresetListing);
        break;
    case Options::Action::kListParams:
        List(ParamListing);
        break;
    case Options::Action::kSaveState:
        SaveState(options);
        break;
    case Options::Action::kRender:
        RenderAndTell(options);
        break;
    }
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
    HoldStandardStreams();
    vtnfInit();   // samples are converted by its class's kernels
    const ComponentRuntime components;
    std::vector<std::string> arguments = Arguments(argc, argv);
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    return Run(pointers);
} catch (const Failure& failure) {
    return Tell(failure.Status(), failure.what());
} catch (const std::bad_alloc&) {
    return Tell(kExitData, "memory is short");
} catch (const std::exception& error) {
    return Tell(kExitData, error.what());
}
