// The native graph: holds filters, connects their pins, takes them through their states and collects their events. It
// runs without a clock: data flows as fast as the filters take it.
//
// Changes of state go to filters from the last to the first, so that whoever delivers finds its peer ready, and whoever
// waits for a peer is let go before it is stopped itself.
//
// Threads: one [control] thread at a time, by graphLock. Notify comes from any thread and takes no lock but that of the
// events. Reconnect within an operation of the graph, as a pin asks for it while it is being connected, happens at the
// end of that operation, when no lock of a filter is held.
#pragma once

#include "platform/com_ptr.h"
#include "platform/critical_section.h"
#include "platform/media/graph_events.h"
#include "platform/media/unknown.h"

#include <string>
#include <vector>

class CFilterGraph final : public CUnknown,
                           public IGraphBuilder,
                           public IMediaControl,
                           public IMediaEventSink,
                           public IMediaEvent {
public:
    explicit CFilterGraph(IUnknown* outer = nullptr);
    DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override;

    HRESULT AddFilter(IBaseFilter* pFilter, LPCWSTR pszName) override;
    HRESULT RemoveFilter(IBaseFilter* pFilter) override;   // its pins are disconnected; VFW_E_NOT_STOPPED
    HRESULT EnumFilters(IEnumFilters** ppEnum) override;
    HRESULT FindFilterByName(LPCWSTR pszName, IBaseFilter** ppFilter) override;
    // Both filters are in this graph, or VFW_E_NOT_IN_GRAPH, and no way leads back, or VFW_E_CIRCULAR_GRAPH.
    HRESULT ConnectDirect(IPin* pOut, IPin* pIn, const AM_MEDIA_TYPE* pType) override;
    HRESULT Connect(IPin* pOut, IPin* pIn) override;   // no filter is put between them
    HRESULT Reconnect(IPin* pPin) override;
    HRESULT Disconnect(IPin* pPin) override;

    HRESULT Run() override;
    HRESULT Pause() override;
    HRESULT Stop() override;
    HRESULT GetState(LONG nMilliseconds, OAFilterState* pState) override;

    HRESULT Notify(LONG nCode, LONG_PTR nParam1, LONG_PTR nParam2) override;
    HRESULT GetEvent(LONG* pnCode, LONG_PTR* pnParam1, LONG_PTR* pnParam2, LONG nMilliseconds) override;
    HRESULT WaitForCompletion(LONG nMilliseconds, LONG* pnCode) override;
    HRESULT FreeEventParams(LONG nCode, LONG_PTR nParam1, LONG_PTR nParam2) override;

private:
    struct Member {
        ComPtr<IBaseFilter> filter;
        std::basic_string<WCHAR> name;
    };
    using Filters = std::vector<ComPtr<IBaseFilter>>;
    class Operation;

    ~CFilterGraph() override;

    std::vector<Member>::iterator Find(IBaseFilter* pFilter);
    bool Holds(IPin* pPin);
    std::basic_string<WCHAR> UniqueName(std::basic_string_view<WCHAR> wanted) const;
    void ReconnectNow(IPin* pPin);
    Filters LastToFirst() const;
    HRESULT PauseAll();
    HRESULT StopAll();

    CriticalSection graphLock;   // guards what follows, up to the events
    std::vector<Member> members;
    std::vector<ComPtr<IPin>> toReconnect;
    int depth = 0;   // of operations within operations
    FILTER_STATE state = State_Stopped;

    GraphEvents events;
};
