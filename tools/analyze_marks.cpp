#include "tools/analyze_marks.h"

#include "dsp/status.h"
#include "engine/psola/pitch_marks.h"
#include "engine/psola/psola_analysis.h"
#include "engine/tensio_pro_if.h"
#include "engine/tensio_solo.h"
#include "tools/analysis_io.h"
#include "tools/failure.h"
#include "tools/plot.h"
#include "tools/utf8_path.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <new>
#include <vector>

namespace {

struct Marking {
    CPitchMarks marks;         // of the whole recording
    std::vector<float> mono;   // the mean of its channels
    double rate = 0.0;         // Hz
};

// In blocks as the monophonic mode asks for at the start; its marks depend on the blocks, since the tracker runs ahead by
// half of what is buffered.
void PlaceMarks(AnalysisInput* input, Marking* marking)
{
    const int32_t channels = input->Format().channels;
    const auto rate = float(input->Format().rate);
    marking->rate = double(rate);
    CPSOLAAnalysis* made = nullptr;
    if (CreatePSOLAAnalysis(&made, &marking->marks, rate, kPeriodModeMono, channels, 1, 1, 0) != kSuccess || !made)
        throw std::bad_alloc();
    const PSOLAAnalysisPtr analysis(made);

    const int32_t block = CtensioSOLO(kMaxBlockFrames, 1, rate, kModeSoloistMono).GetFramesNeeded();
    std::vector<float> interleaved(size_t(block) * size_t(channels)), planes(interleaved.size());
    std::vector<const float*> pointers;
    for (int32_t c = 0; c < channels; ++c)
        pointers.push_back(planes.data() + size_t(c) * size_t(block));
    while (const auto frames = size_t(input->Read(interleaved.data(), block))) {
        for (size_t i = 0; i < frames; ++i) {
            float sum = 0.0f;
            for (size_t c = 0; c < size_t(channels); ++c) {
                planes[c * size_t(block) + i] = interleaved[i * size_t(channels) + c];
                sum += interleaved[i * size_t(channels) + c];
            }
            marking->mono.push_back(sum / float(channels));
        }
        analysis->ProcessBlock(pointers.data(), int32_t(frames));
    }
    analysis->FinishMarks();
}

std::string Table(const Marking& marking)
{
    std::string table = "time,position,period,raw_period,power,harmonicity,transient,frequency_change\n";
    const CPitchMarks& marks = marking.marks;
    for (int32_t i = 0; i < marks.GetNumMarks(); ++i) {
        char row[200];
        std::snprintf(row, sizeof row, "%.6f,%d,%d,%d,%.7g,%.3f,%.4f,%.6g\n", marks.GetPosition(i) / marking.rate,
                      marks.GetPosition(i), std::max(marks.GetPeriod(i), 0), marks.GetRawPeriod(i),
                      double(marks.GetPower(i)), double(marks.GetHarmonicity(i)), double(marks.GetTransient(i)),
                      double(marks.GetFrequencyChange(i)));
        table += row;
    }
    return table;
}

// The waveform around the loudest mark, near enough to tell the periods and their marks.
void AddDetail(Plot* plot, const Marking& marking, const std::vector<double>& places,
               const std::vector<double>& attacks, double peak)
{
    constexpr double kSeconds = 0.12;
    int32_t loudest = 0;
    for (int32_t i = 0; i < marking.marks.GetNumMarks(); ++i)
        if (marking.marks.GetPower(i) > marking.marks.GetPower(loudest))
            loudest = i;
    const double end = double(marking.mono.size()) / marking.rate;
    const double centre = marking.marks.GetPosition(loudest) / marking.rate;
    const double from = std::clamp(centre - kSeconds / 2.0, 0.0, std::max(end - kSeconds, 0.0));
    const double to = std::min(from + kSeconds, end);
    const auto first = std::ptrdiff_t(from * marking.rate), last = std::ptrdiff_t(to * marking.rate);
    const auto inside = [&](const std::vector<double>& all) {
        std::vector<double> some;
        std::ranges::copy_if(all, std::back_inserter(some), [&](double t) { return t >= from && t <= to; });
        return some;
    };
    PlotPanel& panel = plot->AddPanel(240, {"time, s, around the loudest mark", from, std::max(to, from + 1e-3)},
                                      {"level", -peak, peak});
    panel.AddVerticals(inside(places), {kPlotCyan, 1.5, "mark"});
    panel.AddVerticals(inside(attacks), {kPlotRed, 1.5, "attack"});
    panel.AddWaveform({marking.mono.begin() + first, marking.mono.begin() + last}, from, to, {kPlotBlack, 1.2, ""});
}

// The marks on the waveform, attacks apart, and what they say: the rate of the marks, level and harmonicity.
Plot Picture(const Marking& marking, const std::string& name)
{
    const CPitchMarks& marks = marking.marks;
    std::vector<double> places, attacks, times, pitch, level, harmonicity;
    for (int32_t i = 0; i < marks.GetNumMarks(); ++i) {
        const double time = marks.GetPosition(i) / marking.rate;
        (marks.GetTransient(i) > 0.7f ? attacks : places).push_back(time);
        if (marks.GetPeriod(i) <= 0)
            continue;
        times.push_back(time);
        pitch.push_back(marking.rate / marks.GetPeriod(i));
        level.push_back(std::max(-80.0, 10.0 * std::log10(double(marks.GetPower(i)) + 1e-9)));
        harmonicity.push_back(double(marks.GetHarmonicity(i)));
    }
    const double end = std::max(double(marking.mono.size()) / marking.rate, 1e-3);
    double peak = 0.01;
    for (const float v : marking.mono)
        peak = std::max(peak, 1.05 * std::fabs(double(v)));
    const PlotAxis bare{"", 0.0, end}, time{"time, s", 0.0, end};

    Plot plot("Pitch marks of " + name);
    PlotPanel& wave = plot.AddPanel(200, bare, {"level", -peak, peak});
    wave.AddWaveform(marking.mono, 0.0, end, {kPlotBlue, 1.0, ""});
    wave.AddVerticals(attacks, {kPlotRed, 1.5, "attack"});
    AddDetail(&plot, marking, places, attacks, peak);
    plot.AddPanel(200, bare, {"marks per second", 30.0, 2000.0, true}).AddDots(times, pitch, {kPlotBlue, 2.0, ""});
    plot.AddPanel(90, bare, {"harmonicity, dB", 0.0, 25.0}).AddCurve(times, harmonicity, {kPlotGreen, 1.6, ""});
    plot.AddPanel(90, time, {"level, dB", -80.0, 0.0}).AddCurve(times, level, {kPlotOrange, 1.6, ""});
    return plot;
}

}   // namespace

int AnalyzeMarks(std::span<char* const> arguments)
{
    const AnalysisArguments parsed = ParseAnalysis("marks", arguments, {"csv", "plot"});
    AnalysisInput input(parsed.input);
    Marking marking;
    PlaceMarks(&input, &marking);
    WriteAnalysis(parsed, Table(marking), Picture(marking, Utf8Name(Utf8Path(parsed.input).filename())));
    return 0;
}
