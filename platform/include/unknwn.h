// The root of the component model. Implementations delete themselves in the last Release, so no interface has a public
// destructor to call.
#pragma once

#include <guiddef.h>
#include <winerror.h>

class IUnknown {
public:
    virtual HRESULT QueryInterface(REFIID riid, void** ppObject) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;   // gives the references that remain

protected:
    ~IUnknown() = default;
};

class IClassFactory : public IUnknown {
public:
    // With an outer unknown the object becomes part of it and riid must be IID_IUnknown; see CLASS_E_NOAGGREGATION.
    virtual HRESULT CreateInstance(IUnknown* pOuter, REFIID riid, void** ppObject) = 0;
    virtual HRESULT LockServer(BOOL bLock) = 0;

protected:
    ~IClassFactory() = default;
};

inline constexpr IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IClassFactory = {0x00000001, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
