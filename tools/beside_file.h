// Small result files, written beside their place and renamed when whole: whatever happens, the place holds the old file
// or the new one, and nothing is left behind.
#pragma once

#include <string>

// Throws std::runtime_error, whose text names the file and the reason.
void WriteBeside(const std::string& path, const std::string& contents);
