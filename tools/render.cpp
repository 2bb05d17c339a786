#include "tools/render.h"

#include "engine/tensio_pro_if.h"
#include "tools/failure.h"
#include "tools/file_source.h"
#include "tools/file_writer.h"
#include "tools/filter_settings.h"
#include "tools/graph_run.h"
#include "tools/interruption.h"
#include "tools/output_file.h"
#include "tools/plugin_module.h"
#include "tools/progress.h"
#include "tools/promise.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr int32_t kMostChannels = 32;
constexpr uint32_t kRoomFactor = 10;                 // of output for a block of input: the longest stretch
constexpr int64_t kMostSamples = int64_t(1) << 27;   // of room for one block's output
constexpr double kLongestTrim = 1e-6;                // of the length, besides a few frames: float factors round so

std::string Text(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

void CheckInput(const AudioReader& input, const Options& options)
{
    const AudioFormat& format = input.Format();
    if (format.channels < 1 || format.channels > kMostChannels)
        throw DataFailure(options.input + ": " + std::to_string(format.channels) +
                          " channels; 1 to 32 can be rendered");
    if (float(format.rate) < kMinSampleRate || float(format.rate) > kMaxSampleRate)
        throw DataFailure(options.input + ": a sample rate of " + std::to_string(format.rate) +
                          " Hz; 8000 to 384000 Hz can be rendered");
    if (options.block * kRoomFactor * int64_t(format.channels) > kMostSamples)
        throw UsageFailure("--block " + std::to_string(options.block) + ": too large for " +
                           std::to_string(format.channels) + " channels");
}

// The length that a duration asks for, in frames; nothing when the stretch was told.
std::optional<int64_t> TargetFrames(const AudioReader& input, const Options& options)
{
    if (!options.duration)
        return {};
    return std::llround(*options.duration * input.Format().rate);
}

// Nothing when the filter's own start decides.
std::optional<double> StretchFor(const AudioReader& input, const Options& options, std::optional<int64_t> target)
{
    if (!target)
        return options.stretch;
    if (input.Frames() == 0)
        throw DataFailure(options.input + ": there is no audio to bring to a duration");
    const double stretch = double(*target) / double(input.Frames());
    if (!(stretch >= 0.1 && stretch <= 10.0))
        throw UsageFailure("--duration " + Text(*options.duration) + ": asks for a stretch of " + Text(stretch) +
                           ", not within 0.1 to 10");
    // The filter's factor has 24 bits; the next one up makes a few frames too many, to be trimmed, never too few.
    return std::min(10.0, double(std::nextafter(float(stretch), 11.0f)));
}

void Remark(const Options& options, const std::string& text)
{
    if (!options.quiet)
        std::fprintf(stderr, "vantor: %s\n", text.c_str());
}

// The product of stretch and pitch has a bound of its own, which the filter keeps by giving way with the stretch.
void CheckFactors(const Options& options, const Report& report)
{
    const double asked = report.requestedStretch;
    if (report.record.bypass || std::abs(report.stretch - asked) <= 1e-6 * asked)
        return;
    const std::string text = "stretch " + Text(asked) + " and pitch " + Text(report.record.pitchSemitones) +
                             " together exceed the engine's range of 0.1 to 10";
    if (options.duration)
        throw UsageFailure(text + ", and the duration cannot be had");
    Remark(options, text + "; the stretch becomes " + Text(report.stretch));
}

// The filter as the options want it, and what that comes to.
void Prepare(IBaseFilter* filter, const Options& options, std::optional<double> stretch, Report* report)
{
    ApplyStart(filter, options);
    ApplyValues(filter, options, stretch);
    if (ApplyAutomation(filter, options) && options.duration)
        throw UsageFailure("--duration " + Text(*options.duration) + ": " + *options.automation +
                           " drives the stretch, so the duration cannot be had");
    report->record = RecordOf(filter);
    report->requestedStretch = stretch.value_or(report->record.stretchPercent / 100.0);
    report->stretch = StretchInForce(report->record);
    CheckFactors(options, *report);
}

// A duration is met by the few frames that the rounding of factors leaves; a promise at constant factors is met exactly.
void MeetLength(const Options& options, std::optional<int64_t> target, FileWriter* writer, Report* report)
{
    const int64_t promised =
        options.automation ? writer->FramesTaken() : PromisedFrames(report->framesIn, report->stretch);
    report->framesPromised = target.value_or(promised);
    if (target) {
        report->framesTrimmed = writer->FramesTaken() - *target;
        if (std::abs(report->framesTrimmed) > 64 + int64_t(kLongestTrim * double(*target)))
            throw DataFailure(options.input + ": the duration is missed by " + std::to_string(report->framesTrimmed) +
                              " frames");
        writer->FillToEnd();
    }
    report->framesOut = writer->FramesWritten();
    if (report->framesOut != report->framesPromised)
        throw DataFailure(options.input + ": the engine gave " + std::to_string(report->framesOut) + " frames of " +
                          std::to_string(report->framesPromised));
}

void TellLosses(const Options& options, const Report& report)
{
    if (report.nonFinite > 0)
        Remark(options, options.input + ": " + std::to_string(report.nonFinite) +
                            " samples were no finite numbers and became 0");
    if (report.clipped > 0)
        Remark(options, options.output + ": " + std::to_string(report.clipped) +
                            " samples exceeded full scale and were limited");
}

// False when a signal came.
bool Stream(const Options& options, AudioReader* input, IBaseFilter* filter, AudioWriter* output,
            std::optional<int64_t> target, Report* report)
{
    const ComPtr<FileSource> source(new FileSource(input, options.block));
    const ComPtr<FileWriter> writer(new FileWriter(output, report->input));
    if (target)
        writer->EndAt(*target);
    GraphRun run(options.input, source.Get(), filter, writer.Get());
    Progress progress(!options.quiet, input->Frames(), report->input.rate);
    const bool complete = run.Run([&] { progress.Show(source->FramesRead()); },
                                  [&] {
                                      source->failure.Rethrow();
                                      writer->failure.Rethrow();
                                  });
    report->seconds = progress.Seconds();
    report->framesIn = source->FramesRead();
    report->nonFinite = source->NonFinite();
    if (complete)
        MeetLength(options, target, writer.Get(), report);
    report->peak = writer->Peak();
    return complete;
}

}   // namespace

int Render(const Options& options, Report* report)
{
    const auto input = OpenAudio(options.input);
    CheckInput(*input, options);
    report->input = input->Format();
    report->output = ChooseFormat(input->Format(), options.output, options.container, options.encoding);
    const auto target = TargetFrames(*input, options);

    const PluginModule module;
    const auto filter = module.CreateFilter();
    Prepare(filter.Get(), options, StretchFor(*input, options, target), report);

    CatchInterruptions();
    OutputFile file(options.output, options.input);
    std::optional<OutputFile> state;
    if (options.saveState)
        state.emplace(*options.saveState, options.input).Write(SavedState(filter.Get()));
    const auto expected = int64_t(double(input->Frames()) * report->stretch);
    const auto output = CreateAudio(file.Descriptor(), options.output, report->output, expected, input->Tags());
    if (!Stream(options, input.get(), filter.Get(), output.get(), target, report))
        return Interruption();
    output->Finish();
    report->clipped = output->Clipped();
    file.Commit();
    if (state)
        state->Commit();
    TellLosses(options, *report);
    return 0;
}
