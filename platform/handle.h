// The owner of a handle: closes it once. Both forms of "none", null and INVALID_HANDLE_VALUE, are empty.
#pragma once

#include <windows.h>

#include <utility>

class Handle {
public:
    Handle() = default;
    explicit Handle(HANDLE handle) : hObject(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    Handle(Handle&& other) noexcept : hObject(std::exchange(other.hObject, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept
    {
        std::swap(hObject, other.hObject);
        return *this;
    }
    ~Handle()
    {
        if (hObject)
            CloseHandle(hObject);
    }

    explicit operator bool() const { return hObject != nullptr; }
    HANDLE Get() const { return hObject; }
    HANDLE Release() { return std::exchange(hObject, nullptr); }

private:
    HANDLE hObject = nullptr;
};
