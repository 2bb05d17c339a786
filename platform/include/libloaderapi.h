// Modules and their resources.
#pragma once

#include <windef.h>

inline constexpr DWORD DLL_PROCESS_ATTACH = 1;
inline constexpr DWORD DLL_THREAD_ATTACH = 2;
inline constexpr DWORD DLL_THREAD_DETACH = 3;
inline constexpr DWORD DLL_PROCESS_DETACH = 0;
inline constexpr DWORD LOAD_LIBRARY_AS_DATAFILE = 2;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT = 2;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 4;

using ENUMRESTYPEPROCW = BOOL (*)(HMODULE hModule, LPWSTR pszType, LONG_PTR lParam);
using ENUMRESNAMEPROCW = BOOL (*)(HMODULE hModule, LPCWSTR pszType, LPWSTR pszName, LONG_PTR lParam);
using ENUMRESLANGPROCW = BOOL (*)(HMODULE hModule, LPCWSTR pszType, LPCWSTR pszName, WORD wLanguage, LONG_PTR lParam);

// What a module may have for its loader: called once before a load succeeds, and once when the last load is undone. FALSE
// refuses the load. pReserved is null: at the end of the process nothing is called. Threads are not told either.
extern "C" __attribute__((visibility("default"))) BOOL DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pReserved);

// As data file: an image of compiled resources, which must be whole, else ERROR_BAD_EXE_FORMAT. Otherwise a shared
// library; ERROR_DLL_INIT_FAILED when its DllMain refuses. hFile is null.
HMODULE LoadLibraryExW(LPCWSTR pszPath, HANDLE hFile, DWORD dwFlags);
BOOL FreeLibrary(HMODULE hModule);
BOOL DisableThreadLibraryCalls(HMODULE hModule);   // ERROR_INVALID_HANDLE; there are no such calls
HMODULE GetModuleHandleW(LPCWSTR pszModule);       // null: the program itself
BOOL GetModuleHandleExW(DWORD dwFlags, LPCWSTR pszModule, HMODULE* phModule);
// A path that does not fit is cut, terminated, and leaves ERROR_INSUFFICIENT_BUFFER; the result is then cch.
DWORD GetModuleFileNameW(HMODULE hModule, LPWSTR pszOut, DWORD cch);
FARPROC GetProcAddress(HMODULE hModule, LPCSTR pszName);

// A type or name is a text, a number by MAKEINTRESOURCEW, or a text like "#12" for a number; case does not count. A
// module of null is the program. The language given is tried first, then its primary language alone, then the neutral
// one; a neutral language asked for goes on to the thread's, the user's, the system's and English, and then takes any.
HRSRC FindResourceExW(HMODULE hModule, LPCWSTR pszType, LPCWSTR pszName, WORD wLanguage);
HRSRC FindResourceW(HMODULE hModule, LPCWSTR pszName, LPCWSTR pszType);
HGLOBAL LoadResource(HMODULE hModule, HRSRC hResource);
LPVOID LockResource(HGLOBAL hResource);
DWORD SizeofResource(HMODULE hModule, HRSRC hResource);
BOOL EnumResourceTypesW(HMODULE hModule, ENUMRESTYPEPROCW pCall, LONG_PTR lParam);
BOOL EnumResourceNamesW(HMODULE hModule, LPCWSTR pszType, ENUMRESNAMEPROCW pCall, LONG_PTR lParam);
BOOL EnumResourceLanguagesW(HMODULE hModule, LPCWSTR pszType, LPCWSTR pszName, ENUMRESLANGPROCW pCall, LONG_PTR lParam);
