// Ways through a graph, by what its filters and pins tell.
#pragma once

#include "platform/com_ptr.h"

#include <dshow.h>

#include <vector>

std::vector<ComPtr<IPin>> PinsOf(IBaseFilter* pFilter);
ComPtr<IBaseFilter> FilterOf(IPin* pPin);
ComPtr<IPin> PeerOf(IPin* pPin);   // empty when not connected
bool IsOutput(IPin* pPin);
std::vector<ComPtr<IBaseFilter>> Downstream(IBaseFilter* pFilter);   // the filters that it delivers to
bool LeadsTo(IBaseFilter* pFrom, IBaseFilter* pTo);                  // also when they are the same
bool IsRenderer(IBaseFilter* pFilter);                               // says so, and is connected
