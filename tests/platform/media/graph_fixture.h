// A graph of source, filter and sink.
#pragma once

#include "tests/platform/media/streams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#ifdef _WIN32
#include <objbase.h>
#endif

constexpr LONG kLongWait = 20'000;   // ms: what hangs fails instead

class GraphTest : public testing::Test {
protected:
    GraphTest()
    {
#ifdef _WIN32
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
#endif
        objectsBefore = CUnknown::ObjectsActive();
        EXPECT_EQ(CreateFilterGraph(graph.Out()), S_OK);
        control = Query<IMediaControl>(graph.Get(), IID_IMediaControl);
        events = Query<IMediaEvent>(graph.Get(), IID_IMediaEvent);
    }
    ~GraphTest() override
    {
        control->Stop();
        events = {};
        control = {};
        graph = {};
        source = {};
        transform = {};
        sink = {};
        EXPECT_EQ(CUnknown::ObjectsActive(), objectsBefore) << "objects are left";
#ifdef _WIN32
        CoUninitialize();
#endif
    }

    // All three filters, connected.
    void Build(int32_t count, int copies = 1)
    {
        Add(count, copies);
        ASSERT_EQ(graph->ConnectDirect(source->GetPin(0), transform->GetPin(0), nullptr), S_OK);
        ASSERT_EQ(graph->ConnectDirect(transform->GetPin(1), sink->GetPin(0), nullptr), S_OK);
    }
    void Add(int32_t count, int copies = 1)
    {
        source = Owned(new TestSource(count));
        transform = Owned(new TestTransform(copies));
        sink = Owned(new TestSink);
        ASSERT_EQ(graph->AddFilter(source.Get(), TEXT("source")), S_OK);
        ASSERT_EQ(graph->AddFilter(transform.Get(), TEXT("filter")), S_OK);
        ASSERT_EQ(graph->AddFilter(sink.Get(), TEXT("sink")), S_OK);
    }
    // The first event with one of the codes. A graph may give up waiting before the time is over, so it is asked again.
    std::pair<LONG, HRESULT> Await(std::initializer_list<LONG> wanted)
    {
        LONG code = 0;
        LONG_PTR a = 0, b = 0;
        for (int i = 0; i < kLongWait; ++i) {
            if (events->GetEvent(&code, &a, &b, 1) != S_OK) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                continue;
            }
            events->FreeEventParams(code, a, b);
            if (std::ranges::find(wanted, code) != wanted.end())
                return {code, HRESULT(a)};
        }
        ADD_FAILURE() << "no event";
        return {};
    }
    LONG AwaitEnd()
    {
        return Await({EC_COMPLETE, EC_ERRORABORT}).first;
    }
    HRESULT AwaitEvent(LONG wanted)
    {
        return Await({wanted}).second;
    }
    // One fault may be told by more than one filter.
    void DropEvents()
    {
        LONG code = 0;
        LONG_PTR a = 0, b = 0;
        while (events->GetEvent(&code, &a, &b, 0) == S_OK)
            events->FreeEventParams(code, a, b);
    }
    FILTER_STATE StateOf(IBaseFilter* filter)
    {
        FILTER_STATE state = State_Running;
        filter->GetState(0, &state);
        return state;
    }

    LONG objectsBefore = 0;
    ComPtr<IGraphBuilder> graph;
    ComPtr<IMediaControl> control;
    ComPtr<IMediaEvent> events;
    ComPtr<TestSource> source;
    ComPtr<TestTransform> transform;
    ComPtr<TestSink> sink;
};
