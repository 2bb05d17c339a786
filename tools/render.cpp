#include "tools/render.h"

#include "aplugins/qxvantor/vtn.h"
#include "tools/failure.h"
#include "tools/interruption.h"
#include "tools/output_file.h"
#include "tools/progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int32_t kDriverBlock = 2048;
constexpr uint32_t kRoomFactor = 10;                 // of output for a block of input: the longest stretch
constexpr int64_t kMostSamples = int64_t(1) << 27;   // of room for one block's output
constexpr double kLongestTrim = 1e-6;                // of the length, besides a few frames: float factors round so

constexpr int32_t kModesByQuality[] = {kModePro, kModeEfficient, kModeSoloistSpeech, kModeSoloistMono};

bool IsBuilt(int32_t mode)
{
    CTensioProIf* engine = nullptr;
    const bool built = CreateInstance(&engine, kMaxBlockFrames, 1, 44100.0f, mode) == kSuccess;
    if (engine)
        DeleteInstance(&engine);
    return built;
}

int32_t ChooseMode(const Options& options)
{
    if (!options.mode)
        return BestMode();
    if (!IsBuilt(*options.mode))
        throw UsageFailure("--mode " + std::string(ModeName(*options.mode)) + ": not built into this program");
    return *options.mode;
}

std::string Text(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

void CheckInput(const AudioReader& input, const Options& options)
{
    const AudioFormat& format = input.Format();
    if (format.channels < 1 || format.channels > kMaxDriverChannels)
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

double StretchFor(const AudioReader& input, const Options& options, std::optional<int64_t> target)
{
    if (!target)
        return options.stretch;
    if (input.Frames() == 0)
        throw DataFailure(options.input + ": there is no audio to bring to a duration");
    const double stretch = double(*target) / double(input.Frames());
    if (!(stretch >= 0.1 && stretch <= 10.0))
        throw UsageFailure("--duration " + Text(*options.duration) + ": asks for a stretch of " + Text(stretch) +
                           ", not within 0.1 to 10");
    // The driver's factor has 24 bits; the next one up makes a few frames too many, to be trimmed, never too few.
    return std::min(10.0, double(std::nextafter(float(stretch), 11.0f)));
}

QxVantorParams MakeRecord(const Options& options, double stretch, int32_t mode)
{
    QxVantorParams record{};
    record.mode = mode;
    record.stretchPercent = 100.0 * stretch;
    record.pitchSemitones = options.pitch;
    record.formantPercent = options.formant;
    record.contentPitch = options.content;
    record.syncPitch = options.sync;
    return record;
}

class Rendering {
public:
    Rendering(const Options& theOptions, AudioReader* theInput, AudioWriter* theOutput, CVtn* theVtn, Report* theReport)
        : options(theOptions), input(theInput), output(theOutput), vtn(theVtn), report(theReport),
          channels(theInput->Format().channels), inBlock(size_t(options.block) * size_t(channels)),
          outBlock(kRoomFactor * inBlock.size()), progress(!options.quiet, input->Frames(), input->Format().rate)
    {
    }

    // False when a signal came.
    bool Run()
    {
        while (const int64_t got = ReadBlock()) {
            for (uint32_t taken = 0; taken < got;) {
                if (Interruption())
                    return false;
                taken += Pass(false, inBlock.data() + size_t(taken) * size_t(channels), uint32_t(got) - taken);
            }
            progress.Show(report->framesIn);
        }
        while (!drained) {
            if (Interruption())
                return false;
            Pass(true, nullptr, 0);
        }
        report->seconds = progress.Seconds();
        return true;
    }

    // Brings the output to a length, by the frames that the rounding of factors leaves.
    void EndAt(int64_t frames) { end = frames; }
    void FillToEnd()
    {
        report->framesTrimmed = vtn->FramesOut() - end;
        if (std::abs(report->framesTrimmed) > 64 + int64_t(kLongestTrim * double(end)))
            throw DataFailure(options.input + ": the duration is missed by " + std::to_string(report->framesTrimmed) +
                              " frames");
        std::ranges::fill(outBlock, 0.0f);
        while (report->framesOut < end)
            Write(std::min<int64_t>(end - report->framesOut, int64_t(kRoomFactor) * options.block));
    }

private:
    int64_t ReadBlock()
    {
        const int64_t got = input->Read(inBlock.data(), options.block);
        report->framesIn += got;
        for (float& sample : std::span(inBlock).first(size_t(got * channels)))
            if (!std::isfinite(sample)) {
                sample = 0.0f;
                ++report->nonFinite;
            }
        return got;
    }

    uint32_t Pass(bool flush, const float* in, uint32_t given)
    {
        uint32_t taken = given, produced = kRoomFactor * options.block;
        drained = vtn->ProcessBlock(flush, in, &taken, outBlock.data(), &produced) == 1;
        Write(std::min<int64_t>(produced, end - report->framesOut));
        if (taken == 0 && produced == 0 && !drained)
            throw DataFailure(options.input + ": the engine does not go on");
        return taken;
    }

    void Write(int64_t frames)
    {
        const auto samples = std::span(outBlock).first(size_t(frames * channels));
        for (const float sample : samples)
            report->peak = std::max(report->peak, double(std::abs(sample)));
        output->Write(samples.data(), frames);
        report->framesOut += frames;
    }

    const Options& options;
    AudioReader* input;
    AudioWriter* output;
    CVtn* vtn;
    Report* report;
    int64_t channels;
    std::vector<float> inBlock, outBlock;
    Progress progress;
    int64_t end = INT64_MAX;
    bool drained = false;
};

void Remark(const Options& options, const std::string& text)
{
    if (!options.quiet)
        std::fprintf(stderr, "vantor: %s\n", text.c_str());
}

// The product of stretch and pitch has a bound of its own, which the driver keeps by giving way with the stretch.
void CheckFactors(const Options& options, double asked, const CVtn& vtn)
{
    const double inForce = vtn.GetStretch();
    if (std::abs(inForce - asked) <= 1e-6 * asked)
        return;
    const std::string text = "stretch " + Text(asked) + " and pitch " + Text(options.pitch) +
                             " together exceed the engine's range of 0.1 to 10";
    if (options.duration)
        throw UsageFailure(text + ", and the duration cannot be had");
    Remark(options, text + "; the stretch becomes " + Text(inForce));
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

}   // namespace

int32_t BestMode()
{
    const auto* const mode = std::ranges::find_if(kModesByQuality, IsBuilt);
    if (mode == std::end(kModesByQuality))
        throw DataFailure("no engine is built into this program");
    return *mode;
}

int Render(const Options& options, Report* report)
{
    report->mode = ChooseMode(options);
    const auto input = OpenAudio(options.input);
    CheckInput(*input, options);
    report->input = input->Format();
    report->output = ChooseFormat(input->Format(), options.output, options.container, options.encoding);
    const auto target = TargetFrames(*input, options);
    report->requestedStretch = StretchFor(*input, options, target);

    CVtn vtn(report->input.channels, float(report->input.rate), kDriverBlock);
    vtn.Reset();
    QxVantorParams record = MakeRecord(options, report->requestedStretch, report->mode);
    vtn.SetParams(&record, true);
    vtn.UpdateRatios(false);
    if (!vtn.HasEngine())
        throw DataFailure(options.input + ": no engine could be made for it; memory may be short");
    CheckFactors(options, report->requestedStretch, vtn);

    CatchInterruptions();
    OutputFile file(options.output, options.input);
    const auto expected = int64_t(double(input->Frames()) * vtn.GetStretch());
    const auto output = CreateAudio(file.Descriptor(), options.output, report->output, expected, input->Tags());
    Rendering rendering(options, input.get(), output.get(), &vtn, report);
    if (target)
        rendering.EndAt(*target);
    if (!rendering.Run())
        return Interruption();
    if (target)
        rendering.FillToEnd();
    report->stretch = vtn.GetStretch();
    report->pitchFactor = vtn.GetPitch();
    report->framesPromised = target.value_or(vtn.FramesExpected());
    report->framesPadded = vtn.FramesPadded();
    if (report->framesOut != report->framesPromised)
        throw DataFailure(options.input + ": the engine gave " + std::to_string(report->framesOut) + " frames of " +
                          std::to_string(report->framesPromised));
    output->Finish();
    report->clipped = output->Clipped();
    file.Commit();
    TellLosses(options, *report);
    return 0;
}
