// What the plug-in tells of itself, as text for the terminal.
#pragma once

#include <dshow.h>

#include <string>

// A line a preset, with the name as the filter has it.
std::string PresetListing(IBaseFilter* filter);

// A paragraph a parameter: number, name for automation files, label, range, neutral value, unit, curves; items of
// enumerations by number.
std::string ParamListing(IBaseFilter* filter);
