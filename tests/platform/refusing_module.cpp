// A module that does not want to be loaded.
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID)
{
    return FALSE;
}
