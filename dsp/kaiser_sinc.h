// One wing of a Kaiser-windowed sinc (Kaiser 1974), the impulse response behind band-limited interpolation.
#pragma once

#include <cstdint>

constexpr int32_t kSincPerCrossing = 256;   // table entries from one zero crossing to the next

// Entry i of a table of n entries: the response at i / kSincPerCrossing samples from its centre, low-pass at rolloff
// times Nyquist, under a window that reaches its end at entry n - 1.
double KaiserSinc(int32_t i, int32_t n, double rolloff, double beta);
