// The module through the platform's component runtime, which finds it in the registry by the filter's class id.
#include "aplugins/qxvantor/vantor_setup.h"
#include "platform/com_ptr.h"

#include <windows.h>

#include <dshow.h>
#include <medparam.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

using Text = std::basic_string<WCHAR>;

Text ClassKey()
{
    std::array<WCHAR, 40> id;
    StringFromGUID2(CLSID_QxVantor, id.data(), int(id.size()));
    return TEXT("CLSID\\") + Text(id.data());
}

// The registration of the class, as long as the object lives.
class Registration {
public:
    explicit Registration(const Text& path)
    {
        HKEY key = nullptr;
        const Text server = ClassKey() + TEXT("\\InprocServer32");
        EXPECT_EQ(
            RegCreateKeyExW(HKEY_CLASSES_ROOT, server.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
            ERROR_SUCCESS);
        Set(key, nullptr, path);
        Set(key, TEXT("ThreadingModel"), TEXT("Both"));
        RegCloseKey(key);
    }
    ~Registration() { RegDeleteTreeW(HKEY_CLASSES_ROOT, ClassKey().c_str()); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

private:
    static void Set(HKEY key, const WCHAR* name, const Text& value)
    {
        EXPECT_EQ(RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                                 DWORD((value.size() + 1) * sizeof(WCHAR))),
                  ERROR_SUCCESS);
    }
};

Text ModulePath()
{
    std::array<WCHAR, MAX_PATH> path = {};
    const HMODULE module = LoadLibraryExW(TEXT(QX_MODULE), nullptr, 0);
    EXPECT_NE(GetModuleFileNameW(module, path.data(), DWORD(path.size())), 0u);
    FreeLibrary(module);
    return path.data();
}

TEST(ComponentRuntime, CreatesTheFilterByItsClassId)
{
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
    {
        const Registration registration(ModulePath());
        ComPtr<IBaseFilter> filter;
        ASSERT_EQ(CoCreateInstance(CLSID_QxVantor, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                   reinterpret_cast<void**>(filter.Out())),
                  S_OK);
        ComPtr<IPin> pin;
        EXPECT_EQ(filter->FindPin(TEXT("In"), pin.Out()), S_OK);
        const auto info = Query<IMediaParamInfo>(filter.Get(), IID_IMediaParamInfo);
        ASSERT_TRUE(bool(info));
        DWORD count = 0;
        EXPECT_EQ(info->GetParamCount(&count), S_OK);
        EXPECT_GT(count, 0u);
    }
    CoUninitialize();
}

}   // namespace
