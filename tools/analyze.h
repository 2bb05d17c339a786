// vantor analyze WHAT INPUT ...: looks into what the engine sees in a recording. One row of the table per WHAT.
#pragma once

#include <span>

// arguments: those after "analyze". Gives the exit status; throws a Failure.
int Analyze(std::span<char* const> arguments);
