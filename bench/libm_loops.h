// The costly entries of the vector table over 2048 values, beside loops over the C library's functions.
#pragma once

#include "dsp/vtnf_table.h"

#include <span>

struct LibmLoop {
    const char* name;
    void (*ours)(const VtnfTable&);
    void (*peer)();
};

// Phase, Exp, ThresholdLn, Magnitude; then Magnitude beside a plain root, which is what a compiler makes of the formula.
// What works in place starts from a copy, on both sides.
std::span<const LibmLoop> LibmLoops();
