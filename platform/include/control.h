// What an application drives a graph by. On the platform these interfaces serve Automation too; here they have their own
// operations alone.
#pragma once

#include <strmif.h>

using OAFilterState = LONG;

class IMediaControl : public IUnknown {
public:
    // S_FALSE: the graph is on its way to the new state.
    virtual HRESULT Run() = 0;
    virtual HRESULT Pause() = 0;
    virtual HRESULT Stop() = 0;
    virtual HRESULT GetState(LONG nMilliseconds, OAFilterState* pState) = 0;

protected:
    ~IMediaControl() = default;
};

class IMediaEvent : public IUnknown {
public:
    // E_ABORT when the time is over; INFINITE waits for ever. The event's parameters are freed by FreeEventParams.
    virtual HRESULT GetEvent(LONG* pnCode, LONG_PTR* pnParam1, LONG_PTR* pnParam2, LONG nMilliseconds) = 0;
    // Until EC_COMPLETE, EC_ERRORABORT or EC_USERABORT, dropping other events. VFW_E_WRONG_STATE unless running.
    virtual HRESULT WaitForCompletion(LONG nMilliseconds, LONG* pnCode) = 0;
    virtual HRESULT FreeEventParams(LONG nCode, LONG_PTR nParam1, LONG_PTR nParam2) = 0;

protected:
    ~IMediaEvent() = default;
};

inline constexpr IID IID_IMediaControl = {0x56A868B1, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr IID IID_IMediaEvent = {0x56A868B6, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
