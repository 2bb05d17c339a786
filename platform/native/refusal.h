// Ends a call that failed: leaves the code as the thread's error and gives the call's "failed" value.
#pragma once

#include <winbase.h>
#include <winerror.h>

template <class T = BOOL>
T Refuse(DWORD code, T result = T())
{
    SetLastError(code);
    return result;
}

// The Win32 code for an errno value.
DWORD ErrorFromErrno(int error);
