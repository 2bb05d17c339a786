// The module through the platform's component runtime, which finds it in the registry by the filter's class id.
#include "aplugins/qxvantor/param_table.h"
#include "aplugins/qxvantor/vantor_setup.h"
#include "platform/com_ptr.h"
#include "platform/media/filter_graph.h"
#include "platform/media/media_params.h"
#include "tests/aplugins/driver_run.h"
#include "tests/aplugins/qxvantor/peers.h"

#include <windows.h>

#include <dshow.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

namespace {

using Text = std::basic_string<WCHAR>;

Text ClassKey()
{
    std::array<WCHAR, 40> id;
    StringFromGUID2(CLSID_QxVantor, id.data(), int(id.size()));
    return TEXT("CLSID\\") + Text(id.data());
}

// The registration of the class, as long as the object lives.
class Registration {
public:
    explicit Registration(const Text& path)
    {
        HKEY key = nullptr;
        const Text server = ClassKey() + TEXT("\\InprocServer32");
        EXPECT_EQ(
            RegCreateKeyExW(HKEY_CLASSES_ROOT, server.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
            ERROR_SUCCESS);
        Set(key, nullptr, path);
        Set(key, TEXT("ThreadingModel"), TEXT("Both"));
        RegCloseKey(key);
    }
    ~Registration() { RegDeleteTreeW(HKEY_CLASSES_ROOT, ClassKey().c_str()); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

private:
    static void Set(HKEY key, const WCHAR* name, const Text& value)
    {
        EXPECT_EQ(RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                                 DWORD((value.size() + 1) * sizeof(WCHAR))),
                  ERROR_SUCCESS);
    }
};

Text ModulePath()
{
    std::array<WCHAR, MAX_PATH> path = {};
    const HMODULE module = LoadLibraryExW(TEXT(QX_MODULE), nullptr, 0);
    EXPECT_NE(GetModuleFileNameW(module, path.data(), DWORD(path.size())), 0u);
    FreeLibrary(module);
    return path.data();
}

class ComponentRuntime : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))); }
    void TearDown() override { CoUninitialize(); }
    static ComPtr<IBaseFilter> CreateFilter()
    {
        ComPtr<IBaseFilter> filter;
        EXPECT_EQ(CoCreateInstance(CLSID_QxVantor, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                   reinterpret_cast<void**>(filter.Out())),
                  S_OK);
        return filter;
    }
    static ComPtr<IPin> PinOf(const ComPtr<IBaseFilter>& filter, const WCHAR* id)
    {
        ComPtr<IPin> pin;
        EXPECT_EQ(filter->FindPin(id, pin.Out()), S_OK);
        return pin;
    }
};

TEST_F(ComponentRuntime, CreatesTheFilterByItsClassId)
{
    const Registration registration(ModulePath());
    const auto filter = CreateFilter();
    ASSERT_TRUE(bool(filter));
    const auto info = Query<IMediaParamInfo>(filter.Get(), IID_IMediaParamInfo);
    ASSERT_TRUE(bool(info));
    DWORD count = 0;
    EXPECT_EQ(info->GetParamCount(&count), S_OK);
    EXPECT_EQ(count, 7u);
}

// The registered module between two peers in the platform's own graph, to the end of the stream.
TEST_F(ComponentRuntime, RunsTheFilterInTheGraph)
{
    const Registration registration(ModulePath());
    for (const int32_t mode : {kModePro, kModeEfficient, kModeSoloistMono, kModeSoloistSpeech}) {
        const auto filter = CreateFilter();
        ASSERT_TRUE(bool(filter));
        const auto params = Query<IMediaParams>(filter.Get(), IID_IMediaParams);
        ASSERT_EQ(params->SetParam(kParamStretch, 1.5f), S_OK);
        ASSERT_EQ(params->SetParam(kParamPitch, 3.0f), S_OK);
        params->SetParam(kParamMode, float(mode));
        ComPtr<IGraphBuilder> graph;
        ASSERT_EQ(CreateFilterGraph(graph.Out()), S_OK);
        auto* const feed = new OnePinFilter<FeedPin>;
        auto* const take = new OnePinFilter<TakePin>;
        const ComPtr<IBaseFilter> held[] = {ComPtr<IBaseFilter>(feed), ComPtr<IBaseFilter>(take)};
        Signal got;
        take->pin.onSample = [&](IMediaSample* pSample) {
            const Taken taken(pSample);
            got.insert(got.end(), taken.audio.begin(), taken.audio.end());
            return S_OK;
        };
        ASSERT_EQ(graph->AddFilter(feed, TEXT("feed")), S_OK);
        ASSERT_EQ(graph->AddFilter(filter.Get(), TEXT("filter")), S_OK);
        ASSERT_EQ(graph->AddFilter(take, TEXT("take")), S_OK);
        const CMediaType type = FloatType(2, 44100);
        ASSERT_EQ(graph->ConnectDirect(&feed->pin, PinOf(filter, TEXT("In")).Get(), &type), S_OK);
        ASSERT_EQ(graph->ConnectDirect(PinOf(filter, TEXT("Out")).Get(), &take->pin, nullptr), S_OK);
        const auto control = Query<IMediaControl>(graph.Get(), IID_IMediaControl);
        ASSERT_TRUE(SUCCEEDED(control->Run()));

        const Signal in = Noise(2 * 20000, 5, 0.5f);
        for (size_t at = 0; at < in.size(); at += 8000) {
            ComPtr<IMediaSample> sample;
            BYTE* data = nullptr;
            ASSERT_EQ(feed->pin.GetDeliveryBuffer(sample.Out(), nullptr, nullptr, 0), S_OK);
            sample->GetPointer(&data);
            std::copy_n(in.begin() + ptrdiff_t(at), 8000, reinterpret_cast<float*>(data));
            sample->SetActualDataLength(8000 * sizeof(float));
            ASSERT_EQ(feed->pin.Deliver(sample.Get()), S_OK);
        }
        ASSERT_EQ(feed->pin.DeliverEndOfStream(), S_OK);
        EXPECT_EQ(control->Stop(), S_OK);
        EXPECT_EQ(take->pin.ends, 1);

        CVtn vtn(2, 44100, 2048);
        QxVantorParams record = Record(150, 3, mode);
        record.contentPitch = 7;
        record.syncPitch = 0;
        Start(vtn, record);
        EXPECT_TRUE(got == RunDriver(vtn, in, 2)) << "mode " << mode << ", " << got.size() << " samples";
    }
}

}   // namespace
