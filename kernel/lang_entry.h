// One text of the compiled-in table, in all languages at once. The table is a writable part of the image: a cell that
// names a string resource is replaced by the text it finds.
#pragma once

#include <windows.h>

#include <cstdint>

inline constexpr WORD QXLANG_MARK = 0xFFFE;   // no text begins with this
inline constexpr WORD QXLANG_SLOTS = 18;      // slot 1 is English

struct QXLANGENTRY {
    WORD wMark;
    WORD nSlots;
    const WCHAR* apszText[QXLANG_SLOTS];   // values up to 65535 are ids of string resources
    DWORD dwEnd;

    // An entry is handed around by its address.
    operator const WCHAR* const*() const { return reinterpret_cast<const WCHAR* const*>(this); }
};

// The section of the table and that of its texts.
#define QXLANG_TABLE __attribute__((section("qxlang_t")))
#define QXLANG_TEXTS __attribute__((section("strings")))

extern DWORD g_qxlangIds[QXLANG_SLOTS];   // the language of each slot
