#include "platform/media/class_factory.h"

#include "platform/com_ptr.h"

#include <algorithm>
#include <new>

namespace {

std::atomic<LONG> g_locks = 0;

}   // namespace

CClassFactory::~CClassFactory() = default;

HRESULT CClassFactory::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (riid == IID_IClassFactory)
        return GetInterface<IClassFactory>(this, ppObject);
    return CUnknown::NonDelegatingQueryInterface(riid, ppObject);
}

// An outer object gets the inner unknown, which alone does not delegate back to it.
HRESULT CClassFactory::CreateInstance(IUnknown* pOuter, REFIID riid, void** ppObject)
{
    if (!ppObject)
        return E_POINTER;
    *ppObject = nullptr;
    if (pOuter && riid != IID_IUnknown)
        return E_INVALIDARG;
    HRESULT hr = S_OK;
    CUnknown* const object = entry.m_lpfnNew(pOuter, &hr);
    if (!object)
        return FAILED(hr) ? hr : E_OUTOFMEMORY;
    const ComPtr<IUnknown> first(object->GetInner());
    return FAILED(hr) ? hr : object->NonDelegatingQueryInterface(riid, ppObject);
}

HRESULT CClassFactory::LockServer(BOOL bLock)
{
    g_locks += bLock ? 1 : -1;
    return S_OK;
}

bool CClassFactory::IsLocked()
{
    return g_locks != 0;
}

HRESULT GetClassObject(std::span<const CFactoryTemplate> table, REFCLSID rclsid, REFIID riid, void** ppObject)
{
    if (!ppObject)
        return E_POINTER;
    *ppObject = nullptr;
    const auto entry = std::ranges::find_if(table, [&](const CFactoryTemplate& t) { return *t.m_ClsID == rclsid; });
    if (entry == table.end())
        return CLASS_E_CLASSNOTAVAILABLE;
    auto* const factory = new (std::nothrow) CClassFactory(*entry);
    if (!factory)
        return E_OUTOFMEMORY;
    const ComPtr<IUnknown> first(factory->GetInner());
    return factory->NonDelegatingQueryInterface(riid, ppObject);
}

HRESULT CanUnloadNow()
{
    return CUnknown::ObjectsActive() == 0 && !CClassFactory::IsLocked() ? S_OK : S_FALSE;
}
