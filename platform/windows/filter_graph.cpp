#include "platform/media/filter_graph.h"

#include <objbase.h>

HRESULT CreateFilterGraph(IGraphBuilder** ppGraph)
{
    return CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                            reinterpret_cast<void**>(ppGraph));
}
