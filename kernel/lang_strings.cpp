#include "kernel/lang_access.h"
#include "kernel/text_output.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace {

constexpr WCHAR kEmpty[] = {0};
constexpr char kEmptyNarrow[] = "";
constexpr UINT_PTR kLargestId = 0xFFFF;
constexpr DWORD kEnglish = 1033;
constexpr size_t kMaxString = 1024;   // characters of a resource string

bool IsId(const void* reference)
{
    return reinterpret_cast<UINT_PTR>(reference) <= kLargestId;
}

struct CachedString {
    DWORD dwId;
    WCHAR szText[1];
};

int CALLBACK CompareId(DWORD, const void* key, const void* item)
{
    const DWORD a = *static_cast<const DWORD*>(key), b = static_cast<const CachedString*>(item)->dwId;
    return a < b ? -1 : a > b ? 1 : 0;
}

// A block of the string table holds 16 texts, each a count and that many characters. In a damaged module it may end early
// or stand at an odd address.
WideView StringInBlock(HMODULE module, HRSRC block, UINT id)
{
    const auto* const units = static_cast<const WCHAR*>(LockResource(LoadResource(module, block)));
    const size_t count = SizeofResource(module, block) / sizeof(WCHAR);
    size_t at = 0;
    const bool aligned = reinterpret_cast<UINT_PTR>(units) % alignof(WCHAR) == 0;
    for (UINT skip = id % 16; units && aligned && at < count; --skip) {
        const size_t length = units[at++];
        if (length > count - at)
            return {};
        if (skip == 0)
            return {units + at, length};
        at += length;
    }
    return {};
}

WideView StringInModule(HMODULE module, UINT id, DWORD lcid)
{
    const HRSRC block = FindInLanguage(module, MAKEINTRESOURCEW(6), MAKEINTRESOURCEW(id / 16 + 1), lcid);
    return block ? StringInBlock(module, block, id) : WideView();
}

WideView WithoutMark(WideView text)
{
    return text.starts_with(TEXT("^*")) ? text.substr(2) : text;
}

int32_t CopyText(WideView text, WCHAR* pszOut, DWORD cchOut)
{
    TextOutput out(pszOut, cchOut - 1);
    out.Put(text);
    out.Terminate();
    return int32_t(out.Length());
}

int32_t SlotOfLanguage(DWORD lcid)
{
    const DWORD wanted = QxLang_GetConditionedLCID(lcid ? lcid : GetUserDefaultUILanguage());
    int32_t slot = 1;
    for (int32_t i = 0; i < QXLANG_SLOTS; ++i)
        if (QxLang_GetConditionedLCID(g_qxlangIds[i]) == wanted)
            slot = i + 1;
    return slot;
}

// Determined once after a change of language; two threads may both do so, with the same result.
int32_t SlotOf(HQXLANG lang)
{
    std::atomic_ref cached(lang->iSlot);
    int32_t slot = cached.load(std::memory_order_relaxed);
    if (slot < 1) {
        slot = SlotOfLanguage(LanguageOf(lang));
        cached.store(slot, std::memory_order_relaxed);
    }
    return slot;
}

// A terminated copy that lives as long as the process, like the texts of the table.
WCHAR* CopyForLife(WideView text)
{
    auto* const copy = static_cast<WCHAR*>(std::malloc((text.size() + 1) * sizeof(WCHAR)));
    if (copy)
        *std::copy(text.begin(), text.end(), copy) = 0;
    return copy;
}

const WCHAR* TextOfCell(HQXLANG lang, QXLANGENTRY& entry, int32_t slot);

// Replaces a cell that names a resource by its text, or by the English one. Of two threads that do so the first stays.
const WCHAR* ResolveCell(HQXLANG lang, QXLANGENTRY& entry, int32_t slot, const WCHAR* id)
{
    const DWORD language = g_qxlangIds[slot - 1];
    const auto number = UINT(reinterpret_cast<UINT_PTR>(id));
    const WideView found = lang ? WithoutMark(StringInModule(lang->hResModule, number, language)) : WideView();
    WCHAR* const copy = found.empty() ? nullptr : CopyForLife(found);
    const WCHAR* text = copy ? copy : slot > 1 ? TextOfCell(lang, entry, 1) : kEmpty;
    if (std::atomic_ref(entry.apszText[slot - 1]).compare_exchange_strong(id, text))
        return text;
    std::free(copy);
    return id;
}

const WCHAR* TextOfCell(HQXLANG lang, QXLANGENTRY& entry, int32_t slot)
{
    const WCHAR* const cell = std::atomic_ref(entry.apszText[slot - 1]).load(std::memory_order_acquire);
    return IsId(cell) ? ResolveCell(lang, entry, slot, cell) : cell;
}

const WCHAR* FindCached(tQXLIST* cache, DWORD id)
{
    const int32_t index = QxList_FindSortedItemRange(cache, &id, 0, -1, CompareId);
    return index < 0 ? nullptr : reinterpret_cast<CachedString* const*>(cache->pItems)[index]->szText;
}

// The copy in the cache; an empty text when there is no memory for it.
const WCHAR* AddToCache(tQXLIST* cache, DWORD id, WideView text)
{
    const size_t cbItem = sizeof(CachedString) + text.size() * sizeof(WCHAR);
    const int32_t place = QxList_FindSortedInsertIndexRange(cache, &id, 0, -1, CompareId);
    void* item = nullptr;
    if (FAILED(QxList_AllocItem(cache, DWORD(cbItem), &item)))
        return kEmpty;
    auto* const cached = static_cast<CachedString*>(item);
    cached->dwId = id;
    WCHAR* const copy = cached->szText;
    *std::copy(text.begin(), text.end(), copy) = 0;
    if (SUCCEEDED(QxList_InsertList(cache, place, nullptr, -1)))
        return copy;
    QxList_DeleteList(cache, -1, -1, FALSE);
    return kEmpty;
}

// [characters] The ring's slice, under the lock.
WCHAR* TakeSlice(HQXLANG lang, DWORD cch)
{
    if (!lang->pTempBuffer || cch > lang->cchTempMargin)
        return nullptr;
    if (lang->iTempOffset > lang->cchTempSize - lang->cchTempMargin)
        lang->iTempOffset = 0;
    WCHAR* const slice = lang->pTempBuffer + lang->iTempOffset;
    lang->iTempOffset += (cch + 2) & ~DWORD(1);
    if (cch == 0)
        slice[0] = 0;
    return slice;
}

bool HasRing(HQXLANG lang)
{
    return lang && lang->pTempBuffer;
}

}   // namespace

HRSRC FindInLanguage(HMODULE module, const WCHAR* type, const WCHAR* name, DWORD lcid)
{
    const DWORD conditioned = QxLang_GetConditionedLCID(lcid);
    HRSRC found = FindResourceExW(module, type, name, LANGID(lcid));
    if (!found && conditioned != lcid)
        found = FindResourceExW(module, type, name, LANGID(conditioned));
    return found;
}

BOOL IsQXLANGSTRINGID(HQXLANG, const void* p)
{
    if (IsId(p) || reinterpret_cast<UINT_PTR>(p) % 4 != 0)
        return FALSE;
    WORD mark;
    std::memcpy(&mark, p, sizeof mark);
    return mark == QXLANG_MARK;
}

const WCHAR* QxGetString(HQXLANG hLang, UINT nId)
{
    if (!hLang || !hLang->pStringCache)
        return kEmpty;
    const LangLock lock(hLang);
    if (const WCHAR* const cached = FindCached(hLang->pStringCache, nId))
        return cached;
    std::array<WCHAR, kMaxString> buffer;
    const int32_t length = QxLoadString(hLang, nId, buffer.data(), DWORD(buffer.size()));
    return length == 0 ? kEmpty : AddToCache(hLang->pStringCache, nId, {buffer.data(), size_t(length)});
}

const WCHAR* QxGetString(HQXLANG hLang, QXLANGSTRING ppEntry)
{
    if (!IsQXLANGSTRINGID(hLang, ppEntry))
        return kEmpty;
    auto& entry = *reinterpret_cast<QXLANGENTRY*>(const_cast<const WCHAR**>(ppEntry));
    const int32_t slot = hLang ? SlotOf(hLang) : 1;
    return TextOfCell(hLang, entry, std::clamp(slot, 1, std::max(int32_t(entry.nSlots), 1)));
}

const WCHAR* QxGetStringSmart(HQXLANG hLang, const void* pReference)
{
    if (!pReference)
        return nullptr;
    if (IsId(pReference))
        return QxGetString(hLang, UINT(reinterpret_cast<UINT_PTR>(pReference)));
    return IsQXLANGSTRINGID(hLang, pReference) ? QxGetString(hLang, static_cast<QXLANGSTRING>(pReference))
                                               : static_cast<const WCHAR*>(pReference);
}

int32_t QxLoadString(HQXLANG hLang, UINT nId, WCHAR* pszOut, DWORD cchOut)
{
    if (!pszOut || cchOut == 0)
        return 0;
    pszOut[0] = 0;
    if (!hLang || nId > kLargestId)
        return 0;
    WideView text;
    if (hLang->hResModule && hLang->bUseResModule)
        text = StringInModule(hLang->hResModule, nId, LanguageOf(hLang));
    if (text.empty() && hLang->hInstance == hLang->hResModule)
        text = StringInModule(hLang->hInstance, nId, kEnglish);
    if (!text.empty() || hLang->hInstance == hLang->hResModule)
        return CopyText(WithoutMark(text), pszOut, cchOut);
    std::array<WCHAR, kMaxString> buffer;
    const int length = LoadStringW(hLang->hInstance, nId, buffer.data(), int(buffer.size()));
    return CopyText(WithoutMark({buffer.data(), size_t(std::max(length, 0))}), pszOut, cchOut);
}

int32_t QxLoadString(HQXLANG hLang, QXLANGSTRING ppEntry, WCHAR* pszOut, DWORD cchOut)
{
    return pszOut && cchOut > 0 ? CopyText(WithoutMark(QxGetString(hLang, ppEntry)), pszOut, cchOut) : 0;
}

WCHAR* QxGetTempStringBuffer(HQXLANG hLang, DWORD cch)
{
    if (!HasRing(hLang))
        return nullptr;
    const LangLock lock(hLang);
    return TakeSlice(hLang, cch);
}

const WCHAR* QxGetWideFromPrintString(HQXLANG hLang, const WCHAR* pszText)
{
    return HasRing(hLang) ? pszText : kEmpty;
}

const WCHAR* QxGetPrintFromWideString(HQXLANG hLang, const WCHAR* pszText)
{
    return HasRing(hLang) ? pszText : kEmpty;
}

const char* QxGetMultiByteFromPrintString(HQXLANG hLang, const WCHAR* pszText)
{
    if (!HasRing(hLang) || !pszText)
        return kEmptyNarrow;
    const int cb = WideCharToMultiByte(CP_ACP, 0, pszText, -1, nullptr, 0, nullptr, nullptr);
    auto* const slice = cb > 0 ? reinterpret_cast<char*>(QxGetTempStringBuffer(hLang, DWORD(cb + 1) / 2)) : nullptr;
    if (!slice || WideCharToMultiByte(CP_ACP, 0, pszText, -1, slice, cb, nullptr, nullptr) != cb)
        return kEmptyNarrow;
    return slice;
}

const WCHAR* QxGetPrintFromMultiByteString(HQXLANG hLang, const char* pszText)
{
    if (!HasRing(hLang) || !pszText)
        return kEmpty;
    const int cch = MultiByteToWideChar(CP_ACP, 0, pszText, -1, nullptr, 0);
    WCHAR* const slice = cch > 0 ? QxGetTempStringBuffer(hLang, DWORD(cch)) : nullptr;
    if (!slice || MultiByteToWideChar(CP_ACP, 0, pszText, -1, slice, cch) != cch)
        return kEmpty;
    return slice;
}
