// Paths of the platform and of the system below.
#pragma once

#include <windef.h>

#include <string>

std::string NativePath(LPCWSTR pszPath);               // UTF-8, with '/' alone; empty for null
DWORD PathError(const std::string& path, int error);   // tells a missing folder from a missing file
