// vantor analyze envelope INPUT --time S [--content 3..9] [--csv FILE] [--plot FILE.png]: the spectrum of one frame of the
// band split, and the envelope that the formant shift goes by.
#pragma once

#include <span>

// arguments: those after "envelope". Gives the exit status; throws a Failure.
int AnalyzeEnvelope(std::span<char* const> arguments);
