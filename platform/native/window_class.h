// The window classes of the process.
#pragma once

#include <winuser.h>

#include <memory>

struct WindowClass {
    WNDPROC procedure;
    ATOM atom;
};

// The class that a name, or an atom in its place, means to an instance; null when it was not registered. Who holds it
// keeps the class from being unregistered.
std::shared_ptr<const WindowClass> FindWindowClass(LPCWSTR pszClass, HINSTANCE hInstance);
