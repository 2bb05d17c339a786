#include "platform/media/enum_filters.h"

#include <new>

CEnumFilters::CEnumFilters(std::vector<ComPtr<IBaseFilter>> theFilters, size_t position)
    : filters(std::move(theFilters)), next(position)
{
}

CEnumFilters::~CEnumFilters() = default;

HRESULT CEnumFilters::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (riid == IID_IEnumFilters)
        return GetInterface<IEnumFilters>(this, ppObject);
    return CUnknown::NonDelegatingQueryInterface(riid, ppObject);
}

HRESULT CEnumFilters::Next(ULONG nFilters, IBaseFilter** ppFilters, ULONG* pnFetched)
{
    if (!ppFilters)
        return E_POINTER;
    if (!pnFetched && nFilters > 1)
        return E_INVALIDARG;
    ULONG fetched = 0;
    for (; fetched < nFilters && next < filters.size(); ++fetched)
        ppFilters[fetched] = ComPtr<IBaseFilter>(filters[next++]).Release();
    if (pnFetched)
        *pnFetched = fetched;
    return fetched == nFilters ? S_OK : S_FALSE;
}

HRESULT CEnumFilters::Skip(ULONG nFilters)
{
    if (nFilters > filters.size() - next)
        return S_FALSE;
    next += nFilters;
    return S_OK;
}

HRESULT CEnumFilters::Reset()
{
    next = 0;
    return S_OK;
}

HRESULT CEnumFilters::Clone(IEnumFilters** ppEnum)
try {
    if (!ppEnum)
        return E_POINTER;
    *ppEnum = nullptr;
    *ppEnum = new CEnumFilters(filters, next);
    return S_OK;
} catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
}
