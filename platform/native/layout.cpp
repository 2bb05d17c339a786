#include "platform/native/refusal.h"

#include <winuser.h>

#include <atomic>

namespace {
std::atomic<DWORD> g_layout = 0;
}

BOOL SetProcessDefaultLayout(DWORD dwLayout)
{
    if (dwLayout & ~LAYOUT_RTL)
        return Refuse(ERROR_INVALID_PARAMETER);
    g_layout = dwLayout;
    return TRUE;
}

BOOL GetProcessDefaultLayout(DWORD* pdwLayout)
{
    if (!pdwLayout)
        return Refuse(ERROR_INVALID_PARAMETER);
    *pdwLayout = g_layout;
    return TRUE;
}
