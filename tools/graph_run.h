// Source, filter and writer in a graph, from the first block to the end of the stream.
#pragma once

#include "platform/com_ptr.h"

#include <dshow.h>

#include <functional>
#include <string>

class GraphRun {
public:
    // Connects them. name: of the input, for messages. Throws a data Failure when they do not go together.
    GraphRun(std::string theName, IBaseFilter* source, IBaseFilter* filter, IBaseFilter* writer);
    ~GraphRun();   // stops
    GraphRun(const GraphRun&) = delete;
    GraphRun& operator=(const GraphRun&) = delete;

    // Runs to the end and stops, calling idle a few times a second. False when a signal came. Throws a data Failure when
    // the filter does not start, or when the stream ends early; rethrow is called first, for what the ends of the stream
    // have to say about it.
    bool Run(const std::function<void()>& idle, const std::function<void()>& rethrow);

private:
    enum class End { kComplete, kSignal, kFailed };
    End Await(const std::function<void()>& idle, HRESULT* phr);

    std::string name;
    ComPtr<IGraphBuilder> graph;
    ComPtr<IMediaControl> control;
    ComPtr<IMediaEvent> events;
};
