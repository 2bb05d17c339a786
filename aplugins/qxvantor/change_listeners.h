// The windows that hear of changes to the filter, two at most. Messages are posted, so nobody waits for a window.
// The caller holds a lock around every operation.
#pragma once

#include <windows.h>

#include <array>

class ChangeListeners {
public:
    // id goes into the low word of wParam; 0 ends the messages to this window. E_OUTOFMEMORY when both places are taken.
    HRESULT Register(HWND hwnd, DWORD dwId) noexcept;
    // A window that no longer exists loses its place.
    void Post(WORD wChange) noexcept;

private:
    struct Listener {
        HWND hwnd = nullptr;
        DWORD dwId = 0;
    };
    Listener* PlaceFor(HWND hwnd) noexcept;

    std::array<Listener, 2> listeners;
};
