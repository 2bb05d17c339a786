#include "engine/psola/grain_fade.h"

#include <cmath>
#include <numbers>

GrainFade::GrainFade() : table(size_t(kSize))
{
    for (int32_t i = 0; i < kSize; ++i)
        table[size_t(i)] = float(std::pow(std::sin(std::numbers::pi / 2.0 * i / (kSize - 1)), 3.0));
}
