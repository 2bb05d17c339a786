// Texts of the user interface.
#pragma once

#include <windef.h>

#include <cstdarg>

constexpr bool IS_INTRESOURCE(ULONG_PTR value)
{
    return value >> 16 == 0;
}
inline bool IS_INTRESOURCE(const void* p)
{
    return IS_INTRESOURCE(reinterpret_cast<ULONG_PTR>(p));
}
#define MAKEINTRESOURCEW(id) (reinterpret_cast<LPWSTR>(ULONG_PTR(WORD(id))))
#define MAKEINTRESOURCE(id) MAKEINTRESOURCEW(id)

#define RT_BITMAP MAKEINTRESOURCEW(2)
#define RT_MENU MAKEINTRESOURCEW(4)
#define RT_DIALOG MAKEINTRESOURCEW(5)
#define RT_STRING MAKEINTRESOURCEW(6)
#define RT_RCDATA MAKEINTRESOURCEW(10)
#define RT_VERSION MAKEINTRESOURCEW(16)

inline constexpr DWORD LAYOUT_RTL = 1;

// The string table in the user's language. Gives the length, cut to cch - 1. With cch 0 psz is the address of a pointer
// that receives the text itself, which has no terminator.
int LoadStringW(HINSTANCE hInstance, UINT nId, LPWSTR psz, int cch);

// %[-#0][width][.precision] with c C d i u x X s S p and the sizes h l w I64 I32 I; no floating point. At most 1023
// characters and the terminator. Gives the length.
int wsprintfW(LPWSTR pszOut, LPCWSTR pszFormat, ...);
int wvsprintfW(LPWSTR pszOut, LPCWSTR pszFormat, va_list arguments);

// A text in place, or one character in the low word of the pointer, which then comes back so.
LPWSTR CharUpperW(LPWSTR psz);
LPWSTR CharLowerW(LPWSTR psz);
DWORD CharUpperBuffW(LPWSTR psz, DWORD cch);
DWORD CharLowerBuffW(LPWSTR psz, DWORD cch);

// The direction of windows made from now on: 0 or LAYOUT_RTL.
BOOL SetProcessDefaultLayout(DWORD dwLayout);
BOOL GetProcessDefaultLayout(DWORD* pdwLayout);
