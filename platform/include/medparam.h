// Parameters of media objects that a host automates.
#pragma once

#include <unknwn.h>

using REFERENCE_TIME = LONGLONG;   // ticks of 100 ns
using MP_TIMEDATA = DWORD;
using MP_CAPS = DWORD;   // the curves that a parameter can follow, a bit each
using MP_FLAGS = DWORD;
using MP_DATA = float;

enum MP_TYPE { MPT_INT = 0, MPT_FLOAT = 1, MPT_BOOL = 2, MPT_ENUM = 3, MPT_MAX = 4 };

enum MP_CURVE_TYPE {
    MP_CURVE_JUMP = 0x01,
    MP_CURVE_LINEAR = 0x02,
    MP_CURVE_SQUARE = 0x04,
    MP_CURVE_INVSQUARE = 0x08,
    MP_CURVE_SINE = 0x10,
};

struct MP_PARAMINFO {
    MP_TYPE mpType;
    MP_CAPS mopCaps;
    MP_DATA mpdMinValue;
    MP_DATA mpdMaxValue;
    MP_DATA mpdNeutralValue;
    WCHAR szUnitText[32];
    WCHAR szLabel[32];
};

// A curve from valStart at rtStart to valEnd at rtEnd.
struct MP_ENVELOPE_SEGMENT {
    REFERENCE_TIME rtStart;
    REFERENCE_TIME rtEnd;
    MP_DATA valStart;
    MP_DATA valEnd;
    MP_CURVE_TYPE iCurve;
    MP_FLAGS flags;
};

class IMediaParamInfo : public IUnknown {
public:
    virtual HRESULT GetParamCount(DWORD* pdwParams) = 0;
    virtual HRESULT GetParamInfo(DWORD dwParamIndex, MP_PARAMINFO* pInfo) = 0;
    // Texts one behind the other, each with its terminator, and one terminator more; from CoTaskMemAlloc.
    virtual HRESULT GetParamText(DWORD dwParamIndex, WCHAR** ppwchText) = 0;
    virtual HRESULT GetNumTimeFormats(DWORD* pdwNumTimeFormats) = 0;
    virtual HRESULT GetSupportedTimeFormat(DWORD dwFormatIndex, GUID* pguidTimeFormat) = 0;
    virtual HRESULT GetCurrentTimeFormat(GUID* pguidTimeFormat, MP_TIMEDATA* pTimeData) = 0;

protected:
    ~IMediaParamInfo() = default;
};

class IMediaParams : public IUnknown {
public:
    virtual HRESULT GetParam(DWORD dwParamIndex, MP_DATA* pValue) = 0;
    virtual HRESULT SetParam(DWORD dwParamIndex, MP_DATA value) = 0;
    virtual HRESULT AddEnvelope(DWORD dwParamIndex, DWORD cSegments, MP_ENVELOPE_SEGMENT* pSegments) = 0;
    virtual HRESULT FlushEnvelope(DWORD dwParamIndex, REFERENCE_TIME refTimeStart, REFERENCE_TIME refTimeEnd) = 0;
    virtual HRESULT SetTimeFormat(GUID guidTimeFormat, MP_TIMEDATA mpTimeData) = 0;

protected:
    ~IMediaParams() = default;
};

inline constexpr IID IID_IMediaParamInfo = {
    0x6D6CBB60, 0xA223, 0x44AA, {0x84, 0x2F, 0xA2, 0xF0, 0x67, 0x50, 0xBE, 0x6D}};
inline constexpr IID IID_IMediaParams = {
    0x6D6CBB61, 0xA223, 0x44AA, {0x84, 0x2F, 0xA2, 0xF0, 0x67, 0x50, 0xBE, 0x6E}};
