// Curves of parameters over the input's time, from a text file. A line holds a parameter (its name or number), start and
// end in seconds, start and end value in the parameter's unit, and a curve: jump, linear, square or inverse-square. Empty
// lines and what follows a '#' do not count.
#pragma once

#include "platform/media/media_params.h"

#include <windows.h>

#include <string>
#include <vector>

struct AutomationSegment {
    DWORD param;
    MP_ENVELOPE_SEGMENT segment;
};

// Throws a data Failure that names the file, the line's number and what is wrong with it: a word that is none of those, a
// value outside the parameter's range, a curve that the parameter does not follow, an end that is not after the start, or
// a time that an earlier line of the same parameter has taken.
std::vector<AutomationSegment> ReadAutomation(const std::string& path, IMediaParamInfo* info);

// The number of a parameter as automation files and listings name it, or -1; and its name, empty beyond the last.
int ParamByName(const std::string& name);
std::string ParamName(DWORD param);

struct CurveName {
    const char* name;
    MP_CURVE_TYPE curve;
};
inline constexpr CurveName kCurveNames[] = {{"jump", MP_CURVE_JUMP},
                                            {"linear", MP_CURVE_LINEAR},
                                            {"square", MP_CURVE_SQUARE},
                                            {"inverse-square", MP_CURVE_INVSQUARE}};
