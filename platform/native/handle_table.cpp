#include "platform/native/handle_table.h"

#include <mutex>
#include <unordered_map>

namespace {

// Handles are multiples of 4, as on the platform: the lowest bits are free for a caller's marks.
constexpr uintptr_t kStep = 4;

struct HandleTable {
    std::mutex lock;
    uintptr_t next = kStep;
    std::unordered_map<uintptr_t, std::shared_ptr<HandleObject>> objects;
};

// Never destroyed: handles are closed by static objects too.
HandleTable& Table()
{
    static HandleTable* const table = new HandleTable;
    return *table;
}

}   // namespace

HANDLE OpenHandle(std::shared_ptr<HandleObject> object)
{
    HandleTable& table = Table();
    const std::lock_guard guard(table.lock);
    const uintptr_t number = table.next;
    table.next += kStep;
    table.objects.emplace(number, std::move(object));
    return reinterpret_cast<HANDLE>(number);
}

std::shared_ptr<HandleObject> FindHandle(HANDLE handle)
{
    HandleTable& table = Table();
    const std::lock_guard guard(table.lock);
    const auto found = table.objects.find(reinterpret_cast<uintptr_t>(handle));
    return found == table.objects.end() ? nullptr : found->second;
}

bool CloseHandleEntry(HANDLE handle)
{
    std::shared_ptr<HandleObject> object;   // ends after the lock is free
    HandleTable& table = Table();
    const std::lock_guard guard(table.lock);
    const auto found = table.objects.find(reinterpret_cast<uintptr_t>(handle));
    if (found == table.objects.end())
        return false;
    object = std::move(found->second);
    table.objects.erase(found);
    return true;
}
