// Allocators and their samples.
#include "tests/platform/media/streams.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

ComPtr<CMemAllocator> MakeAllocator(ALLOCATOR_PROPERTIES properties)
{
    auto allocator = Owned(new CMemAllocator);
    ALLOCATOR_PROPERTIES granted{};
    EXPECT_EQ(allocator->SetProperties(&properties, &granted), S_OK);
    EXPECT_EQ(granted.cbBuffer, properties.cbBuffer);
    return allocator;
}

ComPtr<IMediaSample> Get(CMemAllocator* allocator)
{
    ComPtr<IMediaSample> sample;
    EXPECT_EQ(allocator->GetBuffer(sample.Out(), nullptr, nullptr, 0), S_OK);
    return sample;
}

TEST(Allocator, RefusesPropertiesThatCannotBe)
{
    const auto allocator = MakeAllocator({2, 16, 1, 0});
    const struct {
        ALLOCATOR_PROPERTIES asked;
        HRESULT result;
    } cases[] = {{{2, 16, 0, 0}, VFW_E_BADALIGN},
                 {{2, 16, 3, 0}, VFW_E_BADALIGN},
                 {{-1, 16, 1, 0}, E_INVALIDARG},
                 {{2, -1, 1, 0}, E_INVALIDARG},
                 {{2, 16, 1, -1}, E_INVALIDARG}};
    for (auto c : cases) {
        ALLOCATOR_PROPERTIES granted{}, now{};
        EXPECT_EQ(allocator->SetProperties(&c.asked, &granted), c.result);
        ASSERT_EQ(allocator->GetProperties(&now), S_OK);
        EXPECT_EQ(now.cbBuffer, 16);   // the former ones stay
    }
}

TEST(Allocator, HandsOutEveryBufferOnceAlignedAndPrefixed)
{
    const auto allocator = MakeAllocator({3, 100, 64, 20});
    ASSERT_EQ(allocator->Commit(), S_OK);
    std::vector<ComPtr<IMediaSample>> all;
    std::vector<BYTE*> at;
    for (int i = 0; i < 3; ++i) {
        all.push_back(Get(allocator.Get()));
        BYTE* p = nullptr;
        ASSERT_EQ(all.back()->GetPointer(&p), S_OK);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 64, 0u);
        std::memset(p - 20, i, 120);   // the sanitizer and the check below see an overlap
        at.push_back(p);
        EXPECT_EQ(all.back()->GetSize(), 100);
    }
    for (int i = 0; i < 3; ++i)
        for (int k = -20; k < 100; ++k)
            ASSERT_EQ(at[size_t(i)][k], i);
    ComPtr<IMediaSample> none;
    EXPECT_EQ(allocator->GetBuffer(none.Out(), nullptr, nullptr, AM_GBF_NOWAIT), VFW_E_TIMEOUT);
    all.pop_back();
    EXPECT_EQ(allocator->GetBuffer(none.Out(), nullptr, nullptr, AM_GBF_NOWAIT), S_OK);
    none = {};
    allocator->Decommit();
}

TEST(Allocator, AWaitEndsWithABufferOrWithTheDecommit)
{
    const auto allocator = MakeAllocator({1, 16, 1, 0});
    ASSERT_EQ(allocator->Commit(), S_OK);
    for (const bool decommit : {false, true}) {
        auto held = Get(allocator.Get());
        HRESULT result = E_UNEXPECTED;
        std::thread waiting([&] {
            ComPtr<IMediaSample> sample;
            result = allocator->GetBuffer(sample.Out(), nullptr, nullptr, 0);
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        if (decommit)
            allocator->Decommit();
        else
            held = {};
        waiting.join();
        EXPECT_EQ(result, decommit ? VFW_E_NOT_COMMITTED : S_OK);
    }
}

TEST(Allocator, ChangesItsPropertiesOnlyAtRest)
{
    auto allocator = MakeAllocator({2, 16, 1, 0});
    ALLOCATOR_PROPERTIES other = {1, 32, 1, 0}, granted{};
    ASSERT_EQ(allocator->Commit(), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);   // once more is nothing
    EXPECT_EQ(allocator->SetProperties(&other, &granted), VFW_E_ALREADY_COMMITTED);
    auto sample = Get(allocator.Get());
    ASSERT_EQ(allocator->Decommit(), S_OK);
    EXPECT_EQ(allocator->SetProperties(&other, &granted), VFW_E_BUFFERS_OUTSTANDING);
    ASSERT_EQ(allocator->Commit(), S_OK);   // taken up again while a buffer is out
    auto second = Get(allocator.Get());
    ComPtr<IMediaSample> none;
    EXPECT_EQ(allocator->GetBuffer(none.Out(), nullptr, nullptr, AM_GBF_NOWAIT), VFW_E_TIMEOUT);
    second = {};
    ASSERT_EQ(allocator->Decommit(), S_OK);
    allocator = {};   // the sample keeps it
    BYTE* p = nullptr;
    ASSERT_EQ(sample->GetPointer(&p), S_OK);
    std::memset(p, 1, 16);
}

TEST(Allocator, FailsCleanly)
{
    const auto allocator = Owned(new CMemAllocator);
    EXPECT_EQ(allocator->Commit(), VFW_E_SIZENOTSET);
    ComPtr<IMediaSample> none;
    EXPECT_EQ(allocator->GetBuffer(none.Out(), nullptr, nullptr, 0), VFW_E_NOT_COMMITTED);
    ALLOCATOR_PROPERTIES huge = {INT32_MAX, INT32_MAX, 1, 0}, small = {1, 8, 1, 0}, granted{};
    ASSERT_EQ(allocator->SetProperties(&huge, &granted), S_OK);
    EXPECT_EQ(allocator->Commit(), E_OUTOFMEMORY);
    ASSERT_EQ(allocator->SetProperties(&small, &granted), S_OK);
    EXPECT_EQ(allocator->Commit(), S_OK);
    EXPECT_TRUE(Get(allocator.Get()));
    allocator->Decommit();
}

TEST(Sample, KeepsWhatItIsToldAndForgetsItOnItsReturn)
{
    const auto allocator = MakeAllocator({1, 16, 1, 0});
    ASSERT_EQ(allocator->Commit(), S_OK);
    for (int life = 0; life < 2; ++life) {
        const auto sample = Get(allocator.Get());
        REFERENCE_TIME start = 5, end = 9, gotStart = 0, gotEnd = 0;
        AM_MEDIA_TYPE* type = nullptr;
        EXPECT_EQ(sample->GetActualDataLength(), 16);
        EXPECT_EQ(sample->GetTime(&gotStart, &gotEnd), VFW_E_SAMPLE_TIME_NOT_SET);
        EXPECT_EQ(sample->GetMediaTime(&gotStart, &gotEnd), VFW_E_MEDIA_TIME_NOT_SET);
        EXPECT_EQ(sample->GetMediaType(&type), S_FALSE);
        for (const HRESULT mark : {sample->IsSyncPoint(), sample->IsPreroll(), sample->IsDiscontinuity()})
            EXPECT_EQ(mark, S_FALSE);

        EXPECT_EQ(sample->SetActualDataLength(17), VFW_E_BUFFER_OVERFLOW);
        EXPECT_EQ(sample->SetActualDataLength(-1), VFW_E_BUFFER_OVERFLOW);
        EXPECT_EQ(sample->SetActualDataLength(3), S_OK);
        EXPECT_EQ(sample->GetActualDataLength(), 3);
        sample->SetTime(&start, nullptr);
        EXPECT_EQ(sample->GetTime(&gotStart, &gotEnd), VFW_S_NO_STOP_TIME);
        EXPECT_EQ(gotEnd, 6);
        sample->SetTime(&start, &end);
        EXPECT_EQ(sample->GetTime(&gotStart, &gotEnd), S_OK);
        EXPECT_EQ(gotEnd, 9);
        sample->SetMediaTime(&start, &end);
        EXPECT_EQ(sample->GetMediaTime(&gotStart, &gotEnd), S_OK);
        CMediaType changed = TypeOf(4);
        EXPECT_EQ(sample->SetMediaType(&changed), S_OK);
        ASSERT_EQ(sample->GetMediaType(&type), S_OK);
        EXPECT_EQ(KindOf(*type), 4);
        DeleteMediaType(type);
        sample->SetSyncPoint(TRUE);
        sample->SetPreroll(TRUE);
        sample->SetDiscontinuity(TRUE);
    }
    allocator->Decommit();
}

}   // namespace
