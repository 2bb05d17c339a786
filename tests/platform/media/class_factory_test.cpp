// How a module's classes are made, alone and as a part of another object.
#include "platform/media/class_factory.h"
#include "tests/platform/media/streams.h"

#include <gtest/gtest.h>

namespace {

class Part final : public CUnknown, public IPersist {
public:
    explicit Part(IUnknown* outer) : CUnknown(outer) {}
    DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override
    {
        return riid == IID_IPersist ? GetInterface<IPersist>(this, ppObject)
                                    : CUnknown::NonDelegatingQueryInterface(riid, ppObject);
    }
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClassId) override
    {
        *pClassId = kTestClass;
        return S_OK;
    }

private:
    ~Part() override = default;
};

// Holds a part's inner unknown and answers for its interface.
class Whole final : public CUnknown {
public:
    Whole() = default;
    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override
    {
        return riid == IID_IPersist ? part->QueryInterface(riid, ppObject)
                                    : CUnknown::NonDelegatingQueryInterface(riid, ppObject);
    }
    ComPtr<IUnknown> part;

private:
    ~Whole() override = default;
};

constexpr CLSID kBrokenClass = {1, 2, 3, {4}};
const CFactoryTemplate kTable[] = {
    {TEXT("part"), &kTestClass, [](IUnknown* outer, HRESULT*) -> CUnknown* { return new Part(outer); }, nullptr},
    {TEXT("broken"), &kBrokenClass,
     [](IUnknown*, HRESULT* phr) -> CUnknown* {
         *phr = E_ACCESSDENIED;
         return nullptr;
     },
     nullptr},
};

ComPtr<IClassFactory> Factory(REFCLSID classId)
{
    void* p = nullptr;
    EXPECT_EQ(GetClassObject(kTable, classId, IID_IClassFactory, &p), S_OK);
    return ComPtr<IClassFactory>(static_cast<IClassFactory*>(p));
}

TEST(ClassFactory, MakesWhatTheTableHolds)
{
    void* p = &p;
    EXPECT_EQ(GetClassObject(kTable, GUID_NULL, IID_IClassFactory, &p), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(p, nullptr);
    EXPECT_EQ(GetClassObject(kTable, kTestClass, IID_IPin, &p), E_NOINTERFACE);
    EXPECT_EQ(Factory(kBrokenClass)->CreateInstance(nullptr, IID_IUnknown, &p), E_ACCESSDENIED);
    const auto factory = Factory(kTestClass);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPin, &p), E_NOINTERFACE);
    EXPECT_EQ(p, nullptr);
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IPersist, &p), S_OK);
    const ComPtr<IPersist> part(static_cast<IPersist*>(p));
    CLSID id{};
    EXPECT_EQ(part->GetClassID(&id), S_OK);
    EXPECT_EQ(id, kTestClass);
    EXPECT_EQ(Query<IPersist>(part.Get(), IID_IPersist).Get(), part.Get());
}

TEST(ClassFactory, MakesAPartOfAnotherObject)
{
    const auto factory = Factory(kTestClass);
    auto* const whole = new Whole;
    const ComPtr<IUnknown> identity(whole->GetInner());
    void* p = nullptr;
    EXPECT_EQ(factory->CreateInstance(identity.Get(), IID_IPersist, &p), E_INVALIDARG);
    ASSERT_EQ(factory->CreateInstance(identity.Get(), IID_IUnknown, &p), S_OK);
    whole->part = ComPtr<IUnknown>(static_cast<IUnknown*>(p));
    const auto persist = Query<IPersist>(identity.Get(), IID_IPersist);
    ASSERT_TRUE(persist);
    EXPECT_EQ(Query<IUnknown>(persist.Get(), IID_IUnknown).Get(), identity.Get());   // one object to the outside
}

TEST(ClassFactory, HoldsTheModuleWhileAnythingIsLeft)
{
    EXPECT_EQ(CanUnloadNow(), S_OK);
    {
        const auto factory = Factory(kTestClass);
        EXPECT_EQ(CanUnloadNow(), S_FALSE);
        factory->LockServer(TRUE);
    }
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
    Factory(kTestClass)->LockServer(FALSE);
    EXPECT_EQ(CanUnloadNow(), S_OK);
}

}   // namespace
