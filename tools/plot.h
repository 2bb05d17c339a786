// Charts as PNG pictures: a title, and panels below each other, each with axes, grid, legend and layers. Layers are drawn
// in the order in which they were added; a panel clips what reaches beyond its axes.
//
//   Plot plot("Pitch of voice.wav");
//   PlotPanel& panel = plot.AddPanel(400, {"time, s", 0.0, 3.2}, {"frequency, Hz", 50.0, 4000.0, true});
//   panel.AddImage(Spectrogram(samples, 44100.0));
//   panel.AddCurve(times, pitches, {kPlotCyan, 2.0, "pitch"});
//   outputFile.Write(plot.Png());
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <vector>

typedef struct _cairo cairo_t;

struct PlotColour {
    double red, green, blue, alpha = 1.0;
};
// Set apart from each other for all common kinds of colour vision (Okabe and Ito 2008), on white and on images.
constexpr PlotColour kPlotBlue{0.00, 0.45, 0.70}, kPlotOrange{0.90, 0.62, 0.00}, kPlotGreen{0.00, 0.62, 0.45},
    kPlotRed{0.84, 0.37, 0.00}, kPlotCyan{0.34, 0.86, 0.98}, kPlotPurple{0.80, 0.47, 0.65}, kPlotGrey{0.55, 0.55, 0.55},
    kPlotBlack{0.10, 0.10, 0.10}, kPlotWhite{1.00, 1.00, 1.00};

struct PlotAxis {
    std::string label;   // with its unit; empty: no labels, as where a panel shares the axis of the one below
    double from, to;     // to above from; both above 0 when logarithmic
    bool logarithmic = false;
};

struct PlotStyle {
    PlotColour colour = kPlotBlue;
    double width = 1.5;   // of lines and dots, in pixels
    std::string name;     // in the legend; empty: none
};

// Values on a regular grid over x and y, drawn from dark (low and below) to bright (high and above).
struct PlotImage {
    size_t columns = 0, rows = 0;
    std::vector<float> values;   // [column * rows + row], row 0 at y0
    double x0 = 0.0, x1 = 1.0;   // centres of the first and the last column
    double y0 = 0.0, y1 = 1.0;   // and row
    double low = -90.0, high = 0.0;
};

// Magnitudes of Hann frames in dB of full scale, for AddImage; time 0 is the first sample. fftLength is a power of two,
// frames of a quarter of it, about `columns` of them whatever the length.
PlotImage Spectrogram(const std::vector<float>& samples, double sampleRate, int fftLength = 4096,
                      size_t columns = 1400);

class PlotPanel {
public:
    PlotPanel(int panelHeight, PlotAxis x, PlotAxis y);

    void AddImage(PlotImage image);
    // The envelope of samples evenly spread over x = from .. to; each pixel shows its lowest and highest sample.
    void AddWaveform(std::vector<float> samples, double from, double to, PlotStyle style);
    // Straight lines from point to point; a NaN in y leaves a gap. xs and ys have one length.
    void AddCurve(std::vector<double> xs, std::vector<double> ys, PlotStyle style);
    void AddDots(std::vector<double> xs, std::vector<double> ys, PlotStyle style);
    // Lines over the whole height at xs, or over the whole width at ys.
    void AddVerticals(std::vector<double> xs, PlotStyle style);
    void AddHorizontals(std::vector<double> ys, PlotStyle style);

private:
    friend class Plot;
    struct Layer {
        std::function<void(cairo_t*, const class PlotArea&)> draw;
        PlotStyle style;
        bool isImage = false;
    };
    std::vector<const PlotStyle*> NamedStyles() const;
    void Add(PlotStyle style, std::function<void(cairo_t*, const PlotArea&)> draw);

    int height;
    PlotAxis xAxis, yAxis;
    std::vector<Layer> layers;
};

class Plot {
public:
    explicit Plot(std::string plotTitle, int pictureWidth = 1400);
    // height in pixels, of the area inside the axes. The panel lives as long as the plot.
    PlotPanel& AddPanel(int height, PlotAxis x, PlotAxis y);
    // The picture as a PNG file's contents.
    std::string Png() const;

private:
    void DrawPanel(cairo_t* cr, const PlotPanel& panel, double top) const;

    std::string title;
    int width;
    std::deque<PlotPanel> panels;
};
