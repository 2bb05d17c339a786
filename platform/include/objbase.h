// Memory of the component model, and the stream over a block of the global heap.
#pragma once

#include <objidl.h>

// Of what a module exports.
#define STDAPI extern "C" __attribute__((visibility("default"))) HRESULT

// What a module of components exports.
STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppObject);
STDAPI DllCanUnloadNow();

LPVOID CoTaskMemAlloc(SIZE_T cb);
LPVOID CoTaskMemRealloc(LPVOID p, SIZE_T cb);
void CoTaskMemFree(LPVOID p);   // null is accepted

// A stream over a movable block, or over a new one when hGlobal is null. It grows the block as it is written. The block
// is freed with the last reference when bDeleteOnRelease is set, and its owner frees it otherwise.
HRESULT CreateStreamOnHGlobal(HGLOBAL hGlobal, BOOL bDeleteOnRelease, IStream** ppStream);
HRESULT GetHGlobalFromStream(IStream* pStream, HGLOBAL* phGlobal);   // E_INVALIDARG for other streams
