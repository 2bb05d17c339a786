// Resources by language. The rule: a find, load or size looks in the handle's resource module for the handle's language
// when that is not English, and otherwise asks the platform's own search in the module of the handle. Each operation
// takes name and type, since a found resource belongs to the module in which it was found.
#pragma once

#include "kernel/lang.h"

HRSRC QxFindResource(HQXLANG hLang, const WCHAR* pszName, const WCHAR* pszType);
// Tries the types in order, all of them in the resource module first. *pnIndex (may be null): which type it was, or -1.
HRSRC QxFindResourceMulti(HQXLANG hLang, const WCHAR* pszName, const WCHAR* const* ppszTypes, int32_t nTypes,
                          int32_t* pnIndex);
// The module in which the resource is, or null.
HINSTANCE QxFindResInstance(HQXLANG hLang, const WCHAR* pszName, const WCHAR* pszType);
HGLOBAL QxLoadResource(HQXLANG hLang, const WCHAR* pszName, const WCHAR* pszType);
DWORD QxSizeofResource(HQXLANG hLang, const WCHAR* pszName, const WCHAR* pszType);
// As QxLoadResource, but falls back to the English resource when the handle has no language module.
HGLOBAL QxLoadResourceCustom(HQXLANG hLang, const WCHAR* pszName, const WCHAR* pszType);
// The three-letter abbreviations of the languages that the version resource nId exists in, joined by commas.
BOOL QxEnumResourceLanguages(HQXLANG hLang, UINT nId, WCHAR* pszOut, DWORD cchOut);
// Writes the resource's bytes over the file, which is created when it is not there. QX_E_NOT_FOUND, E_UNEXPECTED for
// one that is empty or cannot be loaded, QX_E_FILE_OPEN, QX_E_FILE_WRITE.
HRESULT QxExtractResourceToFile(HQXLANG hLang, const WCHAR* pszName, const WCHAR* pszType, const WCHAR* pszPath);

// A compiled resource file in memory. Owned by whoever made it.
struct _QXRESPOOL {
    DWORD cbData;
    const BYTE* pData;
};
// The data of an entry: of the language asked for (0: the kernel's), or else of the kernel's language, or else the first
// one of that name and type; null when there is none. Type and name are texts or MAKEINTRESOURCE numbers. *pcb: its
// size, *pLcid: its conditioned language; both may be null. A damaged entry ends the walk.
const void* QxFindResourceInResPool(const _QXRESPOOL* pPool, DWORD* pcb, const WCHAR* pszName, const WCHAR* pszType,
                                    DWORD lcid, DWORD* pLcid);
const void* QxFindDialogTemplateInResPool(const _QXRESPOOL* pPool, DWORD* pcb, const WCHAR* pszName, DWORD lcid,
                                          DWORD* pLcid);
