// A destination for text with the room that is left. What does not fit is cut, never overrun; the caller keeps one
// character beyond the room for the terminator.
#pragma once

#include "kernel/wide_view.h"

#include <algorithm>
#include <cstddef>

class TextOutput {
public:
    TextOutput(WCHAR* destination, size_t available) : begin(destination), at(destination), room(available) {}

    // True when all of it fitted.
    bool Put(WideView text)
    {
        const size_t n = std::min(text.size(), room);
        Advance(std::copy_n(text.data(), n, at), n);
        return n == text.size();
    }
    bool Fill(WCHAR c, size_t count)
    {
        const size_t n = std::min(count, room);
        Advance(std::fill_n(at, n, c), n);
        return n == count;
    }

    size_t Room() const { return room; }
    size_t Length() const { return size_t(at - begin); }
    WideView Text() const { return {begin, Length()}; }
    void Terminate() { *at = 0; }

private:
    void Advance(WCHAR* to, size_t n)
    {
        at = to;
        room -= n;
    }

    WCHAR* const begin;
    WCHAR* at;
    size_t room;
};
