#include "platform/native/wide_text.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

std::string ToUtf8(WideView text)
{
    std::string out(text.size() * 3, '\0');   // the longest form of one unit
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strToUTF8WithSub(out.data(), int32_t(out.size()), &length, text.data(), int32_t(text.size()), 0xFFFD, nullptr,
                       &status);
    out.resize(U_SUCCESS(status) ? size_t(length) : 0);
    return out;
}

WideString FromUtf8(std::string_view text)
{
    WideString out(text.size(), u'\0');
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strFromUTF8WithSub(out.data(), int32_t(out.size()), &length, text.data(), int32_t(text.size()), 0xFFFD, nullptr,
                         &status);
    out.resize(U_SUCCESS(status) ? size_t(length) : 0);
    return out;
}

WideString FoldCase(WideView text)
{
    WideString out(text);
    for (WCHAR& c : out) {
        const UChar32 upper = u_toupper(c);
        c = upper <= 0xFFFF ? WCHAR(upper) : c;
    }
    return out;
}

bool EqualNames(WideView a, WideView b)
{
    return a.size() == b.size() && FoldCase(a) == FoldCase(b);
}
