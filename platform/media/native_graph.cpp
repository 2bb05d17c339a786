#include "platform/media/native_graph.h"

#include "platform/media/enum_filters.h"
#include "platform/media/filter_graph.h"
#include "platform/media/graph_walk.h"

#include <algorithm>
#include <mutex>
#include <new>

HRESULT CreateFilterGraph(IGraphBuilder** ppGraph)
{
    if (!ppGraph)
        return E_POINTER;
    *ppGraph = new (std::nothrow) CFilterGraph;
    return *ppGraph ? S_OK : E_OUTOFMEMORY;
}

// Holds graphLock; the outermost one carries out what was asked to be connected anew.
class CFilterGraph::Operation {
public:
    explicit Operation(CFilterGraph* theGraph) : graph(theGraph), lock(theGraph->graphLock) { ++graph->depth; }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation()
    {
        while (graph->depth == 1 && !graph->toReconnect.empty()) {
            const ComPtr<IPin> pin = std::move(graph->toReconnect.back());
            graph->toReconnect.pop_back();
            graph->ReconnectNow(pin.Get());
        }
        --graph->depth;
    }

private:
    CFilterGraph* graph;
    std::scoped_lock<CriticalSection> lock;
};

CFilterGraph::CFilterGraph(IUnknown* outer) : CUnknown(outer) {}

CFilterGraph::~CFilterGraph()
{
    Stop();
    while (!members.empty())
        RemoveFilter(members.back().filter.Get());
}

HRESULT CFilterGraph::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (riid == IID_IFilterGraph || riid == IID_IGraphBuilder)
        return GetInterface<IGraphBuilder>(this, ppObject);
    if (riid == IID_IMediaControl)
        return GetInterface<IMediaControl>(this, ppObject);
    if (riid == IID_IMediaEventSink)
        return GetInterface<IMediaEventSink>(this, ppObject);
    if (riid == IID_IMediaEvent)
        return GetInterface<IMediaEvent>(this, ppObject);
    return CUnknown::NonDelegatingQueryInterface(riid, ppObject);
}

// ---- members ---------------------------------------------------------------------------------------------------------

std::vector<CFilterGraph::Member>::iterator CFilterGraph::Find(IBaseFilter* pFilter)
{
    return std::ranges::find_if(members, [&](const Member& m) { return m.filter.Get() == pFilter; });
}

bool CFilterGraph::Holds(IPin* pPin)
{
    return Find(FilterOf(pPin).Get()) != members.end();
}

// A name that is taken gets a number, as "Name 0001".
std::basic_string<WCHAR> CFilterGraph::UniqueName(std::basic_string_view<WCHAR> wanted) const
{
    const auto isTaken = [&](const auto& name) {
        return std::ranges::any_of(members, [&](const Member& m) { return m.name == name; });
    };
    std::basic_string<WCHAR> name(wanted.substr(0, MAX_FILTER_NAME - 6));
    if (!name.empty() && !isTaken(name))
        return name;
    const size_t stem = name.size();
    for (int number = 1;; ++number) {
        WCHAR suffix[16];
        wsprintfW(suffix, TEXT(" %04d"), number);
        name.replace(stem, std::basic_string<WCHAR>::npos, suffix);
        if (!isTaken(name))
            return name;
    }
}

HRESULT CFilterGraph::AddFilter(IBaseFilter* pFilter, LPCWSTR pszName)
try {
    if (!pFilter)
        return E_POINTER;
    const Operation operation(this);
    if (Find(pFilter) != members.end())
        return VFW_E_DUPLICATE_NAME;
    const std::basic_string<WCHAR> wanted = pszName ? pszName : TEXT("");
    Member member{Share(pFilter), UniqueName(wanted)};
    const bool renamed = !wanted.empty() && member.name != wanted;
    members.reserve(members.size() + 1);
    if (const HRESULT hr = pFilter->JoinFilterGraph(this, member.name.c_str()); FAILED(hr))
        return hr;
    members.push_back(std::move(member));
    return renamed ? VFW_S_DUPLICATE_NAME : S_OK;
} catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
}

HRESULT CFilterGraph::RemoveFilter(IBaseFilter* pFilter)
{
    const Operation operation(this);
    const auto member = Find(pFilter);
    if (member == members.end())
        return VFW_E_NOT_FOUND;
    if (state != State_Stopped)
        return VFW_E_NOT_STOPPED;
    for (const auto& pin : PinsOf(pFilter)) {
        if (const auto peer = PeerOf(pin.Get()))
            peer->Disconnect();
        pin->Disconnect();
    }
    const HRESULT hr = pFilter->JoinFilterGraph(nullptr, nullptr);
    members.erase(member);
    return hr;
}

HRESULT CFilterGraph::EnumFilters(IEnumFilters** ppEnum)
try {
    if (!ppEnum)
        return E_POINTER;
    *ppEnum = nullptr;
    const Operation operation(this);
    Filters filters;
    for (const Member& member : members)
        filters.push_back(member.filter);
    *ppEnum = new CEnumFilters(std::move(filters), 0);
    return S_OK;
} catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
}

HRESULT CFilterGraph::FindFilterByName(LPCWSTR pszName, IBaseFilter** ppFilter)
{
    if (!pszName || !ppFilter)
        return E_POINTER;
    const Operation operation(this);
    const auto member = std::ranges::find_if(members, [&](const Member& m) { return m.name == pszName; });
    *ppFilter = member == members.end() ? nullptr : ComPtr<IBaseFilter>(member->filter).Release();
    return *ppFilter ? S_OK : VFW_E_NOT_FOUND;
}

// ---- connections -----------------------------------------------------------------------------------------------------

HRESULT CFilterGraph::ConnectDirect(IPin* pOut, IPin* pIn, const AM_MEDIA_TYPE* pType)
{
    if (!pOut || !pIn)
        return E_POINTER;
    const Operation operation(this);
    if (state != State_Stopped)
        return VFW_E_NOT_STOPPED;
    if (!Holds(pOut) || !Holds(pIn))
        return VFW_E_NOT_IN_GRAPH;
    if (LeadsTo(FilterOf(pIn).Get(), FilterOf(pOut).Get()))
        return VFW_E_CIRCULAR_GRAPH;
    return pOut->Connect(pIn, pType);
}

HRESULT CFilterGraph::Connect(IPin* pOut, IPin* pIn)
{
    return ConnectDirect(pOut, pIn, nullptr);
}

HRESULT CFilterGraph::Disconnect(IPin* pPin)
{
    if (!pPin)
        return E_POINTER;
    const Operation operation(this);
    return pPin->Disconnect();
}

HRESULT CFilterGraph::Reconnect(IPin* pPin)
try {
    if (!pPin)
        return E_POINTER;
    const Operation operation(this);
    if (state != State_Stopped)
        return VFW_E_NOT_STOPPED;
    if (!PeerOf(pPin))
        return VFW_E_NOT_CONNECTED;
    toReconnect.push_back(Share(pPin));
    return S_OK;
} catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
}

// Whoever asked has gone on, so a failure shows as pins that are not connected, and as an event.
void CFilterGraph::ReconnectNow(IPin* pPin)
{
    const auto peer = PeerOf(pPin);
    if (!peer)
        return;
    const auto out = IsOutput(pPin) ? Share(pPin) : peer;
    const auto in = IsOutput(pPin) ? peer : Share(pPin);
    in->Disconnect();
    out->Disconnect();
    if (const HRESULT hr = ConnectDirect(out.Get(), in.Get(), nullptr); FAILED(hr))
        Notify(EC_ERRORABORT, hr, 0);
}

// ---- state -----------------------------------------------------------------------------------------------------------

CFilterGraph::Filters CFilterGraph::LastToFirst() const
{
    Filters order;
    const auto visit = [&](const auto& self, const ComPtr<IBaseFilter>& filter) -> void {
        const auto isSame = [&](const ComPtr<IBaseFilter>& f) { return f.Get() == filter.Get(); };
        if (std::ranges::any_of(order, isSame))
            return;
        for (const auto& next : Downstream(filter.Get()))
            self(self, next);
        order.push_back(filter);
    };
    for (const Member& member : members)
        visit(visit, member.filter);
    return order;
}

HRESULT CFilterGraph::StopAll()
{
    HRESULT result = S_OK;
    for (const auto& filter : LastToFirst())
        if (const HRESULT hr = filter->Stop(); FAILED(hr) && SUCCEEDED(result))
            result = hr;
    state = State_Stopped;
    return result;
}

HRESULT CFilterGraph::PauseAll()
{
    const Filters filters = LastToFirst();
    if (state == State_Stopped)
        events.Start(int(std::ranges::count_if(filters, [](const auto& f) { return IsRenderer(f.Get()); })));
    HRESULT result = S_OK;
    for (const auto& filter : filters) {
        const HRESULT hr = filter->Pause();
        if (FAILED(hr)) {
            StopAll();
            return hr;
        }
        if (hr == S_FALSE)
            result = S_FALSE;
    }
    state = State_Paused;
    return result;
}

HRESULT CFilterGraph::Pause()
{
    const Operation operation(this);
    return PauseAll();
}

HRESULT CFilterGraph::Run()
{
    const Operation operation(this);
    if (state == State_Running)
        return S_OK;
    if (state == State_Stopped)
        if (const HRESULT hr = PauseAll(); FAILED(hr))
            return hr;
    HRESULT result = S_OK;
    for (const auto& filter : LastToFirst()) {
        const HRESULT hr = filter->Run(0);
        if (FAILED(hr)) {
            StopAll();
            return hr;
        }
        if (hr == S_FALSE)
            result = S_FALSE;
    }
    state = State_Running;
    return result;
}

HRESULT CFilterGraph::Stop()
{
    const Operation operation(this);
    return StopAll();
}

// Waits without graphLock: a stop can end it.
HRESULT CFilterGraph::GetState(LONG nMilliseconds, OAFilterState* pState)
{
    if (!pState)
        return E_POINTER;
    Filters filters;
    {
        const Operation operation(this);
        *pState = state;
        filters = LastToFirst();
    }
    for (const auto& filter : filters) {
        FILTER_STATE one = State_Stopped;
        if (const HRESULT hr = filter->GetState(DWORD(nMilliseconds), &one); hr != S_OK)
            return hr;
    }
    return S_OK;
}

// ---- events ----------------------------------------------------------------------------------------------------------

HRESULT CFilterGraph::Notify(LONG nCode, LONG_PTR nParam1, LONG_PTR nParam2)
{
    return events.Add({nCode, nParam1, nParam2});
}

HRESULT CFilterGraph::GetEvent(LONG* pnCode, LONG_PTR* pnParam1, LONG_PTR* pnParam2, LONG nMilliseconds)
{
    if (!pnCode || !pnParam1 || !pnParam2)
        return E_POINTER;
    const auto event = events.Take(DWORD(nMilliseconds));
    if (!event)
        return E_ABORT;
    *pnCode = event->code;
    *pnParam1 = event->param1;
    *pnParam2 = event->param2;
    return S_OK;
}

HRESULT CFilterGraph::WaitForCompletion(LONG nMilliseconds, LONG* pnCode)
{
    if (!pnCode)
        return E_POINTER;
    {
        const Operation operation(this);
        if (state != State_Running)
            return VFW_E_WRONG_STATE;
    }
    const auto code = events.AwaitEnd(DWORD(nMilliseconds));
    *pnCode = code.value_or(0);
    return code ? S_OK : E_ABORT;
}

// None of the codes in use carries anything that was allocated or referenced.
HRESULT CFilterGraph::FreeEventParams(LONG, LONG_PTR, LONG_PTR)
{
    return S_OK;
}
