// `vantor analyze marks`: the pitch marks of a recording.
#pragma once

#include <span>

// arguments: those after "marks". Gives the exit status; throws a Failure.
int AnalyzeMarks(std::span<char* const> arguments);
