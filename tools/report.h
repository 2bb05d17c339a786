// What a rendering was and what came of it.
#pragma once

#include "aplugins/qxvantor/vantor_params.h"
#include "tools/options.h"

#include <cstdint>
#include <string>

struct Report {
    AudioFormat input, output;
    QxVantorParams record{};         // the filter's as rendering starts
    double requestedStretch = 1.0;   // as asked, or as a duration made it
    double stretch = 1.0;            // in force, as rendering starts
    int64_t framesIn = 0;
    int64_t framesOut = 0;
    int64_t framesPromised = 0;   // by the factors in force, or by the duration; what came under automation
    int64_t framesTrimmed = 0;    // at the end, to meet a duration; negative: added
    int64_t nonFinite = 0;        // input samples replaced by 0
    int64_t clipped = 0;          // output samples limited by the file's encoding
    double peak = 0.0;            // of the output, 1.0 is full scale
    double seconds = 0.0;         // of work
};

std::string ReportAsJson(const Report& report, const Options& options);
