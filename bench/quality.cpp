// Prints what stretching and pitching does to tones and to attacks, as Markdown tables: the Pro and Efficient modes
// beside `rubberband -3`, on the same signals in the same run. Figures of a mode do not depend on the machine.
//   quality [SCRATCH-FOLDER]
#include "tests/aplugins/driver_run.h"
#include "tests/measure.h"

#include <sndfile.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

constexpr int32_t kRate = 44100;

struct Setting {
    double stretch, semitones;
};

struct Peer {
    const char* name;
    int32_t mode;   // of the engine; below 0: the rubberband program
};
constexpr Peer kPeers[] = {{"Pro", kModePro}, {"Efficient", kModeEfficient}, {"rubberband -3", -1}};

std::filesystem::path scratch = std::filesystem::temp_directory_path();

void WriteWave(const std::filesystem::path& path, const Signal& x)
{
    SF_INFO info{};
    info.samplerate = kRate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file || sf_writef_float(file, x.data(), sf_count_t(x.size())) != sf_count_t(x.size()) || sf_close(file))
        std::exit((std::fprintf(stderr, "quality: cannot write %s\n", path.c_str()), 1));
}

Signal ReadWave(const std::filesystem::path& path)
{
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file)
        return {};
    Signal x(size_t(info.frames) * size_t(info.channels));
    x.resize(size_t(std::max<sf_count_t>(sf_readf_float(file, x.data(), info.frames), 0)));
    sf_close(file);
    return x;
}

Signal RenderRubberband(const Signal& x, const Setting& s)
{
    const auto in = scratch / "quality-in.wav", out = scratch / "quality-out.wav";
    WriteWave(in, x);
    const std::string command = "rubberband -3 -q -t " + std::to_string(s.stretch) + " -p " +
                                std::to_string(s.semitones) + " '" + in.string() + "' '" + out.string() +
                                "' >/dev/null 2>&1";
    const bool ran = std::system(command.c_str()) == 0;
    Signal y = ran ? ReadWave(out) : Signal();
    std::filesystem::remove(in);
    std::filesystem::remove(out);
    return y;
}

struct Rendered {
    Signal audio;
    Setting inForce;   // what the quantised hop made of the request
};

Rendered Render(const Peer& peer, const Signal& x, const Setting& s)
{
    if (peer.mode < 0)
        return {RenderRubberband(x, s), s};
    CVtn vtn(1, float(kRate), 2048);
    Start(vtn, Record(100.0 * s.stretch, s.semitones, peer.mode));
    const Setting inForce{vtn.GetStretch(), 12.0 * std::log2(vtn.GetPitch())};
    return {RunDriver(vtn, x, 1), inForce};
}

void MeasureTone(const Peer& peer, double hz, const Setting& s)
{
    Signal x = Tone(6 * kRate, hz, kRate, 0.5);
    MixInto(&x, Noise(6 * kRate, 3, 5.5e-5f));   // a floor at -90 dB: no real recording is without one
    const Rendered r = Render(peer, x, s);
    const double expected = hz * std::exp2(r.inForce.semitones / 12.0);
    const size_t edge = kRate / 2;
    if (r.audio.size() < 3 * edge)
        return void(std::printf("| %s | %.0f | %.2f | %+.0f | - | - | - |\n", peer.name, hz, s.stretch, s.semitones));
    const ToneFit fit = FitTone(std::span(r.audio).subspan(edge, r.audio.size() - 2 * edge), expected, kRate);
    std::printf("| %s | %.0f | %.2f | %+.0f | %+.2f | %+.3f | %.1f |\n", peer.name, hz, s.stretch, s.semitones,
                20.0 * std::log10(fit.amplitude / 0.5), Cents(fit.frequency / expected), fit.sidebands);
}

void MeasureDrums(const Peer& peer, const DrumTrack& drums, double stretch)
{
    const Signal y = Render(peer, drums.audio, {stretch, 0.0}).audio;
    const Attacks a = CompareAttacks(drums, y, stretch, kRate);
    std::printf("| %s | %.2f | %d of %zu | %.2f | %.2f | %.2f | %.2f |\n", peer.name, stretch, a.found,
                drums.onsets.size(), a.meanError, a.worstError, a.riseBefore, a.riseAfter);
}

}   // namespace

int main(int argc, char** argv)
{
    if (argc > 1)
        scratch = argv[1];
    std::printf("| tone through | Hz | stretch | pitch | level, dB | frequency, cents | sidebands, dB |\n"
                "|---|---|---|---|---|---|---|\n");
    for (const double hz : {200.0, 1800.0, 2000.0, 6000.0})
        for (const Setting s : {Setting{0.5, 0.0}, {1.25, 0.0}, {2.0, 0.0}, {1.0, -5.0}, {1.0, 7.0}})
            for (const Peer& peer : kPeers)
                MeasureTone(peer, hz, s);
    std::printf(
        "\n| drums through | stretch | found | mean error, ms | worst, ms | rise before, ms | rise after, ms |\n"
        "|---|---|---|---|---|---|---|\n");
    const DrumTrack drums = Drums(20 * kRate, kRate);
    for (const double stretch : {0.5, 0.75, 1.0, 1.25, 1.5, 2.0})
        for (const Peer& peer : kPeers)
            MeasureDrums(peer, drums, stretch);
}
