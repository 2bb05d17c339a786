// Streams, and what tells its class.
#pragma once

#include <unknwn.h>

inline constexpr DWORD STREAM_SEEK_SET = 0;
inline constexpr DWORD STREAM_SEEK_CUR = 1;
inline constexpr DWORD STREAM_SEEK_END = 2;
inline constexpr DWORD STATFLAG_DEFAULT = 0;
inline constexpr DWORD STATFLAG_NONAME = 1;
inline constexpr DWORD STGTY_STREAM = 2;
inline constexpr DWORD STGC_DEFAULT = 0;

inline constexpr DWORD STGM_READ = 0x00;
inline constexpr DWORD STGM_WRITE = 0x01;
inline constexpr DWORD STGM_READWRITE = 0x02;
inline constexpr DWORD STGM_SHARE_EXCLUSIVE = 0x10;
inline constexpr DWORD STGM_SHARE_DENY_WRITE = 0x20;
inline constexpr DWORD STGM_SHARE_DENY_NONE = 0x40;
inline constexpr DWORD STGM_CREATE = 0x1000;
inline constexpr DWORD STGM_FAILIFTHERE = 0x00;

struct STATSTG {
    LPOLESTR pwcsName;   // from CoTaskMemAlloc, the caller frees it; null with STATFLAG_NONAME
    DWORD type;
    ULARGE_INTEGER cbSize;
    FILETIME mtime, ctime, atime;
    DWORD grfMode;
    DWORD grfLocksSupported;
    CLSID clsid;
    DWORD grfStateBits;
    DWORD reserved;
};

class IPersist : public IUnknown {
public:
    virtual HRESULT GetClassID(CLSID* pClassId) = 0;

protected:
    ~IPersist() = default;
};

class ISequentialStream : public IUnknown {
public:
    // Reading at the end gives S_OK and fewer bytes, perhaps none. The counts may be null.
    virtual HRESULT Read(void* pv, ULONG cb, ULONG* pcbRead) = 0;
    virtual HRESULT Write(const void* pv, ULONG cb, ULONG* pcbWritten) = 0;

protected:
    ~ISequentialStream() = default;
};

class IStream : public ISequentialStream {
public:
    virtual HRESULT Seek(LARGE_INTEGER move, DWORD dwOrigin, ULARGE_INTEGER* pNewPosition) = 0;
    virtual HRESULT SetSize(ULARGE_INTEGER newSize) = 0;
    virtual HRESULT CopyTo(IStream* pTo, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead, ULARGE_INTEGER* pcbWritten) = 0;
    virtual HRESULT Commit(DWORD dwFlags) = 0;
    virtual HRESULT Revert() = 0;
    virtual HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER cb, DWORD dwType) = 0;
    virtual HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER cb, DWORD dwType) = 0;
    virtual HRESULT Stat(STATSTG* pStat, DWORD dwFlags) = 0;
    virtual HRESULT Clone(IStream** ppStream) = 0;   // the same bytes, a position of its own

protected:
    ~IStream() = default;
};

// An object that keeps its state in a stream, at the stream's position.
class IPersistStream : public IPersist {
public:
    virtual HRESULT IsDirty() = 0;   // S_OK: changed since it was saved, else S_FALSE
    virtual HRESULT Load(IStream* pStream) = 0;
    virtual HRESULT Save(IStream* pStream, BOOL bClearDirty) = 0;
    virtual HRESULT GetSizeMax(ULARGE_INTEGER* pcbSize) = 0;   // bytes

protected:
    ~IPersistStream() = default;
};

inline constexpr IID IID_IPersist = {0x0000010C, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IPersistStream = {0x00000109, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_ISequentialStream = {
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
inline constexpr IID IID_IStream = {0x0000000C, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
