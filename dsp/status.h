// Status codes of the DSP foundation, the engine and their factories. They travel as int32_t, in decimal as they stand.
#pragma once

#include <cstdint>

constexpr int32_t kSuccess = 0;
constexpr int32_t kNoResult = -1;   // nothing to give yet, or nothing left
constexpr int32_t kOutOfMemory = 1000001;
constexpr int32_t kFactorsLocked = 5000001;   // the end of the stream has been announced
constexpr int32_t kNotAvailable = 5000002;    // the operation means nothing in this configuration
constexpr int32_t kInvalidArgument = 5000003;
constexpr int32_t kInvalidSampleRate = 5000004;     // outside 8000 to 384000 Hz
constexpr int32_t kInvalidChannelCount = 5000005;   // outside 1 to 48
