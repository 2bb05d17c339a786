// The user's choice of language in the registry, and what an 8-bit text tells of its language.

#include "kernel/lang_access.h"
#include "kernel/print.h"
#include "kernel/result.h"

#include <algorithm>
#include <array>
#include <memory>

namespace {

constexpr WCHAR kCompany[] = TEXT("Ostrel"), kValueName[] = TEXT("ULangID");
constexpr DWORD kKeyChars = 260;

struct LanguageKey {
    WCHAR path[kKeyChars];
    bool valid;
};

LanguageKey MakeKey(const WCHAR* company, const WCHAR* application, DWORD version)
{
    LanguageKey key = {{}, false};
    if (!company || !application)
        return key;
    const int major = int(version >> 24), minor = int(version >> 16 & 0xFF);
    const HRESULT hr =
        major == 0 ? QxCchPrintF(key.path, kKeyChars, nullptr, TEXT("Software\\%s\\%s\\Lang"), company, application)
                   : QxCchPrintF(key.path, kKeyChars, nullptr, TEXT("Software\\%s\\%s\\%d.%d\\Lang"), company,
                                 application, major, minor);
    key.valid = SUCCEEDED(hr);
    return key;
}

struct CloseKey {
    using pointer = HKEY;
    void operator()(HKEY key) const { RegCloseKey(key); }
};
using KeyPtr = std::unique_ptr<HKEY, CloseKey>;

bool ReadLanguage(HKEY hive, const LanguageKey& key, DWORD* lcid)
{
    HKEY opened = nullptr;
    if (RegOpenKeyExW(hive, key.path, 0, KEY_READ, &opened) != ERROR_SUCCESS)
        return false;
    const KeyPtr owner(opened);
    DWORD type = 0, value = 0, size = sizeof value;
    if (RegQueryValueExW(opened, kValueName, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size) != ERROR_SUCCESS)
        return false;
    if (type != REG_DWORD || size != sizeof value)
        return false;
    *lcid = value & 0xFFFF;
    return true;
}

BOOL LoadChoice(const LanguageKey& key, DWORD* lcid)
{
    return lcid && key.valid &&
           (ReadLanguage(HKEY_CURRENT_USER, key, lcid) || ReadLanguage(HKEY_LOCAL_MACHINE, key, lcid));
}

BOOL SaveChoice(const LanguageKey& key, DWORD lcid)
{
    HKEY created = nullptr;
    if (!key.valid || RegCreateKeyExW(HKEY_CURRENT_USER, key.path, 0, nullptr, 0, KEY_WRITE, nullptr, &created,
                                      nullptr) != ERROR_SUCCESS)
        return FALSE;
    const KeyPtr owner(created);
    const DWORD value = lcid & 0xFFFF;
    return RegSetValueExW(created, kValueName, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value) ==
           ERROR_SUCCESS;
}

}   // namespace

BOOL QxLang_LoadUserLCIDMetric(const WCHAR* pszApplication, DWORD dwVersion, DWORD* pLcid, BOOL bIgnoreVersion)
{
    return LoadChoice(MakeKey(kCompany, pszApplication, bIgnoreVersion ? 0 : dwVersion), pLcid);
}

BOOL QxLang_SaveUserLCIDMetric(const WCHAR* pszApplication, DWORD dwVersion, DWORD lcid, BOOL bIgnoreVersion)
{
    return SaveChoice(MakeKey(kCompany, pszApplication, bIgnoreVersion ? 0 : dwVersion), lcid);
}

BOOL QxLang_LoadUserLCIDMetricAppReg(const WCHAR* pszApplication, DWORD dwVersion, DWORD* pLcid,
                                     const WCHAR* pszCompany)
{
    return LoadChoice(MakeKey(pszCompany, pszApplication, dwVersion), pLcid);
}

BOOL QxLang_SaveUserLCIDMetricAppReg(const WCHAR* pszApplication, DWORD dwVersion, DWORD lcid, const WCHAR* pszCompany)
{
    return SaveChoice(MakeKey(pszCompany, pszApplication, dwVersion), lcid);
}

BOOL DetectDoubleByte(UINT codePage, const char* pText, DWORD cb)
{
    CPINFO info = {};
    if (!pText || cb < 2 || !GetCPInfo(codePage, &info) || info.MaxCharSize != 2)
        return FALSE;
    for (DWORD i = 0; i + 1 < cb; ++i)
        if (IsDBCSLeadByteEx(codePage, BYTE(pText[i])) && pText[i + 1] != 0)
            return TRUE;
    return FALSE;
}

BOOL QxLang_DetectMultiByteCharacters(const char* pText, DWORD cb)
{
    return DetectDoubleByte(GetACP(), pText, cb);
}

HRESULT ChooseCodePage(std::span<const CodePageCandidate> candidates, DWORD* pCodePage)
{
    constexpr int kSure = 100, kWhole = 100;   // percent
    const CodePageCandidate* best = nullptr;
    for (const CodePageCandidate& candidate : candidates)
        if (candidate.confidence == kSure && (!best || candidate.documentPercent > best->documentPercent))
            best = &candidate;
    const bool whole = best && best->documentPercent == kWhole;
    *pCodePage = whole ? best->codePage : 0;
    return whole ? S_OK : QX_E_CODEPAGE_UNSURE;
}

HRESULT QxLang_DetectPossibleCodepage(const char* pText, DWORD cb, DWORD* pCodePage)
{
    constexpr int kCandidates = 10;
    if (!pCodePage)
        return E_INVALIDARG;
    std::array<CodePageCandidate, kCandidates> candidates;
    const int found = pText && cb > 0 ? DetectCodePages(pText, cb, candidates.data(), kCandidates) : 0;
    return ChooseCodePage({candidates.data(), size_t(found)}, pCodePage);
}
