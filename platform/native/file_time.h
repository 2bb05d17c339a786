#pragma once

#include <windef.h>

#include <ctime>

// The platform counts ticks of 100 ns since 1601, the system below seconds since 1970.
FILETIME ToFileTime(const timespec& time);
