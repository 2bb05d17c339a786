// Locales, code pages and comparison.
#pragma once

#include <winnt.h>

inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD MB_PRECOMPOSED = 0x01;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x08;
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;
inline constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x400;

inline constexpr LCTYPE LOCALE_NOUSEROVERRIDE = 0x80000000;
inline constexpr LCTYPE LOCALE_RETURN_NUMBER = 0x20000000;
inline constexpr LCTYPE LOCALE_ILANGUAGE = 0x0001;         // four hexadecimal digits
inline constexpr LCTYPE LOCALE_SLANGUAGE = 0x0002;         // name of language and country, in the user's language
inline constexpr LCTYPE LOCALE_SABBREVLANGNAME = 0x0003;   // three letters, "DEU"
inline constexpr LCTYPE LOCALE_ICOUNTRY = 0x0005;          // international telephone code
inline constexpr LCTYPE LOCALE_SLIST = 0x000C;
inline constexpr LCTYPE LOCALE_IMEASURE = 0x000D;   // "0" metric, "1" US
inline constexpr LCTYPE LOCALE_SDECIMAL = 0x000E;
inline constexpr LCTYPE LOCALE_STHOUSAND = 0x000F;
inline constexpr LCTYPE LOCALE_SGROUPING = 0x0010;   // "3;0", or "3;2;0"
inline constexpr LCTYPE LOCALE_IDIGITS = 0x0011;
inline constexpr LCTYPE LOCALE_ILZERO = 0x0012;
inline constexpr LCTYPE LOCALE_SDATE = 0x001D;
inline constexpr LCTYPE LOCALE_STIME = 0x001E;
inline constexpr LCTYPE LOCALE_SPOSITIVESIGN = 0x0050;
inline constexpr LCTYPE LOCALE_SNEGATIVESIGN = 0x0051;
inline constexpr LCTYPE LOCALE_SISO639LANGNAME = 0x0059;
inline constexpr LCTYPE LOCALE_SISO3166CTRYNAME = 0x005A;
inline constexpr LCTYPE LOCALE_SNAME = 0x005C;   // "de-DE"
inline constexpr LCTYPE LOCALE_SENGLANGUAGE = 0x1001;
inline constexpr LCTYPE LOCALE_SENGCOUNTRY = 0x1002;
inline constexpr LCTYPE LOCALE_IDEFAULTANSICODEPAGE = 0x1004;
inline constexpr LCTYPE LOCALE_INEGNUMBER = 0x1010;

inline constexpr DWORD NORM_IGNORECASE = 0x00001;
inline constexpr DWORD SORT_STRINGSORT = 0x01000;   // hyphen and apostrophe count like other signs
inline constexpr int CSTR_LESS_THAN = 1;
inline constexpr int CSTR_EQUAL = 2;
inline constexpr int CSTR_GREATER_THAN = 3;

inline constexpr int MAX_LEADBYTES = 12;
inline constexpr int MAX_DEFAULTCHAR = 2;

struct CPINFO {
    UINT MaxCharSize;   // bytes of the longest character
    BYTE DefaultChar[MAX_DEFAULTCHAR];
    BYTE LeadByte[MAX_LEADBYTES];   // pairs of first and last, ended by two zeros
};

struct NUMBERFMTW {
    UINT NumDigits;     // 0 to 9
    UINT LeadingZero;   // 0 or 1
    UINT Grouping;      // 0 to 9, or the digits of the groups from the point on: 32 is "3;2;0"
    LPWSTR lpDecimalSep;
    LPWSTR lpThousandSep;
    UINT NegativeOrder;   // "(1)", "-1", "- 1", "1-", "1 -"
};
using NUMBERFMT = NUMBERFMTW;

LCID GetUserDefaultLCID();
LCID GetSystemDefaultLCID();
LANGID GetUserDefaultLangID();
LANGID GetUserDefaultUILanguage();
LCID GetThreadLocale();   // the user's until set
BOOL SetThreadLocale(LCID lcid);
BOOL IsValidLocale(LCID lcid, DWORD dwFlags);
inline constexpr DWORD LCID_INSTALLED = 1;
inline constexpr DWORD LCID_SUPPORTED = 2;

// Characters with the terminator; the size needed for cch 0; 0 on failure. With LOCALE_RETURN_NUMBER a DWORD is written,
// and cch, 2 or more, is again the room in characters.
int GetLocaleInfoW(LCID lcid, LCTYPE type, LPWSTR pszOut, int cch);
// pszValue: digits, one '.' and a leading '-', nothing else. pFormat says all, so dwFlags is 0. Rounds half away from
// zero. Characters with the terminator; the size needed for cch 0; 0 on failure.
int GetNumberFormatW(LCID lcid, DWORD dwFlags, LPCWSTR pszValue, const NUMBERFMTW* pFormat, LPWSTR pszOut, int cch);
int CompareStringW(LCID lcid, DWORD dwFlags, LPCWSTR pA, int cchA, LPCWSTR pB, int cchB);

UINT GetACP();
BOOL IsValidCodePage(UINT nCodePage);
BOOL GetCPInfo(UINT nCodePage, CPINFO* pInfo);
BOOL IsDBCSLeadByteEx(UINT nCodePage, BYTE first);
// A length of -1 means up to and with the terminator. An output size of 0 asks for the size. 0 on failure.
int MultiByteToWideChar(UINT nCodePage, DWORD dwFlags, LPCSTR pText, int cb, LPWSTR pOut, int cchOut);
int WideCharToMultiByte(UINT nCodePage, DWORD dwFlags, LPCWSTR pText, int cch, LPSTR pOut, int cbOut, LPCSTR pDefault,
                        LPBOOL pUsedDefault);
