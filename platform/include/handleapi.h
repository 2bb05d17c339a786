// Handles of files and other objects of the system.
#pragma once

#include <windef.h>

BOOL CloseHandle(HANDLE hObject);   // ERROR_INVALID_HANDLE for what is not open, or is closed by another call
