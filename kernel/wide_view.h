// The view type that wide text takes inside the kernel: UTF-16 units, not always terminated.
#pragma once

#include <windows.h>

#include <string_view>

using WideView = std::basic_string_view<WCHAR>;

constexpr bool IsDigit(WCHAR c)
{
    return c >= '0' && c <= '9';
}
