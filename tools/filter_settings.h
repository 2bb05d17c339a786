// What the command line says about the filter, taken to it through the interfaces that every host has.
#pragma once

#include "aplugins/qxvantor/vantor_params.h"
#include "tools/options.h"

#include <dshow.h>

#include <string>

// The preset or the saved state, in place of the filter's own start. Throws a Failure.
void ApplyStart(IBaseFilter* filter, const Options& options);
// Values that were told by themselves, over the former. stretch: output duration / input duration, when it was told.
// Throws a Failure.
void ApplyValues(IBaseFilter* filter, const Options& options, std::optional<double> stretch);

// The curves of the file that the options name, if any; true when one of them drives the stretch. Throws a
// Failure.
bool ApplyAutomation(IBaseFilter* filter, const Options& options);

QxVantorParams RecordOf(IBaseFilter* filter);

// The block that hosts keep.
std::string SavedState(IBaseFilter* filter);
