// The short string calls.
#include "platform/native/refusal.h"
#include "platform/native/wide_text.h"

#include <winbase.h>
#include <winuser.h>

#include <unicode/uchar.h>

#include <algorithm>
#include <cstring>

namespace {

// One unit for one, so a character outside of the basic plane stays as it is.
template <UChar32 (*Convert)(UChar32)>
WCHAR ConvertUnit(WCHAR c)
{
    const UChar32 converted = Convert(c);
    return converted <= 0xFFFF ? WCHAR(converted) : c;
}

template <UChar32 (*Convert)(UChar32)>
LPWSTR ConvertText(LPWSTR psz)
{
    const auto value = reinterpret_cast<UINT_PTR>(psz);
    if (IS_INTRESOURCE(value))
        return reinterpret_cast<LPWSTR>(UINT_PTR(ConvertUnit<Convert>(WCHAR(value))));
    std::transform(psz, psz + lstrlenW(psz), psz, ConvertUnit<Convert>);
    return psz;
}

}   // namespace

int lstrlenW(LPCWSTR psz)
{
    return psz ? int(WideView(psz).size()) : 0;
}

LPWSTR lstrcpyW(LPWSTR pszOut, LPCWSTR psz)
{
    if (!pszOut || !psz)
        return Refuse<LPWSTR>(ERROR_INVALID_PARAMETER);
    std::memmove(pszOut, psz, (size_t(lstrlenW(psz)) + 1) * sizeof(WCHAR));
    return pszOut;
}

LPWSTR lstrcpynW(LPWSTR pszOut, LPCWSTR psz, int cch)
{
    if (!pszOut || !psz || cch <= 0)
        return Refuse<LPWSTR>(ERROR_INVALID_PARAMETER);
    const size_t length = std::min(size_t(lstrlenW(psz)), size_t(cch - 1));
    std::memmove(pszOut, psz, length * sizeof(WCHAR));
    pszOut[length] = 0;
    return pszOut;
}

LPWSTR lstrcatW(LPWSTR pszOut, LPCWSTR psz)
{
    if (!pszOut || !psz)
        return Refuse<LPWSTR>(ERROR_INVALID_PARAMETER);
    lstrcpyW(pszOut + lstrlenW(pszOut), psz);
    return pszOut;
}

LPWSTR CharUpperW(LPWSTR psz)
{
    return ConvertText<u_toupper>(psz);
}

LPWSTR CharLowerW(LPWSTR psz)
{
    return ConvertText<u_tolower>(psz);
}

DWORD CharUpperBuffW(LPWSTR psz, DWORD cch)
{
    std::transform(psz, psz + cch, psz, ConvertUnit<u_toupper>);
    return cch;
}

DWORD CharLowerBuffW(LPWSTR psz, DWORD cch)
{
    std::transform(psz, psz + cch, psz, ConvertUnit<u_tolower>);
    return cch;
}
