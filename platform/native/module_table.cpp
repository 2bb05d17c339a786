#include "platform/native/module_table.h"

#include "platform/native/module_image.h"
#include "platform/native/path.h"
#include "platform/native/refusal.h"

#include <libloaderapi.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <map>
#include <memory>
#include <mutex>
#include <unistd.h>

namespace {

// Handles of resource files are odd, as those of data files are on the platform; load addresses never are.
constexpr uintptr_t kDataFileMark = 1;

struct ModuleTable {
    std::mutex lock;
    std::map<HMODULE, std::unique_ptr<Module>> modules;
};

// Images announce themselves before main, and withdraw after it: the first one makes the table, which so outlives it.
// Nothing is left behind by a module that is unloaded with its copy of this layer.
ModuleTable& Table()
{
    static ModuleTable table;
    return table;
}

HMODULE ModuleOfAddress(const void* address)
{
    Dl_info info;
    return address && dladdr(address, &info) ? static_cast<HMODULE>(info.dli_fbase) : nullptr;
}

// The linker lists the program first; its headers tell where it is loaded.
HMODULE ProgramHandle()
{
    static const HMODULE program = [] {
        const void* header = nullptr;
        dl_iterate_phdr(
            [](dl_phdr_info* info, size_t, void* out) {
                *static_cast<const void**>(out) = info->dlpi_phdr;
                return 1;
            },
            &header);
        return ModuleOfAddress(header);
    }();
    return program;
}

std::string ProgramPath()
{
    std::string path(PATH_MAX, '\0');
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    path.resize(length > 0 ? size_t(length) : 0);
    return path;
}

std::string RealPath(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : path;
}

// The module at a load address, entered when it is met first.
Module& EnsureLoaded(ModuleTable& table, HMODULE hModule)
{
    std::unique_ptr<Module>& module = table.modules[hModule];
    if (!module) {
        module = std::make_unique<Module>();
        Dl_info info;
        const bool known = hModule != ProgramHandle() && dladdr(hModule, &info);
        module->path = known ? RealPath(info.dli_fname) : ProgramPath();
    }
    return *module;
}

bool IsLoadAddress(HMODULE hModule)
{
    return ModuleOfAddress(hModule) == hModule;
}

bool ReadWhole(const std::string& path, std::vector<BYTE>& bytes)
{
    const std::unique_ptr<FILE, decltype(&std::fclose)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file)
        return false;
    std::array<BYTE, 1 << 16> part;
    while (const size_t read = std::fread(part.data(), 1, part.size(), file.get()))
        bytes.insert(bytes.end(), part.begin(), part.begin() + ptrdiff_t(read));
    return !std::ferror(file.get());
}

HMODULE DataFileHandle(const Module& module)
{
    return reinterpret_cast<HMODULE>(reinterpret_cast<uintptr_t>(&module) | kDataFileMark);
}

HMODULE LoadDataFile(const std::string& path)
{
    auto module = std::make_unique<Module>();
    module->path = RealPath(path);
    module->references = 1;
    if (!ReadWhole(path, module->file))
        return Refuse<HMODULE>(ErrorFromErrno(errno));
    auto image = ResourceImage::Parse(module->file);
    if (!image)
        return Refuse<HMODULE>(ERROR_BAD_EXE_FORMAT);
    module->resources = std::move(*image);
    ModuleTable& table = Table();
    const std::lock_guard guard(table.lock);
    const HMODULE handle = DataFileHandle(*module);
    table.modules.emplace(handle, std::move(module));
    return handle;
}

// Loads and unloads are one after the other; an entry may load further modules.
std::recursive_mutex& LoaderLock()
{
    static std::recursive_mutex lock;
    return lock;
}

bool CallEntry(void* library, HMODULE hModule, DWORD reason)
{
    const auto entry = reinterpret_cast<decltype(&DllMain)>(dlsym(library, "DllMain"));
    return !entry || entry(hModule, reason, nullptr);
}

// One reference more; true for the first.
bool Refer(HMODULE hModule, void* library)
{
    ModuleTable& table = Table();
    const std::lock_guard guard(table.lock);
    Module& module = EnsureLoaded(table, hModule);
    module.library = library;
    return module.references++ == 0;
}

// The linker counts too: each load here has its own reference there. With its last one a module's images withdraw, and
// another may be loaded at its address.
void Close(HMODULE hModule, void* library)
{
    dlclose(library);
    if (IsLoadAddress(hModule))
        return;
    ModuleTable& table = Table();
    const std::lock_guard guard(table.lock);
    table.modules.erase(hModule);
}

HMODULE LoadShared(const std::string& path)
{
    if (path.find('/') != std::string::npos && access(path.c_str(), F_OK) != 0)
        return Refuse<HMODULE>(ERROR_MOD_NOT_FOUND);
    const std::lock_guard loading(LoaderLock());
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    link_map* map = nullptr;
    if (!library || dlinfo(library, RTLD_DI_LINKMAP, &map) != 0)
        return Refuse<HMODULE>(path.find('/') != std::string::npos ? ERROR_BAD_EXE_FORMAT : ERROR_MOD_NOT_FOUND);
    const HMODULE handle = ModuleOfAddress(map->l_ld);
    if (!Refer(handle, library) || CallEntry(library, handle, DLL_PROCESS_ATTACH))
        return handle;
    FreeLibrary(handle);
    return Refuse<HMODULE>(ERROR_DLL_INIT_FAILED);
}

std::string_view FileName(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);   // npos + 1 is 0
}

struct CloseLibrary {
    void operator()(void* p) const { dlclose(p); }
};

struct Search {
    std::string_view wanted;
    HMODULE found;
};

int MatchLoaded(dl_phdr_info* info, size_t, void* context)
{
    Search& search = *static_cast<Search*>(context);
    const std::string_view path = info->dlpi_name;
    if (path.empty() || (search.wanted != path && search.wanted != FileName(path)))
        return 0;
    search.found = ModuleOfAddress(info->dlpi_phdr);
    return 1;
}

}   // namespace

ModuleImage::ModuleImage(const unsigned char* begin, const unsigned char* end) : first(begin)
{
    ModuleTable& table = Table();
    const std::lock_guard guard(table.lock);
    Module& module = EnsureLoaded(table, ModuleOfAddress(begin));
    if (auto image = ResourceImage::Parse({begin, end}))
        module.resources = std::move(*image);
}

ModuleImage::~ModuleImage()
{
    ModuleTable& table = Table();
    const std::lock_guard guard(table.lock);
    table.modules.erase(ModuleOfAddress(first));
}

const Module* FindModule(HMODULE hModule)
{
    const HMODULE wanted = hModule ? hModule : ProgramHandle();
    ModuleTable& table = Table();
    const std::lock_guard guard(table.lock);
    if (const auto found = table.modules.find(wanted); found != table.modules.end())
        return found->second.get();
    return IsLoadAddress(wanted) ? &EnsureLoaded(table, wanted) : nullptr;
}

HMODULE LoadLibraryExW(LPCWSTR pszPath, HANDLE hFile, DWORD dwFlags)
{
    if (!pszPath || !*pszPath || hFile || (dwFlags & ~LOAD_LIBRARY_AS_DATAFILE))
        return Refuse<HMODULE>(ERROR_INVALID_PARAMETER);
    const std::string path = NativePath(pszPath);
    return dwFlags & LOAD_LIBRARY_AS_DATAFILE ? LoadDataFile(path) : LoadShared(path);
}

BOOL FreeLibrary(HMODULE hModule)
{
    const std::lock_guard loading(LoaderLock());
    void* library = nullptr;
    bool last = false;
    {
        ModuleTable& table = Table();
        const std::lock_guard guard(table.lock);
        const auto found = table.modules.find(hModule);
        if (found == table.modules.end() || found->second->references == 0)
            return Refuse(ERROR_INVALID_HANDLE);
        library = found->second->library;
        last = --found->second->references == 0;
        if (last && !library)
            table.modules.erase(found);
    }
    if (library && last)
        CallEntry(library, hModule, DLL_PROCESS_DETACH);
    if (library)
        Close(hModule, library);
    return TRUE;
}

BOOL DisableThreadLibraryCalls(HMODULE hModule)
{
    return IsLoadAddress(hModule) ? TRUE : Refuse(ERROR_INVALID_HANDLE);
}

HMODULE GetModuleHandleW(LPCWSTR pszModule)
{
    if (!pszModule)
        return ProgramHandle();
    const std::string wanted = NativePath(pszModule);
    Search search = {wanted, nullptr};
    dl_iterate_phdr(MatchLoaded, &search);
    return search.found ? search.found : Refuse<HMODULE>(ERROR_MOD_NOT_FOUND);
}

BOOL GetModuleHandleExW(DWORD dwFlags, LPCWSTR pszModule, HMODULE* phModule)
{
    if (!phModule)
        return Refuse(ERROR_INVALID_PARAMETER);
    *phModule = nullptr;
    if (!(dwFlags & GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT))
        return Refuse(ERROR_INVALID_PARAMETER);
    const bool byAddress = dwFlags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
    *phModule = byAddress ? ModuleOfAddress(pszModule) : GetModuleHandleW(pszModule);
    return *phModule ? TRUE : Refuse(ERROR_MOD_NOT_FOUND);
}

DWORD GetModuleFileNameW(HMODULE hModule, LPWSTR pszOut, DWORD cch)
{
    const Module* const module = FindModule(hModule);
    if (!module)
        return Refuse<DWORD>(ERROR_MOD_NOT_FOUND);
    if (!pszOut || cch == 0)
        return Refuse<DWORD>(ERROR_INSUFFICIENT_BUFFER);
    const WideString path = FromUtf8(module->path);
    const size_t fits = std::min(path.size(), size_t(cch) - 1);
    std::memcpy(pszOut, path.data(), fits * sizeof(WCHAR));
    pszOut[fits] = 0;
    return fits == path.size() ? DWORD(fits) : Refuse<DWORD>(ERROR_INSUFFICIENT_BUFFER, cch);
}

FARPROC GetProcAddress(HMODULE hModule, LPCSTR pszName)
{
    const Module* const module = FindModule(hModule);
    if (!module || !pszName)
        return Refuse<FARPROC>(ERROR_INVALID_HANDLE);
    constexpr DWORD kProcedureNotFound = 127;
    const std::unique_ptr<void, CloseLibrary> library(
        dlopen(hModule && hModule != ProgramHandle() ? module->path.c_str() : nullptr, RTLD_NOW | RTLD_NOLOAD));
    void* const symbol = library ? dlsym(library.get(), pszName) : nullptr;
    return symbol ? reinterpret_cast<FARPROC>(symbol) : Refuse<FARPROC>(kProcedureNotFound);
}
