#include "engine/pitch/eq_design.h"

#include "engine/pitch/eq.h"

#include <cmath>
#include <numbers>

namespace {

constexpr double kRoot2 = 1.4142135;
constexpr double kLn10 = 2.3025851;

// constant + linear * s + square * s^2 under the bilinear transform, where K = tan(pi f) is already in the terms.
EqPolynomial Bilinear(double constant, double linear, double square)
{
    return {constant + linear + square, 2.0 * (square - constant), constant - linear + square};
}

EqResponse Over(const EqPolynomial& n, const EqPolynomial& d, double b0, double a0)
{
    return {{n.c0 / b0, n.c1 / b0, n.c2 / b0}, {1.0, d.c1 / a0, d.c2 / a0}};
}

EqResponse Over(const EqPolynomial& n, const EqPolynomial& d)
{
    return Over(n, d, d.c0, d.c0);
}

EqResponse LowShelf(double k, double v, bool boost)
{
    const EqPolynomial flat = Bilinear(1.0, kRoot2 * k, k * k);
    const EqPolynomial raised = Bilinear(1.0, kRoot2 * std::sqrt(v) * k, v * k * k);
    return boost ? Over(raised, flat) : Over(flat, raised);
}

// The cut is no mirror image of the boost: numerator and denominator have a scale of their own.
EqResponse HighShelf(double k, double v, bool boost)
{
    const EqPolynomial flat = Bilinear(1.0, kRoot2 * k, k * k);
    const EqPolynomial raised = Bilinear(v, kRoot2 * std::sqrt(v) * k, k * k);
    if (boost)
        return Over(raised, flat);
    const double c = k * k / v, e = kRoot2 * k / std::sqrt(v);
    return Over(flat, {1.0, 2.0 * (c - 1.0), v - e + c}, raised.c0, c + e + v);
}

EqResponse Peak(double k, double v, double q, bool boost)
{
    const EqPolynomial narrow = Bilinear(1.0, k / q, k * k);
    const EqPolynomial wide = Bilinear(1.0, v * k / q, k * k);
    return boost ? Over(wide, narrow) : Over(narrow, wide);
}

EqResponse PeakWithoutDirect(double k, double v, double q, bool boost)
{
    EqResponse peak = Peak(k, v, q, boost);
    peak.numerator.c0 = 0.0;
    return peak;
}

EqResponse LowPass(double k)
{
    return Over({k * k, 2.0 * k * k, k * k}, Bilinear(1.0, kRoot2 * k, k * k));
}

EqResponse HighPass(double k)
{
    return Over({1.0, -2.0, 1.0}, Bilinear(1.0, kRoot2 * k, k * k));
}

// The pole whose response falls by 3 dB at f.
EqResponse OnePole(double f)
{
    const double c = std::cos(2.0 * std::numbers::pi * f);
    const double p = (2.0 - c) - std::sqrt((c - 2.0) * (c - 2.0) - 1.0);
    return {{1.0 - p, 0.0, 0.0}, {1.0, -p, 0.0}};
}

}   // namespace

EqResponse DesignEq(int32_t filterType, double frequency, double gainDb, double q)
{
    const double k = std::tan(std::numbers::pi * frequency), v = std::exp(gainDb * 0.05 * kLn10);
    const bool boost = gainDb > 0.0;
    switch (filterType) {
    case kEqLowShelf:
        return LowShelf(k, v, boost);
    case kEqHighShelf:
        return HighShelf(k, v, boost);
    case kEqPeak:
        return Peak(k, v, q, boost);
    case kEqLowPass:
        return LowPass(k);
    case kEqHighPass:
        return HighPass(k);
    case kEqPeakNoDirect:
        return PeakWithoutDirect(k, v, q, boost);
    default:
        return OnePole(frequency);
    }
}
