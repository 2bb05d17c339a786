#include "platform/media/graph_events.h"

#include <chrono>
#include <mutex>
#include <new>

namespace {

using Clock = std::chrono::steady_clock;

// What is left of a time that was told in milliseconds.
class Deadline {
public:
    explicit Deadline(DWORD theMilliseconds)
        : milliseconds(theMilliseconds), end(Clock::now() + std::chrono::milliseconds(theMilliseconds))
    {
    }
    DWORD Left() const
    {
        if (milliseconds == INFINITE)
            return INFINITE;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        return left > 0 ? DWORD(left) : 0;
    }

private:
    DWORD milliseconds;
    Clock::time_point end;
};

}   // namespace

void GraphEvents::Start(int theRenderers)
{
    const std::scoped_lock lock(monitor);
    renderers = theRenderers;
    completed = 0;
}

HRESULT GraphEvents::Add(const Event& event)
try {
    const std::scoped_lock lock(monitor);
    if (event.code == EC_COMPLETE) {
        if (++completed < renderers)
            return S_OK;
        completed = 0;   // a seek may start all of them again
        waiting.push_back({EC_COMPLETE, S_OK, 0});
    } else {
        waiting.push_back(event);
    }
    monitor.WakeAll();
    return S_OK;
} catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
}

std::optional<GraphEvents::Event> GraphEvents::Take(DWORD milliseconds)
{
    const Deadline deadline(milliseconds);
    const std::scoped_lock lock(monitor);
    while (waiting.empty()) {
        const DWORD left = deadline.Left();
        if (left == 0)
            return {};
        monitor.Wait(left);
    }
    const Event event = waiting.front();
    waiting.pop_front();
    return event;
}

std::optional<LONG> GraphEvents::AwaitEnd(DWORD milliseconds)
{
    const Deadline deadline(milliseconds);
    while (const auto event = Take(deadline.Left()))
        if (event->code == EC_COMPLETE || event->code == EC_ERRORABORT || event->code == EC_USERABORT)
            return event->code;
    return {};
}
