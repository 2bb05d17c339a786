#include "platform/media/graph_walk.h"

#include <windows.h>

#include <algorithm>

std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* pFilter)
{
    std::vector<ComPtr<IPin>> pins;
    ComPtr<IEnumPins> all;
    if (FAILED(pFilter->EnumPins(all.Out())))
        return pins;
    ComPtr<IPin> pin;
    while (all->Next(1, pin.Out(), nullptr) == S_OK)
        pins.push_back(std::move(pin));
    return pins;
}

ComPtr<IBaseFilter> FilterOf(IPin* pPin)
{
    PIN_INFO info{};
    return SUCCEEDED(pPin->QueryPinInfo(&info)) ? ComPtr<IBaseFilter>(info.pFilter) : ComPtr<IBaseFilter>();
}

ComPtr<IPin> PeerOf(IPin* pPin)
{
    ComPtr<IPin> peer;
    pPin->ConnectedTo(peer.Out());
    return peer;
}

bool IsOutput(IPin* pPin)
{
    PIN_DIRECTION direction = PINDIR_INPUT;
    return SUCCEEDED(pPin->QueryDirection(&direction)) && direction == PINDIR_OUTPUT;
}

std::vector<ComPtr<IBaseFilter>> Downstream(IBaseFilter* pFilter)
{
    std::vector<ComPtr<IBaseFilter>> filters;
    for (const auto& pin : PinsOf(pFilter)) {
        const auto peer = PeerOf(pin.Get());
        if (peer && IsOutput(pin.Get()))
            filters.push_back(FilterOf(peer.Get()));
    }
    return filters;
}

// Graphs are small and hold no circle, so a plain walk ends soon.
bool LeadsTo(IBaseFilter* pFrom, IBaseFilter* pTo)
{
    return pFrom == pTo || std::ranges::any_of(Downstream(pFrom), [&](const ComPtr<IBaseFilter>& next) {
               return LeadsTo(next.Get(), pTo);
           });
}

bool IsRenderer(IBaseFilter* pFilter)
{
    const auto flags = Query<IAMFilterMiscFlags>(pFilter, IID_IAMFilterMiscFlags);
    if (!flags || !(flags->GetMiscFlags() & AM_FILTER_MISC_FLAGS_IS_RENDERER))
        return false;
    return std::ranges::any_of(PinsOf(pFilter), [](const ComPtr<IPin>& pin) { return bool(PeerOf(pin.Get())); });
}
