// The graph that filters run in: on Windows the platform's own, natively CFilterGraph.
#pragma once

#include <windows.h>

#include <dshow.h>

// It answers for IMediaControl and IMediaEvent too.
HRESULT CreateFilterGraph(IGraphBuilder** ppGraph);
