#include "tools/plugin_module.h"

#include "aplugins/qxvantor/vantor_setup.h"
#include "tools/failure.h"
#include "tools/wide_text.h"

#include <unknwn.h>

namespace {

using GetClassObjectCall = HRESULT(STDMETHODCALLTYPE*)(REFCLSID, REFIID, void**);

// From the program's folder.
constexpr const char* kPlaces[] = {QX_MODULE_NAME, QX_INSTALLED_MODULE};

std::string ProgramFolder()
{
    std::basic_string<WCHAR> path(32768, 0);   // no path of the platform is longer
    path.resize(GetModuleFileNameW(nullptr, path.data(), DWORD(path.size())));
    const std::string narrow = Utf8(path);
    return narrow.substr(0, narrow.find_last_of("/\\") + 1);
}

}   // namespace

PluginModule::PluginModule()
{
    std::string tried;
    for (const char* const place : kPlaces) {
        const std::string path = ProgramFolder() + place;
        module = LoadLibraryExW(Wide(path).c_str(), nullptr, 0);
        if (module)
            return;
        const DWORD error = GetLastError();
        if (error != DWORD(ERROR_MOD_NOT_FOUND))
            throw DataFailure(path + ": cannot be loaded, error " + std::to_string(error));
        tried += (tried.empty() ? "" : " and ") + path;
    }
    throw DataFailure("the plug-in was found neither as " + tried);
}

PluginModule::~PluginModule()
{
    FreeLibrary(module);
}

ComPtr<IBaseFilter> PluginModule::CreateFilter() const
{
    // By way of a plain pointer: the function has another type than every function is looked up as.
    const auto call =
        reinterpret_cast<GetClassObjectCall>(reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
    void* found = nullptr;
    if (!call || FAILED(call(CLSID_QxVantor, IID_IClassFactory, &found)))
        throw DataFailure("the plug-in's module does not offer the filter");
    const ComPtr<IClassFactory> factory(static_cast<IClassFactory*>(found));
    if (FAILED(factory->CreateInstance(nullptr, IID_IBaseFilter, &found)))
        throw DataFailure("the filter could not be made; memory may be short");
    return ComPtr<IBaseFilter>(static_cast<IBaseFilter*>(found));
}
