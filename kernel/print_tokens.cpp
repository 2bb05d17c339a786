#include "kernel/print_tokens.h"

#include "kernel/international.h"
#include "kernel/lang.h"
#include "kernel/lang/texts.h"
#include "kernel/list.h"
#include "kernel/print.h"

#include <array>

namespace {

constexpr size_t kMaxName = 260;

// One block: the record, then the name, then the value on a boundary of 4 bytes, both terminated.
struct Token {
    DWORD dwReserved;
    const WCHAR* pszName;
    int32_t cchValue;
    const WCHAR* pszValue;
};

tQXLIST* g_tokens = nullptr;   // sorted by name

// The table's own lock: calls of the list nest in it.
class TokenLock {
public:
    TokenLock() { EnterCriticalSection(&g_tokens->csLock); }
    ~TokenLock() { LeaveCriticalSection(&g_tokens->csLock); }
    TokenLock(const TokenLock&) = delete;
    TokenLock& operator=(const TokenLock&) = delete;
};

int CALLBACK CompareName(DWORD, const void* key, const void* token)
{
    return lstrcmpiW(static_cast<const WCHAR*>(key), static_cast<const Token*>(token)->pszName);
}

int32_t FindToken(const WCHAR* name)
{
    return QxList_FindSortedItemRange(g_tokens, name, 0, -1, CompareName);
}

void FillToken(Token& token, size_t valueOffset, WideView name, WideView value)
{
    auto* const nameAt = reinterpret_cast<WCHAR*>(&token + 1);
    auto* const valueAt = reinterpret_cast<WCHAR*>(reinterpret_cast<BYTE*>(&token) + valueOffset);
    std::copy(name.begin(), name.end(), nameAt);
    std::copy(value.begin(), value.end(), valueAt);
    token = {0, nameAt, int32_t(value.size()), valueAt};
}

void DefineLabel(const WCHAR* name, const QXLANGENTRY& format, const WCHAR* a, const WCHAR* b, const WCHAR* c)
{
    WCHAR label[128];
    if (SUCCEEDED(QxCchPrintF(label, 128, nullptr, QxGetString(KernelLanguage(), format), a, b, c)))
        QxPrintF_AddToken(name, label);
}

}   // namespace

HRESULT CreateTokenTable()
{
    return g_tokens ? S_OK : QxList_CreateExZ(&g_tokens, 0, 16, 16, QXLIST_HEAP_ITEMS | QXLIST_THREAD_SAFE, 0, 0, 0);
}

void DestroyTokenTable()
{
    QxList_Destroy(g_tokens);
    g_tokens = nullptr;
}

TokenResult PutToken(WideView name, TextOutput& out)
{
    if (!g_tokens || name.size() > kMaxName)
        return TokenResult::kUnknown;
    std::array<WCHAR, kMaxName + 1> terminated;
    *std::copy(name.begin(), name.end(), terminated.begin()) = 0;
    const TokenLock lock;
    const int32_t index = FindToken(terminated.data());
    if (index < 0)
        return TokenResult::kUnknown;
    const auto& token = *reinterpret_cast<Token* const*>(g_tokens->pItems)[index];
    return out.Put({token.pszValue, size_t(token.cchValue)}) ? TokenResult::kWritten : TokenResult::kCut;
}

BOOL QxPrintF_AddToken(const WCHAR* pszName, const WCHAR* pszValue)
{
    if (!g_tokens || !pszName || !pszValue)
        return FALSE;
    const WideView name = pszName, value = pszValue;
    if (name.empty() || name.size() > kMaxName)
        return FALSE;
    const size_t valueOffset = (sizeof(Token) + (name.size() + 1) * sizeof(WCHAR) + 3) & ~size_t(3);
    const size_t cbToken = valueOffset + (value.size() + 1) * sizeof(WCHAR);
    const TokenLock lock;
    void* item = nullptr;
    if (FAILED(QxList_AllocItem(g_tokens, DWORD(cbToken), &item)))
        return FALSE;
    FillToken(*static_cast<Token*>(item), valueOffset, name, value);
    // The new entry stands before an equal one, which goes once the new one is in.
    const int32_t place = QxList_FindSortedInsertIndexRange(g_tokens, pszName, 0, -1, CompareName);
    const bool replaces = FindToken(pszName) >= 0;
    if (FAILED(QxList_InsertList(g_tokens, place, nullptr, -1))) {
        QxList_DeleteList(g_tokens, -1, -1, FALSE);
        return FALSE;
    }
    if (replaces)
        QxList_DeleteList(g_tokens, place + 1, 1, FALSE);
    return TRUE;
}

BOOL QxPrintF_DeleteToken(const WCHAR* pszName)
{
    if (!g_tokens || !pszName)
        return FALSE;
    const TokenLock lock;
    const int32_t index = FindToken(pszName);
    return index >= 0 && SUCCEEDED(QxList_DeleteList(g_tokens, index, 1, TRUE));
}

void DefineSeparatorTokens()
{
    const QXINTERNATIONALS& r = Internationals();
    QxPrintF_AddToken(TEXT("SMPTE.Whole"), r.szSmpteWhole);
    QxPrintF_AddToken(TEXT("SMPTE.NonDrop"), r.szSmpteNonDrop);
    QxPrintF_AddToken(TEXT("SMPTE.Drop"), r.szSmpteDrop);
    QxPrintF_AddToken(TEXT("m.b"), r.szMeasureBeat);
    QxPrintF_AddToken(TEXT("b.t"), r.szBeatTick);
    DefineLabel(TEXT("SMPTE.Label.NonDrop"), qxtext_Label_Smpte, r.szSmpteWhole, r.szSmpteWhole, r.szSmpteNonDrop);
    DefineLabel(TEXT("SMPTE.Label.Drop"), qxtext_Label_Smpte, r.szSmpteWhole, r.szSmpteWhole, r.szSmpteDrop);
    DefineLabel(TEXT("SMPTE.Label.NonDrop.Full"), qxtext_Label_SmpteFull, r.szSmpteWhole, r.szSmpteWhole,
                r.szSmpteNonDrop);
    DefineLabel(TEXT("SMPTE.Label.Drop.Full"), qxtext_Label_SmpteFull, r.szSmpteWhole, r.szSmpteWhole, r.szSmpteDrop);
    DefineLabel(TEXT("MusicTime.Label"), qxtext_Label_MusicTime, r.szMeasureBeat, r.szBeatTick, TEXT(""));
    DefineLabel(TEXT("MusicTime.Label.Full"), qxtext_Label_MusicTimeFull, r.szMeasureBeat, r.szBeatTick, TEXT(""));
}
