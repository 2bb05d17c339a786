// The thread's error, and its id.
#include <winbase.h>

#include <unistd.h>

namespace {
thread_local DWORD t_lastError = 0;
}

DWORD GetLastError()
{
    return t_lastError;
}

void SetLastError(DWORD dwCode)
{
    t_lastError = dwCode;
}

DWORD GetCurrentThreadId()
{
    return DWORD(gettid());
}

DWORD GetCurrentProcessId()
{
    return DWORD(getpid());
}
