// The events of a graph in the order of their coming. The ends of all renderers together make one EC_COMPLETE.
#pragma once

#include "platform/media/monitor.h"

#include <dshow.h>

#include <deque>
#include <optional>

class GraphEvents {
public:
    struct Event {
        LONG code;
        LONG_PTR param1, param2;
    };

    void Start(int theRenderers);   // data flows from now on
    HRESULT Add(const Event& event);
    std::optional<Event> Take(DWORD milliseconds);
    // The code of the first event that ends a rendering.
    std::optional<LONG> AwaitEnd(DWORD milliseconds);

private:
    Monitor monitor;   // guards everything below
    std::deque<Event> waiting;
    int renderers = 0, completed = 0;
};
