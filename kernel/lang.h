// Every text and resource that reaches the user is fetched through a language handle. Two sources: the compiled-in table
// of the library's own texts (entries, qxtext_<name>), and the resources of a module or of a language module beside it
// (ids). A text reference may be an id, an entry or the text itself; QxGetStringSmart tells them apart.
// A lookup never fails visibly: what a language lacks reads as in English, and a resource string that is nowhere is an
// empty text.
//
// Threads: the handle's lock guards its string cache and its ring. A language change is [control]: texts got by id
// before it are gone, entries' texts stay.
#pragma once

#include "kernel/lang_entry.h"
#include "kernel/list.h"

#include <cstdint>

struct tQXLANG {
    HINSTANCE hInstance;   // the module that owns the handle
    CRITICAL_SECTION csLock;
    BOOL bLockInitialized;
    DWORD cchTempSize;
    DWORD cchTempMargin;   // longest text that the ring gives out
    DWORD iTempOffset;
    WCHAR* pTempBuffer;
    BOOL bUseResModule;   // the language is not English
    HMODULE hResModule;   // where resources are searched; hInstance without a language module
    DWORD lcid;           // 0: the user's interface language
    int32_t iSlot;        // of the table; 0: not determined yet
    tQXLIST* pStringCache;
};
using HQXLANG = tQXLANG*;
using QXLANGSTRING = const WCHAR* const*;   // an entry by its address

// nTempChars: characters of the ring of temporary texts, at least 2048, 0 for 8192. The language module is the file of
// the module with the extension LNG; a missing or damaged one is no error. QX_S_ALREADY_OPEN with nothing done when
// *phLang is not null; E_OUTOFMEMORY.
HRESULT QxLang_Open(HQXLANG* phLang, HINSTANCE hModule, DWORD lcid, DWORD cchTemp);
void QxLang_Close(HQXLANG hLang);
HINSTANCE QxLang_InstFromLang(HQXLANG hLang);   // the module that serves the handle's language
// Puts a language module in place on this handle and the library's own; the caller keeps what stood there before.
BOOL QxLang_ChangeLangInst(HQXLANG hLang, HINSTANCE hModule);
// Changes the language of this handle and of the library's own; 0 is English. bReserved is ignored.
BOOL QxLang_UpdateKernelLCID(HQXLANG hLang, DWORD lcid, BOOL bReserved);
BOOL QxLang_UpdateThreadLocale(HQXLANG hLang);
DWORD QxLang_GetLCID(HQXLANG hLang);

// What the tables carry for a language: both Portuguese variants as they are, two written forms of Chinese, and the
// first variant of any other.
DWORD QxLang_GetConditionedLCID(DWORD lcid);
BOOL QxLang_IsLCIDEnglish(DWORD lcid);
BOOL QxLang_UseRTL(HQXLANG hLang);
BOOL QxLang_EnableProcessMirroring();
BOOL QxLang_DisableProcessMirroring();
BOOL QxLang_GetLangAbbrev(HQXLANG hLang, WCHAR* pszOut, DWORD cchOut);   // three letters; FALSE and empty on failure
// "de-DE" and the like for the seven languages that have one, S_OK; any other, English included: empty and S_FALSE.
HRESULT QxLang_GetLangllCC(HQXLANG hLang, WCHAR* pszOut, DWORD cchOut);
BOOL QxLang_IsNameOrderReversed(HQXLANG hLang);
BOOL QxLang_LocalizeUserName(HQXLANG hLang, const WCHAR* pszFirst, const WCHAR* pszLast, WCHAR* pszOut, DWORD cchOut);
void QxSetLangID(const WCHAR* pszCode);   // three letters; "ENU" for null or empty text
const WCHAR* QxGetLangID();

// The user's choice of language in the registry. The version word packs the major number in its top byte, the minor in
// the next. The user's hive is read before the machine's; saving writes the user's.
BOOL QxLang_LoadUserLCIDMetric(const WCHAR* pszApplication, DWORD dwVersion, DWORD* pLcid, BOOL bIgnoreVersion);
BOOL QxLang_SaveUserLCIDMetric(const WCHAR* pszApplication, DWORD dwVersion, DWORD lcid, BOOL bIgnoreVersion);
BOOL QxLang_LoadUserLCIDMetricAppReg(const WCHAR* pszApplication, DWORD dwVersion, DWORD* pLcid,
                                     const WCHAR* pszCompany);
BOOL QxLang_SaveUserLCIDMetricAppReg(const WCHAR* pszApplication, DWORD dwVersion, DWORD lcid, const WCHAR* pszCompany);

// True when 8-bit text of cb bytes holds a complete double-byte character of the process's code page.
BOOL QxLang_DetectMultiByteCharacters(const char* pText, DWORD cb);
// *pCodePage: the code page that the text is surely in, else 0 and QX_E_CODEPAGE_UNSURE.
HRESULT QxLang_DetectPossibleCodepage(const char* pText, DWORD cb, DWORD* pCodePage);

// Any pointer or id may be asked about.
BOOL IsQXLANGSTRINGID(HQXLANG hLang, const void* p);
const WCHAR* QxGetString(HQXLANG hLang, UINT nId);   // valid until a language change
const WCHAR* QxGetString(HQXLANG hLang, QXLANGSTRING ppEntry);
const WCHAR* QxGetStringSmart(HQXLANG hLang, const void* pReference);   // null gives null
// Copies, cut to cchOut - 1 characters; gives the length. A leading "^*" of the text is dropped.
int32_t QxLoadString(HQXLANG hLang, UINT nId, WCHAR* pszOut, DWORD cchOut);
int32_t QxLoadString(HQXLANG hLang, QXLANGSTRING ppEntry, WCHAR* pszOut, DWORD cchOut);

// A slice of the ring for a text of up to cch characters, valid until the ring comes round; null without a ring or for
// more than cchTempMargin characters.
WCHAR* QxGetTempStringBuffer(HQXLANG hLang, DWORD cch);
// Print strings are wide: these give the text itself, or an empty text when the handle has no ring.
const WCHAR* QxGetWideFromPrintString(HQXLANG hLang, const WCHAR* pszText);
const WCHAR* QxGetPrintFromWideString(HQXLANG hLang, const WCHAR* pszText);
// Through the system's 8-bit code page into the ring; an empty text when there is no room.
const char* QxGetMultiByteFromPrintString(HQXLANG hLang, const WCHAR* pszText);
const WCHAR* QxGetPrintFromMultiByteString(HQXLANG hLang, const char* pszText);

// [control] The library's own handle, on which all its messages are read; null outside of kernel start and end.
HRESULT OpenKernelLanguage(HINSTANCE hInstance);
void CloseKernelLanguage();
HQXLANG KernelLanguage();
