#include "tools/analyze_envelope.h"

#include "dsp/status.h"
#include "dsp/vtnf_buffer.h"
#include "engine/rate_band.h"
#include "engine/spectral_envelope.h"
#include "tools/analysis_io.h"
#include "tools/failure.h"
#include "tools/plot.h"
#include "tools/utf8_path.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>
#include <numbers>
#include <vector>

namespace {

constexpr int64_t kPiece = 4096;          // frames read at a time on the way to the frame
constexpr double kLowestShown = -120.0;   // dB of full scale

// One frame as the band split of the Pro modes sees it.
struct Frame {
    std::vector<float> samples;   // all channels mixed, silence beyond the ends of the recording
    double rate;                  // Hz
};

Frame ReadFrame(AnalysisInput* input, const AnalysisArguments& arguments, double seconds)
{
    const double rate = input->Format().rate;
    if (!(seconds >= 0.0 && seconds * rate < double(input->Frames())))
        throw UsageFailure("--time " + *arguments.Value("time") + ": the recording ends at " +
                           std::to_string(double(input->Frames()) / rate) + " s");
    const auto channels = size_t(input->Format().channels);
    Frame frame{std::vector<float>(size_t(512) << RateBand(float(rate))), rate};
    const auto size = int64_t(frame.samples.size()), start = int64_t(seconds * rate) - size / 2;
    std::vector<float> piece(size_t(kPiece) * channels);
    for (int64_t at = 0, got = kPiece; at < start + size && got == kPiece; at += got) {
        got = input->Read(piece.data(), kPiece);
        for (int64_t i = std::max(start - at, int64_t(0)); i < std::min(got, start + size - at); ++i)
            for (size_t c = 0; c < channels; ++c)
                frame.samples[size_t(at + i - start)] += piece[size_t(i) * channels + c] / float(channels);
    }
    return frame;
}

struct Curves {
    std::vector<double> hz, spectrum, envelope;   // the latter two in dB of a full-scale tone
    int32_t order;                                // coefficients that the envelope keeps
};

double Decibels(double magnitude)
{
    return std::max(20.0 * std::log10(magnitude + 1e-30), kLowestShown - 1.0);
}

Curves Analyse(Frame frame, double content)
{
    vtnfInit();
    const auto size = int32_t(frame.samples.size());
    double weights = 0.0;   // a full-scale tone has half of their sum as its magnitude
    for (int32_t i = 0; i < size; ++i) {
        const double window = std::sin(std::numbers::pi * i / size);
        frame.samples[size_t(i)] *= float(window);
        weights += window / 2.0;
    }
    MakeFft(size)->Forward(frame.samples.data(), frame.samples.data());
    std::vector<float> magnitude(size_t(size), 0.0f), envelope(size_t(size), 0.0f);
    for (size_t k = 0; k < size_t(size) / 2; ++k)
        magnitude[k] = float(std::hypot(frame.samples[2 * k], k > 0 ? frame.samples[2 * k + 1] : 0.0f) / weights);

    const int32_t order = std::clamp(int32_t(frame.rate / 44100.0 * std::exp2(12.0 - content)), 16, size / 4);
    Curves curves{{}, {}, {}, order};
    for (size_t k = 0; k < size_t(size) / 2; ++k) {
        curves.hz.push_back(double(k) * frame.rate / size);
        curves.spectrum.push_back(Decibels(magnitude[k]));
    }
    CSpectralEnvelope* made = nullptr;
    if (CreateSpectralEnvelope(&made, size) != kSuccess)
        throw std::bad_alloc();
    const SpectralEnvelopePtr estimator(made);
    estimator->SetOrder(order);
    estimator->Estimate(magnitude.data(), envelope.data());
    for (size_t k = 0; k < size_t(size) / 2; ++k)
        curves.envelope.push_back(Decibels(envelope[2 * k]));
    return curves;
}

std::string Table(const Curves& curves)
{
    std::string table = "frequency,spectrum,envelope\n";
    for (size_t k = 0; k < curves.hz.size(); ++k) {
        char row[80];
        std::snprintf(row, sizeof row, "%.3f,%.2f,%.2f\n", curves.hz[k], curves.spectrum[k], curves.envelope[k]);
        table += row;
    }
    return table;
}

// The whole band on a linear axis, where partials stand evenly, and the range of the formants on a logarithmic one. The
// line marks where the shift begins: below, the envelope keeps its place.
Plot Picture(const Curves& curves, const std::string& name, double seconds)
{
    const double highest = std::max(0.0, *std::max_element(curves.envelope.begin(), curves.envelope.end()) + 6.0);
    const PlotAxis level{"dB of full scale", kLowestShown, highest};
    const double fixed = curves.hz[curves.hz.size() * 2 / size_t(curves.order)], top = curves.hz.back();
    char title[80];
    std::snprintf(title, sizeof title, " at %.3f s, order %d", seconds, curves.order);
    Plot plot("Spectrum and envelope of " + name + title);
    for (const PlotAxis& axis :
         {PlotAxis{"frequency, Hz", 0.0, top}, PlotAxis{"frequency, Hz", 80.0, std::min(8000.0, top), true}}) {
        PlotPanel& panel = plot.AddPanel(330, axis, level);
        panel.AddVerticals({fixed}, {kPlotGrey, 1.0, "formants move from here on"});
        panel.AddCurve(curves.hz, curves.spectrum, {kPlotBlue, 1.2, "spectrum"});
        panel.AddCurve(curves.hz, curves.envelope, {kPlotRed, 2.2, "envelope"});
    }
    return plot;
}

}   // namespace

int AnalyzeEnvelope(std::span<char* const> arguments)
{
    const AnalysisArguments parsed = ParseAnalysis("envelope", arguments, {"time", "content", "csv", "plot"});
    const auto seconds = parsed.Number("time");
    if (!seconds)
        throw UsageFailure("analyze envelope: which time? --time SECONDS is needed");
    const double content = parsed.Number("content").value_or(7.0);
    if (content < 3.0 || content > 9.0 || content != std::floor(content))
        throw UsageFailure("--content " + *parsed.Value("content") + ": a whole number of 3 to 9 is needed");
    AnalysisInput input(parsed.input);
    const Curves curves = Analyse(ReadFrame(&input, parsed, *seconds), content);
    WriteAnalysis(parsed, Table(curves), Picture(curves, Utf8Name(Utf8Path(parsed.input).filename()), *seconds));
    return 0;
}
