#include "dsp/kaiser_sinc.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

// Modified Bessel function of order 0 by its power series.
double BesselI0(double y)
{
    double sum = 1.0, term = 1.0;
    for (int32_t k = 1; term > sum * 1e-21; ++k) {
        term *= (y / (2.0 * k)) * (y / (2.0 * k));
        sum += term;
    }
    return sum;
}

}   // namespace

double KaiserSinc(int32_t i, int32_t n, double rolloff, double beta)
{
    if (i == 0)
        return rolloff;
    const double x = double(i) / kSincPerCrossing, edge = double(i) / (n - 1);
    const double window = BesselI0(beta * std::sqrt(std::max(0.0, 1.0 - edge * edge))) / BesselI0(beta);
    return window * std::sin(std::numbers::pi * rolloff * x) / (std::numbers::pi * x);
}
