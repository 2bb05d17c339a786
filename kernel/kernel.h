// Start and end of the library in the module that it is part of. [control] Under the loader's lock.
#pragma once

#include <windows.h>

// The table of print tokens, then the kernel's language handle on the module with the items of the user's locale. 0 when
// one of them fails; the end undoes what was done.
BOOL QxKernel_EarlyInitialize(HINSTANCE hInstance, DWORD dwFlags);
BOOL QxKernel_LateTerminate(HINSTANCE hInstance, DWORD dwFlags);   // always 1
