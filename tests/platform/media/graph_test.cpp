// The graph itself: members, names, what may be connected, events.
#include "tests/platform/media/graph_fixture.h"

namespace {

using Graph = GraphTest;

TEST_F(Graph, KeepsNamesApart)
{
    Add(1);
    const auto second = Owned(new TestSink), third = Owned(new TestSink), nameless = Owned(new TestSink);
    EXPECT_EQ(graph->AddFilter(second.Get(), TEXT("sink")), VFW_S_DUPLICATE_NAME);
    EXPECT_EQ(graph->AddFilter(third.Get(), TEXT("other")), S_OK);
    EXPECT_EQ(graph->AddFilter(nameless.Get(), nullptr), S_OK);
    ComPtr<IBaseFilter> found;
    EXPECT_EQ(graph->FindFilterByName(TEXT("sink"), found.Out()), S_OK);
    EXPECT_EQ(found.Get(), sink.Get());
    EXPECT_EQ(graph->FindFilterByName(TEXT("nobody"), found.Out()), VFW_E_NOT_FOUND);
    FILTER_INFO info{};
    ASSERT_EQ(second->QueryFilterInfo(&info), S_OK);
    const ComPtr<IFilterGraph> owner(info.pGraph);
    EXPECT_NE(std::basic_string_view<WCHAR>(info.achName), TEXT("sink"));
    EXPECT_EQ(graph->FindFilterByName(info.achName, found.Out()), S_OK);
    EXPECT_EQ(found.Get(), second.Get());
}

TEST_F(Graph, ListsItsFilters)
{
    Add(1);
    ComPtr<IEnumFilters> all;
    ASSERT_EQ(graph->EnumFilters(all.Out()), S_OK);
    int count = 0;
    ComPtr<IBaseFilter> filter;
    while (all->Next(1, filter.Out(), nullptr) == S_OK)
        count += filter.Get() == source.Get() || filter.Get() == transform.Get() || filter.Get() == sink.Get();
    EXPECT_EQ(count, 3);
}

TEST_F(Graph, ConnectsInNoCircle)
{
    Build(1);
    EXPECT_EQ(graph->Disconnect(transform->GetPin(1)), S_OK);
    EXPECT_EQ(graph->Disconnect(sink->GetPin(0)), S_OK);
    const auto second = Owned(new TestTransform);
    ASSERT_EQ(graph->AddFilter(second.Get(), TEXT("second")), S_OK);
    ASSERT_EQ(graph->ConnectDirect(transform->GetPin(1), second->GetPin(0), nullptr), S_OK);
    ASSERT_EQ(graph->Disconnect(source->GetPin(0)), S_OK);
    ASSERT_EQ(graph->Disconnect(transform->GetPin(0)), S_OK);
    EXPECT_EQ(graph->ConnectDirect(second->GetPin(1), transform->GetPin(0), nullptr), VFW_E_CIRCULAR_GRAPH);
}

TEST_F(Graph, RemovesAFilterWithItsConnections)
{
    Build(1);
    EXPECT_EQ(graph->RemoveFilter(transform.Get()), S_OK);
    EXPECT_FALSE(source->GetPin(0)->IsConnected());
    EXPECT_FALSE(sink->GetPin(0)->IsConnected());
    EXPECT_EQ(transform->GetFilterGraph(), nullptr);
    EXPECT_EQ(transform->NotifyEvent(EC_COMPLETE, 0, 0), E_NOTIMPL);
    EXPECT_EQ(transform->ReconnectPin(transform->GetPin(0)), VFW_E_NOT_IN_GRAPH);
}

TEST_F(Graph, EndsWhenItsLastRendererHasEnded)
{
    Build(3);
    const auto secondSource = Owned(new TestSource(200));
    const auto secondSink = Owned(new TestSink);
    ASSERT_EQ(graph->AddFilter(secondSource.Get(), TEXT("source 2")), S_OK);
    ASSERT_EQ(graph->AddFilter(secondSink.Get(), TEXT("sink 2")), S_OK);
    ASSERT_EQ(graph->ConnectDirect(secondSource->GetPin(0), secondSink->GetPin(0), nullptr), S_OK);
    ASSERT_GE(control->Run(), S_OK);
    EXPECT_EQ(AwaitEnd(), EC_COMPLETE);
    EXPECT_EQ(sink->Ends(), 1);
    EXPECT_EQ(secondSink->Ends(), 1);
    LONG code = 0;
    LONG_PTR a = 0, b = 0;
    while (events->GetEvent(&code, &a, &b, 0) == S_OK)
        EXPECT_NE(code, EC_COMPLETE) << "told twice";
    EXPECT_EQ(control->Stop(), S_OK);
}

// The graph may be let go in any state: its filters are stopped and know it no more.
TEST_F(Graph, StopsWhenItIsLetGo)
{
    Build(1'000'000'000);
    ASSERT_GE(control->Run(), S_OK);
    const ComPtr<IGraphBuilder> other = std::move(graph);
    ASSERT_EQ(CreateFilterGraph(graph.Out()), S_OK);
    control = Query<IMediaControl>(graph.Get(), IID_IMediaControl);
    events = {};
    const_cast<ComPtr<IGraphBuilder>&>(other) = {};
    EXPECT_EQ(StateOf(sink.Get()), State_Stopped);
    EXPECT_EQ(sink->GetFilterGraph(), nullptr);
}

}   // namespace
