// Automated parameters: values, curves against their closed forms, edits and the host's callback.
#include "aplugins/qxvantor/plugin_params.h"
#include "aplugins/qxvantor/vantor_params.h"
#include "kernel/lang.h"

#include <objbase.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr REFERENCE_TIME kSecond = 10000000;

class Params final : public CQxPlugInParams {
public:
    Params() { EXPECT_EQ(Initialize(VantorParamTable()), S_OK); }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    using CQxPlugInParams::AdvanceTime;
    using CQxPlugInParams::BeginEdit;
    using CQxPlugInParams::EndEdit;
    using CQxPlugInParams::EndStreaming;
    using CQxPlugInParams::GetAll;
    using CQxPlugInParams::IsFree;
    using CQxPlugInParams::SetAll;
    using CQxPlugInParams::SetField;
    using CQxPlugInParams::SetRate;
    using CQxPlugInParams::SetSampleTimes;

    float Value(DWORD i)
    {
        MP_DATA value = NAN;
        EXPECT_EQ(GetParam(i, &value), S_OK);
        return value;
    }
    // The value at time t, and whether the evaluation reports a change.
    float ValueAt(DWORD i, REFERENCE_TIME t, bool* pChanged = nullptr)
    {
        bool changed = false;
        SetSampleTimes(t, t + 1);
        AdvanceTime(1, &changed, 1.0);
        if (pChanged)
            *pChanged = changed;
        return Value(i);
    }
    HRESULT Add(DWORD i, std::vector<MP_ENVELOPE_SEGMENT> segments)
    {
        return AddEnvelope(i, DWORD(segments.size()), segments.data());
    }
};

MP_ENVELOPE_SEGMENT Segment(double from, double to, float v0, float v1, MP_CURVE_TYPE curve)
{
    return {REFERENCE_TIME(from * kSecond), REFERENCE_TIME(to * kSecond), v0, v1, curve, 0};
}

QxVantorParams Record()
{
    QxVantorParams record = {};
    record.mode = 2;
    record.stretchPercent = 150;
    record.pitchSemitones = -3.5;
    record.formantPercent = 40;
    record.contentPitch = 5;
    record.bypass = 1;
    return record;
}

class Callback final : public IMediaParamsUICallback {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE ParamsBeginCapture(const DWORD* pIndices, DWORD count) override
    {
        return Note('(', pIndices, count);
    }
    HRESULT STDMETHODCALLTYPE ParamsChanged(const DWORD* pIndices, DWORD count, const MP_DATA* pValues) override
    {
        lastValue = *pValues;
        if (params)   // the lock is free: another thread gets in while the callback runs
            std::thread([this] { params->Value(0); }).join();
        return Note('=', pIndices, count);
    }
    HRESULT STDMETHODCALLTYPE ParamsEndCapture(const DWORD* pIndices, DWORD count) override
    {
        return Note(')', pIndices, count);
    }
    HRESULT Note(char what, const DWORD* pIndices, DWORD count)
    {
        EXPECT_EQ(count, 1u);
        log += what + std::to_string(*pIndices);
        return S_OK;
    }

    std::atomic<ULONG> references = 1;
    std::string log;
    float lastValue = 0.0f;
    Params* params = nullptr;
};

}   // namespace

TEST(PlugInParams, RecordsAndValuesConvertBothWays)
{
    Params params;
    const QxVantorParams in = Record();
    params.SetAll(&in);
    EXPECT_EQ(params.Value(kParamStretch), 1.5f);
    EXPECT_EQ(params.Value(kParamPitch), -3.5f);
    EXPECT_EQ(params.Value(kParamMode), 2.0f);
    QxVantorParams out = {};
    params.GetAll(&out);
    EXPECT_NEAR(out.stretchPercent, 150.0, 1e-5);
    EXPECT_EQ(out.pitchSemitones, -3.5);
    EXPECT_EQ(out.contentPitch, 5);
    EXPECT_EQ(out.mode, 2);
    EXPECT_EQ(out.syncPitch, 0);
    EXPECT_EQ(out.bypass, 1);
    // Out of range is clamped: 5 % becomes the float next to 0.1 in percent.
    QxVantorParams wild = {};
    wild.mode = 9;
    wild.stretchPercent = 5;
    wild.pitchSemitones = 1e9;
    wild.formantPercent = NAN;
    wild.contentPitch = -1;
    params.SetAll(&wild);
    params.GetAll(&out);
    EXPECT_DOUBLE_EQ(out.stretchPercent, 10.000000149011612);
    EXPECT_EQ(out.pitchSemitones, 24.0);
    EXPECT_EQ(out.mode, 5);
    EXPECT_EQ(out.contentPitch, 3);
    EXPECT_NEAR(out.formantPercent, 40.0, 1e-5) << "what is no number changes nothing";
}

TEST(PlugInParams, DirectValuesAreCheckedAndTellWhetherTheyChangedAnything)
{
    Params params;
    EXPECT_EQ(params.SetParam(kParamPitch, 24.0f), S_OK);
    EXPECT_EQ(params.SetParam(kParamPitch, 24.0f), S_FALSE);
    EXPECT_EQ(params.SetParam(kParamPitch, 24.01f), E_INVALIDARG);
    EXPECT_EQ(params.SetParam(kParamStretch, 0.1f), S_OK);
    EXPECT_EQ(params.SetParam(kParamStretch, 0.09f), E_INVALIDARG);
    EXPECT_EQ(params.SetParam(kParamStretch, std::numeric_limits<float>::quiet_NaN()), E_INVALIDARG);
    EXPECT_EQ(params.SetParam(7, 0.0f), E_INVALIDARG);
    MP_DATA value;
    EXPECT_EQ(params.GetParam(7, &value), E_INVALIDARG);
    EXPECT_EQ(params.GetParam(0, nullptr), E_POINTER);
    EXPECT_EQ(params.SetTimeFormat(kTimeReference, 3), S_OK);
    EXPECT_EQ(params.SetTimeFormat(GUID_NULL, 0), E_FAIL);
    EXPECT_EQ(params.Value(kParamSyncPitch), 1.0f) << "neutral";
}

TEST(PlugInParams, CurvesFollowTheirClosedForms)
{
    static constexpr struct {
        MP_CURVE_TYPE curve;
        double (*shape)(double);   // from 0 to 1 over 0 .. 1
    } kCurves[] = {
        {MP_CURVE_JUMP, [](double) { return 0.0; }},
        {MP_CURVE_LINEAR, [](double x) { return x; }},
        {MP_CURVE_SQUARE, [](double x) { return x * x; }},
        {MP_CURVE_INVSQUARE, [](double x) { return 1.0 - (1.0 - x) * (1.0 - x); }},
        {MP_CURVE_SINE, [](double) { return 0.0; }},   // declared by no parameter: a jump
    };
    for (const auto& c : kCurves) {
        Params params;
        params.SetRate(44100.0);
        ASSERT_EQ(params.Add(kParamPitch, {Segment(1, 3, -12, 4, c.curve)}), S_OK);
        for (double t = 1.0; t < 3.0; t += 0.03125)
            EXPECT_NEAR(params.ValueAt(kParamPitch, REFERENCE_TIME(t * kSecond)), -12 + 16 * c.shape((t - 1) / 2), 2e-6)
                << "curve " << c.curve << " at " << t;
    }
}

TEST(PlugInParams, AMovingCurveReportsChangesAndAJumpOne)
{
    Params params;
    params.SetRate(44100.0);
    params.Add(kParamPitch, {Segment(1, 2, 0, 4, MP_CURVE_LINEAR), Segment(3, 4, 5, 5, MP_CURVE_JUMP)});
    static constexpr struct {
        double t;
        bool changed;
        float value;
        bool free;
    } kSteps[] = {
        {0.5, false, 0.0f, true}, {1.0, true, 0.0f, false}, {1.5, true, 2.0f, false},
        {2.5, false, 2.0f, true}, {3.5, true, 5.0f, false}, {3.75, false, 5.0f, false},
        {4.0, true, 5.0f, true},  {4.5, false, 5.0f, true}, {1.25, true, 1.0f, false},   // the host has sought back
    };
    for (const auto& step : kSteps) {
        bool changed = false;
        EXPECT_EQ(params.ValueAt(kParamPitch, REFERENCE_TIME(step.t * kSecond), &changed), step.value) << step.t;
        EXPECT_EQ(changed, step.changed) << step.t;
        EXPECT_EQ(params.IsFree(kParamPitch), step.free) << step.t;
    }
}

TEST(PlugInParams, ARunningCurveGoesBeforeDirectValues)
{
    Params params;
    params.SetRate(44100.0);
    params.Add(kParamStretch, {Segment(0, 1, 1, 2, MP_CURVE_LINEAR)});
    params.ValueAt(kParamStretch, kSecond / 2);
    EXPECT_EQ(params.SetParam(kParamStretch, 5.0f), S_FALSE);
    EXPECT_EQ(params.Value(kParamStretch), 1.5f);
    params.EndStreaming();
    EXPECT_EQ(params.SetParam(kParamStretch, 5.0f), S_OK);
    params.SetRate(44100.0);
    params.ValueAt(kParamStretch, 2 * kSecond);
    EXPECT_EQ(params.SetParam(kParamStretch, 3.0f), S_OK) << "behind the curve's end";
}

TEST(PlugInParams, AnEditHoldsCurvesOff)
{
    Params params;
    params.SetRate(44100.0);
    params.Add(kParamPitch, {Segment(0, 1, 1, 2, MP_CURVE_LINEAR)});
    params.Add(kParamFormant, {Segment(0, 1, 10, 20, MP_CURVE_LINEAR)});
    params.BeginEdit(kParamPitch);
    EXPECT_EQ(params.ValueAt(kParamPitch, kSecond / 2), 0.0f);
    EXPECT_EQ(params.Value(kParamFormant), 15.0f);
    params.EndEdit(kParamPitch);
    bool changed = false;
    EXPECT_EQ(params.ValueAt(kParamPitch, kSecond / 2, &changed), 1.5f);
    EXPECT_TRUE(changed);
}

TEST(PlugInParams, TheClockStopsWhereASegmentEndsAndAtEvery20Milliseconds)
{
    Params params;
    params.SetRate(10000.0);   // 1000 ticks a frame
    bool changed = false;
    params.SetSampleTimes(0, 1);
    EXPECT_EQ(params.AdvanceTime(5000, &changed, 1.0), 5000) << "no curves: the whole block";
    EXPECT_FALSE(changed);
    params.Add(kParamPitch, {Segment(0.0, 0.005, 1, 1, MP_CURVE_JUMP), Segment(10, 11, 1, 1, MP_CURVE_JUMP)});
    params.SetSampleTimes(0, 1);
    EXPECT_EQ(params.AdvanceTime(5000, &changed, 1.0), 50);    // the end of the segment
    EXPECT_EQ(params.AdvanceTime(5000, &changed, 1.0), 200);   // 20 ms
    EXPECT_EQ(params.AdvanceTime(0, &changed, 1.0), 1);        // one frame at least
}

TEST(PlugInParams, NewSegmentsDisplaceWhatTheyOverlap)
{
    Params params;
    params.SetRate(44100.0);
    params.Add(kParamPitch, {Segment(0, 10, 1, 1, MP_CURVE_JUMP)});
    params.Add(kParamPitch, {Segment(4, 5, 2, 2, MP_CURVE_JUMP), Segment(5, 6, 3, 3, MP_CURVE_JUMP)});
    EXPECT_EQ(params.ValueAt(kParamPitch, 1 * kSecond), 0.0f) << "the long one has gone whole";
    EXPECT_EQ(params.ValueAt(kParamPitch, 4 * kSecond), 2.0f);
    EXPECT_EQ(params.ValueAt(kParamPitch, 5 * kSecond), 3.0f) << "touching is not overlapping";
    EXPECT_EQ(params.FlushEnvelope(kParamPitch, 5 * kSecond, 6 * kSecond), S_OK);
    EXPECT_EQ(params.ValueAt(kParamPitch, 4 * kSecond), 2.0f);
    EXPECT_EQ(params.ValueAt(kParamPitch, 5 * kSecond), 2.0f);
    EXPECT_EQ(params.FlushEnvelope(kAllParams, 0, 100 * kSecond), S_OK);
    params.SetParam(kParamPitch, 9.0f);
    EXPECT_EQ(params.ValueAt(kParamPitch, 4 * kSecond), 9.0f);

    MP_ENVELOPE_SEGMENT segment = Segment(0, 1, 0, 0, MP_CURVE_JUMP);
    EXPECT_EQ(params.AddEnvelope(kParamPitch, 1, nullptr), E_POINTER);
    EXPECT_EQ(params.AddEnvelope(7, 1, &segment), E_INVALIDARG);
    EXPECT_EQ(params.AddEnvelope(kParamPitch, 0, &segment), E_INVALIDARG);
    EXPECT_EQ(params.FlushEnvelope(7, 0, 1), E_INVALIDARG);
}

// Whatever segments there are, a search that starts at the last place finds what a search from the front finds.
TEST(PlugInParams, SegmentsAreFoundWhicheverWayTheClockJumps)
{
    Params jumping;
    jumping.SetRate(44100.0);
    std::vector<MP_ENVELOPE_SEGMENT> segments;
    for (int i = 0; i < 40; ++i)   // with gaps, and some that touch
        segments.push_back(Segment(i, i + (i % 3 == 0 ? 1.0 : 0.5), float(i % 24), 0, MP_CURVE_JUMP));
    jumping.Add(kParamPitch, segments);
    uint32_t state = 1;
    float expected = 0.0f;
    for (int step = 0; step < 2000; ++step) {
        state = state * 1664525u + 1013904223u;
        const REFERENCE_TIME t = REFERENCE_TIME(state >> 8) * (42 * kSecond >> 12) >> 12;
        for (const auto& s : segments)
            if (t >= s.rtStart && t < s.rtEnd)
                expected = s.valStart;
        ASSERT_EQ(jumping.ValueAt(kParamPitch, t), expected) << "at " << t;
    }
}

TEST(PlugInParams, TheHostHearsOfTurnsByHand)
{
    Params params;
    Callback callback;
    callback.params = &params;
    params.SetUICallback(&callback);
    EXPECT_EQ(callback.references, 2u);
    QxVantorParams record = Record();
    EXPECT_FALSE(params.SetField(&record, kParamPitch));
    EXPECT_EQ(callback.log, "(1=1)1");
    EXPECT_EQ(callback.lastValue, -3.5f);
    EXPECT_TRUE(params.SetField(&record, kParamPitch));
    EXPECT_EQ(callback.log, "(1=1)1") << "nothing changed";
    callback.log.clear();
    params.BeginEdit(kParamPitch);
    record.pitchSemitones = 1;
    params.SetField(&record, kParamPitch);
    record.pitchSemitones = 2;
    params.SetField(&record, kParamPitch);
    params.EndEdit(kParamPitch);
    EXPECT_EQ(callback.log, "(1=1=1)1");
    callback.log.clear();
    record = Record();
    record.bypass = 0;
    params.SetAll(&record);
    EXPECT_EQ(callback.log, "(0(1(2(3(4(5(6=0=1=2=3=4=5)0)1)2)3)4)5)6");
    params.SetUICallback(nullptr);
    EXPECT_EQ(callback.references, 1u);
}

TEST(PlugInParams, DescribeThemselvesInTheUsersLanguage)
{
    ASSERT_EQ(OpenKernelLanguage(GetModuleHandleW(nullptr)), S_OK);
    ASSERT_TRUE(QxLang_UpdateKernelLCID(KernelLanguage(), 0x0409, FALSE));
    Params params;
    DWORD count = 0;
    EXPECT_EQ(params.GetParamCount(&count), S_OK);
    EXPECT_EQ(count, 7u);
    MP_PARAMINFO info;
    ASSERT_EQ(params.GetParamInfo(kParamContent, &info), S_OK);
    EXPECT_EQ(info.mpType, MPT_ENUM);
    EXPECT_EQ(info.mopCaps, DWORD(MP_CURVE_JUMP));
    EXPECT_EQ(info.mpdNeutralValue, 7.0f);
    EXPECT_TRUE(std::basic_string<WCHAR>(info.szLabel) == TEXT("Optimize for audio content"));
    EXPECT_TRUE(std::basic_string<WCHAR>(info.szUnitText) == TEXT("Hz"));
    EXPECT_EQ(params.GetParamInfo(7, &info), E_INVALIDARG);
    EXPECT_EQ(params.GetParamInfo(0, nullptr), E_POINTER);

    static constexpr WCHAR kMode[] = TEXT("tensio Mode\0\0Pro\0Invalid Pro Mode\0Efficient\0Invalid Eff Mode\0"
                                          "Soloist (Monophonic)\0Soloist (Speech)\0");
    static constexpr WCHAR kPitch[] = TEXT("Pitch shift ratio\0Semitones\0");
    WCHAR* text = nullptr;
    ASSERT_EQ(params.GetParamText(kParamMode, &text), S_OK);
    EXPECT_TRUE(std::equal(std::begin(kMode), std::end(kMode), text));
    CoTaskMemFree(text);
    ASSERT_EQ(params.GetParamText(kParamPitch, &text), S_OK);
    EXPECT_TRUE(std::equal(std::begin(kPitch), std::end(kPitch), text));
    CoTaskMemFree(text);
    EXPECT_EQ(params.GetParamText(7, &text), E_INVALIDARG);
    EXPECT_EQ(params.GetParamText(0, nullptr), E_POINTER);
    CloseKernelLanguage();
}

// Two threads set, one reads, one streams: each value that is seen was set, whole.
TEST(PlugInParams, ServeSeveralThreadsAtOnce)
{
    Params params;
    params.SetRate(44100.0);
    std::atomic<bool> done = false;
    const auto setter = [&](float a, float b) {
        while (!done) {
            params.SetParam(kParamPitch, a);
            params.SetParam(kParamPitch, b);
            params.Add(kParamFormant, {Segment(0, 1, 50, 50, MP_CURVE_JUMP)});
            params.FlushEnvelope(kParamFormant, 0, kSecond);
        }
    };
    std::thread first(setter, 1.0f, 2.0f), second(setter, 3.0f, 4.0f);
    std::thread reader([&] {
        while (!done) {
            QxVantorParams record = {};
            params.GetAll(&record);
            EXPECT_TRUE(record.pitchSemitones >= 0.0 && record.pitchSemitones <= 4.0);
            params.IsFree(kParamFormant);
        }
    });
    for (int i = 0; i < 5000; ++i) {
        bool changed = false;
        params.SetSampleTimes(i * 100, i * 100 + 100);
        params.AdvanceTime(64, &changed, 1.0);
    }
    done = true;
    first.join();
    second.join();
    reader.join();
}
