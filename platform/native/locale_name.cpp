#include "platform/native/locale_name.h"

#include "platform/native/refusal.h"

#include <unicode/uloc.h>

#include <array>
#include <cstdlib>
#include <string_view>

namespace {

constexpr LCID kEnglish = 0x0409;
thread_local LCID t_threadLocale = 0;

// The first of the variables that is set decides. "C" and what is not a locale count as US English.
LCID FromEnvironment(std::initializer_list<const char*> variables)
{
    for (const char* variable : variables) {
        const char* const value = std::getenv(variable);
        if (!value || !*value)
            continue;
        const std::string name = std::string(value).substr(0, std::string_view(value).find_first_of(".@"));
        const LCID lcid = name == "C" || name == "POSIX" ? 0 : uloc_getLCID(name.c_str());
        return lcid ? lcid : kEnglish;
    }
    return kEnglish;
}

struct CodePageOfLanguage {
    WORD primary;
    UINT codePage;
};
// Where a language is not listed, Western European serves.
constexpr CodePageOfLanguage kCodePages[] = {
    {0x01, 1256}, {0x02, 1251}, {0x05, 1250}, {0x08, 1253}, {0x0D, 1255}, {0x0E, 1250}, {0x11, 932},  {0x12, 949},
    {0x15, 1250}, {0x18, 1250}, {0x19, 1251}, {0x1B, 1250}, {0x1C, 1250}, {0x1E, 874},  {0x1F, 1254}, {0x20, 1256},
    {0x22, 1251}, {0x23, 1251}, {0x24, 1250}, {0x25, 1257}, {0x26, 1257}, {0x27, 1257}, {0x29, 1256}, {0x2A, 1258},
};

}   // namespace

LCID GetUserDefaultLCID()
{
    static const LCID lcid = FromEnvironment({"LC_ALL", "LC_NUMERIC", "LANG"});
    return lcid;
}

LCID GetSystemDefaultLCID()
{
    return GetUserDefaultLCID();   // the system below has one setting for both
}

LANGID GetUserDefaultLangID()
{
    return LANGIDFROMLCID(GetUserDefaultLCID());
}

LANGID GetUserDefaultUILanguage()
{
    static const LCID lcid = FromEnvironment({"LC_ALL", "LC_MESSAGES", "LANG"});
    return LANGIDFROMLCID(lcid);
}

LCID GetThreadLocale()
{
    return t_threadLocale ? t_threadLocale : GetUserDefaultLCID();
}

BOOL SetThreadLocale(LCID lcid)
{
    const LCID resolved = ResolveLocale(lcid);
    if (LocaleName(resolved).empty())
        return Refuse(ERROR_INVALID_PARAMETER);
    t_threadLocale = resolved;
    return TRUE;
}

BOOL IsValidLocale(LCID lcid, DWORD)
{
    return !LocaleName(lcid).empty();
}

LCID ResolveLocale(LCID lcid)
{
    if (lcid == 0 || lcid == LOCALE_USER_DEFAULT)
        return GetUserDefaultLCID();
    return lcid == LOCALE_SYSTEM_DEFAULT ? GetSystemDefaultLCID() : lcid;
}

// The library answers an unknown sublanguage with the language alone: only a name that leads back to the id is taken.
std::string LocaleName(LCID lcid)
{
    const LCID language = LANGIDFROMLCID(ResolveLocale(lcid));
    if (language == LOCALE_INVARIANT)
        return "en_US_POSIX";
    std::array<char, ULOC_FULLNAME_CAPACITY> name = {};
    UErrorCode status = U_ZERO_ERROR;
    uloc_getLocaleForLCID(language, name.data(), int32_t(name.size()), &status);
    if (U_FAILURE(status) || uloc_getLCID(name.data()) != language)
        return {};
    return name.data();
}

UINT AnsiCodePage(LCID lcid)
{
    const LANGID language = LANGIDFROMLCID(ResolveLocale(lcid));
    if (PRIMARYLANGID(language) == 0x04) {
        const WORD sub = SUBLANGID(language);   // Taiwan, Hong Kong and Macao write the traditional signs
        return sub == 1 || sub == 3 || sub == 5 ? 950 : 936;
    }
    for (const auto& row : kCodePages)
        if (row.primary == PRIMARYLANGID(language))
            return row.codePage;
    return 1252;
}
