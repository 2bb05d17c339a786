// The presets that the plug-in brings along, as the command line names them.
#pragma once

#include <dshow.h>

#include <string>
#include <vector>

// Those that a user sees, by number from 1 on.
std::vector<std::string> PresetNames(IBaseFilter* filter);

// wanted: a number, or a name as it is listed or without what stands around it ("2 x Time"), in any case and spacing.
// Throws a usage Failure for any other.
void ApplyPreset(IBaseFilter* filter, const std::string& wanted);
