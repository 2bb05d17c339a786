// What a record of parameters comes to in the engine, asked of the code that decides it.
#pragma once

#include "aplugins/qxvantor/vantor_params.h"

#include <cstdint>

struct Factors {
    double stretch, pitch;   // output duration / input duration; frequency multiplier
};

// The factors that are in force under a record that does not change. sampleRate in Hz, as the engine takes it.
Factors FactorsInForce(QxVantorParams record, int32_t sampleRate);

// The output frames that an input becomes at a constant stretch in force.
int64_t PromisedFrames(int64_t framesIn, double stretch);
