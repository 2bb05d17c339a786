// vantor analyze pitch INPUT [--csv FILE] [--plot FILE.png]: what the pitch tracker makes of a recording.
#pragma once

#include <span>

// arguments: those after "pitch". Gives the exit status; throws a Failure.
int AnalyzePitch(std::span<char* const> arguments);
