// A stream on a file.
#include "platform/handle.h"
#include "platform/native/stream.h"
#include "platform/native/wide_text.h"

#include <shlwapi.h>
#include <windows.h>

#include <cstring>
#include <new>

namespace {

constexpr DWORD kAccessMask = 0x03, kShareMask = 0x70;

HRESULT LastResult()
{
    return HRESULT_FROM_WIN32(GetLastError());
}

class FileStream final : public Stream {
public:
    FileStream(Handle file_, LPCWSTR path_, DWORD mode_) : file(std::move(file_)), path(path_), mode(mode_) {}

    HRESULT Read(void* pv, ULONG cb, ULONG* pcbRead) override
    {
        DWORD read = 0;
        const BOOL good = ReadFile(file.Get(), pv, cb, &read, nullptr);
        if (pcbRead)
            *pcbRead = read;
        return good ? S_OK : LastResult();
    }

    HRESULT Write(const void* pv, ULONG cb, ULONG* pcbWritten) override
    {
        DWORD written = 0;
        const BOOL good = WriteFile(file.Get(), pv, cb, &written, nullptr);
        if (pcbWritten)
            *pcbWritten = written;
        return good ? S_OK : LastResult();
    }

    HRESULT Seek(LARGE_INTEGER move, DWORD dwOrigin, ULARGE_INTEGER* pNewPosition) override
    {
        LARGE_INTEGER position;
        if (!SetFilePointerEx(file.Get(), move, &position, dwOrigin))
            return LastResult();
        if (pNewPosition)
            pNewPosition->QuadPart = ULONGLONG(position.QuadPart);
        return S_OK;
    }

    HRESULT SetSize(ULARGE_INTEGER newSize) override
    {
        LARGE_INTEGER none = {}, before, end;
        end.QuadPart = LONGLONG(newSize.QuadPart);
        if (!SetFilePointerEx(file.Get(), none, &before, FILE_CURRENT) ||
            !SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN))
            return LastResult();
        const HRESULT hr = SetEndOfFile(file.Get()) ? S_OK : LastResult();
        SetFilePointerEx(file.Get(), before, nullptr, FILE_BEGIN);
        return hr;
    }

    HRESULT Commit(DWORD) override { return S_OK; }   // nothing is held back
    HRESULT Revert() override { return E_NOTIMPL; }
    HRESULT Clone(IStream** ppStream) override
    {
        if (ppStream)
            *ppStream = nullptr;
        return E_NOTIMPL;
    }

    HRESULT Stat(STATSTG* pStat, DWORD dwFlags) override
    {
        if (!pStat)
            return STG_E_INVALIDPOINTER;
        *pStat = {};
        LARGE_INTEGER size;
        if (!GetFileSizeEx(file.Get(), &size))
            return LastResult();
        GetFileTime(file.Get(), &pStat->ctime, &pStat->atime, &pStat->mtime);
        pStat->type = STGTY_STREAM;
        pStat->cbSize.QuadPart = ULONGLONG(size.QuadPart);
        pStat->grfMode = mode;
        return dwFlags & STATFLAG_NONAME ? S_OK : CopyName(pStat);
    }

private:
    HRESULT CopyName(STATSTG* pStat) const
    {
        const size_t cb = (path.size() + 1) * sizeof(WCHAR);
        pStat->pwcsName = static_cast<LPOLESTR>(CoTaskMemAlloc(cb));
        if (!pStat->pwcsName)
            return E_OUTOFMEMORY;
        std::memcpy(pStat->pwcsName, path.c_str(), cb);
        return S_OK;
    }

    Handle file;
    WideString path;
    DWORD mode;
};

DWORD AccessOf(DWORD mode)
{
    switch (mode & kAccessMask) {
    case STGM_READ:
        return GENERIC_READ;
    case STGM_WRITE:
        return GENERIC_WRITE;
    default:
        return GENERIC_READ | GENERIC_WRITE;
    }
}

DWORD ShareOf(DWORD mode)
{
    switch (mode & kShareMask) {
    case STGM_SHARE_EXCLUSIVE:
        return 0;
    case STGM_SHARE_DENY_WRITE:
        return FILE_SHARE_READ;
    default:
        return FILE_SHARE_READ | FILE_SHARE_WRITE;
    }
}

// What a mode asks for when the file is there and when it is not.
DWORD DispositionOf(DWORD mode, bool create)
{
    if (mode & STGM_CREATE)
        return CREATE_ALWAYS;
    return create ? CREATE_NEW : OPEN_EXISTING;
}

}   // namespace

HRESULT SHCreateStreamOnFileEx(LPCWSTR pszFile, DWORD dwMode, DWORD dwAttributes, BOOL bCreate, IStream* pReserved,
                               IStream** ppStream)
{
    if (!pszFile || !ppStream || pReserved)
        return E_INVALIDARG;
    *ppStream = nullptr;
    Handle file(CreateFileW(pszFile, AccessOf(dwMode), ShareOf(dwMode), nullptr, DispositionOf(dwMode, bCreate),
                            dwAttributes, nullptr));
    if (!file)
        return LastResult();
    *ppStream = new (std::nothrow) FileStream(std::move(file), pszFile, dwMode);
    return *ppStream ? S_OK : E_OUTOFMEMORY;
}
