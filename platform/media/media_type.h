// Media types and the memory behind them.
#pragma once

#include <windows.h>

#include <dshow.h>

// The block is CoTaskMemAlloc's. A copy is whole, or E_OUTOFMEMORY and empty.
HRESULT CopyMediaType(AM_MEDIA_TYPE* pTarget, const AM_MEDIA_TYPE* pSource);   // what the target held is not freed
void FreeMediaType(AM_MEDIA_TYPE& type);                                       // the contents
AM_MEDIA_TYPE* CreateMediaType(const AM_MEDIA_TYPE* pSource);                  // null without memory
void DeleteMediaType(AM_MEDIA_TYPE* pType);                                    // the record too; null is accepted

// A media type that owns its contents.
class CMediaType : public AM_MEDIA_TYPE {
public:
    CMediaType() : AM_MEDIA_TYPE{} {}
    CMediaType(CMediaType&& other) noexcept;
    CMediaType& operator=(CMediaType&& other) noexcept;
    ~CMediaType() { FreeMediaType(*this); }

    // On failure the former contents stay.
    HRESULT Set(const AM_MEDIA_TYPE& type);
    HRESULT SetFormat(const void* pFormat, ULONG cbFormat);
    void Reset();

    bool operator==(const AM_MEDIA_TYPE& other) const;
    bool operator==(const CMediaType& other) const { return *this == static_cast<const AM_MEDIA_TYPE&>(other); }

    // Null ids stand for "any".
    bool IsPartiallySpecified() const { return majortype == GUID_NULL || formattype == GUID_NULL; }
    bool MatchesPartial(const AM_MEDIA_TYPE& pattern) const;
};
