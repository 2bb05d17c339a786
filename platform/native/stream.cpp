#include "platform/native/stream.h"

#include <algorithm>
#include <array>
#include <cstdlib>

LPVOID CoTaskMemAlloc(SIZE_T cb)
{
    return std::malloc(std::max<SIZE_T>(cb, 1));
}

LPVOID CoTaskMemRealloc(LPVOID p, SIZE_T cb)
{
    if (cb > 0 || !p)
        return std::realloc(p, std::max<SIZE_T>(cb, 1));
    std::free(p);
    return nullptr;
}

void CoTaskMemFree(LPVOID p)
{
    std::free(p);
}

HRESULT Stream::QueryInterface(REFIID riid, void** ppObject)
{
    if (!ppObject)
        return E_POINTER;
    const bool known = riid == IID_IUnknown || riid == IID_ISequentialStream || riid == IID_IStream;
    *ppObject = known ? static_cast<IStream*>(this) : nullptr;
    if (known)
        AddRef();
    return known ? S_OK : E_NOINTERFACE;
}

ULONG Stream::Release()
{
    const ULONG remaining = --references;
    if (remaining == 0)
        delete this;
    return remaining;
}

HRESULT Stream::CopyTo(IStream* pTo, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead, ULARGE_INTEGER* pcbWritten)
{
    if (!pTo)
        return STG_E_INVALIDPOINTER;
    std::array<BYTE, 4096> part;
    ULONGLONG read = 0, written = 0;
    HRESULT hr = S_OK;
    while (SUCCEEDED(hr) && read < cb.QuadPart) {
        ULONG got = 0, put = 0;
        hr = Read(part.data(), ULONG(std::min<ULONGLONG>(part.size(), cb.QuadPart - read)), &got);
        read += got;
        if (FAILED(hr) || got == 0)
            break;
        hr = pTo->Write(part.data(), got, &put);
        written += put;
    }
    if (pcbRead)
        pcbRead->QuadPart = read;
    if (pcbWritten)
        pcbWritten->QuadPart = written;
    return FAILED(hr) ? hr : S_OK;
}

HRESULT Stream::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD)
{
    return STG_E_INVALIDFUNCTION;   // no stream of ours has regions to lock
}

HRESULT Stream::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD)
{
    return STG_E_INVALIDFUNCTION;
}

bool MovedPosition(ULONGLONG base, LONGLONG distance, ULONGLONG& position)
{
    const ULONGLONG magnitude = distance < 0 ? 0 - ULONGLONG(distance) : ULONGLONG(distance);
    if (distance < 0 ? magnitude > base : magnitude > ULONGLONG(INT64_MAX) - std::min<ULONGLONG>(base, INT64_MAX))
        return false;
    position = distance < 0 ? base - magnitude : base + magnitude;
    return true;
}
