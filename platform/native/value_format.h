// The small print dialect of wsprintfW, which the inserts of FormatMessageW share.
#pragma once

#include "platform/native/wide_text.h"

#include <functional>

// Gives the next argument, widened to 64 bits: its low 32 bits count unless the directive says otherwise.
using NextArgument = std::function<uint64_t()>;

// The format executed, cut at limit characters.
WideString PrintValues(WideView format, const NextArgument& next, size_t limit);
