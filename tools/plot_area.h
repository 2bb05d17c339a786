// The rectangle of a panel in the picture, and where values fall in it.
#pragma once

#include "tools/plot.h"

#include <cmath>

class PlotArea {
public:
    PlotArea(double areaLeft, double areaTop, double areaWidth, double areaHeight, const PlotAxis& x, const PlotAxis& y)
        : left(areaLeft), top(areaTop), width(areaWidth), height(areaHeight), xAxis(x), yAxis(y)
    {
    }
    double X(double x) const { return left + width * Fraction(xAxis, x); }
    double Y(double y) const { return top + height * (1.0 - Fraction(yAxis, y)); }
    // The values in the middle of a pixel.
    double XAt(double pixel) const { return Value(xAxis, (pixel + 0.5) / width); }
    double YAt(double pixel) const { return Value(yAxis, 1.0 - (pixel + 0.5) / height); }

    const double left, top, width, height;   // pixels

private:
    static double Fraction(const PlotAxis& axis, double v)
    {
        if (axis.logarithmic)
            return std::log(std::max(v, axis.from * 1e-3) / axis.from) / std::log(axis.to / axis.from);
        return (v - axis.from) / (axis.to - axis.from);
    }
    static double Value(const PlotAxis& axis, double fraction)
    {
        if (axis.logarithmic)
            return axis.from * std::pow(axis.to / axis.from, fraction);
        return axis.from + fraction * (axis.to - axis.from);
    }
    const PlotAxis& xAxis;
    const PlotAxis& yAxis;
};
