// What a record of parameters comes to in the engine, asked of the code that decides it.
#pragma once

#include "aplugins/qxvantor/vantor_params.h"

#include <cstdint>

// Under a record that does not change, output duration / input duration.
double StretchInForce(QxVantorParams record);
// Likewise the frequency multiplier, which an engine made for the question quantises. sampleRate in Hz, as it takes it.
double PitchInForce(QxVantorParams record, int32_t sampleRate);

// The output frames that an input becomes at a constant stretch in force.
int64_t PromisedFrames(int64_t framesIn, double stretch);
