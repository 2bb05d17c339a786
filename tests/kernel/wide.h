// Wide text in tests: written and compared as UTF-8.
#pragma once

#include "kernel/print.h"
#include "kernel/wide_view.h"

#include <string>
#include <vector>

using Wide = std::basic_string<WCHAR>;

inline Wide Widen(std::string_view ascii)
{
    return {ascii.begin(), ascii.end()};
}

inline std::string Narrow(WideView text)   // the basic plane
{
    std::string out;
    for (const WCHAR unit : text) {
        const auto c = unsigned(unit);
        if (c < 0x80)
            out += char(c);
        else if (c < 0x800)
            (out += char(0xC0 | c >> 6)) += char(0x80 | (c & 0x3F));
        else
            ((out += char(0xE0 | c >> 12)) += char(0x80 | (c >> 6 & 0x3F))) += char(0x80 | (c & 0x3F));
    }
    return out;
}

struct Printed {
    std::string text;
    HRESULT hr;
};

// Into a destination of the given capacity, with a guard behind it: "overrun" when that was touched, "unterminated" or
// "wrong length" when the contract was not kept.
template <typename... Args>
Printed PrintInto(DWORD capacity, std::string_view format, Args... args)
{
    constexpr WCHAR kGuard = 0x7E7E;
    std::vector<WCHAR> buffer(capacity + 8, kGuard);
    DWORD length = 0;
    const HRESULT hr = QxCchPrintF(buffer.data(), capacity, &length, Widen(format).c_str(), args...);
    for (DWORD i = capacity; i < capacity + 8; ++i)
        if (buffer[i] != kGuard)
            return {"overrun", hr};
    const size_t end = WideView(buffer.data(), capacity).find(WCHAR(0));
    if (end == WideView::npos)
        return {"unterminated", hr};
    return {end == length ? Narrow({buffer.data(), length}) : "wrong length", hr};
}

// The bounded and the unbounded form, which agree where there is room.
template <typename... Args>
std::string Print(std::string_view format, Args... args)
{
    std::vector<WCHAR> buffer(16384);
    const int32_t length = QxPrintF(buffer.data(), Widen(format).c_str(), args...);
    const std::string text = Narrow({buffer.data(), size_t(length)});
    const Printed bounded = PrintInto(16384, format, args...);
    return bounded.text == text ? text : "unbounded: " + text + ", bounded: " + bounded.text;
}
