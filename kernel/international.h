// The user's locale as the library uses it: separators, grouping, signs, and the separators of time codes. Read once at
// start and again on a language change, without a lock: no text is made meanwhile.
#pragma once

#include <windows.h>

#include <cstdint>

inline constexpr int kInatText = 8;         // characters of a separator or sign, terminator included
inline constexpr int kInatLanguage = 128;   // characters of a language's name

struct QXINTERNATIONALS {
    LCID lcidSystem;
    DWORD dwLanguage;
    WCHAR szLanguage[kInatLanguage];          // in the user's language
    WCHAR szEnglishLanguage[kInatLanguage];   // in English
    DWORD dwCountry;
    WCHAR szDecimal[kInatText];   // never equal to szThousand
    WCHAR szThousand[kInatText];
    WCHAR szList[kInatText];
    WCHAR szTime[kInatText];
    WCHAR szSmpteWhole[kInatText];
    WCHAR szSmpteNonDrop[kInatText];
    WCHAR szSmpteDrop[kInatText];
    WCHAR szMeasureBeat[kInatText];
    WCHAR szBeatTick[kInatText];
    DWORD nGroupSize;   // digits of the group next to the decimal separator
    DWORD bLeadingZero;
    DWORD nDigits;
    WCHAR szNegative[kInatText];
    WCHAR szMinus[kInatText];   // "-"
    DWORD nMeasureSystem;       // 0 metric, 1 US
    DWORD nGrouping;            // all groups, as the platform's NUMBERFMT has them: 3, or 32 for 3 and then 2 each
    LCID lcidUser;              // the locale that all of it was read from
};

// Items by id; any other id gives 0 and an empty text.
inline constexpr int QXINAT_SYSTEM_LOCALE = 0, QXINAT_LANGUAGE = 1, QXINAT_LANGUAGE_NAME = 2;
inline constexpr int QXINAT_ENGLISH_LANGUAGE_NAME = 3, QXINAT_COUNTRY = 4;
inline constexpr int QXINAT_DECIMAL = 24, QXINAT_LIST = 40, QXINAT_TIME = 60;
inline constexpr int QXINAT_SMPTE_WHOLE = 100, QXINAT_SMPTE_NONDROP = 101, QXINAT_SMPTE_DROP = 102;
inline constexpr int QXINAT_MEASURE_BEAT = 120, QXINAT_BEAT_TICK = 121;

// A text's length in characters, without the terminator, or the value of a numeric item (0, 1, 4), for which the text
// is empty. pszOut may be null; without a size it holds at least kInatLanguage characters. A text is cut to its size.
int32_t QxGetInat(int nId, WCHAR* pszOut);
int32_t QxGetInatN(int nId, WCHAR* pszOut, DWORD cchOut);

// [control] With pOut null rereads the locale items of the user and defines the tokens that carry separators; otherwise
// copies the record, at most cbOut bytes of it. Gives the bytes copied, or the record's size.
DWORD QxLang_GetInternationals(QXINTERNATIONALS* pOut, DWORD cbOut);

// The record in force.
const QXINTERNATIONALS& Internationals();
// [control] The same as the reread, for another locale than the user's.
void ReadInternationals(LCID lcid);
