#include "platform/media/media_type.h"

#include <objbase.h>

#include <cstring>
#include <utility>

namespace {

// A stranger's record may tell a length and hold no block.
ULONG FormatSize(const AM_MEDIA_TYPE& type)
{
    return type.pbFormat ? type.cbFormat : 0;
}

BYTE* CopyFormat(const void* source, ULONG size)
{
    auto* const copy = static_cast<BYTE*>(CoTaskMemAlloc(size));
    if (copy)
        std::memcpy(copy, source, size);
    return copy;
}

}   // namespace

HRESULT CopyMediaType(AM_MEDIA_TYPE* pTarget, const AM_MEDIA_TYPE* pSource)
{
    const ULONG size = FormatSize(*pSource);
    BYTE* const format = size > 0 ? CopyFormat(pSource->pbFormat, size) : nullptr;
    if (size > 0 && !format) {
        *pTarget = {};
        return E_OUTOFMEMORY;
    }
    *pTarget = *pSource;
    pTarget->cbFormat = size;
    pTarget->pbFormat = format;
    if (pTarget->pUnk)
        pTarget->pUnk->AddRef();
    return S_OK;
}

void FreeMediaType(AM_MEDIA_TYPE& type)
{
    CoTaskMemFree(type.pbFormat);
    type.cbFormat = 0;
    type.pbFormat = nullptr;
    if (IUnknown* const unknown = std::exchange(type.pUnk, nullptr))
        unknown->Release();
}

AM_MEDIA_TYPE* CreateMediaType(const AM_MEDIA_TYPE* pSource)
{
    auto* const type = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
    if (type && FAILED(CopyMediaType(type, pSource))) {
        CoTaskMemFree(type);
        return nullptr;
    }
    return type;
}

void DeleteMediaType(AM_MEDIA_TYPE* pType)
{
    if (!pType)
        return;
    FreeMediaType(*pType);
    CoTaskMemFree(pType);
}

CMediaType::CMediaType(CMediaType&& other) noexcept
    : AM_MEDIA_TYPE(std::exchange(static_cast<AM_MEDIA_TYPE&>(other), {}))
{
}

CMediaType& CMediaType::operator=(CMediaType&& other) noexcept
{
    std::swap(static_cast<AM_MEDIA_TYPE&>(*this), static_cast<AM_MEDIA_TYPE&>(other));
    return *this;
}

HRESULT CMediaType::Set(const AM_MEDIA_TYPE& type)
{
    CMediaType copy;
    if (const HRESULT hr = CopyMediaType(&copy, &type); FAILED(hr))
        return hr;
    *this = std::move(copy);
    return S_OK;
}

HRESULT CMediaType::SetFormat(const void* pFormat, ULONG size)
{
    BYTE* const copy = CopyFormat(pFormat, size);
    if (!copy)
        return E_OUTOFMEMORY;
    CoTaskMemFree(pbFormat);
    pbFormat = copy;
    cbFormat = size;
    return S_OK;
}

void CMediaType::Reset()
{
    *this = CMediaType();
}

bool CMediaType::operator==(const AM_MEDIA_TYPE& other) const
{
    return majortype == other.majortype && subtype == other.subtype && formattype == other.formattype &&
           FormatSize(*this) == FormatSize(other) &&
           (FormatSize(other) == 0 || std::memcmp(pbFormat, other.pbFormat, cbFormat) == 0);
}

bool CMediaType::MatchesPartial(const AM_MEDIA_TYPE& pattern) const
{
    const auto fits = [](REFGUID asked, REFGUID here) { return asked == GUID_NULL || asked == here; };
    if (!fits(pattern.majortype, majortype) || !fits(pattern.subtype, subtype))
        return false;
    return pattern.formattype == GUID_NULL || *this == pattern;
}
