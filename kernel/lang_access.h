// What the operations on a language handle share. Internal to the language family.
#pragma once

#include "kernel/lang.h"
#include "kernel/wide_view.h"

#include "platform/codepage_detect.h"

#include <atomic>
#include <span>

class LangLock {
public:
    explicit LangLock(HQXLANG lang) : section(&lang->csLock) { EnterCriticalSection(section); }
    ~LangLock() { LeaveCriticalSection(section); }
    LangLock(const LangLock&) = delete;
    LangLock& operator=(const LangLock&) = delete;

private:
    CRITICAL_SECTION* const section;
};

// Read by lookups without the lock.
inline DWORD LanguageOf(HQXLANG lang)
{
    return std::atomic_ref(lang->lcid).load(std::memory_order_relaxed);
}

// In the module: the resource of exactly this language, or of the one that its condition gives; null when there is none.
HRSRC FindInLanguage(HMODULE module, const WCHAR* type, const WCHAR* name, DWORD lcid);

// True when the text, of cb bytes in a double-byte code page, holds a complete double-byte character.
BOOL DetectDoubleByte(UINT codePage, const char* pText, DWORD cb);

// Of the candidates that are quite sure the one that reads most of the text, if that is all of it; else *pCodePage is 0.
HRESULT ChooseCodePage(std::span<const CodePageCandidate> candidates, DWORD* pCodePage);

// The language module beside a module's file: its name with the extension LNG, loaded as data; null when there is no such
// file or it is no language module.
HMODULE LoadLanguageFile(WideView moduleFile);
