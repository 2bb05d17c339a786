// What flows through a graph, and what happens to it when something goes wrong.
#include "tests/platform/media/graph_fixture.h"

#include <chrono>
#include <random>
#include <thread>

namespace {

using Stream = GraphTest;

void BrieflyElsewhere(std::mt19937* random)
{
    std::this_thread::sleep_for(std::chrono::microseconds((*random)() % 700));
}

TEST_F(Stream, ReachesTheEndInOrder)
{
    Build(50, 2);
    ASSERT_GE(control->Run(), S_OK);
    LONG code = 0;
    EXPECT_EQ(events->WaitForCompletion(kLongWait, &code), S_OK);
    EXPECT_EQ(code, EC_COMPLETE);
    EXPECT_EQ(control->Stop(), S_OK);
    const auto taken = sink->TakenSoFar();
    ASSERT_EQ(taken.size(), 100u);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(taken[size_t(i)], (TestSink::Taken{i / 2, i < 2})) << i;
    EXPECT_EQ(sink->Ends(), 1);
    EXPECT_EQ(transform->started, 1);
    EXPECT_EQ(transform->stopped, 1);
}

TEST_F(Stream, RunsAgainFromTheStart)
{
    Build(5);
    for (int run = 1; run <= 3; ++run) {
        ASSERT_GE(control->Run(), S_OK);
        EXPECT_EQ(AwaitEnd(), EC_COMPLETE);
        EXPECT_EQ(control->Stop(), S_OK);
        EXPECT_EQ(sink->TakenSoFar().size(), size_t(5 * run));
    }
}

TEST_F(Stream, WaitsWhilePausedAndEndsOnceItRuns)
{
    Build(1);
    EXPECT_EQ(control->Pause(), S_FALSE);
    OAFilterState state = State_Stopped;
    EXPECT_EQ(control->GetState(kLongWait, &state), S_OK);   // the first sample is there
    EXPECT_EQ(state, State_Paused);
    EXPECT_TRUE(sink->TakenSoFar().empty());
    LONG code = 0;
    EXPECT_EQ(events->WaitForCompletion(0, &code), VFW_E_WRONG_STATE);
    ASSERT_GE(control->Run(), S_OK);
    EXPECT_EQ(AwaitEnd(), EC_COMPLETE);
}

// Stopped while the source waits in a delivery, for a buffer, or somewhere in between.
TEST_F(Stream, StopsAtAnyMoment)
{
    Build(1'000'000'000, 3);
    std::mt19937 random(1);
    for (int i = 0; i < 60; ++i) {
        ASSERT_GE(i % 3 == 0 ? control->Pause() : control->Run(), S_OK);
        BrieflyElsewhere(&random);
        ASSERT_EQ(control->Stop(), S_OK);
        EXPECT_EQ(StateOf(transform.Get()), State_Stopped);
    }
    EXPECT_EQ(transform->started, 60);
    EXPECT_EQ(transform->stopped, 60);
}

// The sink keeps every buffer that there is, so the filter waits for one inside Receive.
TEST_F(Stream, StopsWhileAFilterWaitsForABuffer)
{
    Build(1'000'000, 1);
    std::mutex guard;
    std::vector<ComPtr<IMediaSample>> kept;
    sink->onSample = [&](IMediaSample* sample) {
        const std::scoped_lock lock(guard);
        kept.push_back(Share(sample));
        return S_OK;
    };
    ASSERT_GE(control->Run(), S_OK);
    const auto count = [&] {
        const std::scoped_lock lock(guard);
        return kept.size();
    };
    while (count() < 2)
        std::this_thread::yield();
    EXPECT_EQ(control->Stop(), S_OK);
    EXPECT_EQ(count(), 2u);
    kept.clear();   // the buffers outlive the stop, and go home after it
    sink->onSample = nullptr;
    ASSERT_GE(control->Run(), S_OK);
}

// After each seek the first sample that arrives is the one of the seek, marked, and the others follow without a gap.
TEST_F(Stream, FlushesAtAnyMoment)
{
    Build(1'000'000'000);
    ASSERT_GE(control->Run(), S_OK);
    std::mt19937 random(2);
    for (int i = 1; i <= 60; ++i) {
        BrieflyElsewhere(&random);
        ASSERT_EQ(source->Seek(i * 1'000'000 * kMillisecond), S_OK);
    }
    const auto arrived = [&] {
        const auto taken = sink->TakenSoFar();
        return !taken.empty() && taken.back().index >= 60'000'000;
    };
    while (!arrived())
        std::this_thread::yield();
    EXPECT_EQ(control->Stop(), S_OK);
    int32_t previous = -1;
    for (const auto& sample : sink->TakenSoFar()) {
        if (sample.discontinuity)
            EXPECT_EQ(sample.index % 1'000'000, 0);
        else
            EXPECT_EQ(sample.index, previous + 1);
        EXPECT_GT(sample.index, previous);
        previous = sample.index;
    }
}

TEST_F(Stream, FlushesWhilePausedAndAfterTheEnd)
{
    Build(5);
    ASSERT_GE(control->Pause(), S_OK);
    OAFilterState state = State_Stopped;
    ASSERT_EQ(control->GetState(kLongWait, &state), S_OK);
    ASSERT_EQ(source->Seek(2 * kMillisecond), S_OK);
    ASSERT_GE(control->Run(), S_OK);
    EXPECT_EQ(AwaitEnd(), EC_COMPLETE);
    EXPECT_EQ(sink->TakenSoFar(), (std::vector<TestSink::Taken>{{2, true}, {3, false}, {4, false}}));
    ASSERT_EQ(source->Seek(4 * kMillisecond), S_OK);
    for (int i = 0; i < kLongWait && sink->Ends() < 2; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(sink->Ends(), 2);
    EXPECT_EQ(sink->TakenSoFar().size(), 4u);
}

TEST_F(Stream, TellsWhyItEndedEarly)
{
    Build(10);
    source->failAt = 4;
    ASSERT_GE(control->Run(), S_OK);
    EXPECT_EQ(AwaitEvent(EC_ERRORABORT), E_ACCESSDENIED);
    EXPECT_EQ(control->Stop(), S_OK);
    EXPECT_EQ(sink->TakenSoFar().size(), 4u);
    EXPECT_EQ(sink->Ends(), 1);

    DropEvents();
    source->failAt = -1;
    sink->onSample = [](IMediaSample* sample) { return IndexOf(sample) == 3 ? E_HANDLE : S_OK; };
    ASSERT_GE(control->Run(), S_OK);
    EXPECT_EQ(AwaitEvent(EC_ERRORABORT), E_HANDLE);
    EXPECT_EQ(control->Stop(), S_OK);
    EXPECT_EQ(sink->TakenSoFar().size(), 8u);
}

// S_FALSE from downstream: nothing more is wanted, and nothing is wrong.
TEST_F(Stream, EndsQuietlyWhenNoMoreIsWanted)
{
    Build(1'000'000'000);
    std::atomic<bool> refused = false;
    sink->onSample = [&](IMediaSample* sample) {
        refused = IndexOf(sample) == 3;
        return refused ? S_FALSE : S_OK;
    };
    ASSERT_GE(control->Run(), S_OK);
    while (!refused)
        std::this_thread::yield();
    EXPECT_EQ(control->Stop(), S_OK);
    EXPECT_EQ(sink->TakenSoFar().size(), 4u);
    LONG code = 0;
    LONG_PTR a = 0, b = 0;
    while (events->GetEvent(&code, &a, &b, 0) == S_OK)
        EXPECT_NE(code, EC_ERRORABORT);
}

#ifndef _WIN32   // a graph of the platform may tell a refusal later, by its state
TEST_F(Stream, StaysStoppedWhenTheFilterRefusesToStart)
{
    Build(5);
    transform->startResult = E_OUTOFMEMORY;
    EXPECT_EQ(control->Run(), E_OUTOFMEMORY);
    for (IBaseFilter* filter : {static_cast<IBaseFilter*>(source.Get()), static_cast<IBaseFilter*>(transform.Get()),
                                static_cast<IBaseFilter*>(sink.Get())})
        EXPECT_EQ(StateOf(filter), State_Stopped);
    EXPECT_EQ(transform->stopped, 0);
    transform->startResult = S_OK;
    ASSERT_GE(control->Run(), S_OK);
    EXPECT_EQ(AwaitEnd(), EC_COMPLETE);
}
#endif

TEST_F(Stream, TakesAChangeOfTheMediaTypeWithASample)
{
    Build(10);
    source->changeAt = 5;
    source->changeTo = 7;
    transform->kindIn = 0;
    // The output keeps its type, and the filter cannot lead from the new one to it.
    ASSERT_GE(control->Run(), S_OK);
    EXPECT_EQ(AwaitEvent(EC_ERRORABORT), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(control->Stop(), S_OK);
    EXPECT_EQ(sink->TakenSoFar().size(), 5u);
    EXPECT_EQ(sink->Ends(), 1);
    EXPECT_EQ(transform->kindIn, 0);
    DropEvents();

    ASSERT_EQ(graph->Disconnect(transform->GetPin(1)), S_OK);
    ASSERT_EQ(graph->Disconnect(sink->GetPin(0)), S_OK);
    ASSERT_EQ(graph->Disconnect(source->GetPin(0)), S_OK);
    ASSERT_EQ(graph->Disconnect(transform->GetPin(0)), S_OK);
    sink->kind = 0;
    ASSERT_EQ(graph->ConnectDirect(source->GetPin(0), sink->GetPin(0), nullptr), S_OK);
    ASSERT_GE(control->Run(), S_OK);
    EXPECT_EQ(AwaitEnd(), EC_COMPLETE);
    EXPECT_EQ(KindOf(sink->Pin().CurrentMediaType()), 7);
}

// Nothing is fed: the sink must not wait for data for ever.
TEST_F(Stream, AFilterWithoutInputEndsTheStream)
{
    Build(5);
    ASSERT_EQ(graph->Disconnect(source->GetPin(0)), S_OK);
    ASSERT_EQ(graph->Disconnect(transform->GetPin(0)), S_OK);
    ASSERT_GE(control->Run(), S_OK);
    EXPECT_EQ(AwaitEnd(), EC_COMPLETE);
    EXPECT_EQ(transform->started, 0);
}

}   // namespace
