#include "platform/native/window_class.h"
#include "platform/native/window_queue.h"

#include <winbase.h>
#include <winerror.h>

#include <chrono>
#include <map>
#include <memory>
#include <mutex>

namespace {

struct Window {
    std::shared_ptr<const WindowClass> windowClass;
    DWORD threadId;
    LONG_PTR userData = 0;
};

struct Windows {
    std::mutex mutex;
    std::map<HWND, Window> open;
    ULONG_PTR next = 0x10000;   // a handle is not used again, so that a call on a dead window fails
};

Windows& TheWindows()
{
    static Windows windows;
    return windows;
}

// What a call needs of a window, taken under the lock; no lock is held while its procedure runs.
bool Describe(HWND hwnd, Window* pWindow)
{
    Windows& windows = TheWindows();
    const std::scoped_lock lock(windows.mutex);
    const auto found = windows.open.find(hwnd);
    if (found == windows.open.end()) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return false;
    }
    *pWindow = found->second;
    return true;
}

HWND Add(std::shared_ptr<const WindowClass> windowClass)
{
    Windows& windows = TheWindows();
    const std::scoped_lock lock(windows.mutex);
    const auto hwnd = reinterpret_cast<HWND>(windows.next += 2);
    windows.open[hwnd] = {std::move(windowClass), GetCurrentThreadId()};
    return hwnd;
}

void Remove(HWND hwnd)
{
    Windows& windows = TheWindows();
    const std::scoped_lock lock(windows.mutex);
    windows.open.erase(hwnd);
}

DWORD Milliseconds()
{
    using namespace std::chrono;
    return DWORD(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void End(HWND hwnd, WNDPROC procedure)
{
    procedure(hwnd, WM_DESTROY, 0, 0);
    procedure(hwnd, WM_NCDESTROY, 0, 0);
    Remove(hwnd);
    DropMessages(GetCurrentThreadId(), hwnd);
}

}   // namespace

HWND CreateWindowExW(DWORD dwExStyle, LPCWSTR pszClass, LPCWSTR pszName, DWORD dwStyle, int x, int y, int nWidth,
                     int nHeight, HWND hwndParent, HMENU hMenu, HINSTANCE hInstance, LPVOID pParam)
{
    if (hwndParent != HWND_MESSAGE) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    auto windowClass = FindWindowClass(pszClass, hInstance);
    if (!windowClass) {
        SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    const WNDPROC procedure = windowClass->procedure;
    const HWND hwnd = Add(std::move(windowClass));
    CREATESTRUCTW create = {pParam, hInstance, hMenu,         hwndParent, nHeight,  nWidth,
                            y,      x,         LONG(dwStyle), pszName,    pszClass, dwExStyle};
    const auto parameter = reinterpret_cast<LPARAM>(&create);
    if (!procedure(hwnd, WM_NCCREATE, 0, parameter)) {
        Remove(hwnd);
        return nullptr;
    }
    if (procedure(hwnd, WM_CREATE, 0, parameter) == -1) {
        End(hwnd, procedure);
        return nullptr;
    }
    return hwnd;
}

BOOL DestroyWindow(HWND hwnd)
{
    Window window;
    if (!Describe(hwnd, &window))
        return FALSE;
    if (window.threadId != GetCurrentThreadId()) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    End(hwnd, window.windowClass->procedure);
    return TRUE;
}

BOOL IsWindow(HWND hwnd)
{
    Window window;
    return Describe(hwnd, &window);
}

LRESULT DefWindowProcW(HWND, UINT nMessage, WPARAM, LPARAM)
{
    return nMessage == WM_NCCREATE;
}

LONG_PTR GetWindowLongPtrW(HWND hwnd, int nIndex)
{
    Window window;
    if (!Describe(hwnd, &window))
        return 0;
    if (nIndex == GWLP_USERDATA)
        return window.userData;
    SetLastError(ERROR_INVALID_INDEX);
    return 0;
}

LONG_PTR SetWindowLongPtrW(HWND hwnd, int nIndex, LONG_PTR value)
{
    const LONG_PTR former = GetWindowLongPtrW(hwnd, nIndex);
    Windows& windows = TheWindows();
    const std::scoped_lock lock(windows.mutex);
    if (const auto found = windows.open.find(hwnd); found != windows.open.end() && nIndex == GWLP_USERDATA)
        found->second.userData = value;
    return former;
}

BOOL PostMessageW(HWND hwnd, UINT nMessage, WPARAM wParam, LPARAM lParam)
{
    Window window;
    if (!Describe(hwnd, &window))
        return FALSE;
    if (QueueMessage(window.threadId, {hwnd, nMessage, wParam, lParam, Milliseconds(), {}}))
        return TRUE;
    SetLastError(ERROR_NOT_ENOUGH_QUOTA);
    return FALSE;
}

LRESULT DispatchMessageW(const MSG* pMessage)
{
    Window window;
    if (!Describe(pMessage->hwnd, &window))
        return 0;
    return window.windowClass->procedure(pMessage->hwnd, pMessage->message, pMessage->wParam, pMessage->lParam);
}
