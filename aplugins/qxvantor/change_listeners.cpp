#include "aplugins/qxvantor/change_listeners.h"

HRESULT ChangeListeners::Register(HWND hwnd, DWORD dwId) noexcept
{
    Listener* const place = PlaceFor(hwnd);
    if (!place)
        return dwId == 0 ? S_OK : E_OUTOFMEMORY;
    *place = {dwId ? hwnd : nullptr, dwId};
    return S_OK;
}

// The place that the window has, else the last empty one.
ChangeListeners::Listener* ChangeListeners::PlaceFor(HWND hwnd) noexcept
{
    Listener* empty = nullptr;
    for (Listener& listener : listeners) {
        if (listener.hwnd == hwnd)
            return &listener;
        if (!listener.hwnd)
            empty = &listener;
    }
    return empty;
}

void ChangeListeners::Post(WORD wChange) noexcept
{
    for (Listener& listener : listeners) {
        if (!listener.hwnd)
            continue;
        if (IsWindow(listener.hwnd))
            PostMessageW(listener.hwnd, WM_COMMAND, MAKEWPARAM(LOWORD(listener.dwId), wChange), 0);
        else
            listener = {};
    }
}
