#include "kernel/lang.h"

#include "kernel/international.h"
#include "kernel/lang_access.h"
#include "kernel/result.h"
#include "kernel/text_output.h"

#include "platform/thread_language.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

constexpr DWORD kDefaultTemp = 8192, kMinTemp = 2048, kTempMargin = 1024;   // characters
constexpr DWORD kTempSlack = 2;                                             // a terminator behind the longest slice
constexpr DWORD kCacheItem = 8;
constexpr size_t kMaxPath = 1024;
constexpr DWORD kJapanese = 1041;

HQXLANG g_kernelLanguage = nullptr;
WCHAR g_languageCode[4] = {'E', 'N', 'U', 0};

constexpr DWORD Primary(DWORD lcid)
{
    return lcid & 0x3FF;
}
constexpr DWORD Sub(DWORD lcid)
{
    return lcid >> 10 & 0x3F;
}
constexpr DWORD MakeLanguage(DWORD primary, DWORD sub)
{
    return sub << 10 | primary;
}

HMODULE LoadLanguageModule(HINSTANCE module)
{
    WCHAR path[kMaxPath];
    const DWORD length = GetModuleFileNameW(module, path, DWORD(kMaxPath));
    return length > 0 && length < kMaxPath ? LoadLanguageFile({path, length}) : nullptr;
}

struct CloseLang {
    void operator()(HQXLANG lang) const { QxLang_Close(lang); }
};

void SwitchLanguage(HQXLANG lang, DWORD lcid)
{
    const LangLock lock(lang);
    if (lang->lcid != lcid) {
        std::atomic_ref(lang->lcid).store(lcid, std::memory_order_relaxed);
        std::atomic_ref(lang->iSlot).store(0, std::memory_order_relaxed);
        if (lang->pStringCache)
            QxList_DeleteList(lang->pStringCache, 0, -1, TRUE);
    }
    lang->bUseResModule = !QxLang_IsLCIDEnglish(lcid);
}

BOOL IsRightToLeft(DWORD lcid)
{
    constexpr DWORD kRightToLeft[] = {1, 13, 32, 41};   // Arabic, Hebrew, Urdu, Persian
    return std::ranges::find(kRightToLeft, Primary(lcid)) != std::end(kRightToLeft);
}

bool PutAll(WCHAR* pszOut, DWORD cchOut, WideView text)
{
    if (!pszOut || cchOut == 0)
        return false;
    TextOutput out(pszOut, cchOut - 1);
    const bool fits = out.Put(text);
    out.Terminate();
    return fits;
}

}   // namespace

HMODULE LoadLanguageFile(WideView moduleFile)
{
    const size_t name = moduleFile.find_last_of(TEXT("/\\")) + 1;   // npos + 1 is 0
    const size_t dot = moduleFile.find_last_of(WCHAR('.'));
    const size_t stem = dot != moduleFile.npos && dot > name ? dot : moduleFile.size();
    WCHAR path[kMaxPath + 4];
    TextOutput out(path, kMaxPath + 3);
    if (!out.Put(moduleFile.substr(0, stem)) || !out.Put(TEXT(".LNG")))
        return nullptr;
    out.Terminate();
    return LoadLibraryExW(path, nullptr, LOAD_LIBRARY_AS_DATAFILE);
}

HRESULT QxLang_Open(HQXLANG* phLang, HINSTANCE hModule, DWORD lcid, DWORD cchTemp)
{
    if (!phLang)
        return E_INVALIDARG;
    if (*phLang)
        return QX_S_ALREADY_OPEN;
    std::unique_ptr<tQXLANG, CloseLang> lang(static_cast<HQXLANG>(std::calloc(1, sizeof(tQXLANG))));
    if (!lang)
        return E_OUTOFMEMORY;
    lang->hInstance = lang->hResModule = hModule;
    lang->cchTempSize = cchTemp == 0 ? kDefaultTemp : std::max(cchTemp, kMinTemp);
    lang->cchTempMargin = kTempMargin;
    lang->pTempBuffer = static_cast<WCHAR*>(std::calloc(size_t(lang->cchTempSize) + kTempSlack, sizeof(WCHAR)));
    if (!lang->pTempBuffer)
        return E_OUTOFMEMORY;
    if (const HRESULT hr = QxList_CreateExZ(&lang->pStringCache, kCacheItem, 0, 0, QXLIST_HEAP_ITEMS, 0, 0, 0);
        FAILED(hr))
        return hr;
    lang->lcid = lcid;
    if (const HMODULE module = LoadLanguageModule(hModule))
        lang->hResModule = module;
    InitializeCriticalSection(&lang->csLock);
    lang->bLockInitialized = TRUE;
    *phLang = lang.release();
    return S_OK;
}

void QxLang_Close(HQXLANG hLang)
{
    if (!hLang)
        return;
    if (hLang->bLockInitialized)
        DeleteCriticalSection(&hLang->csLock);
    if (hLang->hResModule && hLang->hResModule != hLang->hInstance)
        FreeLibrary(hLang->hResModule);
    std::free(hLang->pTempBuffer);
    QxList_Destroy(hLang->pStringCache);
    std::free(hLang);
}

HINSTANCE QxLang_InstFromLang(HQXLANG hLang)
{
    if (!hLang)
        return nullptr;
    return hLang->hResModule && hLang->bUseResModule ? hLang->hResModule : hLang->hInstance;
}

BOOL QxLang_ChangeLangInst(HQXLANG hLang, HINSTANCE hModule)
{
    if (!hLang || !g_kernelLanguage)
        return FALSE;
    if (hModule)
        hLang->hResModule = g_kernelLanguage->hResModule = hModule;
    return TRUE;
}

BOOL QxLang_UpdateKernelLCID(HQXLANG hLang, DWORD lcid, BOOL)
{
    if (!hLang || !g_kernelLanguage)
        return FALSE;
    constexpr DWORD kEnglish = 1033;
    const DWORD language = lcid ? lcid : kEnglish;
    SwitchLanguage(hLang, language);
    if (g_kernelLanguage != hLang)
        SwitchLanguage(g_kernelLanguage, language);
    SetProcessDefaultLayout(IsRightToLeft(language) ? 1 : 0);
    QxLang_GetInternationals(nullptr, 0);
    return TRUE;
}

BOOL QxLang_UpdateThreadLocale(HQXLANG hLang)
{
    return hLang && SetThreadLanguage(LANGID(LanguageOf(hLang)));
}

DWORD QxLang_GetLCID(HQXLANG hLang)
{
    return hLang ? LanguageOf(hLang) : 0;
}

DWORD QxLang_GetConditionedLCID(DWORD lcid)
{
    constexpr DWORD kChinese = 4, kPortuguese = 22, kTraditional = 0x0404, kSimplified = 0x0804;
    const DWORD primary = Primary(lcid), sub = Sub(lcid);
    if (primary == kChinese)
        return sub == 1 || sub == 3 || sub == 5 ? kTraditional : kSimplified;
    return primary == kPortuguese ? lcid : MakeLanguage(primary, 1);
}

BOOL QxLang_IsLCIDEnglish(DWORD lcid)
{
    constexpr DWORD kEnglish = 9;
    return Primary(lcid) == kEnglish;
}

BOOL QxLang_UseRTL(HQXLANG hLang)
{
    return hLang && IsRightToLeft(LanguageOf(hLang));
}

BOOL QxLang_EnableProcessMirroring()
{
    return SetProcessDefaultLayout(1);
}

BOOL QxLang_DisableProcessMirroring()
{
    return SetProcessDefaultLayout(0);
}

BOOL QxLang_GetLangAbbrev(HQXLANG hLang, WCHAR* pszOut, DWORD cchOut)
{
    if (!pszOut || cchOut == 0)
        return FALSE;
    const DWORD lcid = QxLang_GetConditionedLCID(QxLang_GetLCID(hLang));
    if (GetLocaleInfoW(lcid, LOCALE_SABBREVLANGNAME, pszOut, int(cchOut)) > 0)
        return TRUE;
    pszOut[0] = 0;
    return FALSE;
}

HRESULT QxLang_GetLangllCC(HQXLANG hLang, WCHAR* pszOut, DWORD cchOut)
{
    static constexpr struct {
        DWORD primary;
        const WCHAR* name;
    } kNames[] = {{4, TEXT("zh-CN")},  {7, TEXT("de-DE")},  {10, TEXT("es-ES")}, {12, TEXT("fr-FR")},
                  {17, TEXT("ja-JP")}, {21, TEXT("pl-PL")}, {25, TEXT("ru-RU")}};
    for (const auto& row : kNames)
        if (Primary(QxLang_GetLCID(hLang)) == row.primary)
            return PutAll(pszOut, cchOut, row.name) ? S_OK : QX_E_BUFFER_TOO_SMALL;
    PutAll(pszOut, cchOut, {});
    return S_FALSE;
}

BOOL QxLang_IsNameOrderReversed(HQXLANG hLang)
{
    return QxLang_GetLCID(hLang) == kJapanese;
}

BOOL QxLang_LocalizeUserName(HQXLANG hLang, const WCHAR* pszFirst, const WCHAR* pszLast, WCHAR* pszOut, DWORD cchOut)
{
    if (!pszFirst || !pszLast || !pszOut || cchOut == 0)
        return FALSE;
    const bool reversed = QxLang_IsNameOrderReversed(hLang);
    TextOutput out(pszOut, cchOut - 1);
    const bool fits =
        out.Put(reversed ? pszLast : pszFirst) && out.Put(TEXT(" ")) && out.Put(reversed ? pszFirst : pszLast);
    out.Terminate();
    return fits;
}

void QxSetLangID(const WCHAR* pszCode)
{
    PutAll(g_languageCode, 4, pszCode && *pszCode ? pszCode : TEXT("ENU"));
}

const WCHAR* QxGetLangID()
{
    return g_languageCode;
}

HRESULT OpenKernelLanguage(HINSTANCE hInstance)
{
    if (g_kernelLanguage)
        return S_OK;
    const HRESULT hr = QxLang_Open(&g_kernelLanguage, hInstance, 0, 0);
    if (SUCCEEDED(hr))
        QxLang_GetInternationals(nullptr, 0);
    return hr;
}

void CloseKernelLanguage()
{
    QxLang_Close(g_kernelLanguage);
    g_kernelLanguage = nullptr;
}

HQXLANG KernelLanguage()
{
    return g_kernelLanguage;
}
