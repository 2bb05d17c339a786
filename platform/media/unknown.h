// Reference counting, identity and aggregation of components. Every object counts towards its module, which can be
// unloaded when none is left.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <atomic>

class CUnknown {
public:
    // outer: the object that this one becomes a part of, not referenced; null when it stands alone. The creator owns the
    // first reference.
    explicit CUnknown(IUnknown* outer = nullptr);
    CUnknown(const CUnknown&) = delete;
    CUnknown& operator=(const CUnknown&) = delete;

    // The object's own answer, whatever it is a part of. E_POINTER for a null ppObject, else E_NOINTERFACE with null.
    virtual HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject);
    ULONG NonDelegatingAddRef();
    ULONG NonDelegatingRelease();   // deletes the object with the last reference

    // Who answers for identity and lifetime: the outer object, or this one's inner unknown.
    IUnknown* GetOwner() const { return owner; }
    // What an outer object holds: the only unknown that does not delegate to it.
    IUnknown* GetInner() { return &inner; }

    static LONG ObjectsActive();   // of this module

protected:
    virtual ~CUnknown();

private:
    class Inner final : public IUnknown {
    public:
        explicit Inner(CUnknown* theObject) : object(theObject) {}
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppObject) override
        {
            return object->NonDelegatingQueryInterface(riid, ppObject);
        }
        ULONG STDMETHODCALLTYPE AddRef() override { return object->NonDelegatingAddRef(); }
        ULONG STDMETHODCALLTYPE Release() override { return object->NonDelegatingRelease(); }

    private:
        CUnknown* object;
    };

    Inner inner{this};
    IUnknown* owner;
    std::atomic<ULONG> references = 1;
};

// The three operations of a class that has interfaces besides CUnknown.
#define DECLARE_IUNKNOWN                                                                                               \
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppObject) override                                    \
    {                                                                                                                  \
        return GetOwner()->QueryInterface(riid, ppObject);                                                             \
    }                                                                                                                  \
    ULONG STDMETHODCALLTYPE AddRef() override                                                                          \
    {                                                                                                                  \
        return GetOwner()->AddRef();                                                                                   \
    }                                                                                                                  \
    ULONG STDMETHODCALLTYPE Release() override                                                                         \
    {                                                                                                                  \
        return GetOwner()->Release();                                                                                  \
    }

// Hands out one of the object's interfaces with a reference.
template <class Interface>
HRESULT GetInterface(Interface* p, void** ppObject)
{
    if (!ppObject)
        return E_POINTER;
    p->AddRef();
    *ppObject = p;
    return S_OK;
}
