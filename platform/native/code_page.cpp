// Conversion between UTF-16 and code pages.
#include "platform/native/locale_name.h"
#include "platform/native/refusal.h"
#include "platform/native/wide_text.h"

#include <winnls.h>

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include <array>
#include <cstring>
#include <memory>

namespace {

struct CodePage {
    UINT id;
    const char* name;   // of the converter whose table is the platform's
    UINT maxBytes;
    BYTE leads[MAX_LEADBYTES];
};
constexpr CodePage kCodePages[] = {
    {874, "windows-874-2000", 1, {}},
    {932, "ibm-943_P15A-2003", 2, {0x81, 0x9F, 0xE0, 0xFC}},
    {936, "windows-936-2000", 2, {0x81, 0xFE}},
    {949, "windows-949-2000", 2, {0x81, 0xFE}},
    {950, "windows-950-2000", 2, {0x81, 0xFE}},
    {1250, "ibm-5346_P100-1998", 1, {}},
    {1251, "ibm-5347_P100-1998", 1, {}},
    {1252, "ibm-5348_P100-1997", 1, {}},
    {1253, "ibm-5349_P100-1998", 1, {}},
    {1254, "ibm-5350_P100-1998", 1, {}},
    {1255, "ibm-9447_P100-2002", 1, {}},
    {1256, "ibm-9448_X100-2005", 1, {}},
    {1257, "ibm-9449_P100-2002", 1, {}},
    {1258, "ibm-5354_P100-1998", 1, {}},
    {28591, "ISO-8859-1", 1, {}},
    {CP_UTF8, "UTF-8", 4, {}},
};

const CodePage* FindCodePage(UINT id)
{
    const UINT wanted = id == CP_ACP ? GetACP() : id;
    for (const auto& page : kCodePages)
        if (page.id == wanted)
            return &page;
    return nullptr;
}

using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

Converter OpenConverter(const CodePage& page)
{
    UErrorCode status = U_ZERO_ERROR;
    return Converter(ucnv_open(page.name, &status), ucnv_close);
}

// What a character without a counterpart becomes, and whether that happened.
struct Replacement {
    std::array<char, MAX_DEFAULTCHAR> bytes;
    int length;
    bool used;
};

void ReplaceUnmapped(const void* context, UConverterFromUnicodeArgs* args, const UChar*, int32_t, UChar32,
                     UConverterCallbackReason reason, UErrorCode* status)
{
    if (reason > UCNV_IRREGULAR)
        return;
    Replacement& replacement = *static_cast<Replacement*>(const_cast<void*>(context));
    replacement.used = true;
    *status = U_ZERO_ERROR;
    ucnv_cbFromUWriteBytes(args, replacement.bytes.data(), replacement.length, 0, status);
}

// The text in the code page; false when strict and something has no counterpart.
bool FromWide(const CodePage& page, WideView text, bool strict, bool bestFit, Replacement& replacement,
              std::string& out)
{
    const Converter converter = OpenConverter(page);
    UErrorCode status = U_ZERO_ERROR;
    if (strict)
        ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    else if (page.id != CP_UTF8)
        ucnv_setFromUCallBack(converter.get(), ReplaceUnmapped, &replacement, nullptr, nullptr, &status);
    ucnv_setFallback(converter.get(), bestFit);
    out.resize((text.size() + 1) * 4);
    const int32_t length =
        ucnv_fromUChars(converter.get(), out.data(), int32_t(out.size()), text.data(), int32_t(text.size()), &status);
    out.resize(U_SUCCESS(status) ? size_t(length) : 0);
    return U_SUCCESS(status);
}

bool ToWide(const CodePage& page, std::string_view text, bool strict, WideString& out)
{
    const Converter converter = OpenConverter(page);
    UErrorCode status = U_ZERO_ERROR;
    if (strict)
        ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    out.resize(text.size() * 2 + 1);
    const int32_t length =
        ucnv_toUChars(converter.get(), out.data(), int32_t(out.size()), text.data(), int32_t(text.size()), &status);
    out.resize(U_SUCCESS(status) ? size_t(length) : 0);
    return U_SUCCESS(status);
}

// The result of a conversion into the caller's buffer: its size when none is given.
template <class Text, class Unit>
int GiveText(const Text& text, Unit* pOut, int room)
{
    if (room == 0)
        return int(text.size());
    const size_t fits = std::min(text.size(), size_t(room));
    std::memcpy(pOut, text.data(), fits * sizeof(Unit));
    return fits == text.size() ? int(fits) : Refuse<int>(ERROR_INSUFFICIENT_BUFFER);
}

}   // namespace

UINT GetACP()
{
    return AnsiCodePage(GetSystemDefaultLCID());
}

BOOL IsValidCodePage(UINT nCodePage)
{
    return nCodePage != CP_ACP && FindCodePage(nCodePage);
}

BOOL GetCPInfo(UINT nCodePage, CPINFO* pInfo)
{
    const CodePage* const page = FindCodePage(nCodePage);
    if (!page || !pInfo)
        return Refuse(ERROR_INVALID_PARAMETER);
    pInfo->MaxCharSize = page->maxBytes;
    pInfo->DefaultChar[0] = '?';
    pInfo->DefaultChar[1] = 0;
    std::memcpy(pInfo->LeadByte, page->leads, sizeof page->leads);
    return TRUE;
}

BOOL IsDBCSLeadByteEx(UINT nCodePage, BYTE first)
{
    const CodePage* const page = FindCodePage(nCodePage);
    if (!page)
        return Refuse(ERROR_INVALID_PARAMETER);
    for (int i = 0; i + 1 < MAX_LEADBYTES && page->leads[i]; i += 2)
        if (first >= page->leads[i] && first <= page->leads[i + 1])
            return TRUE;
    return FALSE;
}

int MultiByteToWideChar(UINT nCodePage, DWORD dwFlags, LPCSTR pText, int cb, LPWSTR pOut, int cchOut)
{
    const CodePage* const page = FindCodePage(nCodePage);
    if (!page || !pText || cb == 0 || cb < -1 || cchOut < 0 || (cchOut > 0 && !pOut))
        return Refuse<int>(ERROR_INVALID_PARAMETER);
    if (dwFlags & ~(MB_PRECOMPOSED | MB_ERR_INVALID_CHARS))
        return Refuse<int>(ERROR_INVALID_FLAGS);
    WideString wide;
    const std::string_view text(pText, cb < 0 ? std::strlen(pText) + 1 : size_t(cb));
    if (!ToWide(*page, text, dwFlags & MB_ERR_INVALID_CHARS, wide))
        return Refuse<int>(ERROR_NO_UNICODE_TRANSLATION);
    return GiveText(wide, pOut, cchOut);
}

int WideCharToMultiByte(UINT nCodePage, DWORD dwFlags, LPCWSTR pText, int cch, LPSTR pOut, int cbOut, LPCSTR pDefault,
                        LPBOOL pUsedDefault)
{
    const CodePage* const page = FindCodePage(nCodePage);
    if (!page || !pText || cch == 0 || cch < -1 || cbOut < 0 || (cbOut > 0 && !pOut))
        return Refuse<int>(ERROR_INVALID_PARAMETER);
    const bool utf8 = page->id == CP_UTF8;
    if (utf8 && (pDefault || pUsedDefault))
        return Refuse<int>(ERROR_INVALID_PARAMETER);
    if (dwFlags & ~(utf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS))
        return Refuse<int>(ERROR_INVALID_FLAGS);
    Replacement replacement = {{pDefault ? pDefault[0] : '?', pDefault && pDefault[0] ? pDefault[1] : '\0'}, 1, false};
    replacement.length = replacement.bytes[1] ? 2 : 1;
    const WideView text(pText, cch < 0 ? WideView(pText).size() + 1 : size_t(cch));
    std::string bytes;
    if (!FromWide(*page, text, dwFlags & WC_ERR_INVALID_CHARS, !(dwFlags & WC_NO_BEST_FIT_CHARS), replacement, bytes))
        return Refuse<int>(ERROR_NO_UNICODE_TRANSLATION);
    if (pUsedDefault)
        *pUsedDefault = replacement.used;
    return GiveText(bytes, pOut, cbOut);
}
