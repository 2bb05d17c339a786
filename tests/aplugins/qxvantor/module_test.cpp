// The module as a host has it: loaded, asked for its classes, unloaded.
#include "aplugins/qxvantor/param_table.h"
#include "aplugins/qxvantor/prop2.h"
#include "aplugins/qxvantor/vantor_setup.h"
#include "platform/com_ptr.h"
#include "platform/media/class_factory.h"
#include "platform/media/media_params.h"

#include <objbase.h>

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr WCHAR kPath[] = TEXT(QX_MODULE);

class LoadedModule {
public:
    LoadedModule() : handle(LoadLibraryExW(kPath, nullptr, 0)) { EXPECT_NE(handle, nullptr) << GetLastError(); }
    ~LoadedModule() { EXPECT_TRUE(FreeLibrary(handle)); }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    template <class Call>
    Call* Export(const char* name) const
    {
        return reinterpret_cast<Call*>(reinterpret_cast<void*>(GetProcAddress(handle, name)));
    }
    HRESULT GetClassObject(REFCLSID rclsid, REFIID riid, void** ppObject) const
    {
        return Export<decltype(DllGetClassObject)>("DllGetClassObject")(rclsid, riid, ppObject);
    }
    HRESULT CanUnload() const { return Export<decltype(DllCanUnloadNow)>("DllCanUnloadNow")(); }
    ComPtr<IClassFactory> Factory() const
    {
        void* factory = nullptr;
        EXPECT_EQ(GetClassObject(CLSID_QxVantor, IID_IClassFactory, &factory), S_OK);
        return ComPtr<IClassFactory>(static_cast<IClassFactory*>(factory));
    }

    const HMODULE handle;
};

TEST(PlugInModule, OffersTheFilterByItsClassId)
{
    const LoadedModule module;
    const ComPtr<IClassFactory> factory = module.Factory();
    void* object = nullptr;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IBaseFilter, &object), S_OK);
    const ComPtr<IBaseFilter> filter(static_cast<IBaseFilter*>(object));
    CLSID id = {};
    EXPECT_EQ(filter->GetClassID(&id), S_OK);
    EXPECT_TRUE(id == CLSID_QxVantor);
    for (const IID& iid : {IID_IQxVantorProp2, IID_IMediaParams, IID_IMediaParamInfo, IID_IPersistStream})
        EXPECT_TRUE(bool(Query<IUnknown>(filter.Get(), iid))) << iid.Data1;
}

// Hosts were compiled against the platform's own headers: parameters are read and set by the fourth and fifth slot.
TEST(PlugInModule, HasItsParametersInThePlatformsSlots)
{
    const LoadedModule module;
    void* object = nullptr;
    ASSERT_EQ(module.Factory()->CreateInstance(nullptr, IID_IMediaParams, &object), S_OK);
    const ComPtr<IUnknown> params(static_cast<IUnknown*>(object));
    using Get = HRESULT(STDMETHODCALLTYPE*)(void*, DWORD, MP_DATA*);
    using Set = HRESULT(STDMETHODCALLTYPE*)(void*, DWORD, MP_DATA);
    void** const slots = *static_cast<void***>(object);
    EXPECT_EQ(reinterpret_cast<Set>(slots[4])(object, kParamPitch, 3.0f), S_OK);
    MP_DATA value = 0.0f;
    EXPECT_EQ(reinterpret_cast<Get>(slots[3])(object, kParamPitch, &value), S_OK);
    EXPECT_EQ(value, 3.0f);
}

TEST(PlugInModule, RefusesWhatItHasNot)
{
    const LoadedModule module;
    void* object = &object;
    EXPECT_EQ(module.GetClassObject(IID_IStream, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    object = &object;
    EXPECT_EQ(module.GetClassObject(CLSID_QxVantor, IID_IStream, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(module.GetClassObject(CLSID_QxVantor, IID_IClassFactory, nullptr), E_POINTER);
    EXPECT_EQ(module.Factory()->CreateInstance(nullptr, IID_IStream, &object), E_NOINTERFACE);
    EXPECT_EQ(GetProcAddress(module.handle, "QxKernel_EarlyInitialize"), nullptr);   // only what hosts call is exported
}

TEST(PlugInModule, CanBeUnloadedOnceNothingIsInUse)
{
    const LoadedModule module;
    EXPECT_EQ(module.CanUnload(), S_OK);
    {
        const ComPtr<IClassFactory> factory = module.Factory();
        EXPECT_EQ(module.CanUnload(), S_FALSE);
        EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    }
    EXPECT_EQ(module.CanUnload(), S_FALSE);
    ComPtr<IUnknown> filter;
    ASSERT_EQ(module.Factory()->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(filter.Out())), S_OK);
    EXPECT_EQ(module.Factory()->LockServer(FALSE), S_OK);
    EXPECT_EQ(module.CanUnload(), S_FALSE);
    filter = {};
    EXPECT_EQ(module.CanUnload(), S_OK);
}

// Its language tables are opened with it and closed with it, again and again.
TEST(PlugInModule, BringsItsTextsEachTimeItIsLoaded)
{
    for (int round = 0; round < 3; ++round) {
        const LoadedModule module;
        ComPtr<IMediaParamInfo> info;
        ASSERT_EQ(module.Factory()->CreateInstance(nullptr, IID_IMediaParamInfo, reinterpret_cast<void**>(info.Out())),
                  S_OK);
        MP_PARAMINFO param = {};
        ASSERT_EQ(info->GetParamInfo(0, &param), S_OK);
        EXPECT_NE(param.szLabel[0], 0);
        WCHAR* text = nullptr;
        ASSERT_EQ(info->GetParamText(0, &text), S_OK);
        EXPECT_GT(std::basic_string<WCHAR>(text).size(), 4u);
        CoTaskMemFree(text);
    }
    EXPECT_EQ(GetModuleHandleW(kPath), nullptr);   // nothing holds it any more
}

}   // namespace
