#include "tools/plot.h"

#include "tools/plot_area.h"

#include <algorithm>
#include <cairo.h>
#include <fontconfig/fontconfig.h>
#include <memory>
#include <numbers>
#include <stdexcept>

namespace {

constexpr double kLeft = 84, kRight = 24, kTitle = 44, kBelow = 46, kBelowBare = 14;   // margins in pixels
constexpr double kTickLength = 5;
constexpr double kTextSize = 13, kTitleSize = 17;

struct Tick {
    double value;
    std::string text;
    bool labelled = true;
};

std::string Number(double v)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", std::fabs(v) < 1e-12 ? 0.0 : v);
    return text;
}

// Steps of 1, 2 or 5 times a power of ten.
std::vector<Tick> LinearTicks(const PlotAxis& axis, double room)
{
    const double rough = (axis.to - axis.from) / std::max(2.0, room);
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    const double step = power * (rough <= power ? 1 : rough <= 2 * power ? 2 : rough <= 5 * power ? 5 : 10);
    std::vector<Tick> ticks;
    for (double i = std::ceil(axis.from / step - 1e-9); i * step <= axis.to + 1e-9 * step; ++i)
        ticks.push_back({i * step, Number(i * step)});
    return ticks;
}

// 1 to 9 of each decade; 1, 2 and 5 have labels, over less than a decade and a half 3 and 7 too.
std::vector<Tick> LogTicks(const PlotAxis& axis)
{
    const bool fine = axis.to / axis.from < 30.0;
    std::vector<Tick> ticks;
    for (double decade = std::pow(10.0, std::floor(std::log10(axis.from))); decade <= axis.to; decade *= 10.0)
        for (int digit = 1; digit <= 9; ++digit) {
            const double v = digit * decade;
            if (v < axis.from * (1 - 1e-9) || v > axis.to * (1 + 1e-9))
                continue;
            ticks.push_back(
                {v, Number(v), digit == 1 || digit == 2 || digit == 5 || (fine && (digit == 3 || digit == 7))});
        }
    return ticks;
}

std::vector<Tick> Ticks(const PlotAxis& axis, double room)
{
    return axis.logarithmic ? LogTicks(axis) : LinearTicks(axis, room);
}

void Text(cairo_t* cr, double x, double y, const std::string& text, double alignX)
{
    cairo_text_extents_t extents;
    cairo_text_extents(cr, text.c_str(), &extents);
    cairo_move_to(cr, x - alignX * extents.x_advance, y);
    cairo_show_text(cr, text.c_str());
}

void Ink(cairo_t* cr, double grey, double alpha = 1.0)
{
    cairo_set_source_rgba(cr, grey, grey, grey, alpha);
}

double Crisp(double pixel)
{
    return std::floor(pixel) + 0.5;
}

void DrawAxisX(cairo_t* cr, const PlotArea& area, const PlotAxis& axis)
{
    const double bottom = area.top + area.height;
    for (const Tick& tick : Ticks(axis, area.width / 90.0)) {
        const double x = Crisp(area.X(tick.value));
        cairo_move_to(cr, x, bottom);
        cairo_line_to(cr, x, bottom + kTickLength);
        cairo_stroke(cr);
        if (!axis.label.empty() && tick.labelled)
            Text(cr, x, bottom + kTickLength + kTextSize, tick.text, 0.5);
    }
    Text(cr, area.left + area.width / 2, bottom + kTickLength + 2.2 * kTextSize, axis.label, 0.5);
}

void DrawAxisY(cairo_t* cr, const PlotArea& area, const PlotAxis& axis)
{
    for (const Tick& tick : Ticks(axis, area.height / 42.0)) {
        const double y = Crisp(area.Y(tick.value));
        cairo_move_to(cr, area.left - kTickLength, y);
        cairo_line_to(cr, area.left, y);
        cairo_stroke(cr);
        if (tick.labelled)
            Text(cr, area.left - kTickLength - 3, y + kTextSize * 0.35, tick.text, 1.0);
    }
    cairo_save(cr);
    cairo_translate(cr, kTextSize + 6, area.top + area.height / 2);
    cairo_rotate(cr, -std::numbers::pi / 2);
    Text(cr, 0, 0, axis.label, 0.5);
    cairo_restore(cr);
}

void DrawGrid(cairo_t* cr, const PlotArea& area, const PlotAxis& x, const PlotAxis& y)
{
    Ink(cr, 0.5, 0.28);
    cairo_set_line_width(cr, 1);
    for (const Tick& tick : Ticks(x, area.width / 90.0)) {
        cairo_move_to(cr, Crisp(area.X(tick.value)), area.top);
        cairo_rel_line_to(cr, 0, area.height);
    }
    for (const Tick& tick : Ticks(y, area.height / 42.0)) {
        cairo_move_to(cr, area.left, Crisp(area.Y(tick.value)));
        cairo_rel_line_to(cr, area.width, 0);
    }
    cairo_stroke(cr);
}

// Named layers in a box at the upper right.
void DrawLegend(cairo_t* cr, const PlotArea& area, const std::vector<const PlotStyle*>& styles)
{
    if (styles.empty())
        return;
    constexpr double kSwatch = 22, kPad = 8, kLine = kTextSize + 5;
    double textWidth = 0;
    for (const PlotStyle* style : styles) {
        cairo_text_extents_t extents;
        cairo_text_extents(cr, style->name.c_str(), &extents);
        textWidth = std::max(textWidth, extents.x_advance);
    }
    const double w = textWidth + kSwatch + 3 * kPad, h = double(styles.size()) * kLine + kPad;
    const double x = area.left + area.width - w - 8, y = area.top + 8;
    cairo_rectangle(cr, Crisp(x), Crisp(y), w, h);
    Ink(cr, 0.20, 0.88);
    cairo_fill(cr);
    for (size_t i = 0; i < styles.size(); ++i) {
        const PlotColour& c = styles[i]->colour;
        const double line = y + kPad / 2 + (double(i) + 0.5) * kLine;
        cairo_set_source_rgb(cr, c.red, c.green, c.blue);
        cairo_rectangle(cr, x + kPad, line - 2, kSwatch, 4);
        cairo_fill(cr);
        Ink(cr, 1.0);
        Text(cr, x + 2 * kPad + kSwatch, line + kTextSize * 0.35, styles[i]->name, 0.0);
    }
}

// Cairo and Fontconfig keep what they know of fonts until told otherwise; given back at exit, a leak checker sees only what
// is ours.
struct FontCaches {
    ~FontCaches()
    {
        cairo_debug_reset_static_data();
        FcFini();
    }
};

cairo_status_t Append(void* closure, const unsigned char* data, unsigned length)
{
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

}   // namespace

Plot::Plot(std::string plotTitle, int pictureWidth) : title(std::move(plotTitle)), width(pictureWidth) {}

PlotPanel& Plot::AddPanel(int height, PlotAxis x, PlotAxis y)
{
    return panels.emplace_back(height, std::move(x), std::move(y));
}

void Plot::DrawPanel(cairo_t* cr, const PlotPanel& panel, double top) const
{
    const PlotArea area(kLeft, top, width - kLeft - kRight, panel.height, panel.xAxis, panel.yAxis);
    cairo_save(cr);
    cairo_rectangle(cr, area.left, area.top, area.width, area.height);
    cairo_clip(cr);
    // The grid lies over images, which would hide it, and under all else.
    const auto firstLine = std::ranges::find(panel.layers, false, &PlotPanel::Layer::isImage);
    for (auto layer = panel.layers.begin(); layer != panel.layers.end(); ++layer) {
        if (layer == firstLine)
            DrawGrid(cr, area, panel.xAxis, panel.yAxis);
        layer->draw(cr, area);
    }
    DrawLegend(cr, area, panel.NamedStyles());
    cairo_restore(cr);
    Ink(cr, 0.1);
    cairo_set_line_width(cr, 1);
    cairo_rectangle(cr, Crisp(area.left), Crisp(area.top), area.width - 1, area.height - 1);
    cairo_stroke(cr);
    DrawAxisX(cr, area, panel.xAxis);
    DrawAxisY(cr, area, panel.yAxis);
}

std::string Plot::Png() const
{
    static const FontCaches caches;
    const auto below = [](const PlotPanel& panel) { return panel.xAxis.label.empty() ? kBelowBare : kBelow; };
    double height = kTitle;
    for (const PlotPanel& panel : panels)
        height += panel.height + below(panel);

    const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, int(height)), cairo_surface_destroy);
    const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> context(cairo_create(surface.get()), cairo_destroy);
    cairo_t* cr = context.get();
    Ink(cr, 1.0);
    cairo_paint(cr);
    cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, kTitleSize);
    Ink(cr, 0.1);
    Text(cr, kLeft, kTitle - 16, title, 0.0);
    cairo_set_font_size(cr, kTextSize);

    double top = kTitle;
    for (const PlotPanel& panel : panels) {
        DrawPanel(cr, panel, top);
        top += panel.height + below(panel);
    }
    std::string png;
    if (cairo_surface_write_to_png_stream(surface.get(), Append, &png) != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error("cannot draw: " + title);
    return png;
}
