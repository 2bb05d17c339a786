// The printf dialect of all text that a user reads, over wide strings. Beside the standard conversions (% directives):
//   $        a number of a $ directive is finished for the user's locale: $d groups, $f groups with the locale's point
//   %! %& %* %, %:   separators of the locale and of time codes; no argument
//   %z       an integer with implied decimals: "%.2z" prints 1234 as 12.34
//   $(Name)  replaced from the process-wide table of tokens; $(1234.5): a number in the user's form
//   $$ %%    the characters themselves
// Arguments are 32 bits wide, 64 with I64, doubles, or texts. The conversions are d i u x X o e E f g G c s z and the
// separators; p, n, S and C are none, and what is no part of a directive is passed over. A * cannot be a width.
// Unknown tokens and unfinished directives stand in the output as written.
// [any] All state is on the stack; the token table has its own lock.
#pragma once

#include <windows.h>

#include <cstdarg>
#include <cstdint>

// Give the characters written, without the terminator. The destination is not bounded: 2048 characters serve the
// library's own texts. A single c or s ends at 1024 characters.
int32_t QxPrintF(WCHAR* pszOut, const WCHAR* pszFormat, ...);
int32_t QxVPrintF(WCHAR* pszOut, const WCHAR* pszFormat, va_list arguments);

// Bounded: at most cchOut - 1 characters and always a terminator. *pcchWritten (may be null): length of the final text.
// S_OK also when literal text was cut; QX_E_BUFFER_TOO_SMALL when a directive or token was, QX_E_TEXT_CUT when that was
// a text or a standard conversion. E_INVALIDARG for a capacity of 0 or above INT32_MAX.
HRESULT QxCchPrintF(WCHAR* pszOut, DWORD cchOut, DWORD* pcchWritten, const WCHAR* pszFormat, ...);
HRESULT QxNVPrintF(WCHAR* pszOut, DWORD cchOut, DWORD* pcchWritten, const WCHAR* pszFormat, va_list arguments);

// Inserts %1, %2 and so on as the platform's FormatMessageW does; gives the characters written, 0 on failure.
int32_t QxComposeStr(WCHAR* pszOut, DWORD cchOut, const WCHAR* pszFormat, ...);

// A token's name is at most 260 characters and read without regard to case. Adding replaces; the value is not scanned.
BOOL QxPrintF_AddToken(const WCHAR* pszName, const WCHAR* pszValue);
BOOL QxPrintF_DeleteToken(const WCHAR* pszName);

// [control] The table lives from kernel start to kernel end; outside of that there are no tokens.
HRESULT CreateTokenTable();
void DestroyTokenTable();
// The tokens that carry the separators of time codes and music time, and the field labels made with them.
void DefineSeparatorTokens();
