#include "platform/native/window_queue.h"

#include <winbase.h>

#include <algorithm>
#include <deque>
#include <map>
#include <mutex>

namespace {

constexpr size_t kMostMessages = 10000;   // a thread that reads none is not to eat the memory

struct Queues {
    std::mutex mutex;
    std::map<DWORD, std::deque<MSG>> byThread;   // a queue without messages has no entry
};

Queues& TheQueues()
{
    static Queues queues;
    return queues;
}

}   // namespace

bool QueueMessage(DWORD threadId, const MSG& message)
{
    Queues& queues = TheQueues();
    const std::scoped_lock lock(queues.mutex);
    auto& queue = queues.byThread[threadId];
    if (queue.size() >= kMostMessages)
        return false;
    queue.push_back(message);
    return true;
}

void DropMessages(DWORD threadId, HWND hwnd)
{
    Queues& queues = TheQueues();
    const std::scoped_lock lock(queues.mutex);
    const auto entry = queues.byThread.find(threadId);
    if (entry == queues.byThread.end())
        return;
    std::erase_if(entry->second, [hwnd](const MSG& message) { return message.hwnd == hwnd; });
    if (entry->second.empty())
        queues.byThread.erase(entry);
}

BOOL PeekMessageW(MSG* pMessage, HWND hwnd, UINT nMin, UINT nMax, UINT nRemove)
{
    Queues& queues = TheQueues();
    const std::scoped_lock lock(queues.mutex);
    const auto entry = queues.byThread.find(GetCurrentThreadId());
    if (entry == queues.byThread.end())
        return FALSE;
    auto& queue = entry->second;
    const bool any = nMin == 0 && nMax == 0;
    const auto found = std::ranges::find_if(queue, [&](const MSG& message) {
        return (!hwnd || message.hwnd == hwnd) && (any || (message.message >= nMin && message.message <= nMax));
    });
    if (found == queue.end())
        return FALSE;
    *pMessage = *found;
    if (nRemove & PM_REMOVE) {
        queue.erase(found);
        if (queue.empty())
            queues.byThread.erase(entry);
    }
    return TRUE;
}
