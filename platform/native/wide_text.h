// UTF-16 text inside the native layer, and its UTF-8 form for the system below.
#pragma once

#include <windef.h>

#include <string>
#include <string_view>

using WideView = std::basic_string_view<WCHAR>;
using WideString = std::basic_string<WCHAR>;

std::string ToUtf8(WideView text);   // an unpaired surrogate becomes U+FFFD
WideString FromUtf8(std::string_view text);
WideString FoldCase(WideView text);   // for names that ignore case: simple upper case, one unit for one
bool EqualNames(WideView a, WideView b);
