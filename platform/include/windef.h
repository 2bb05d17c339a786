// Scalar and string types, handles and the records that every other header of the platform needs.
#pragma once

#include <cstddef>
#include <cstdint>

#define WINAPI
#define CALLBACK
#define APIENTRY
#define STDMETHODCALLTYPE
#define CONST const

using BYTE = uint8_t;
using WORD = uint16_t;
using DWORD = uint32_t;
using UINT = uint32_t;
using ULONG = uint32_t;
using USHORT = uint16_t;
using SHORT = int16_t;
using INT = int32_t;
using LONG = int32_t;
using BOOL = int32_t;
using CHAR = char;
using UCHAR = uint8_t;
using FLOAT = float;
using LONGLONG = int64_t;
using ULONGLONG = uint64_t;
using DWORD64 = uint64_t;
using INT_PTR = intptr_t;
using UINT_PTR = uintptr_t;
using LONG_PTR = intptr_t;
using ULONG_PTR = uintptr_t;
using DWORD_PTR = uintptr_t;
using SIZE_T = size_t;
using HRESULT = int32_t;
using LSTATUS = int32_t;
using LANGID = uint16_t;
using LCID = uint32_t;
using LCTYPE = uint32_t;
using ATOM = uint16_t;
using COLORREF = uint32_t;
using WPARAM = uintptr_t;
using LPARAM = intptr_t;
using LRESULT = intptr_t;

// Wide text is UTF-16. The C library's wide functions know another width and are never used on it.
using WCHAR = char16_t;
using TCHAR = WCHAR;
using OLECHAR = WCHAR;
#define QX_WIDE_LITERAL(text) u##text
#define TEXT(text) QX_WIDE_LITERAL(text)

using PVOID = void*;
using LPVOID = void*;
using LPCVOID = const void*;
using PBYTE = BYTE*;
using LPBYTE = BYTE*;
using LPDWORD = DWORD*;
using PDWORD = DWORD*;
using LPBOOL = BOOL*;
using PLONG = LONG*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPCCH = const char*;
using LPWSTR = WCHAR*;
using PWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using PCWSTR = const WCHAR*;
using LPCWCH = const WCHAR*;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;

using HANDLE = void*;
using HGLOBAL = HANDLE;
using HLOCAL = HANDLE;
using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;
using HRSRC = struct HRSRC__*;
using HWND = struct HWND__*;
using HICON = struct HICON__*;
using HCURSOR = HICON;
using HBRUSH = struct HBRUSH__*;
using HMENU = struct HMENU__*;
using HKEY = struct HKEY__*;
using PHKEY = HKEY*;
using REGSAM = DWORD;
using FARPROC = INT_PTR (*)();

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
inline constexpr int MAX_PATH = 260;   // characters, the terminator included
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(intptr_t(-1));

union LARGE_INTEGER {
    struct {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
};

union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    ULONGLONG QuadPart;
};

// 100 ns ticks since 1601-01-01 UTC.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct POINT {
    LONG x, y;
};

struct SIZE {
    LONG cx, cy;
};

struct RECT {
    LONG left, top, right, bottom;
};

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};

constexpr WORD LOWORD(DWORD_PTR value)
{
    return WORD(value & 0xFFFF);
}
constexpr WORD HIWORD(DWORD_PTR value)
{
    return WORD((value >> 16) & 0xFFFF);
}
constexpr BYTE LOBYTE(DWORD_PTR value)
{
    return BYTE(value & 0xFF);
}
constexpr BYTE HIBYTE(DWORD_PTR value)
{
    return BYTE((value >> 8) & 0xFF);
}
constexpr WORD MAKEWORD(BYTE low, BYTE high)
{
    return WORD(low | high << 8);
}
constexpr LONG MAKELONG(WORD low, WORD high)
{
    return LONG(DWORD(low) | DWORD(high) << 16);
}
