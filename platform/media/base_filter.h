// What every filter does: identity, its state, its clock, its pins as the graph sees them, events to the graph.
//
// Threads: the control thread changes state and connections under filterLock; the streaming thread reads the state, sends
// events and never takes filterLock.
#pragma once

#include "platform/com_ptr.h"
#include "platform/critical_section.h"
#include "platform/media/setup_data.h"
#include "platform/media/unknown.h"

#include <dshow.h>

#include <atomic>
#include <string>

class CBasePin;

class CBaseFilter : public CUnknown, public IBaseFilter {
public:
    CBaseFilter(IUnknown* outer, REFCLSID theClassId);
    DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override;

    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClassId) override;
    // Stop and Pause tell each connected pin; the first pin to refuse ends a start, and those before it stop again.
    HRESULT STDMETHODCALLTYPE Stop() override;
    HRESULT STDMETHODCALLTYPE Pause() override;
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME tStart) override;
    HRESULT STDMETHODCALLTYPE GetState(DWORD dwMilliseconds, FILTER_STATE* pState) override;
    HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* pClock) override;
    HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** ppClock) override;
    HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** ppEnum) override;
    HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR pszId, IPin** ppPin) override;   // VFW_E_NOT_FOUND
    HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* pInfo) override;
    HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pszName) override;
    HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* ppszInfo) override;   // E_NOTIMPL

    virtual int GetPinCount() = 0;
    virtual CBasePin* GetPin(int n) = 0;   // owned by the filter, not referenced; null beyond the last
    virtual const AMOVIESETUP_FILTER* GetSetupData() { return nullptr; }

    LONG GetPinVersion() const { return pinVersion; }
    void IncrementPinVersion() { ++pinVersion; }   // the filter has other pins now
    bool IsStopped() const { return state == State_Stopped; }
    bool IsActive() const { return state != State_Stopped; }
    IFilterGraph* GetFilterGraph() const { return graph; }   // not referenced; null outside a graph
    CriticalSection& FilterLock() { return filterLock; }

    // [any] To the graph, which takes over the parameters. E_NOTIMPL without a graph that listens.
    HRESULT NotifyEvent(LONG nCode, LONG_PTR nParam1, LONG_PTR nParam2);
    // Asks the graph to connect the pin to its peer anew. VFW_E_NOT_IN_GRAPH without one.
    HRESULT ReconnectPin(IPin* pPin);
    // The clock's time since Run. VFW_E_NO_CLOCK without a clock.
    HRESULT StreamTime(REFERENCE_TIME* pTime);

protected:
    ~CBaseFilter() override;

    HRESULT ActivatePins();
    void DeactivatePins();

    CriticalSection filterLock;
    std::atomic<FILTER_STATE> state = State_Stopped;

private:
    CLSID classId;
    std::atomic<LONG> pinVersion = 0;
    IFilterGraph* graph = nullptr;          // the graph holds its filters, so they do not hold it
    IMediaEventSink* eventSink = nullptr;   // a part of the graph
    std::basic_string<WCHAR> name;
    ComPtr<IReferenceClock> clock;
    REFERENCE_TIME startTime = 0;   // by the clock
};
