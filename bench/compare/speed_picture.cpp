#include "bench/compare/speed_picture.h"

#include "bench/compare/cpu_time.h"
#include "bench/compare/own_driver.h"
#include "bench/compare/peers.h"
#include "tools/plot.h"

#include <functional>
#include <utility>
#include <vector>

namespace {

constexpr double kSeconds = 3.0;
constexpr int kTimes = 3;
const std::vector<double> kStretches = {0.25, 0.5, 0.75, 1.0, 1.25, 1.5, 2.0, 3.0, 4.0};

struct Curve {
    std::string name;
    PlotColour colour;
    std::function<void(const Setting&)> render;
    std::vector<double> speeds = {};   // times real time of the input
};

std::vector<Curve> Curves(const Material& in, std::initializer_list<std::pair<Mode, PlotColour>> modes,
                          std::initializer_list<std::pair<const Peer*, PlotColour>> peers)
{
    std::vector<Curve> curves;
    for (const auto& [mode, colour] : modes)
        curves.push_back({mode.name, colour, [&in, mode = mode](const Setting& s) { RenderOurs(mode, in, s); }});
    for (const auto& [peer, colour] : peers)
        if (peer)
            curves.push_back({peer->name, colour, [&in, peer = peer](const Setting& s) { peer->render(in, s); }});
    return curves;
}

// All curves take turns at each factor.
void Measure(std::vector<Curve>* curves)
{
    for (const double stretch : kStretches) {
        std::vector<std::vector<double>> seconds(curves->size());
        for (int i = 0; i < kTimes; ++i)
            for (size_t c = 0; c < curves->size(); ++c)
                seconds[c].push_back(CpuSecondsOf([&] { (*curves)[c].render({stretch, 0.0}); }));
        for (size_t c = 0; c < curves->size(); ++c)
            (*curves)[c].speeds.push_back(kSeconds / Median(seconds[c]));
    }
}

void AddPanel(Plot* plot, std::vector<Curve> curves, const std::string& x)
{
    Measure(&curves);
    PlotPanel& panel =
        plot->AddPanel(420, {x, kStretches.front(), kStretches.back(), true}, {"times real time", 2.0, 5000.0, true});
    for (Curve& curve : curves) {
        panel.AddCurve(kStretches, curve.speeds, {curve.colour, 2.0, curve.name});
        panel.AddDots(kStretches, curve.speeds, {curve.colour, 5.0, ""});
    }
}

}   // namespace

std::string SpeedPicture()
{
    const Material music = Music(kSeconds), voice = Voice(kSeconds);
    Plot plot("Speed over stretch factor: stereo music above, one mono voice below", 1000);
    AddPanel(&plot,
             Curves(music, {{kEfficient, kPlotBlue}, {kPro, kPlotGreen}},
                    {{RubberBandFaster(), kPlotOrange}, {RubberBandFiner(), kPlotRed}, {SoundTouch(), kPlotGrey}}),
             "stretch, stereo music");
    AddPanel(&plot,
             Curves(voice, {{kSoloistMono, kPlotBlue}, {kSoloistSpeech, kPlotGreen}},
                    {{RubberBandFiner(), kPlotRed}, {SoundTouchSpeech(), kPlotGrey}}),
             "stretch, mono voice");
    return plot.Png();
}
