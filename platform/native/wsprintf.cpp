#include "platform/native/value_format.h"

#include <winuser.h>

#include <cstring>

int wvsprintfW(LPWSTR pszOut, LPCWSTR pszFormat, va_list arguments)
{
    constexpr size_t kLimit = 1023;   // the buffer of 1024 that the platform states, less the terminator
    va_list values;
    va_copy(values, arguments);
    const WideString text = PrintValues(
        pszFormat, [&values] { return va_arg(values, uint64_t); }, kLimit);
    va_end(values);
    std::memcpy(pszOut, text.c_str(), (text.size() + 1) * sizeof(WCHAR));
    return int(text.size());
}

int wsprintfW(LPWSTR pszOut, LPCWSTR pszFormat, ...)
{
    va_list arguments;
    va_start(arguments, pszFormat);
    const int length = wvsprintfW(pszOut, pszFormat, arguments);
    va_end(arguments);
    return length;
}
