// The global heap, the thread's error, short string calls and message texts.
#pragma once

#include <windef.h>

#include <cstdarg>

inline constexpr DWORD INFINITE = 0xFFFFFFFF;   // milliseconds: for ever

inline constexpr UINT GMEM_FIXED = 0x0000;
inline constexpr UINT GMEM_MOVEABLE = 0x0002;
inline constexpr UINT GMEM_ZEROINIT = 0x0040;
inline constexpr UINT GMEM_MODIFY = 0x0080;
inline constexpr UINT GMEM_LOCKCOUNT = 0x00FF;
inline constexpr UINT GMEM_INVALID_HANDLE = 0x8000;
inline constexpr UINT GHND = GMEM_MOVEABLE | GMEM_ZEROINIT;
inline constexpr UINT GPTR = GMEM_FIXED | GMEM_ZEROINIT;

inline constexpr DWORD FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x0100;
inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x0200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_STRING = 0x0400;
inline constexpr DWORD FORMAT_MESSAGE_ARGUMENT_ARRAY = 0x2000;

DWORD GetLastError();
void SetLastError(DWORD dwCode);

DWORD GetCurrentThreadId();
DWORD GetCurrentProcessId();

// Fixed blocks: the handle is the address. Movable ones have an address while locked; locks count.
HGLOBAL GlobalAlloc(UINT nFlags, SIZE_T cb);
// A fixed or locked block moves only with GMEM_MOVEABLE; with GMEM_ZEROINIT what is added is 0. With GMEM_MODIFY the
// size is ignored and a fixed block may become movable. On failure the old block stays.
HGLOBAL GlobalReAlloc(HGLOBAL hMem, SIZE_T cb, UINT nFlags);
HGLOBAL GlobalFree(HGLOBAL hMem);   // null on success, and for null
LPVOID GlobalLock(HGLOBAL hMem);
BOOL GlobalUnlock(HGLOBAL hMem);   // true while locks remain; then false with 0, and ERROR_NOT_LOCKED without a lock
HGLOBAL GlobalHandle(LPCVOID p);
SIZE_T GlobalSize(HGLOBAL hMem);
UINT GlobalFlags(HGLOBAL hMem);   // the lock count in GMEM_LOCKCOUNT

HLOCAL LocalFree(HLOCAL hMem);   // for texts from FORMAT_MESSAGE_ALLOCATE_BUFFER

// True when any byte of the range cannot be read. A null range of 0 bytes can.
BOOL IsBadReadPtr(LPCVOID p, UINT_PTR cb);

// In the order of the user's language; hyphen and apostrophe count only between texts that are equal without them.
int lstrcmpW(LPCWSTR pszA, LPCWSTR pszB);
int lstrcmpiW(LPCWSTR pszA, LPCWSTR pszB);
int lstrlenW(LPCWSTR psz);   // 0 for null
LPWSTR lstrcpyW(LPWSTR pszOut, LPCWSTR psz);
LPWSTR lstrcpynW(LPWSTR pszOut, LPCWSTR psz, int cch);   // cch with the terminator
LPWSTR lstrcatW(LPWSTR pszOut, LPCWSTR psz);

// Inserts "%1" to "%99", with an optional "!format!" of wsprintfW ("!s!" without one); "%0" ends the text, "%n" is a line
// end, any other character behind '%' is itself. pSource is the text; the message id and the language are not looked at.
// Gives the characters without the terminator, 0 on failure; nothing is written when the text does not fit.
DWORD FormatMessageW(DWORD dwFlags, LPCVOID pSource, DWORD dwMessageId, DWORD dwLanguageId, LPWSTR pszOut, DWORD cch,
                     va_list* pArguments);
