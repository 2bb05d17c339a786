// The filters of a graph as they stood when the enumerator was made.
#pragma once

#include "platform/com_ptr.h"
#include "platform/media/unknown.h"

#include <dshow.h>

#include <vector>

class CEnumFilters final : public CUnknown, public IEnumFilters {
public:
    CEnumFilters(std::vector<ComPtr<IBaseFilter>> theFilters, size_t position);
    DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override;

    HRESULT Next(ULONG nFilters, IBaseFilter** ppFilters, ULONG* pnFetched) override;
    HRESULT Skip(ULONG nFilters) override;
    HRESULT Reset() override;
    HRESULT Clone(IEnumFilters** ppEnum) override;

private:
    ~CEnumFilters() override;

    std::vector<ComPtr<IBaseFilter>> filters;
    size_t next;
};
