// Texts of the user interface, and windows that exist for their messages.
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

// ---- windows and their messages ---------------------------------------------------------------------------------------

inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_NCCREATE = 0x0081;
inline constexpr UINT WM_NCDESTROY = 0x0082;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr UINT WM_USER = 0x0400;
inline constexpr UINT WM_APP = 0x8000;
inline constexpr UINT PM_NOREMOVE = 0;
inline constexpr UINT PM_REMOVE = 1;
inline constexpr int GWLP_USERDATA = -21;
#define HWND_MESSAGE (reinterpret_cast<HWND>(LONG_PTR(-3)))

constexpr WPARAM MAKEWPARAM(WORD low, WORD high)
{
    return WPARAM(DWORD(low) | DWORD(high) << 16);
}

using WNDPROC = LRESULT (*)(HWND, UINT, WPARAM, LPARAM);

struct WNDCLASSEXW {
    UINT cbSize;
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCWSTR lpszMenuName;
    LPCWSTR lpszClassName;
    HICON hIconSm;
};

struct CREATESTRUCTW {
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy, cx, y, x;
    LONG style;
    LPCWSTR lpszName;
    LPCWSTR lpszClass;
    DWORD dwExStyle;
};

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;   // ms since some start
    POINT pt;
};

// Names of classes ignore case and belong to an instance. Unregistering fails while windows of the class exist.
ATOM RegisterClassExW(const WNDCLASSEXW* pClass);
BOOL UnregisterClassW(LPCWSTR pszClass, HINSTANCE hInstance);

// A window of the calling thread. Only windows below HWND_MESSAGE can be made so far: they have no place on a screen and
// take posted messages.
HWND CreateWindowExW(DWORD dwExStyle, LPCWSTR pszClass, LPCWSTR pszName, DWORD dwStyle, int x, int y, int nWidth,
                     int nHeight, HWND hwndParent, HMENU hMenu, HINSTANCE hInstance, LPVOID pParam);
// By the thread that made it. Messages that wait for it are dropped.
BOOL DestroyWindow(HWND hwnd);
BOOL IsWindow(HWND hwnd);
LRESULT DefWindowProcW(HWND hwnd, UINT nMessage, WPARAM wParam, LPARAM lParam);
LONG_PTR GetWindowLongPtrW(HWND hwnd, int nIndex);
LONG_PTR SetWindowLongPtrW(HWND hwnd, int nIndex, LONG_PTR value);   // gives the former value

// Puts a message into the queue of the window's thread, which holds 10,000, and returns at once. From any thread.
BOOL PostMessageW(HWND hwnd, UINT nMessage, WPARAM wParam, LPARAM lParam);
// The oldest message of the calling thread's queue, for one window or all (null), with a number from nMin to nMax (0, 0:
// any). FALSE when there is none.
BOOL PeekMessageW(MSG* pMessage, HWND hwnd, UINT nMin, UINT nMax, UINT nRemove);
LRESULT DispatchMessageW(const MSG* pMessage);
