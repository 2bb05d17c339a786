// Samples through the filter: the same audio as from the driver alone, time stamps, marks, and what goes wrong around it.
#include "tests/allocations.h"
#include "tests/aplugins/driver_run.h"
#include "tests/aplugins/qxvantor/filter_rig.h"
#include "tests/signals.h"

#include <objbase.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>

namespace {

constexpr DWORD kRate = 44100;
constexpr REFERENCE_TIME kSecond = 10000000;

HRESULT Set(FilterRig& rig, QxVantorParams record)
{
    return rig.filter->SetParameters(&record);
}

// Brings the audio in pieces of some frames, stamped from start on, and ends the stream.
void Play(FilterRig& rig, const Signal& audio, WORD channels, size_t pieceFrames, REFERENCE_TIME start = 0)
{
    const size_t piece = pieceFrames * channels;
    for (size_t at = 0; at < audio.size(); at += piece) {
        const auto time = start + REFERENCE_TIME(double(at) / channels / kRate * kSecond);
        const std::span<const float> all(audio);
        ASSERT_EQ(rig.Send(all.subspan(at, std::min(piece, audio.size() - at)), time), S_OK);
    }
    ASSERT_EQ(rig.feed->pin.DeliverEndOfStream(), S_OK);
}

}   // namespace

TEST(VantorFilter, GivesWhatTheDriverGives)
{
    static constexpr struct {
        int32_t mode;
        double stretch, pitch;
        WORD channels;
    } kCases[] = {{kModeEfficient, 150, 3, 2},    {kModePro, 80, -4, 2},        {kModeSoloistMono, 200, 0, 1},
                  {kModeSoloistSpeech, 50, 5, 1}, {kModeEfficient, 1000, 0, 6}, {kModeEfficient, 10, 0, 1}};
    for (const auto& c : kCases) {
        const Signal in = Noise(int32_t(30000) * c.channels, 5, 0.5f);
        CVtn vtn(c.channels, kRate, 2048);
        QxVantorParams record = Record(c.stretch, c.pitch, c.mode);
        Start(vtn, record);
        const Signal expected = RunDriver(vtn, in, c.channels);

        FilterRig rig;
        ASSERT_EQ(Set(rig, record), S_OK);
        rig.filter->SetParam(kParamStretch,
                             float(c.stretch / 100));   // as a factor; in percent it is rounded once more
        ASSERT_EQ(rig.Start(c.channels, kRate), S_OK);
        Play(rig, in, c.channels, 1000);
        EXPECT_EQ(rig.take->pin.ends, 1);
        EXPECT_EQ(rig.Audio(), expected) << "mode " << c.mode << ", stretch " << c.stretch;
    }
}

TEST(VantorFilter, StampsRunOnFromTheDiscontinuityByCountedFrames)
{
    FilterRig rig;
    Set(rig, Record(130, 0));
    ASSERT_EQ(rig.Start(2, kRate), S_OK);
    const REFERENCE_TIME start = 5 * kSecond;
    for (int i = 0; i < 40; ++i) {
        if (i == 20)   // stamps stay contiguous over a change of the stretch
            rig.filter->SetStretchPercent(70);
        ASSERT_EQ(rig.Send(Noise(2000, unsigned(i), 0.3f), start + i * 123457, i == 0), S_OK);
    }
    ASSERT_GT(rig.taken.size(), 10u);
    int64_t frames = 0;
    for (size_t i = 0; i < rig.taken.size(); ++i) {
        const Taken& t = rig.taken[i];
        ASSERT_TRUE(t.time && t.mediaTime) << i;
        EXPECT_EQ(t.discontinuity, i == 0);
        EXPECT_EQ(t.sync, i == 0);
        const auto count = int64_t(t.audio.size() / 2);
        if (i == 0)
            EXPECT_EQ(t.time->first, start);
        else {
            EXPECT_EQ(t.time->first, rig.taken[i - 1].time->second);
            EXPECT_EQ(t.mediaTime->first, rig.taken[i - 1].mediaTime->second);
        }
        EXPECT_EQ(t.mediaTime->second - t.mediaTime->first, count);
        EXPECT_EQ(t.time->second - t.time->first, int64_t(double(count) / kRate * 1e7 + 0.5));
        frames += count;
        EXPECT_NEAR(double(t.time->second - start), double(frames) / kRate * 1e7, 0.5 * double(i + 1));
    }
}

TEST(VantorFilter, ADiscontinuityRestartsTheClockWithTheNextSampleThatComesOut)
{
    FilterRig rig;
    Set(rig, Record(100, 0));
    ASSERT_EQ(rig.Start(1, kRate), S_OK);
    for (int i = 0; i < 10; ++i)
        rig.Send(Noise(2048, 1, 0.3f), i * kSecond, i == 0);
    const size_t before = rig.taken.size();
    ASSERT_GT(before, 0u);
    // Too short a piece to give anything by itself: the mark waits.
    rig.Send(Noise(1, 1, 0.3f), 77 * kSecond, true);
    for (int i = 0; i < 10; ++i)
        rig.Send(Noise(2048, 1, 0.3f), 100 * kSecond, false);
    ASSERT_GT(rig.taken.size(), before);
    size_t marked = before;
    while (marked < rig.taken.size() && !rig.taken[marked].discontinuity)
        ++marked;
    ASSERT_LT(marked, rig.taken.size());
    EXPECT_EQ(rig.taken[marked].time->first, 77 * kSecond);
    EXPECT_EQ(std::count_if(rig.taken.begin() + ptrdiff_t(before), rig.taken.end(),
                            [](const Taken& t) { return t.discontinuity; }),
              1);
}

TEST(VantorFilter, TheTailCarriesNoStampsAndCompletesThePromise)
{
    FilterRig rig;
    Set(rig, Record(250, 0));
    ASSERT_EQ(rig.Start(1, kRate), S_OK);
    rig.Send(Noise(10000, 3, 0.3f), 0, true);
    const size_t before = rig.taken.size();
    ASSERT_EQ(rig.feed->pin.DeliverEndOfStream(), S_OK);
    ASSERT_GT(rig.taken.size(), before);
    for (size_t i = before; i < rig.taken.size(); ++i) {
        EXPECT_FALSE(rig.taken[i].time);
        EXPECT_FALSE(rig.taken[i].mediaTime);
        EXPECT_FALSE(rig.taken[i].discontinuity || rig.taken[i].sync);
    }
    EXPECT_EQ(rig.Audio().size(), 25000u);
    EXPECT_EQ(rig.take->pin.ends, 1);
}

TEST(VantorFilter, EmptySamplesAndOddBytesDoNoHarm)
{
    FilterRig rig;
    Set(rig, Record(100, 0));
    ASSERT_EQ(rig.Start(2, kRate), S_OK);
    EXPECT_EQ(rig.Send({}, 0, true), S_OK);
    EXPECT_EQ(rig.Send(Noise(2001, 3, 0.3f), 0), S_OK) << "the half frame at the end is dropped";
    EXPECT_EQ(rig.Send({}, std::nullopt), S_OK);
    EXPECT_EQ(rig.feed->pin.DeliverEndOfStream(), S_OK);
    EXPECT_EQ(rig.Audio().size(), 2000u);
}

TEST(VantorFilter, ARefusalDownstreamEndsTheSampleWithItsResult)
{
    for (const HRESULT refusal : {E_FAIL, S_FALSE, VFW_E_RUNTIME_ERROR}) {
        FilterRig rig;
        Set(rig, Record(200, 0));
        ASSERT_EQ(rig.Start(1, kRate), S_OK);
        int calls = 0;
        rig.take->pin.onSample = [&](IMediaSample*) { return ++calls == 2 ? refusal : S_OK; };
        HRESULT hr = S_OK;
        for (int i = 0; i < 20 && hr == S_OK; ++i)
            hr = rig.Send(Noise(4000, 1, 0.3f), 0, i == 0);
        EXPECT_EQ(hr, refusal);
        EXPECT_EQ(calls, 2);
        EXPECT_EQ(rig.Send(Noise(4000, 1, 0.3f), 0), S_OK) << "the next sample is a new try";
        EXPECT_EQ(rig.feed->pin.DeliverEndOfStream(), S_OK);
        EXPECT_EQ(rig.take->pin.ends, 1);
    }
}

TEST(VantorFilter, AnAllocatorThatGivesNothingEndsTheCall)
{
    FilterRig rig;
    Set(rig, Record(100, 0));
    ASSERT_EQ(rig.Start(1, kRate), S_OK);
    ComPtr<IMemAllocator> allocator;
    ASSERT_EQ(rig.take->pin.GetAllocator(allocator.Out()), S_OK);
    allocator->Decommit();
    EXPECT_EQ(rig.Send(Noise(4000, 1, 0.3f), 0, true), VFW_E_NOT_COMMITTED);
    EXPECT_EQ(rig.feed->pin.DeliverEndOfStream(), VFW_E_NOT_COMMITTED);
    EXPECT_EQ(rig.take->pin.ends, 0) << "the end is not passed on before the tail";
}

TEST(VantorFilter, RefusesDataWhenItDoesNotStream)
{
    FilterRig rig;
    ASSERT_EQ(rig.ConnectInput(FloatType(1, kRate)), S_OK);
    ASSERT_EQ(rig.ConnectOutput(), S_OK);
    rig.feed->Pause();
    EXPECT_EQ(rig.Send(Noise(100, 1), 0, true), VFW_E_WRONG_STATE);
    ASSERT_EQ(rig.Pause(), S_OK);
    EXPECT_EQ(rig.feed->pin.DeliverBeginFlush(), S_OK);
    EXPECT_EQ(rig.Send(Noise(100, 1), 0, true), S_FALSE);
    EXPECT_EQ(rig.feed->pin.DeliverEndFlush(), S_OK);
    EXPECT_EQ(rig.Send(Noise(100, 1), 0, true), S_OK);
    EXPECT_EQ(rig.filter->Transform(nullptr, nullptr), E_INVALIDARG);
}

// Memory is short at each allocation of the start in turn: a clear code, and the next start goes through.
TEST(VantorFilter, DoesNotStartWithoutAnEngine)
{
    FilterRig rig;
    ASSERT_EQ(rig.ConnectInput(FloatType(2, kRate)), S_OK);
    ASSERT_EQ(rig.ConnectOutput(), S_OK);
    for (const int32_t mode : {kModeEfficient, kModePro, kModeSoloistMono}) {
        ASSERT_EQ(Set(rig, Record(125.0, 3.0, mode)), S_OK);
        int withoutEngine = 0;
        for (int64_t successes = 0;; ++successes) {
            HRESULT hr = S_OK;
            bool failed = false;
            {
                FailingAllocation failing(successes);
                hr = rig.filter->Pause();
                failed = failing.HasFailed();
            }
            rig.filter->Stop();
            if (!failed)
                break;
            ASSERT_TRUE(hr == S_OK || hr == VFW_E_UNSUPPORTED_AUDIO || hr == E_OUTOFMEMORY) << successes << ": " << hr;
            withoutEngine += hr == VFW_E_UNSUPPORTED_AUDIO;
        }
        EXPECT_GT(withoutEngine, 10) << mode;
        ASSERT_EQ(rig.Pause(), S_OK);
        EXPECT_EQ(rig.Send(Noise(200, 1), 0, true), S_OK);
        rig.Stop();
    }
}

// ---- parameters while it runs -----------------------------------------------------------------------------------------

TEST(VantorFilter, ACurveDrivesTheStretchAgainstTheInputsTime)
{
    FilterRig rig;
    Set(rig, Record(100, 0));
    MP_ENVELOPE_SEGMENT segments[] = {{1 * kSecond, 2 * kSecond, 2.0f, 2.0f, MP_CURVE_JUMP, 0}};
    ASSERT_EQ(rig.filter->AddEnvelope(kParamStretch, 1, segments), S_OK);
    ASSERT_EQ(rig.Start(1, kRate), S_OK);
    Play(rig, Tone(3 * int32_t(kRate), 440, kRate, 0.3), 1, 441);
    // One second at 1, one at 2, and from then on the value stays: no segment says otherwise.
    EXPECT_NEAR(double(rig.Audio().size()) / kRate, 1 + 2 + 2, 0.2);
    double percent = 0.0;
    rig.filter->GetStretchPercent(&percent);
    EXPECT_NEAR(percent, 200.0, 1e-4);
    EXPECT_EQ(rig.filter->IsFreeStretchPercent(), S_FALSE);
}

// Two threads set parameters, one reads them, one loads and saves, while audio streams; then a stop from outside, and a
// flush, in the middle of it.
TEST(VantorFilter, StreamsWhileSeveralThreadsTurnItsParameters)
{
    FilterRig rig;
    ASSERT_EQ(rig.Start(1, kRate), S_OK);
    std::atomic<bool> done = false;
    const auto until = [&](auto work) {
        return std::thread([&done, work] {
            for (int i = 0; !done; ++i)
                work(i);
        });
    };
    auto& f = *rig.filter;
    std::thread threads[] = {
        until([&](int i) { f.SetParam(kParamPitch, float(i % 25 - 12)); }),
        until([&](int i) {
            f.SetStretchPercent(80 + i % 60);
            MP_ENVELOPE_SEGMENT segment = {0, kSecond, 1.0f, 1.2f, MP_CURVE_LINEAR, 0};
            f.AddEnvelope(kParamStretch, 1, &segment);
            f.FlushEnvelope(kAllParams, 0, kSecond);
        }),
        until([&](int) {
            QxVantorParams record;
            f.GetParameters(&record);
            EXPECT_TRUE(std::abs(record.pitchSemitones) <= 24.0);
        }),
        until([&](int) {
            ComPtr<IStream> stream;
            CreateStreamOnHGlobal(nullptr, TRUE, stream.Out());
            f.Save(stream.Get(), FALSE);
            stream->Seek({}, STREAM_SEEK_SET, nullptr);
            EXPECT_EQ(f.Load(stream.Get()), S_OK);
        }),
        until([&](int i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            if (i % 4 == 0) {
                rig.feed->pin.DeliverBeginFlush();
                rig.feed->pin.DeliverEndFlush();
            }
        }),
    };
    const Signal in = Tone(2048, 440, kRate, 0.3);
    for (int i = 0; i < 300; ++i) {
        const HRESULT hr = rig.Send(in, i * 464399, i == 0);
        EXPECT_TRUE(hr == S_OK || hr == S_FALSE || hr == VFW_E_NOT_COMMITTED) << hr;
    }
    std::thread stopper([&] { f.Stop(); });
    while (SUCCEEDED(rig.Send(in, 0))) {   // stopped, or its buffers are taken away
    }
    stopper.join();
    done = true;
    for (auto& thread : threads)
        thread.join();
    for (const Taken& t : rig.taken)
        for (const float x : t.audio)
            ASSERT_TRUE(std::isfinite(x));
}

TEST(VantorFilter, ThePrivateInterfaceClampsStoresAndTells)
{
    FilterRig rig;
    auto& f = *rig.filter;
    double value = 0.0;
    int32_t index = 0;
    f.SetStretchPercent(5);
    f.GetStretchPercent(&value);
    EXPECT_DOUBLE_EQ(value, 10.000000149011612);
    f.SetStretchPercent(1e6);
    f.GetStretchPercent(&value);
    EXPECT_DOUBLE_EQ(value, 1000.0);
    f.SetPitchSemitones(-99);
    f.GetPitchSemitones(&value);
    EXPECT_EQ(value, -24.0);
    f.SetContentPitch(12);
    f.GetContentPitch(&index);
    EXPECT_EQ(index, 9);
    f.SetMode(-3);
    f.GetMode(&index);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(f.GetMode(nullptr), E_POINTER);
    EXPECT_EQ(f.GetTempo(nullptr), E_POINTER);

    f.SetTempo(12345);
    f.SetSourceFrames(1e9);
    QxVantorParams record;
    ASSERT_EQ(f.GetParameters(&record), S_OK);
    EXPECT_EQ(record.tempo, 12345);
    EXPECT_EQ(record.sourceFrames, 1e9);
    EXPECT_EQ(record.contentPitch, 9);
    EXPECT_EQ(f.BeginEditTempo(), S_FALSE);
    EXPECT_EQ(f.EndEditTempo(), S_FALSE);
    EXPECT_EQ(f.IsFreeTempo(), S_FALSE);
    EXPECT_EQ(f.IsFreeMode(), S_FALSE);
    EXPECT_EQ(f.GetParameters(nullptr), E_POINTER);
    EXPECT_EQ(f.SetParameters(nullptr), E_POINTER);
    EXPECT_EQ(f.GetWaveFormat(nullptr, 0), E_POINTER);
}

TEST(VantorFilter, IsDirtyUntilItIsSavedAndTakesBackWhatItSaved)
{
    FilterRig rig;
    auto& f = *rig.filter;
    EXPECT_EQ(f.IsDirty(), S_OK) << "the default preset is a change";
    f.SetPitchSemitones(2.5);
    f.SetTempo(9000);
    ComPtr<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Out()), S_OK);
    ASSERT_EQ(f.Save(stream.Get(), TRUE), S_OK);
    EXPECT_EQ(f.IsDirty(), S_FALSE);
    f.SetPitchSemitones(2.5);
    f.SetTempo(1);
    EXPECT_EQ(f.IsDirty(), S_FALSE) << "neither a value that stays nor a field that is carried along";
    f.SetBypass(1);
    EXPECT_EQ(f.IsDirty(), S_OK);
    EXPECT_EQ(f.Save(stream.Get(), TRUE), S_OK);
    EXPECT_EQ(f.Save(stream.Get(), FALSE), S_OK);
    EXPECT_EQ(f.IsDirty(), S_OK) << "a copy for somebody else";

    ASSERT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
    ASSERT_EQ(f.Load(stream.Get()), S_OK);
    QxVantorParams record;
    f.GetParameters(&record);
    EXPECT_EQ(record.pitchSemitones, 2.5);
    EXPECT_EQ(record.tempo, 9000);
    EXPECT_EQ(record.bypass, 0);
    ULARGE_INTEGER size = {};
    EXPECT_EQ(f.GetSizeMax(&size), S_OK);
    EXPECT_EQ(size.QuadPart, 108u);
    // A block that ends before its stretch leaves everything as it was.
    ComPtr<IStream> cut;
    CreateStreamOnHGlobal(nullptr, TRUE, cut.Out());
    f.Save(cut.Get(), FALSE);
    ULARGE_INTEGER length = {};
    length.QuadPart = 30;
    cut->SetSize(length);
    cut->Seek({}, STREAM_SEEK_SET, nullptr);
    EXPECT_EQ(f.Load(cut.Get()), E_FAIL);
    double pitch = 0.0;
    f.GetPitchSemitones(&pitch);
    EXPECT_EQ(pitch, 2.5);
}

TEST(VantorFilter, APresetIsAFullRecord)
{
    FilterRig rig;
    auto& f = *rig.filter;
    DWORD count = 0;
    EXPECT_EQ(f.GetPresetCount(&count), S_OK);
    EXPECT_EQ(count, 8u);
    f.SetTempo(9000);
    f.SetMode(4);
    EXPECT_EQ(f.SetPreset(8), E_INVALIDARG);
    ASSERT_EQ(f.SetPreset(7), S_OK);
    QxVantorParams record;
    f.GetParameters(&record);
    EXPECT_EQ(record.stretchPercent, 50.0);
    EXPECT_EQ(record.pitchSemitones, -12.0);
    EXPECT_EQ(record.mode, 0);
    EXPECT_EQ(record.tempo, 0);
    EXPECT_EQ(record.contentPitch, 7);
}

TEST(VantorFilter, AnswersForItsInterfaces)
{
    FilterRig rig;
    for (const IID& iid : {IID_IBaseFilter, IID_IMediaFilter, IID_IQxVantorProp2, IID_IMediaParams, IID_IMediaParamInfo,
                           IID_IMediaParamsSetUICallback, IID_ISpecifyPropertyPages, IID_IPersistStream,
                           IID_IStaticFilterPreset, IID_IQxTranslationInfo}) {
        ComPtr<IUnknown> p;
        EXPECT_EQ(rig.filter->NonDelegatingQueryInterface(iid, reinterpret_cast<void**>(p.Out())), S_OK);
    }
    void* none = &rig;
    EXPECT_EQ(rig.filter->NonDelegatingQueryInterface(IID_IMemAllocator, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(rig.filter->NonDelegatingQueryInterface(IID_IQxVantorProp2, nullptr), E_POINTER);
    EXPECT_EQ(rig.filter->GetPin(2), nullptr);
    EXPECT_EQ(rig.filter->GetPin(-1), nullptr);
}
