// The streaming interfaces: filters, pins, allocators, samples, and the graph that they stand in.
#pragma once

#include <objidl.h>

using REFERENCE_TIME = LONGLONG;   // ticks of 100 ns
using HEVENT = DWORD_PTR;
using HSEMAPHORE = DWORD_PTR;

inline constexpr int MAX_PIN_NAME = 128;   // characters, the terminator included
inline constexpr int MAX_FILTER_NAME = 128;

class IBaseFilter;
class IEnumFilters;
class IEnumMediaTypes;
class IEnumPins;
class IFilterGraph;
class IMemAllocator;

enum PIN_DIRECTION { PINDIR_INPUT = 0, PINDIR_OUTPUT = 1 };
enum FILTER_STATE { State_Stopped = 0, State_Paused = 1, State_Running = 2 };

// The format block comes from CoTaskMemAlloc and belongs to the type, as does the reference in pUnk.
struct AM_MEDIA_TYPE {
    GUID majortype;
    GUID subtype;
    BOOL bFixedSizeSamples;
    BOOL bTemporalCompression;
    ULONG lSampleSize;   // bytes, with bFixedSizeSamples
    GUID formattype;
    IUnknown* pUnk;
    ULONG cbFormat;
    BYTE* pbFormat;
};

struct ALLOCATOR_PROPERTIES {
    LONG cBuffers;
    LONG cbBuffer;   // bytes, without the prefix
    LONG cbAlign;    // of what follows the prefix; a power of two
    LONG cbPrefix;   // bytes in front of what GetPointer gives
};

struct PIN_INFO {
    IBaseFilter* pFilter;   // a reference that the caller releases; may be null
    PIN_DIRECTION dir;
    WCHAR achName[MAX_PIN_NAME];
};

struct FILTER_INFO {
    WCHAR achName[MAX_FILTER_NAME];
    IFilterGraph* pGraph;   // a reference that the caller releases; may be null
};

enum QualityMessageType { Famine = 0, Flood = 1 };

struct Quality {
    QualityMessageType Type;
    LONG Proportion;       // in thousandths of the present rate
    REFERENCE_TIME Late;   // negative: early
    REFERENCE_TIME TimeStamp;
};

inline constexpr DWORD AM_GBF_NOWAIT = 4;   // GetBuffer gives VFW_E_TIMEOUT instead of waiting

// ---- samples and allocators ------------------------------------------------------------------------------------------

class IMediaSample : public IUnknown {
public:
    virtual HRESULT GetPointer(BYTE** ppBuffer) = 0;
    virtual LONG GetSize() = 0;
    // VFW_S_NO_STOP_TIME when only the start is known, the end then being one tick later; VFW_E_SAMPLE_TIME_NOT_SET.
    virtual HRESULT GetTime(REFERENCE_TIME* pStart, REFERENCE_TIME* pEnd) = 0;
    virtual HRESULT SetTime(REFERENCE_TIME* pStart, REFERENCE_TIME* pEnd) = 0;   // null: not known
    virtual HRESULT IsSyncPoint() = 0;                                           // S_OK or S_FALSE
    virtual HRESULT SetSyncPoint(BOOL bSyncPoint) = 0;
    virtual HRESULT IsPreroll() = 0;
    virtual HRESULT SetPreroll(BOOL bPreroll) = 0;
    virtual LONG GetActualDataLength() = 0;
    virtual HRESULT SetActualDataLength(LONG cb) = 0;   // VFW_E_BUFFER_OVERFLOW beyond the size
    // S_FALSE and null when the type has not changed; otherwise a copy that the caller deletes.
    virtual HRESULT GetMediaType(AM_MEDIA_TYPE** ppType) = 0;
    virtual HRESULT SetMediaType(AM_MEDIA_TYPE* pType) = 0;
    virtual HRESULT IsDiscontinuity() = 0;
    virtual HRESULT SetDiscontinuity(BOOL bDiscontinuity) = 0;
    virtual HRESULT GetMediaTime(LONGLONG* pStart, LONGLONG* pEnd) = 0;   // VFW_E_MEDIA_TIME_NOT_SET
    virtual HRESULT SetMediaTime(LONGLONG* pStart, LONGLONG* pEnd) = 0;

protected:
    ~IMediaSample() = default;
};

class IMemAllocator : public IUnknown {
public:
    // Not while committed or while buffers are out. *pActual receives what is granted.
    virtual HRESULT SetProperties(ALLOCATOR_PROPERTIES* pRequest, ALLOCATOR_PROPERTIES* pActual) = 0;
    virtual HRESULT GetProperties(ALLOCATOR_PROPERTIES* pProperties) = 0;
    virtual HRESULT Commit() = 0;
    virtual HRESULT Decommit() = 0;   // ends every wait in GetBuffer
    // Waits for a buffer; VFW_E_NOT_COMMITTED when the allocator is not or no longer committed.
    virtual HRESULT GetBuffer(IMediaSample** ppBuffer, REFERENCE_TIME* pStart, REFERENCE_TIME* pEnd, DWORD dwFlags) = 0;
    virtual HRESULT ReleaseBuffer(IMediaSample* pBuffer) = 0;   // for a sample's last Release alone

protected:
    ~IMemAllocator() = default;
};

// ---- pins ------------------------------------------------------------------------------------------------------------

class IPin : public IUnknown {
public:
    virtual HRESULT Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pType) = 0;
    virtual HRESULT ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pType) = 0;
    virtual HRESULT Disconnect() = 0;   // of this pin; the peer is told by whoever disconnects
    virtual HRESULT ConnectedTo(IPin** ppPin) = 0;
    virtual HRESULT ConnectionMediaType(AM_MEDIA_TYPE* pType) = 0;
    virtual HRESULT QueryPinInfo(PIN_INFO* pInfo) = 0;
    virtual HRESULT QueryDirection(PIN_DIRECTION* pDirection) = 0;
    virtual HRESULT QueryId(LPWSTR* ppszId) = 0;   // from CoTaskMemAlloc
    virtual HRESULT QueryAccept(const AM_MEDIA_TYPE* pType) = 0;
    virtual HRESULT EnumMediaTypes(IEnumMediaTypes** ppEnum) = 0;
    virtual HRESULT QueryInternalConnections(IPin** ppPins, ULONG* pnPins) = 0;
    virtual HRESULT EndOfStream() = 0;
    virtual HRESULT BeginFlush() = 0;
    virtual HRESULT EndFlush() = 0;
    virtual HRESULT NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) = 0;

protected:
    ~IPin() = default;
};

class IMemInputPin : public IUnknown {
public:
    virtual HRESULT GetAllocator(IMemAllocator** ppAllocator) = 0;
    virtual HRESULT NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) = 0;
    virtual HRESULT GetAllocatorRequirements(ALLOCATOR_PROPERTIES* pProperties) = 0;   // E_NOTIMPL: none
    // S_FALSE while flushing, VFW_E_WRONG_STATE when stopped.
    virtual HRESULT Receive(IMediaSample* pSample) = 0;
    virtual HRESULT ReceiveMultiple(IMediaSample** ppSamples, LONG nSamples, LONG* pnProcessed) = 0;
    virtual HRESULT ReceiveCanBlock() = 0;   // S_OK or S_FALSE

protected:
    ~IMemInputPin() = default;
};

class IEnumPins : public IUnknown {
public:
    virtual HRESULT Next(ULONG nPins, IPin** ppPins, ULONG* pnFetched) = 0;
    virtual HRESULT Skip(ULONG nPins) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumPins** ppEnum) = 0;

protected:
    ~IEnumPins() = default;
};

class IEnumMediaTypes : public IUnknown {
public:
    virtual HRESULT Next(ULONG nTypes, AM_MEDIA_TYPE** ppTypes, ULONG* pnFetched) = 0;
    virtual HRESULT Skip(ULONG nTypes) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumMediaTypes** ppEnum) = 0;

protected:
    ~IEnumMediaTypes() = default;
};

// ---- filters and the graph -------------------------------------------------------------------------------------------

class IReferenceClock : public IUnknown {
public:
    virtual HRESULT GetTime(REFERENCE_TIME* pTime) = 0;
    virtual HRESULT AdviseTime(REFERENCE_TIME base, REFERENCE_TIME stream, HEVENT hEvent, DWORD_PTR* pdwCookie) = 0;
    virtual HRESULT AdvisePeriodic(REFERENCE_TIME start, REFERENCE_TIME period, HSEMAPHORE hSemaphore,
                                   DWORD_PTR* pdwCookie) = 0;
    virtual HRESULT Unadvise(DWORD_PTR dwCookie) = 0;

protected:
    ~IReferenceClock() = default;
};

class IMediaFilter : public IPersist {
public:
    virtual HRESULT Stop() = 0;
    virtual HRESULT Pause() = 0;
    virtual HRESULT Run(REFERENCE_TIME tStart) = 0;
    virtual HRESULT GetState(DWORD dwMilliseconds, FILTER_STATE* pState) = 0;
    virtual HRESULT SetSyncSource(IReferenceClock* pClock) = 0;
    virtual HRESULT GetSyncSource(IReferenceClock** ppClock) = 0;

protected:
    ~IMediaFilter() = default;
};

class IBaseFilter : public IMediaFilter {
public:
    virtual HRESULT EnumPins(IEnumPins** ppEnum) = 0;
    virtual HRESULT FindPin(LPCWSTR pszId, IPin** ppPin) = 0;
    virtual HRESULT QueryFilterInfo(FILTER_INFO* pInfo) = 0;
    virtual HRESULT JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pszName) = 0;   // null: leave it
    virtual HRESULT QueryVendorInfo(LPWSTR* ppszInfo) = 0;

protected:
    ~IBaseFilter() = default;
};

inline constexpr ULONG AM_FILTER_MISC_FLAGS_IS_RENDERER = 1;

// What a graph needs to know of a filter besides its pins: it waits for the end of the stream at each renderer.
class IAMFilterMiscFlags : public IUnknown {
public:
    virtual ULONG GetMiscFlags() = 0;

protected:
    ~IAMFilterMiscFlags() = default;
};

class IEnumFilters : public IUnknown {
public:
    virtual HRESULT Next(ULONG nFilters, IBaseFilter** ppFilters, ULONG* pnFetched) = 0;
    virtual HRESULT Skip(ULONG nFilters) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumFilters** ppEnum) = 0;

protected:
    ~IEnumFilters() = default;
};

class IFilterGraph : public IUnknown {
public:
    virtual HRESULT AddFilter(IBaseFilter* pFilter, LPCWSTR pszName) = 0;   // VFW_S_DUPLICATE_NAME: renamed
    virtual HRESULT RemoveFilter(IBaseFilter* pFilter) = 0;
    virtual HRESULT EnumFilters(IEnumFilters** ppEnum) = 0;
    virtual HRESULT FindFilterByName(LPCWSTR pszName, IBaseFilter** ppFilter) = 0;
    virtual HRESULT ConnectDirect(IPin* pOut, IPin* pIn, const AM_MEDIA_TYPE* pType) = 0;   // null: negotiate
    virtual HRESULT Reconnect(IPin* pPin) = 0;
    virtual HRESULT Disconnect(IPin* pPin) = 0;

protected:
    ~IFilterGraph() = default;
};

class IGraphBuilder : public IFilterGraph {
public:
    virtual HRESULT Connect(IPin* pOut, IPin* pIn) = 0;

protected:
    ~IGraphBuilder() = default;
};

// The parameters of an event: texts and references among them belong to whoever takes the event.
class IMediaEventSink : public IUnknown {
public:
    virtual HRESULT Notify(LONG nCode, LONG_PTR nParam1, LONG_PTR nParam2) = 0;

protected:
    ~IMediaEventSink() = default;
};

class IQualityControl : public IUnknown {
public:
    virtual HRESULT Notify(IBaseFilter* pSelf, Quality q) = 0;   // from the renderer, on the streaming thread
    virtual HRESULT SetSink(IQualityControl* pSink) = 0;         // not referenced

protected:
    ~IQualityControl() = default;
};

// ---- seeking ---------------------------------------------------------------------------------------------------------

inline constexpr DWORD AM_SEEKING_NoPositioning = 0;
inline constexpr DWORD AM_SEEKING_AbsolutePositioning = 1;
inline constexpr DWORD AM_SEEKING_RelativePositioning = 2;
inline constexpr DWORD AM_SEEKING_IncrementalPositioning = 3;
inline constexpr DWORD AM_SEEKING_PositioningBitsMask = 3;
inline constexpr DWORD AM_SEEKING_CanSeekAbsolute = 0x001;
inline constexpr DWORD AM_SEEKING_CanSeekForwards = 0x002;
inline constexpr DWORD AM_SEEKING_CanSeekBackwards = 0x004;
inline constexpr DWORD AM_SEEKING_CanGetStopPos = 0x010;
inline constexpr DWORD AM_SEEKING_CanGetDuration = 0x020;

class IMediaSeeking : public IUnknown {
public:
    virtual HRESULT GetCapabilities(DWORD* pdwCapabilities) = 0;
    virtual HRESULT CheckCapabilities(DWORD* pdwCapabilities) = 0;   // S_OK: all, S_FALSE: some, E_FAIL: none
    virtual HRESULT IsFormatSupported(const GUID* pFormat) = 0;
    virtual HRESULT QueryPreferredFormat(GUID* pFormat) = 0;
    virtual HRESULT GetTimeFormat(GUID* pFormat) = 0;
    virtual HRESULT IsUsingTimeFormat(const GUID* pFormat) = 0;
    virtual HRESULT SetTimeFormat(const GUID* pFormat) = 0;
    virtual HRESULT GetDuration(LONGLONG* pDuration) = 0;
    virtual HRESULT GetStopPosition(LONGLONG* pStop) = 0;
    virtual HRESULT GetCurrentPosition(LONGLONG* pCurrent) = 0;
    virtual HRESULT ConvertTimeFormat(LONGLONG* pTarget, const GUID* pTargetFormat, LONGLONG source,
                                      const GUID* pSourceFormat) = 0;
    virtual HRESULT SetPositions(LONGLONG* pCurrent, DWORD dwCurrentFlags, LONGLONG* pStop, DWORD dwStopFlags) = 0;
    virtual HRESULT GetPositions(LONGLONG* pCurrent, LONGLONG* pStop) = 0;
    virtual HRESULT GetAvailable(LONGLONG* pEarliest, LONGLONG* pLatest) = 0;
    virtual HRESULT SetRate(double dRate) = 0;
    virtual HRESULT GetRate(double* pdRate) = 0;
    virtual HRESULT GetPreroll(LONGLONG* pPreroll) = 0;

protected:
    ~IMediaSeeking() = default;
};

// ---- registration ----------------------------------------------------------------------------------------------------

struct REGPINTYPES {
    const CLSID* clsMajorType;
    const CLSID* clsMinorType;
};

struct REGFILTERPINS {
    LPWSTR strName;
    BOOL bRendered;
    BOOL bOutput;
    BOOL bZero;
    BOOL bMany;
    const CLSID* clsConnectsToFilter;
    const WCHAR* strConnectsToPin;
    UINT nMediaTypes;
    const REGPINTYPES* lpMediaType;
};

// ---- interface ids ---------------------------------------------------------------------------------------------------

#define QX_STREAMING_IID(name, first, second)                                                                          \
    inline constexpr IID name = {first, second, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}}
QX_STREAMING_IID(IID_IPin, 0x56A86891, 0x0AD4);
QX_STREAMING_IID(IID_IEnumPins, 0x56A86892, 0x0AD4);
QX_STREAMING_IID(IID_IEnumFilters, 0x56A86893, 0x0AD4);
QX_STREAMING_IID(IID_IBaseFilter, 0x56A86895, 0x0AD4);
QX_STREAMING_IID(IID_IReferenceClock, 0x56A86897, 0x0AD4);
QX_STREAMING_IID(IID_IMediaFilter, 0x56A86899, 0x0AD4);
QX_STREAMING_IID(IID_IMediaSample, 0x56A8689A, 0x0AD4);
QX_STREAMING_IID(IID_IMemAllocator, 0x56A8689C, 0x0AD4);
QX_STREAMING_IID(IID_IMemInputPin, 0x56A8689D, 0x0AD4);
QX_STREAMING_IID(IID_IFilterGraph, 0x56A8689F, 0x0AD4);
QX_STREAMING_IID(IID_IMediaEventSink, 0x56A868A2, 0x0AD4);
QX_STREAMING_IID(IID_IQualityControl, 0x56A868A5, 0x0AD4);
QX_STREAMING_IID(IID_IGraphBuilder, 0x56A868A9, 0x0AD4);
#undef QX_STREAMING_IID
inline constexpr IID IID_IEnumMediaTypes = {
    0x89C31040, 0x846B, 0x11CE, {0x97, 0xD3, 0x00, 0xAA, 0x00, 0x55, 0x59, 0x5A}};
inline constexpr IID IID_IAMFilterMiscFlags = {
    0x2DD74950, 0xA890, 0x11D1, {0xAB, 0xE8, 0x00, 0xA0, 0xC9, 0x05, 0xF3, 0x75}};
inline constexpr IID IID_IMediaSeeking = {0x36B73880, 0xC2C8, 0x11CF, {0x8B, 0x46, 0x00, 0x80, 0x5F, 0x6C, 0xEF, 0x60}};
