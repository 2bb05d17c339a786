#include "engine/psola/sliding_store.h"

#include <algorithm>
#include <new>

bool SlidingStore::Reserve(int64_t frames, int32_t held) noexcept
{
    if (head + frames <= capacity)
        return true;
    for (auto& row : rows)
        std::copy(row.begin() + head, row.begin() + head + held, row.begin());
    head = 0;
    return frames <= capacity || Grow(frames);
}

// Half as much again, so that slowly rising requests do not allocate one by one.
bool SlidingStore::Grow(int64_t frames) noexcept
{
    const int64_t wanted = frames + frames / 2;
    try {
        for (auto& row : rows)
            row.resize(size_t(wanted));
    } catch (const std::bad_alloc&) {
        return false;
    }
    capacity = wanted;
    return true;
}
