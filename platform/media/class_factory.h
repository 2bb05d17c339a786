// What a module offers by class id, and the factory that makes it.
#pragma once

#include "platform/media/setup_data.h"
#include "platform/media/unknown.h"

#include <span>

// One class of a module.
struct CFactoryTemplate {
    const WCHAR* m_Name;
    const CLSID* m_ClsID;
    // Makes an object with one reference, a part of pOuter when that is not null; null and a failure otherwise.
    CUnknown* (*m_lpfnNew)(IUnknown* pOuter, HRESULT* phr);
    const AMOVIESETUP_FILTER* m_pAMovieSetup_Filter;   // null: no filter
};

class CClassFactory final : public CUnknown, public IClassFactory {
public:
    explicit CClassFactory(const CFactoryTemplate& theEntry) : entry(theEntry) {}
    DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override;

    // E_POINTER, E_INVALIDARG for another interface than IUnknown with an outer object, what the class answers, or
    // E_NOINTERFACE. *ppObject is null then.
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pOuter, REFIID riid, void** ppObject) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL bLock) override;

    static bool IsLocked();   // the module, by LockServer

private:
    ~CClassFactory() override;

    const CFactoryTemplate& entry;
};

// What a module answers its loader: the factory of a class, CLASS_E_CLASSNOTAVAILABLE for others; and S_OK once no object
// and no lock is left, S_FALSE until then.
HRESULT GetClassObject(std::span<const CFactoryTemplate> table, REFCLSID rclsid, REFIID riid, void** ppObject);
HRESULT CanUnloadNow();
