#include "tools/analyze_pitch.h"

#include "dsp/resample.h"
#include "dsp/status.h"
#include "engine/pitch/pitch_track.h"
#include "tools/analysis_io.h"
#include "tools/failure.h"
#include "tools/plot.h"
#include "tools/utf8_path.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <new>
#include <vector>

namespace {

constexpr double kHopSeconds = 512.0 / 11025.0;   // of the tracker's long mode; frame i stands around i hops
constexpr float kPictureRate = 11025.0f;          // Hz; more than the plot shows
constexpr int32_t kPictureQuality = 16;
constexpr double kLowestShown = 40.0, kHighestShown = 5000.0;   // Hz

struct Track {
    std::vector<PitchRecord> records;   // one a hop
    std::vector<float> mono;            // at kPictureRate
    double seconds = 0.0;
};

class Tracking {
public:
    Tracking(AnalysisInput* theInput, Track* theTrack)
        : input(theInput), track(theTrack), channels(theInput->Format().channels), rate(theInput->Format().rate)
    {
        CPitchTrack* made = nullptr;
        if (CreatePitchTrack(&made, rate, channels, kPitchTrackLong) != kSuccess)
            throw std::bad_alloc();
        tracker.reset(made);
        CResampleBase* resampler = nullptr;
        if (CreateResampler(&resampler, kPictureQuality, kPitchTrackMaxFrames, 1, kResampleFloat, 0) != kSuccess)
            throw std::bad_alloc();
        reducer.reset(resampler);
    }

    // To the hop whose frame stands around the end; behind the end there is silence.
    void Run()
    {
        while (!atEnd || double(track->records.size()) * kHopSeconds <= track->seconds)
            Hop();
        track->mono.resize(std::min(track->mono.size(), size_t(track->seconds * double(kPictureRate))));
    }

private:
    void Hop()
    {
        PitchRecord record{};
        for (int32_t left = tracker->GetInputFramesPerHop(); left > 0; left -= kPitchTrackMaxFrames) {
            const int32_t frames = std::min(left, kPitchTrackMaxFrames);
            Fill(frames);
            KeepForPicture(frames);
            tracker->Process(block.data(), frames, &record);
        }
        track->records.push_back(record);
    }

    void Fill(int32_t frames)
    {
        block.assign(size_t(frames) * size_t(channels), 0.0f);
        if (atEnd)
            return;
        const int64_t got = input->Read(block.data(), frames);
        atEnd = got < frames;
        track->seconds += double(got) / rate;
    }

    void KeepForPicture(int32_t frames)
    {
        mixed.resize(size_t(frames));
        for (size_t i = 0; i < mixed.size(); ++i) {
            mixed[i] = 0.0f;
            for (size_t c = 0; c < size_t(channels); ++c)
                mixed[i] += block[i * size_t(channels) + c] / float(channels);
        }
        const int32_t n = reducer->Process(mixed.data(), mixed.data(), float(rate), kPictureRate, 1, frames);
        track->mono.insert(track->mono.end(), mixed.begin(), mixed.begin() + n);
    }

    AnalysisInput* input;
    Track* track;
    int32_t channels;
    int32_t rate;
    PitchTrackPtr tracker;
    ResamplerPtr reducer;
    std::vector<float> block, mixed;
    bool atEnd = false;
};

std::string Table(const Track& track)
{
    std::string table = "time,frequency,harmonicity,level,level_change,frequency_change\n";
    for (size_t i = 0; i < track.records.size(); ++i) {
        const PitchRecord& r = track.records[i];
        char row[160];
        std::snprintf(row, sizeof row, "%.6f,%.3f,%.3f,%.7g,%.6g,%.6g\n", double(i) * kHopSeconds, double(r.frequency),
                      double(r.harmonicity), double(r.level), double(r.levelChange), double(r.frequencyChange));
        table += row;
    }
    return table;
}

// The track over the spectrogram, between the waveform and what the judgement rests on.
Plot Picture(const Track& track, const std::string& name)
{
    std::vector<double> times, reliable, unreliable, harmonicity, level;
    for (size_t i = 0; i < track.records.size(); ++i) {
        const PitchRecord& r = track.records[i];
        const bool holds = r.harmonicity > 0.0f;
        constexpr double kGap = std::numeric_limits<double>::quiet_NaN();
        times.push_back(double(i) * kHopSeconds);
        reliable.push_back(holds ? double(r.frequency) : kGap);
        unreliable.push_back(holds ? kGap : double(r.frequency));
        harmonicity.push_back(double(r.harmonicity));
        level.push_back(std::max(-80.0, 20.0 * std::log10(double(r.level) + 1e-9)));
    }
    const double end = track.seconds, peak = [&] {
        double highest = 0.01;
        for (float v : track.mono)
            highest = std::max(highest, 1.05 * std::fabs(double(v)));
        return highest;
    }();
    const PlotAxis bare{"", 0.0, end}, time{"time, s", 0.0, end};

    Plot plot("Pitch of " + name);
    plot.AddPanel(90, bare, {"level", -peak, peak}).AddWaveform(track.mono, 0.0, end, {kPlotBlue, 1.0, ""});
    PlotPanel& pitch = plot.AddPanel(470, bare, {"frequency, Hz", kLowestShown, kHighestShown, true});
    pitch.AddImage(Spectrogram(track.mono, double(kPictureRate), 2048));
    pitch.AddDots(times, unreliable, {{0.75, 0.75, 0.75}, 1.3, "unreliable"});
    pitch.AddCurve(times, reliable, {kPlotCyan, 2.4, "reliable"});
    pitch.AddDots(times, reliable, {kPlotCyan, 1.8, ""});
    PlotPanel& judgement = plot.AddPanel(120, bare, {"harmonicity, dB", 0.0, 25.0});
    judgement.AddHorizontals({3.5, 5.0}, {kPlotRed, 1.0, ""});
    judgement.AddCurve(times, harmonicity, {kPlotGreen, 1.6, ""});
    plot.AddPanel(90, time, {"level, dB", -80.0, 0.0}).AddCurve(times, level, {kPlotOrange, 1.6, ""});
    return plot;
}

}   // namespace

int AnalyzePitch(std::span<char* const> arguments)
{
    const AnalysisArguments parsed = ParseAnalysis("pitch", arguments, {"csv", "plot"});
    AnalysisInput input(parsed.input);
    if (input.Format().rate < kPitchTrackMinRate)
        throw DataFailure(parsed.input + ": a sample rate of " + std::to_string(input.Format().rate) +
                          " Hz; the pitch tracker starts at " + std::to_string(kPitchTrackMinRate) + " Hz");
    Track track;
    Tracking(&input, &track).Run();
    WriteAnalysis(parsed, Table(track), Picture(track, Utf8Name(Utf8Path(parsed.input).filename())));
    return 0;
}
