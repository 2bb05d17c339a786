// How a host hears that a user turns a parameter by hand: the start of the turn, each new value, its end. Hosts record
// automation by it. The operations are called on the thread that sets the value, without any lock held, so they may call
// back into the filter.
#pragma once

#include "platform/media/media_params.h"

#include <windows.h>

#include <unknwn.h>

class IMediaParamsUICallback : public IUnknown {
public:
    // Index arrays of count entries; they belong to the caller.
    virtual HRESULT STDMETHODCALLTYPE ParamsBeginCapture(const DWORD* pIndices, DWORD count) = 0;
    virtual HRESULT STDMETHODCALLTYPE ParamsChanged(const DWORD* pIndices, DWORD count, const MP_DATA* pValues) = 0;
    virtual HRESULT STDMETHODCALLTYPE ParamsEndCapture(const DWORD* pIndices, DWORD count) = 0;

protected:
    ~IMediaParamsUICallback() = default;
};

class IMediaParamsSetUICallback : public IUnknown {
public:
    // Holds a reference until the next call; null ends the notification.
    virtual HRESULT STDMETHODCALLTYPE SetUICallback(IMediaParamsUICallback* pCallback) = 0;

protected:
    ~IMediaParamsSetUICallback() = default;
};

inline constexpr IID IID_IMediaParamsSetUICallback = {
    0x1D8C7A34, 0x5B6E, 0x49F2, {0x8A, 0x03, 0xE7, 0x41, 0x9C, 0x2B, 0x60, 0xD5}};
