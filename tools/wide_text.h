// The platform's wide text, and the program's, which is UTF-8.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

std::basic_string<WCHAR> Wide(std::string_view text);
std::string Utf8(std::basic_string_view<WCHAR> text);
