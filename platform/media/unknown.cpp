#include "platform/media/unknown.h"

namespace {

std::atomic<LONG> g_objects = 0;

// While the destructor runs, references come and go without deleting the object once more.
constexpr ULONG kDying = 1u << 30;

}   // namespace

CUnknown::CUnknown(IUnknown* outer) : owner(outer ? outer : &inner)
{
    ++g_objects;
}

CUnknown::~CUnknown()
{
    --g_objects;
}

LONG CUnknown::ObjectsActive()
{
    return g_objects;
}

HRESULT CUnknown::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (!ppObject)
        return E_POINTER;
    *ppObject = nullptr;
    return riid == IID_IUnknown ? GetInterface<IUnknown>(&inner, ppObject) : E_NOINTERFACE;
}

ULONG CUnknown::NonDelegatingAddRef()
{
    return ++references;
}

ULONG CUnknown::NonDelegatingRelease()
{
    const ULONG remaining = --references;
    if (remaining == 0) {
        references = kDying;
        delete this;
    }
    return remaining;
}
