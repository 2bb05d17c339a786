// Finishing of numbers for the user's locale. The text is a plain number ("-1234.5"), as the standard conversion makes
// it: blanks, zeros and signs that a width or a flag put before it, and blanks behind it, survive as they are, and so
// does a text that is no number. A negative number begins with "-" in every locale. Each gives the characters written,
// without the terminator, or 0 with an empty text when it did not fit.
#pragma once

#include <windows.h>

#include <cstdint>

// Grouped, rounded to no decimals.
int32_t QxFormatNumber(const WCHAR* pszText, WCHAR* pszOut, DWORD cchOut);
// The locale's decimal separator, as many decimals as the text has, no groups.
int32_t QxFormatDecimalNumber(const WCHAR* pszText, WCHAR* pszOut, DWORD cchOut);
// Grouped, with the decimals asked for; -1: as many as the text has.
int32_t QxFormatGroupDecimalNumber(const WCHAR* pszText, WCHAR* pszOut, DWORD cchOut, int32_t nDecimals);

// Plain decimal digits, "-" before a negative value; with bGroup through QxFormatNumber. The N forms give 0 when the
// text does not fit or the capacity is under 2; the others need 16 characters, or 64 with groups.
int32_t QxLongToText(LONG lValue, WCHAR* pszOut, BOOL bGroup);
int32_t QxLongToTextN(LONG lValue, WCHAR* pszOut, DWORD cchOut, BOOL bGroup);
int32_t QxDWordToText(DWORD dwValue, WCHAR* pszOut, BOOL bGroup);
int32_t QxDWordToTextN(DWORD dwValue, WCHAR* pszOut, DWORD cchOut, BOOL bGroup);
