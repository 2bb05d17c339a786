// Renders one file into another through the plug-in, as a host does.
#pragma once

#include "tools/options.h"
#include "tools/report.h"

// Throws a Failure; the output's place is then as it was. Gives a signal's number when one ended the rendering, with
// nothing left behind either, or else 0 and the report.
int Render(const Options& options, Report* report);
