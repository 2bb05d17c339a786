// Any bytes as a compiled resource file: the walk in memory, and the same bytes as a language module.

#include "kernel/lang_resource.h"

#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

#include <string>

namespace {

volatile BYTE g_sink;

void Touch(const void* data, DWORD cb)
{
    const auto* const bytes = static_cast<const BYTE*>(data);
    for (DWORD i = 0; i < cb; ++i)
        g_sink = bytes[i];
}

void WalkPool(const uint8_t* data, size_t size)
{
    const _QXRESPOOL pool = {DWORD(size), data};
    const WCHAR* const types[] = {MAKEINTRESOURCEW(5), MAKEINTRESOURCEW(6), TEXT("PNG")};
    const WCHAR* const names[] = {MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(100), TEXT("NAMED")};
    for (const WCHAR* const type : types)
        for (const WCHAR* const name : names)
            for (const DWORD lcid : {DWORD(0), DWORD(0x0407)}) {
                DWORD cb = 0, language = 0;
                if (const void* const found = QxFindResourceInResPool(&pool, &cb, name, type, lcid, &language))
                    Touch(found, cb);
            }
}

BOOL AddLanguage(HMODULE module, LPCWSTR type, LPCWSTR name, WORD language, LONG_PTR)
{
    if (const HRSRC found = FindResourceExW(module, type, name, language))
        Touch(LockResource(LoadResource(module, found)), SizeofResource(module, found));
    return TRUE;
}

BOOL AddName(HMODULE module, LPCWSTR type, LPWSTR name, LONG_PTR)
{
    return EnumResourceLanguagesW(module, type, name, AddLanguage, 0);
}

BOOL AddType(HMODULE module, LPWSTR type, LONG_PTR)
{
    return EnumResourceNamesW(module, type, AddName, 0);
}

// The bytes as a file that is loaded as a language module; null when they are none.
class LoadedModule {
public:
    LoadedModule(const uint8_t* data, size_t size) : file(memfd_create("module", 0))
    {
        const std::string path = "/proc/self/fd/" + std::to_string(file);
        const std::basic_string<WCHAR> wide(path.begin(), path.end());
        if (write(file, data, size) == ssize_t(size))
            module = LoadLibraryExW(wide.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    }
    ~LoadedModule()
    {
        if (module)
            FreeLibrary(module);
        close(file);
    }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    HMODULE Get() const { return module; }

private:
    const int file;
    HMODULE module = nullptr;
};

void ReadStrings(HMODULE module)
{
    HQXLANG lang = nullptr;
    if (FAILED(QxLang_Open(&lang, module, 0x0407, 0)))
        return;
    lang->bUseResModule = TRUE;
    WCHAR text[64];
    for (UINT id = 0; id < 40; ++id)
        QxLoadString(lang, id, text, 64);
    QxLang_Close(lang);
}

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    WalkPool(data, size);
    const LoadedModule module(data, size);
    if (module.Get()) {
        EnumResourceTypesW(module.Get(), AddType, 0);
        ReadStrings(module.Get());
    }
    return 0;
}
