// The interfaces of automated parameters. The slots of IMediaParams stand here in the platform's order, in which hosts call
// them: MinGW's header has them in that of their names.
#pragma once

#ifdef _WIN32
#define __IMediaParams_INTERFACE_DEFINED__   // leaves it out there
#include <medparam.h>

DEFINE_GUID(IID_IMediaParams, 0x6D6CBB61, 0xA223, 0x44AA, 0x84, 0x2F, 0xA2, 0xF0, 0x67, 0x50, 0xBE, 0x6E);

MIDL_INTERFACE("6D6CBB61-A223-44AA-842F-A2F06750BE6E")
IMediaParams : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetParam(DWORD dwParamIndex, MP_DATA * pValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetParam(DWORD dwParamIndex, MP_DATA value) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddEnvelope(DWORD dwParamIndex, DWORD cSegments,
                                                  MP_ENVELOPE_SEGMENT * pSegments) = 0;
    virtual HRESULT STDMETHODCALLTYPE FlushEnvelope(DWORD dwParamIndex, REFERENCE_TIME refTimeStart,
                                                    REFERENCE_TIME refTimeEnd) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetTimeFormat(GUID guidTimeFormat, MP_TIMEDATA mpTimeData) = 0;
};
#else
#include <medparam.h>
#endif
