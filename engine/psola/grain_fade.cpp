#include "engine/psola/grain_fade.h"

#include <cmath>
#include <numbers>

GrainFade::GrainFade() : table(size_t(kSize))
{
    for (int32_t i = 0; i < kSize; ++i) {
        const double sine = std::sin(std::numbers::pi / 2.0 * i / (kSize - 1));
        table[size_t(i)] = float(sine * sine * sine);
    }
}
