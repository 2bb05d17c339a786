#include "kernel/kernel.h"

#include "kernel/lang.h"
#include "kernel/print.h"

BOOL QxKernel_EarlyInitialize(HINSTANCE hInstance, DWORD)
{
    const HRESULT tokens = CreateTokenTable();
    const HRESULT language = OpenKernelLanguage(hInstance);
    return SUCCEEDED(tokens) && SUCCEEDED(language) ? TRUE : FALSE;
}

BOOL QxKernel_LateTerminate(HINSTANCE, DWORD)
{
    CloseKernelLanguage();
    DestroyTokenTable();
    return TRUE;
}
