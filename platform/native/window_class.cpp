#include "platform/native/window_class.h"

#include "platform/native/wide_text.h"

#include <winbase.h>
#include <winerror.h>

#include <algorithm>
#include <mutex>
#include <vector>

namespace {

constexpr ATOM kFirstAtom = 0xC000;

struct Registered {
    WideString name;
    HINSTANCE instance;
    std::shared_ptr<const WindowClass> windowClass;
};

struct Classes {
    std::mutex mutex;
    std::vector<Registered> rows;
    ATOM nextAtom = kFirstAtom;
};

Classes& TheClasses()
{
    static Classes classes;
    return classes;
}

bool Names(const Registered& row, LPCWSTR pszClass, HINSTANCE instance)
{
    if (IS_INTRESOURCE(pszClass))
        return row.windowClass->atom == ATOM(reinterpret_cast<ULONG_PTR>(pszClass));
    return row.instance == instance && EqualNames(row.name, pszClass);
}

auto Find(Classes& classes, LPCWSTR pszClass, HINSTANCE instance)
{
    return std::ranges::find_if(classes.rows, [&](const auto& row) { return Names(row, pszClass, instance); });
}

}   // namespace

std::shared_ptr<const WindowClass> FindWindowClass(LPCWSTR pszClass, HINSTANCE hInstance)
{
    Classes& classes = TheClasses();
    const std::scoped_lock lock(classes.mutex);
    const auto row = Find(classes, pszClass, hInstance);
    return row == classes.rows.end() ? nullptr : row->windowClass;
}

ATOM RegisterClassExW(const WNDCLASSEXW* pClass)
{
    if (!pClass || pClass->cbSize != sizeof *pClass || !pClass->lpfnWndProc || IS_INTRESOURCE(pClass->lpszClassName)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    Classes& classes = TheClasses();
    const std::scoped_lock lock(classes.mutex);
    if (Find(classes, pClass->lpszClassName, pClass->hInstance) != classes.rows.end()) {
        SetLastError(ERROR_CLASS_ALREADY_EXISTS);
        return 0;
    }
    const WindowClass made{pClass->lpfnWndProc, classes.nextAtom++};
    classes.rows.push_back({pClass->lpszClassName, pClass->hInstance, std::make_shared<const WindowClass>(made)});
    return made.atom;
}

BOOL UnregisterClassW(LPCWSTR pszClass, HINSTANCE hInstance)
{
    Classes& classes = TheClasses();
    const std::scoped_lock lock(classes.mutex);
    const auto row = Find(classes, pszClass, hInstance);
    if (row == classes.rows.end() || row->windowClass.use_count() > 1) {
        SetLastError(row == classes.rows.end() ? ERROR_CLASS_DOES_NOT_EXIST : ERROR_CLASS_HAS_WINDOWS);
        return FALSE;
    }
    classes.rows.erase(row);
    return TRUE;
}
