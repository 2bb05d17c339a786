// Finding and giving out the resources of a module.
#include "platform/native/locale_name.h"
#include "platform/native/module_table.h"
#include "platform/native/refusal.h"

#include <libloaderapi.h>
#include <winuser.h>

#include <algorithm>
#include <cstring>
#include <functional>

namespace {

using Entries = std::vector<const ResourceEntry*>;

Entries Matching(const Module& module, const ResourceId& type, const ResourceId& name)
{
    Entries found;
    for (const auto& entry : module.resources.entries)
        if (entry.type == type && entry.name == name)
            found.push_back(&entry);
    return found;
}

const ResourceEntry* InLanguage(const Entries& entries, LANGID language)
{
    const auto found = std::ranges::find(entries, language, [](const ResourceEntry* e) { return e->language; });
    return found == entries.end() ? nullptr : *found;
}

LANGID Primary(LANGID language)
{
    return MAKELANGID(PRIMARYLANGID(language), SUBLANG_NEUTRAL);
}

const ResourceEntry* BestLanguage(const Entries& entries, LANGID asked)
{
    std::vector<LANGID> order = {asked, Primary(asked), 0};
    if (PRIMARYLANGID(asked) == LANG_NEUTRAL) {
        const LANGID user = LANGID(GetUserDefaultLangID()), system = LANGIDFROMLCID(GetSystemDefaultLCID());
        if (SUBLANGID(asked) != SUBLANG_SYS_DEFAULT)
            order.insert(order.end(), {LANGIDFROMLCID(GetThreadLocale()), user, Primary(user)});
        order.insert(order.end(), {system, Primary(system), MAKELANGID(LANG_ENGLISH, SUBLANG_DEFAULT)});
    }
    for (const LANGID language : order)
        if (const ResourceEntry* const entry = InLanguage(entries, language))
            return entry;
    return PRIMARYLANGID(asked) == LANG_NEUTRAL ? entries.front() : nullptr;
}

const Module* ModuleWithResources(HMODULE hModule)
{
    const Module* const module = FindModule(hModule);
    if (!module)
        return Refuse<const Module*>(ERROR_INVALID_HANDLE);
    return module->resources.entries.empty() ? Refuse<const Module*>(ERROR_RESOURCE_DATA_NOT_FOUND) : module;
}

DWORD NotFound(const Module& module, const ResourceId& type)
{
    const bool typeThere =
        std::ranges::find(module.resources.entries, type, &ResourceEntry::type) != module.resources.entries.end();
    return typeThere ? ERROR_RESOURCE_NAME_NOT_FOUND : ERROR_RESOURCE_TYPE_NOT_FOUND;
}

// The ids in the platform's order, each once: texts in their order, then numbers.
std::vector<ResourceId> Distinct(const Module& module, const std::function<const ResourceId*(const ResourceEntry&)>& id)
{
    std::vector<ResourceId> ids;
    for (const auto& entry : module.resources.entries)
        if (const ResourceId* const found = id(entry); found && std::ranges::find(ids, *found) == ids.end())
            ids.push_back(*found);
    std::ranges::sort(ids, [](const ResourceId& a, const ResourceId& b) {
        if (a.text.empty() != b.text.empty())
            return b.text.empty();
        return a.text.empty() ? a.number < b.number : a.text < b.text;
    });
    return ids;
}

LPWSTR AsArgument(ResourceId& id)
{
    return id.text.empty() ? MAKEINTRESOURCEW(id.number) : id.text.data();
}

// The counted text of an id in the block of sixteen that holds it; empty when there is none.
WideView StringInBlock(std::span<const BYTE> block, UINT index)
{
    size_t at = 0;
    for (;; --index) {
        WORD length;
        if (block.size() - at < sizeof length)
            return {};
        std::memcpy(&length, block.data() + at, sizeof length);
        at += sizeof length;
        if ((block.size() - at) / sizeof(WCHAR) < length)
            return {};
        if (index == 0)
            return {reinterpret_cast<const WCHAR*>(block.data() + at), length};
        at += length * sizeof(WCHAR);
    }
}

}   // namespace

HRSRC FindResourceExW(HMODULE hModule, LPCWSTR pszType, LPCWSTR pszName, WORD wLanguage)
{
    const Module* const module = ModuleWithResources(hModule);
    if (!module)
        return nullptr;
    const ResourceId type = MakeResourceId(pszType);
    const Entries entries = Matching(*module, type, MakeResourceId(pszName));
    if (entries.empty())
        return Refuse<HRSRC>(NotFound(*module, type));
    const ResourceEntry* const entry = BestLanguage(entries, wLanguage);
    if (!entry)
        return Refuse<HRSRC>(ERROR_RESOURCE_LANG_NOT_FOUND);
    return reinterpret_cast<HRSRC>(const_cast<ResourceEntry*>(entry));
}

HRSRC FindResourceW(HMODULE hModule, LPCWSTR pszName, LPCWSTR pszType)
{
    return FindResourceExW(hModule, pszType, pszName, MAKELANGID(LANG_NEUTRAL, SUBLANG_NEUTRAL));
}

HGLOBAL LoadResource(HMODULE, HRSRC hResource)
{
    if (!hResource)
        return nullptr;
    return const_cast<BYTE*>(reinterpret_cast<const ResourceEntry*>(hResource)->data.data());
}

LPVOID LockResource(HGLOBAL hResource)
{
    return hResource;
}

DWORD SizeofResource(HMODULE, HRSRC hResource)
{
    return hResource ? DWORD(reinterpret_cast<const ResourceEntry*>(hResource)->data.size()) : 0;
}

BOOL EnumResourceTypesW(HMODULE hModule, ENUMRESTYPEPROCW pCall, LONG_PTR lParam)
{
    const Module* const module = ModuleWithResources(hModule);
    if (!module)
        return FALSE;
    for (ResourceId& type : Distinct(*module, [](const ResourceEntry& e) { return &e.type; }))
        if (!pCall(hModule, AsArgument(type), lParam))
            return FALSE;
    return TRUE;
}

BOOL EnumResourceNamesW(HMODULE hModule, LPCWSTR pszType, ENUMRESNAMEPROCW pCall, LONG_PTR lParam)
{
    const Module* const module = ModuleWithResources(hModule);
    if (!module)
        return FALSE;
    const ResourceId type = MakeResourceId(pszType);
    auto names = Distinct(*module, [&type](const ResourceEntry& e) { return e.type == type ? &e.name : nullptr; });
    if (names.empty())
        return Refuse(ERROR_RESOURCE_TYPE_NOT_FOUND);
    for (ResourceId& name : names)
        if (!pCall(hModule, pszType, AsArgument(name), lParam))
            return FALSE;
    return TRUE;
}

BOOL EnumResourceLanguagesW(HMODULE hModule, LPCWSTR pszType, LPCWSTR pszName, ENUMRESLANGPROCW pCall, LONG_PTR lParam)
{
    const Module* const module = ModuleWithResources(hModule);
    if (!module)
        return FALSE;
    const ResourceId type = MakeResourceId(pszType);
    Entries entries = Matching(*module, type, MakeResourceId(pszName));
    if (entries.empty())
        return Refuse(NotFound(*module, type));
    std::ranges::sort(entries, {}, [](const ResourceEntry* e) { return e->language; });
    for (const ResourceEntry* const entry : entries)
        if (!pCall(hModule, pszType, pszName, entry->language, lParam))
            return FALSE;
    return TRUE;
}

int LoadStringW(HINSTANCE hInstance, UINT nId, LPWSTR psz, int cch)
{
    constexpr UINT kBlock = 16;
    if (!psz)
        return 0;
    const HRSRC block = FindResourceExW(hInstance, RT_STRING, MAKEINTRESOURCEW(nId / kBlock + 1), LANG_NEUTRAL);
    const WideView text =
        block ? StringInBlock(reinterpret_cast<const ResourceEntry*>(block)->data, nId % kBlock) : WideView();
    if (cch == 0) {
        const WCHAR* const inPlace = text.empty() ? nullptr : text.data();
        std::memcpy(psz, &inPlace, sizeof inPlace);
        return int(text.size());
    }
    const size_t fits = std::min(text.size(), size_t(cch) - 1);
    std::copy_n(text.data(), fits, psz);
    psz[fits] = 0;
    return int(fits);
}
