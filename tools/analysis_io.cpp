#include "tools/analysis_io.h"

#include "engine/tensio_pro_if.h"
#include "tools/failure.h"
#include "tools/interruption.h"
#include "tools/output_file.h"
#include "tools/plot.h"
#include "tools/sample_scan.h"
#include "tools/standard_output.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace {

constexpr int32_t kMostChannels = 32;

std::string Usage(const std::string& analysis, std::initializer_list<const char*> options)
{
    std::string usage = "vantor analyze " + analysis + " INPUT";
    for (const char* option : options)
        usage += " [--" + std::string(option) + " ...]";
    return usage;
}

void TakeOption(AnalysisArguments* parsed, const std::string& name, const std::string& value)
{
    if (value.empty())
        throw UsageFailure("--" + name + ": it needs a value");
    if (!parsed->values.emplace(name, value).second)
        throw UsageFailure("--" + name + ": given twice");
}

}   // namespace

std::optional<std::string> AnalysisArguments::Value(const std::string& name) const
{
    const auto found = values.find(name);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

std::optional<double> AnalysisArguments::Number(const std::string& name) const
{
    const auto text = Value(name);
    if (!text)
        return {};
    double number = 0.0;
    const char* const end = text->data() + text->size();
    const auto [stop, error] = std::from_chars(text->data(), end, number);
    if (error != std::errc() || stop != end || !std::isfinite(number))
        throw UsageFailure("--" + name + " " + *text + ": not a number");
    return number;
}

AnalysisArguments ParseAnalysis(const std::string& analysis, std::span<char* const> arguments,
                                std::initializer_list<const char*> options)
{
    const std::string usage = Usage(analysis, options);
    AnalysisArguments parsed;
    bool onlyFiles = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string argument = arguments[i];
        if (!onlyFiles && argument == "--") {
            onlyFiles = true;
        } else if (!onlyFiles && argument.size() > 1 && argument[0] == '-') {
            const size_t equals = argument.find('=');
            const std::string name = argument.substr(0, equals);
            if (std::none_of(options.begin(), options.end(),
                             [&](const char* o) { return name == "--" + std::string(o); }))
                throw UsageFailure(name + ": no such option; " + usage);
            if (equals == std::string::npos && i + 1 == arguments.size())
                throw UsageFailure(name + ": it needs a value");
            TakeOption(&parsed, name.substr(2),
                       equals != std::string::npos ? argument.substr(equals + 1) : arguments[++i]);
        } else if (!parsed.input.empty()) {
            throw UsageFailure(argument + ": one input is enough; " + usage);
        } else {
            parsed.input = argument;
        }
    }
    if (parsed.input.empty())
        throw UsageFailure("analyze " + analysis + ": no input; " + usage);
    return parsed;
}

AnalysisInput::AnalysisInput(const std::string& path) : reader(OpenAudio(path))
{
    CatchInterruptions();
    const AudioFormat& format = Format();
    if (format.channels < 1 || format.channels > kMostChannels)
        throw DataFailure(path + ": " + std::to_string(format.channels) + " channels; 1 to 32 can be analysed");
    if (float(format.rate) < kMinSampleRate || float(format.rate) > kMaxSampleRate)
        throw DataFailure(path + ": a sample rate of " + std::to_string(format.rate) +
                          " Hz; 8000 to 384000 Hz can be analysed");
    if (Frames() == 0)
        throw DataFailure(path + ": there is no audio in it");
}

int64_t AnalysisInput::Read(float* out, int64_t frames)
{
    if (const int signal = Interruption())
        EndBy(signal);
    const int64_t got = reader->Read(out, frames);
    MendNonFinite({out, size_t(got * Format().channels)});
    return got;
}

void WriteAnalysis(const AnalysisArguments& arguments, const std::string& table, const Plot& plot)
{
    const auto csvPath = arguments.Value("csv"), plotPath = arguments.Value("plot");
    if (!csvPath && !plotPath) {
        Print(table);
        return;
    }
    std::optional<OutputFile> csvFile, plotFile;
    if (csvPath)
        csvFile.emplace(*csvPath, arguments.input).Write(table);
    if (plotPath)
        plotFile.emplace(*plotPath, arguments.input).Write(plot.Png());
    if (csvFile && plotFile && csvFile->Target() == plotFile->Target())
        throw UsageFailure(*plotPath + ": table and plot are the same file");
    if (csvFile)
        csvFile->Commit();
    if (plotFile)
        plotFile->Commit();
}
