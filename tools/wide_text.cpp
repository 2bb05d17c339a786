#include "tools/wide_text.h"

std::basic_string<WCHAR> Wide(std::string_view text)
{
    const int length = int(text.size());
    std::basic_string<WCHAR> wide(size_t(MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0)), 0);
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), int(wide.size()));
    return wide;
}

std::string Utf8(std::basic_string_view<WCHAR> text)
{
    const int length = int(text.size());
    std::string narrow(size_t(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr)), 0);
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, narrow.data(), int(narrow.size()), nullptr, nullptr);
    return narrow;
}
