// The coefficients of the equaliser's seven responses: bilinear designs (Zoelzer, "Digital Audio Signal Processing").
#pragma once

#include <cstdint>

struct EqPolynomial {
    double c0, c1, c2;   // of 1, z^-1, z^-2
};

struct EqResponse {
    EqPolynomial numerator, denominator;   // the denominator's c0 is 1
};

// filterType is an EqType, frequency a fraction of the sample rate below 0.5, gainDb enters the shelves and peaks, q the
// peaks. The sign of the gain picks one of two designs for these; both raise by |gainDb|, but for the high shelf's.
EqResponse DesignEq(int32_t filterType, double frequency, double gainDb, double q);
