// Charts where there is no drawing library: they can be described, and say when one is asked for that it cannot be had.
#include "tools/plot.h"

#include "tools/failure.h"

PlotPanel::PlotPanel(int panelHeight, PlotAxis x, PlotAxis y)
    : height(panelHeight), xAxis(std::move(x)), yAxis(std::move(y))
{
}

void PlotPanel::AddImage(PlotImage) {}
void PlotPanel::AddWaveform(std::vector<float>, double, double, PlotStyle) {}
void PlotPanel::AddCurve(std::vector<double>, std::vector<double>, PlotStyle) {}
void PlotPanel::AddDots(std::vector<double>, std::vector<double>, PlotStyle) {}
void PlotPanel::AddVerticals(std::vector<double>, PlotStyle) {}
void PlotPanel::AddHorizontals(std::vector<double>, PlotStyle) {}

Plot::Plot(std::string plotTitle, int pictureWidth) : title(std::move(plotTitle)), width(pictureWidth) {}

PlotPanel& Plot::AddPanel(int height, PlotAxis x, PlotAxis y)
{
    return panels.emplace_back(height, std::move(x), std::move(y));
}

std::string Plot::Png() const
{
    throw UsageFailure("--plot: this program draws no plots; --csv gives the numbers");
}
