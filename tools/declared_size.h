// Whether a chunked file (RIFF and RF64 wave, W64, AIFF) says that it has more audio than stands in it, as one does that
// was cut off on its way. A reader that shortens such a file in silence would make a shorter output of it.
#pragma once

#include <string>

// False also for files of other kinds, for those that were streamed and tell no size, and for what cannot be read.
bool DeclaresMoreThanItHolds(const std::string& path);
