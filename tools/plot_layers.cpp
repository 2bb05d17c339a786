#include "tools/plot_area.h"

#include <algorithm>
#include <cairo.h>
#include <cstdint>
#include <iterator>
#include <numbers>
#include <utility>

namespace {

void SetColour(cairo_t* cr, const PlotStyle& style)
{
    const auto& c = style.colour;
    cairo_set_source_rgba(cr, c.red, c.green, c.blue, c.alpha);
    cairo_set_line_width(cr, style.width);
}

// From near black over violet and orange to light yellow, rising evenly in lightness.
uint32_t HeatColour(double level)
{
    static constexpr double kStops[][3] = {{4, 3, 18},    {40, 11, 84},   {101, 21, 110}, {159, 42, 99},
                                           {212, 72, 66}, {245, 125, 21}, {250, 193, 39}, {252, 255, 164}};
    const double position = std::clamp(level, 0.0, 1.0) * (std::size(kStops) - 1);
    const size_t i = std::min(size_t(position), std::size(kStops) - 2);
    uint32_t colour = 0;
    for (int c = 0; c < 3; ++c) {
        const double v = kStops[i][c] + (position - double(i)) * (kStops[i + 1][c] - kStops[i][c]);
        colour = colour << 8 | uint32_t(v + 0.5);
    }
    return colour;
}

// Bilinear between grid points; outside the grid the lowest level.
double ValueAt(const PlotImage& image, double x, double y)
{
    const double column = (x - image.x0) / (image.x1 - image.x0) * double(image.columns - 1);
    const double row = (y - image.y0) / (image.y1 - image.y0) * double(image.rows - 1);
    if (!(column >= -0.5 && row >= -0.5 && column <= double(image.columns) - 0.5 && row <= double(image.rows) - 0.5))
        return image.low;
    const auto split = [](double position, size_t count) {
        const double held = std::clamp(position, 0.0, double(count - 1));
        const size_t index = std::min(size_t(held), count - 2);
        return std::pair(index, held - double(index));
    };
    const auto [c, u] = split(column, image.columns);
    const auto [r, v] = split(row, image.rows);
    const float* p = image.values.data() + c * image.rows + r;
    const float* q = p + image.rows;
    return (1.0 - u) * ((1.0 - v) * p[0] + v * p[1]) + u * ((1.0 - v) * q[0] + v * q[1]);
}

void DrawImage(cairo_t* cr, const PlotArea& area, const PlotImage& image)
{
    if (image.columns < 2 || image.rows < 2)
        return;
    const int w = int(area.width), h = int(area.height);
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h);
    unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    for (int py = 0; data && py < h; ++py) {
        auto* row = reinterpret_cast<uint32_t*>(data + std::ptrdiff_t(py) * stride);
        for (int px = 0; px < w; ++px) {
            const double value = ValueAt(image, area.XAt(px), area.YAt(py));
            row[px] = HeatColour((value - image.low) / (image.high - image.low));
        }
    }
    cairo_surface_mark_dirty(surface);
    cairo_set_source_surface(cr, surface, area.left, area.top);
    cairo_paint(cr);
    cairo_surface_destroy(surface);
}

void DrawWaveform(cairo_t* cr, const PlotArea& area, const std::vector<float>& samples, double from, double to)
{
    const double perUnit = double(samples.size()) / (to - from);
    for (int px = 0; px < int(area.width); ++px) {
        const double first = (area.XAt(px - 0.5) - from) * perUnit, last = (area.XAt(px + 0.5) - from) * perUnit;
        const auto begin = size_t(std::clamp(first, 0.0, double(samples.size())));
        const auto end = std::min(samples.size(), size_t(std::max(0.0, last)) + 1);   // one shared: no gaps
        if (begin >= end)
            continue;
        const auto [lo, hi] =
            std::minmax_element(samples.begin() + std::ptrdiff_t(begin), samples.begin() + std::ptrdiff_t(end));
        const double top = area.Y(*hi), bottom = area.Y(*lo);
        cairo_rectangle(cr, area.left + px, top - 0.5, 1.0, bottom - top + 1.0);
    }
    cairo_fill(cr);
}

void DrawCurve(cairo_t* cr, const PlotArea& area, const std::vector<double>& xs, const std::vector<double>& ys)
{
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    bool open = false;
    for (size_t i = 0; i < xs.size(); ++i) {
        const bool valid = std::isfinite(ys[i]);
        if (valid && open)
            cairo_line_to(cr, area.X(xs[i]), area.Y(ys[i]));
        else if (valid)
            cairo_move_to(cr, area.X(xs[i]), area.Y(ys[i]));
        open = valid;
    }
    cairo_stroke(cr);
}

void DrawDots(cairo_t* cr, const PlotArea& area, const std::vector<double>& xs, const std::vector<double>& ys,
              double width)
{
    for (size_t i = 0; i < xs.size(); ++i) {
        if (!std::isfinite(ys[i]))
            continue;
        cairo_new_sub_path(cr);
        cairo_arc(cr, area.X(xs[i]), area.Y(ys[i]), width, 0.0, 2.0 * std::numbers::pi);
        cairo_fill(cr);
    }
}

}   // namespace

PlotPanel::PlotPanel(int panelHeight, PlotAxis x, PlotAxis y)
    : height(panelHeight), xAxis(std::move(x)), yAxis(std::move(y))
{
}

void PlotPanel::Add(PlotStyle style, std::function<void(cairo_t*, const PlotArea&)> draw)
{
    layers.push_back({std::move(draw), std::move(style)});
}

std::vector<const PlotStyle*> PlotPanel::NamedStyles() const
{
    std::vector<const PlotStyle*> named;
    for (const Layer& layer : layers)
        if (!layer.style.name.empty())
            named.push_back(&layer.style);
    return named;
}

void PlotPanel::AddImage(PlotImage image)
{
    Add({}, [image = std::move(image)](cairo_t* cr, const PlotArea& area) { DrawImage(cr, area, image); });
    layers.back().isImage = true;
}

void PlotPanel::AddWaveform(std::vector<float> samples, double from, double to, PlotStyle style)
{
    Add(style, [samples = std::move(samples), from, to, style](cairo_t* cr, const PlotArea& area) {
        SetColour(cr, style);
        DrawWaveform(cr, area, samples, from, to);
    });
}

void PlotPanel::AddCurve(std::vector<double> xs, std::vector<double> ys, PlotStyle style)
{
    Add(style, [xs = std::move(xs), ys = std::move(ys), style](cairo_t* cr, const PlotArea& area) {
        SetColour(cr, style);
        DrawCurve(cr, area, xs, ys);
    });
}

void PlotPanel::AddDots(std::vector<double> xs, std::vector<double> ys, PlotStyle style)
{
    Add(style, [xs = std::move(xs), ys = std::move(ys), style](cairo_t* cr, const PlotArea& area) {
        SetColour(cr, style);
        DrawDots(cr, area, xs, ys, style.width);
    });
}

void PlotPanel::AddVerticals(std::vector<double> xs, PlotStyle style)
{
    Add(style, [xs = std::move(xs), style](cairo_t* cr, const PlotArea& area) {
        SetColour(cr, style);
        for (double x : xs) {
            cairo_move_to(cr, area.X(x), area.top);
            cairo_line_to(cr, area.X(x), area.top + area.height);
        }
        cairo_stroke(cr);
    });
}

void PlotPanel::AddHorizontals(std::vector<double> ys, PlotStyle style)
{
    Add(style, [ys = std::move(ys), style](cairo_t* cr, const PlotArea& area) {
        SetColour(cr, style);
        for (double y : ys) {
            cairo_move_to(cr, area.left, area.Y(y));
            cairo_line_to(cr, area.left + area.width, area.Y(y));
        }
        cairo_stroke(cr);
    });
}
