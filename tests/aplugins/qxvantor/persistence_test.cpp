#include "aplugins/qxvantor/persistence.h"
#include "aplugins/qxvantor/prop2.h"
#include "platform/com_ptr.h"

#include <objbase.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

QxVantorParams Record()   // every byte differs from 0 in some field
{
    return {.mode = 3,
            .reserved0 = 0,
            .stretchPercent = 133.7,
            .pitchSemitones = -3.21,
            .auxFlag = 1,
            .reserved1 = 0,
            .auxSemitones = 5.5,
            .formantPercent = 40.25,
            .contentPitch = 5,
            .reserved2 = 0,
            .sourceFrames = 1e9 + 0.5,
            .tempoFallback = 12000,
            .tempo = 9871,
            .syncPitch = 1,
            .bypass = 1,
            .reservedA = -1,
            .sourceRate = 96000};
}

bool Same(const QxVantorParams& a, const QxVantorParams& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

ComPtr<IStream> StreamOf(const Bytes& bytes)
{
    ComPtr<IStream> stream;
    EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Out()), S_OK);
    EXPECT_TRUE(bytes.empty() || stream->Write(bytes.data(), ULONG(bytes.size()), nullptr) == S_OK);
    EXPECT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
    return stream;
}

LoadedParams Load(const Bytes& bytes)
{
    return LoadParams(StreamOf(bytes).Get());
}

// The block put together by hand, from the layout.
Bytes Block(const QxVantorParams& record, const GUID& format = IID_IQxVantorProp2, DWORD size = 108)
{
    Bytes block(108);
    std::memcpy(&block[0], &size, 4);
    std::memcpy(&block[4], &format, 16);
    std::memcpy(&block[20], &record, 88);
    return block;
}

// Succeeds so many times; a failing read gives its bytes nevertheless.
class FailingStream final : public IStream {
public:
    FailingStream(Bytes content, size_t goodCalls) : bytes(std::move(content)), good(goodCalls) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE Read(void* pv, ULONG cb, ULONG*) override
    {
        const size_t n = std::min<size_t>(cb, bytes.size() - at);
        std::memcpy(pv, bytes.data() + at, n);
        at += n;
        return Next();
    }
    HRESULT STDMETHODCALLTYPE Write(const void*, ULONG cb, ULONG*) override
    {
        at += cb;
        return Next();
    }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

    size_t Position() const { return at; }

private:
    HRESULT Next() { return calls++ < good ? S_OK : STG_E_MEDIUMFULL; }

    const Bytes bytes;
    const size_t good;
    size_t calls = 0, at = 0;
};

TEST(Persistence, ARecordComesBackFromTheBlockThatTheLayoutSays)
{
    ComPtr<IStream> stream = StreamOf({});
    ASSERT_EQ(SaveParams(stream.Get(), Record()), S_OK);
    Bytes saved(200);
    ULONG cb = 0;
    ASSERT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
    ASSERT_TRUE(SUCCEEDED(stream->Read(saved.data(), ULONG(saved.size()), &cb)));
    saved.resize(cb);
    EXPECT_EQ(saved, Block(Record()));
    const LoadedParams loaded = Load(saved);
    EXPECT_EQ(loaded.hr, S_OK);
    EXPECT_TRUE(loaded.tellListeners);
    EXPECT_TRUE(Same(loaded.record, Record()));
}

TEST(Persistence, TheFormerFormatHoldsFactors)
{
    static constexpr struct {
        double factor, pitch, percent, semitones;
    } kCases[] = {
        {1.0, 1.0, 100.0, 0.0},
        {2.0, 0.5, 200.0, -12.0},
        {0.5, 2.0, 50.0, 12.0},
        {1.0, 0.0, 100.0, -std::numeric_limits<double>::infinity()},   // the clamp makes it the lowest pitch
    };
    for (const auto& c : kCases) {
        QxVantorParams record = Record();
        record.stretchPercent = c.factor;
        record.pitchSemitones = c.pitch;
        const LoadedParams loaded = Load(Block(record, kFormerFormat));
        EXPECT_EQ(loaded.hr, S_OK);
        record.stretchPercent = c.percent;
        record.pitchSemitones = c.semitones;
        EXPECT_TRUE(Same(loaded.record, record)) << c.factor << ", " << c.pitch;
    }
}

TEST(Persistence, ADamagedBlockChangesNothing)
{
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    QxVantorParams noStretch = Record(), badStretch = Record(), badPitch = Record(), badFormants = Record();
    QxVantorParams negativePitch = Record();
    noStretch.stretchPercent = 0.0;
    badStretch.stretchPercent = badPitch.pitchSemitones = badFormants.formantPercent = kNaN;
    negativePitch.pitchSemitones = -1.0;   // a factor has no logarithm then
    const Bytes blocks[] = {
        Block(Record(), IID_IQxVantorProp2, 107),
        Block(Record(), IID_IQxVantorProp2, 109),
        Block(Record(), IID_IStream),
        Block(noStretch),
        Block(noStretch, kFormerFormat),
        Block(badStretch),
        Block(badPitch),
        Block(badFormants),
        Block(negativePitch, kFormerFormat),
    };
    for (const Bytes& block : blocks) {
        const LoadedParams loaded = Load(block);
        EXPECT_EQ(loaded.hr, E_FAIL) << (&block - blocks);
        EXPECT_FALSE(loaded.tellListeners) << (&block - blocks);
    }
    for (size_t i = 0; i < 20; ++i) {   // any wrong byte of size and mark
        Bytes block = Block(Record());
        block[i] ^= 0x10;
        EXPECT_EQ(Load(block).hr, E_FAIL) << i;
    }
    EXPECT_EQ(LoadParams(nullptr).hr, E_POINTER);
}

// Below 36 bytes the stretch is not complete; from there on what is missing reads as 0.
TEST(Persistence, EveryTruncationHasOneMeaning)
{
    for (size_t n = 0; n <= 108; ++n) {
        Bytes current = Block(Record()), former = Block(Record(), kFormerFormat);
        current.resize(n);
        former.resize(n);
        const LoadedParams loaded = Load(current);
        if (n < 36) {
            EXPECT_EQ(loaded.hr, E_FAIL) << n;
            EXPECT_EQ(Load(former).hr, E_FAIL) << n;
            continue;
        }
        current.resize(108);
        QxVantorParams expected;
        std::memcpy(&expected, &current[20], 88);
        EXPECT_TRUE(SUCCEEDED(loaded.hr) && Same(loaded.record, expected)) << n;
    }
}

TEST(Persistence, FailuresOfTheStreamComeBackAsTheyAre)
{
    FailingStream noHeader(Block(Record()), 0);
    EXPECT_EQ(LoadParams(&noHeader).hr, STG_E_MEDIUMFULL);
    FailingStream noRecord(Block(Record()), 1);   // it gives bytes, and yet fails
    const LoadedParams loaded = LoadParams(&noRecord);
    EXPECT_EQ(loaded.hr, STG_E_MEDIUMFULL);
    EXPECT_TRUE(loaded.tellListeners);

    FailingStream refusing({}, 0), full({}, 1), roomy({}, 2);
    EXPECT_EQ(SaveParams(&refusing, Record()), STG_E_MEDIUMFULL);
    EXPECT_EQ(refusing.Position(), 20u);   // nothing is tried behind a failure
    EXPECT_EQ(SaveParams(&full, Record()), STG_E_MEDIUMFULL);
    EXPECT_EQ(SaveParams(&roomy, Record()), S_OK);
    EXPECT_EQ(SaveParams(nullptr, Record()), E_POINTER);
}

}   // namespace
