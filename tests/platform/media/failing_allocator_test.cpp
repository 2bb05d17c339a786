// A sink that brings an allocator of its own, which fails in some way.
#include "tests/platform/media/graph_fixture.h"

namespace {

class FailingAllocator final : public CMemAllocator {
public:
    HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* pRequest, ALLOCATOR_PROPERTIES* pActual) override
    {
        return FAILED(propertiesResult) ? propertiesResult : CMemAllocator::SetProperties(pRequest, pActual);
    }
    HRESULT STDMETHODCALLTYPE Commit() override
    {
        return FAILED(commitResult) ? commitResult : CMemAllocator::Commit();
    }
    HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample** ppBuffer, REFERENCE_TIME* pStart, REFERENCE_TIME* pEnd,
                                        DWORD dwFlags) override
    {
        if (buffersLeft-- > 0)
            return CMemAllocator::GetBuffer(ppBuffer, pStart, pEnd, dwFlags);
        *ppBuffer = nullptr;
        return E_OUTOFMEMORY;
    }

    HRESULT propertiesResult = S_OK, commitResult = S_OK;
    std::atomic<int> buffersLeft = INT32_MAX;

private:
    ~FailingAllocator() override = default;
};

class AllocatorOfTheSink : public GraphTest {
protected:
    void BuildWithAllocator()
    {
        Add(10);
        allocator = Owned(new FailingAllocator);
        ASSERT_EQ(sink->Pin().NotifyAllocator(allocator.Get(), FALSE), S_OK);
    }
    HRESULT Connect()
    {
        const HRESULT hr = graph->ConnectDirect(source->GetPin(0), transform->GetPin(0), nullptr);
        return FAILED(hr) ? hr : graph->ConnectDirect(transform->GetPin(1), sink->GetPin(0), nullptr);
    }
    void TearDown() override { allocator = {}; }

    ComPtr<FailingAllocator> allocator;
};

TEST_F(AllocatorOfTheSink, IsReplacedWhenItRefusesTheSizes)
{
    BuildWithAllocator();
    allocator->propertiesResult = E_FAIL;
    ASSERT_EQ(Connect(), S_OK);
    EXPECT_NE(sink->Pin().Allocator(), allocator.Get());
    ASSERT_GE(control->Run(), S_OK);
    EXPECT_EQ(AwaitEnd(), EC_COMPLETE);
    EXPECT_EQ(sink->TakenSoFar().size(), 10u);
    EXPECT_EQ(control->Stop(), S_OK);
}

#ifndef _WIN32   // a graph of the platform may tell a refusal later, by its state
TEST_F(AllocatorOfTheSink, FailsTheStartWhenItCannotCommit)
{
    BuildWithAllocator();
    allocator->commitResult = E_OUTOFMEMORY;
    ASSERT_EQ(Connect(), S_OK);
    EXPECT_EQ(control->Run(), E_OUTOFMEMORY);
    EXPECT_EQ(StateOf(sink.Get()), State_Stopped);
    EXPECT_EQ(transform->started, 1);
    EXPECT_EQ(transform->stopped, 1);
}
#endif

TEST_F(AllocatorOfTheSink, EndsTheStreamWhenItRunsOut)
{
    BuildWithAllocator();
    allocator->buffersLeft = 6;
    ASSERT_EQ(Connect(), S_OK);
    ASSERT_GE(control->Run(), S_OK);
    EXPECT_EQ(AwaitEvent(EC_ERRORABORT), E_OUTOFMEMORY);
    EXPECT_EQ(control->Stop(), S_OK);
    EXPECT_EQ(sink->TakenSoFar().size(), 6u);
    EXPECT_EQ(sink->Ends(), 1);
}

}   // namespace
