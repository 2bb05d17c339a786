#include "kernel/lang_resource.h"

#include "kernel/lang_access.h"
#include "kernel/result.h"
#include "kernel/text_output.h"

#include <memory>

namespace {

struct Place {
    HMODULE module = nullptr;
    HRSRC resource = nullptr;
};

Place FindByRule(HQXLANG lang, const WCHAR* name, const WCHAR* type)
{
    if (!lang)
        return {};
    if (lang->hResModule && lang->bUseResModule)
        if (const HRSRC found = FindInLanguage(lang->hResModule, type, name, LanguageOf(lang)))
            return {lang->hResModule, found};
    const HRSRC found = FindResourceW(lang->hInstance, name, type);
    return found ? Place{lang->hInstance, found} : Place{};
}

struct CloseFile {
    using pointer = HANDLE;
    void operator()(HANDLE file) const { CloseHandle(file); }
};
using FilePtr = std::unique_ptr<HANDLE, CloseFile>;

HRESULT WriteFileWhole(const WCHAR* path, const void* data, DWORD size)
{
    const HANDLE opened =
        CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        return QX_E_FILE_OPEN;
    const FilePtr file(opened);
    DWORD written = 0;
    const bool whole = WriteFile(file.get(), data, size, &written, nullptr) && written == size;
    return whole && SetEndOfFile(file.get()) ? S_OK : QX_E_FILE_WRITE;
}

struct LanguageNames {
    TextOutput out;
    bool fits = true;
};

BOOL CALLBACK AddLanguageName(HMODULE, const WCHAR*, const WCHAR*, WORD language, LONG_PTR context)
{
    auto& names = *reinterpret_cast<LanguageNames*>(context);
    WCHAR abbreviation[8];
    if (GetLocaleInfoW(language, LOCALE_SABBREVLANGNAME, abbreviation, 8) <= 0)
        return TRUE;
    const WideView separator = names.out.Length() > 0 ? TEXT(",") : TEXT("");
    names.fits = names.out.Room() >= separator.size() + WideView(abbreviation).size();
    if (names.fits) {
        names.out.Put(separator);
        names.out.Put(abbreviation);
    }
    return names.fits;
}

}   // namespace

HRSRC QxFindResource(HQXLANG hLang, const WCHAR* pszName, const WCHAR* pszType)
{
    return FindByRule(hLang, pszName, pszType).resource;
}

HRSRC QxFindResourceMulti(HQXLANG hLang, const WCHAR* pszName, const WCHAR* const* ppszTypes, int32_t nTypes,
                          int32_t* pnIndex)
{
    int32_t index = -1;
    HRSRC found = nullptr;
    const bool ownModule = hLang && hLang->hResModule && hLang->bUseResModule;
    for (int32_t i = 0; ownModule && !found && i < nTypes; ++i)
        if ((found = FindInLanguage(hLang->hResModule, ppszTypes[i], pszName, LanguageOf(hLang))) != nullptr)
            index = i;
    for (int32_t i = 0; hLang && !found && i < nTypes; ++i)
        if ((found = FindResourceW(hLang->hInstance, pszName, ppszTypes[i])) != nullptr)
            index = i;
    if (pnIndex)
        *pnIndex = index;
    return found;
}

HINSTANCE QxFindResInstance(HQXLANG hLang, const WCHAR* pszName, const WCHAR* pszType)
{
    return FindByRule(hLang, pszName, pszType).module;
}

HGLOBAL QxLoadResource(HQXLANG hLang, const WCHAR* pszName, const WCHAR* pszType)
{
    const Place place = FindByRule(hLang, pszName, pszType);
    return place.resource ? LoadResource(place.module, place.resource) : nullptr;
}

DWORD QxSizeofResource(HQXLANG hLang, const WCHAR* pszName, const WCHAR* pszType)
{
    const Place place = FindByRule(hLang, pszName, pszType);
    return place.resource ? SizeofResource(place.module, place.resource) : 0;
}

HGLOBAL QxLoadResourceCustom(HQXLANG hLang, const WCHAR* pszName, const WCHAR* pszType)
{
    constexpr DWORD kEnglish = 1033;
    if (!hLang)
        return nullptr;
    HRSRC found = nullptr;
    if (hLang->hResModule && hLang->bUseResModule)
        found = FindInLanguage(hLang->hResModule, pszType, pszName, LanguageOf(hLang));
    if (found)
        return LoadResource(hLang->hResModule, found);
    found = hLang->hInstance == hLang->hResModule ? FindInLanguage(hLang->hInstance, pszType, pszName, kEnglish)
                                                  : FindResourceW(hLang->hInstance, pszName, pszType);
    return found ? LoadResource(hLang->hInstance, found) : nullptr;
}

BOOL QxEnumResourceLanguages(HQXLANG hLang, UINT nId, WCHAR* pszOut, DWORD cchOut)
{
    constexpr WORD kVersion = 16;
    if (!pszOut || cchOut == 0)
        return FALSE;
    LanguageNames names = {TextOutput(pszOut, cchOut - 1)};
    if (hLang)
        EnumResourceLanguagesW(hLang->hResModule, MAKEINTRESOURCEW(kVersion), MAKEINTRESOURCEW(nId), AddLanguageName,
                               reinterpret_cast<LONG_PTR>(&names));
    names.out.Terminate();
    return names.fits && names.out.Length() > 0;
}

HRESULT QxExtractResourceToFile(HQXLANG hLang, const WCHAR* pszName, const WCHAR* pszType, const WCHAR* pszPath)
{
    if (!pszPath)
        return E_INVALIDARG;
    const Place place = FindByRule(hLang, pszName, pszType);
    if (!place.resource)
        return QX_E_NOT_FOUND;
    const void* const data = LockResource(LoadResource(place.module, place.resource));
    const DWORD size = SizeofResource(place.module, place.resource);
    return data && size > 0 ? WriteFileWhole(pszPath, data, size) : E_UNEXPECTED;
}
