// Comparison in the order of a language.
#include "platform/native/locale_name.h"
#include "platform/native/refusal.h"
#include "platform/native/wide_text.h"

#include <winbase.h>
#include <winnls.h>

#include <unicode/ucol.h>
#include <unicode/ustring.h>

#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace {

struct CloseCollator {
    void operator()(UCollator* p) const { ucol_close(p); }
};
using Collator = std::unique_ptr<UCollator, CloseCollator>;

// Collators are costly to make and safe to share once made; they live as long as the module.
const UCollator* CollatorFor(LCID lcid)
{
    static std::mutex lock;
    static std::map<LCID, Collator> collators;
    const std::lock_guard guard(lock);
    if (const auto found = collators.find(lcid); found != collators.end())
        return found->second.get();
    const std::string name = LocaleName(lcid);
    UErrorCode status = U_ZERO_ERROR;
    Collator collator(name.empty() ? nullptr : ucol_open(name.c_str(), &status));
    if (!collator)
        return nullptr;
    ucol_setAttribute(collator.get(), UCOL_NORMALIZATION_MODE, UCOL_ON, &status);
    return collators.emplace(lcid, std::move(collator)).first->second.get();
}

WideString CaseFolded(WideView text)
{
    WideString out(text.size() * 3, u'\0');   // no character folds to more than three
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length =
        u_strFoldCase(out.data(), int32_t(out.size()), text.data(), int32_t(text.size()), U_FOLD_CASE_DEFAULT, &status);
    out.resize(size_t(length));
    return out;
}

WideString WithoutWordMarks(WideView text)
{
    WideString out(text);
    std::erase_if(out, [](WCHAR c) { return c == '-' || c == '\''; });
    return out;
}

int Collate(const UCollator* collator, WideView a, WideView b)
{
    return ucol_strcoll(collator, a.data(), int32_t(a.size()), b.data(), int32_t(b.size()));
}

// Marks decide last: "coop" stands before "co-op", and both before "cop".
int CompareByWord(const UCollator* collator, WideView a, WideView b)
{
    const WideString wordA = WithoutWordMarks(a), wordB = WithoutWordMarks(b);
    if (const int words = Collate(collator, wordA, wordB))
        return words;
    const size_t marksA = a.size() - wordA.size(), marksB = b.size() - wordB.size();
    return marksA != marksB ? (marksA < marksB ? -1 : 1) : Collate(collator, a, b);
}

int Compare(const UCollator* collator, DWORD flags, WideView a, WideView b)
{
    const auto order = flags & SORT_STRINGSORT ? Collate : CompareByWord;
    return flags & NORM_IGNORECASE ? order(collator, CaseFolded(a), CaseFolded(b)) : order(collator, a, b);
}

WideView ViewOf(LPCWSTR p, int cch)
{
    return cch < 0 ? WideView(p) : WideView(p, size_t(cch));
}

int CompareTexts(LPCWSTR pszA, LPCWSTR pszB, DWORD flags)
{
    if (!pszA || !pszB)
        return (pszA != nullptr) - (pszB != nullptr);
    return CompareStringW(GetThreadLocale(), flags, pszA, -1, pszB, -1) - CSTR_EQUAL;
}

}   // namespace

int CompareStringW(LCID lcid, DWORD dwFlags, LPCWSTR pA, int cchA, LPCWSTR pB, int cchB)
{
    if (!pA || !pB)
        return Refuse<int>(ERROR_INVALID_PARAMETER);
    if (dwFlags & ~(NORM_IGNORECASE | SORT_STRINGSORT))
        return Refuse<int>(ERROR_INVALID_FLAGS);
    const UCollator* const collator = CollatorFor(ResolveLocale(lcid));
    if (!collator)
        return Refuse<int>(ERROR_INVALID_PARAMETER);
    return Compare(collator, dwFlags, ViewOf(pA, cchA), ViewOf(pB, cchB)) + CSTR_EQUAL;
}

int lstrcmpW(LPCWSTR pszA, LPCWSTR pszB)
{
    return CompareTexts(pszA, pszB, 0);
}

int lstrcmpiW(LPCWSTR pszA, LPCWSTR pszB)
{
    return CompareTexts(pszA, pszB, NORM_IGNORECASE);
}
