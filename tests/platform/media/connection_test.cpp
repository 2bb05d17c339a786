// How pins come together and part.
#include "tests/platform/media/graph_fixture.h"

#include <objbase.h>

namespace {

class Connection : public GraphTest {
protected:
    void SetUp() override { Add(1); }
    HRESULT ConnectSource(const AM_MEDIA_TYPE* type = nullptr)
    {
        return graph->ConnectDirect(source->GetPin(0), transform->GetPin(0), type);
    }
    HRESULT ConnectSink(const AM_MEDIA_TYPE* type = nullptr)
    {
        return graph->ConnectDirect(transform->GetPin(1), sink->GetPin(0), type);
    }
};

TEST_F(Connection, TriesTheTypesThatMatchWhatIsTold)
{
    const CMediaType any = {}, right = TypeOf(1), wrong = TypeOf(2);
    CMediaType audio = {}, video = {};
    audio.majortype = MEDIATYPE_Audio;
    video.majortype = MEDIATYPE_Video;
    const struct {
        const AM_MEDIA_TYPE* type;
        HRESULT result;
    } cases[] = {{nullptr, S_OK},
                 {&any, S_OK},
                 {&audio, S_OK},
                 {&right, S_OK},
                 {&video, VFW_E_NO_ACCEPTABLE_TYPES},
                 {&wrong, VFW_E_TYPE_NOT_ACCEPTED}};
    for (const auto& c : cases) {
        EXPECT_EQ(ConnectSource(c.type), c.result) << &c - cases;
        EXPECT_EQ(transform->GetPin(0)->IsConnected(), c.result == S_OK);
        EXPECT_EQ(source->GetPin(0)->IsConnected(), c.result == S_OK);
        graph->Disconnect(source->GetPin(0));
        graph->Disconnect(transform->GetPin(0));
    }
}

TEST_F(Connection, TellsARefusalThatSaysMore)
{
    transform->refusal = VFW_E_UNSUPPORTED_AUDIO;
    EXPECT_EQ(ConnectSource(), VFW_E_UNSUPPORTED_AUDIO);
    const CMediaType full = TypeOf(1);
    EXPECT_EQ(ConnectSource(&full), VFW_E_UNSUPPORTED_AUDIO);
    transform->refusal = S_OK;
    ASSERT_EQ(ConnectSource(), S_OK);
    sink->kind = 2;
    EXPECT_EQ(ConnectSink(), VFW_E_NO_ACCEPTABLE_TYPES);
    EXPECT_FALSE(sink->GetPin(0)->IsConnected());
}

TEST_F(Connection, RefusesWhatCannotBe)
{
    EXPECT_EQ(ConnectSink(), E_UNEXPECTED);   // the filter has no input yet
    ASSERT_EQ(ConnectSource(), S_OK);
    EXPECT_EQ(ConnectSource(), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(source->GetPin(0)->Connect(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(transform->GetPin(1)->Connect(transform->GetPin(1), nullptr), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(sink->GetPin(0)->Disconnect(), S_FALSE);
    ASSERT_EQ(ConnectSink(), S_OK);
    ASSERT_GE(control->Pause(), S_OK);
    EXPECT_EQ(sink->GetPin(0)->Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_EQ(sink->GetPin(0)->ReceiveConnection(source->GetPin(0), nullptr), E_POINTER);
}

// The output was connected for the input's former type; the filter asks for it to be connected anew.
TEST_F(Connection, IsMadeAnewForANewInput)
{
    sink->kind = 0;
    ASSERT_EQ(ConnectSource(), S_OK);
    ASSERT_EQ(ConnectSink(), S_OK);
    EXPECT_EQ(transform->kindOut, 1);
    ASSERT_EQ(graph->RemoveFilter(source.Get()), S_OK);
    EXPECT_FALSE(transform->GetPin(0)->IsConnected());
    const auto other = Owned(new TestSource(1, 1));
    ASSERT_EQ(graph->AddFilter(other.Get(), nullptr), S_OK);
    ASSERT_EQ(graph->ConnectDirect(other->GetPin(0), transform->GetPin(0), nullptr), S_OK);
    EXPECT_EQ(transform->GetPin(1)->GetConnected(), sink->GetPin(0));
}

TEST_F(Connection, TellsWhatItIs)
{
    ASSERT_EQ(ConnectSource(), S_OK);
    CMediaType type;
    EXPECT_EQ(transform->GetPin(0)->ConnectionMediaType(&type), S_OK);
    EXPECT_EQ(KindOf(type), 1);
    CMediaType none;   // a refusal overwrites what it finds
    EXPECT_EQ(sink->GetPin(0)->ConnectionMediaType(&none), VFW_E_NOT_CONNECTED);

    ComPtr<IPin> pin;
    EXPECT_EQ(transform->FindPin(TEXT("Out"), pin.Out()), S_OK);
    EXPECT_EQ(pin.Get(), transform->GetPin(1));
    EXPECT_EQ(transform->FindPin(TEXT("Output"), pin.Out()), VFW_E_NOT_FOUND);
    PIN_INFO info{};
    ASSERT_EQ(transform->GetPin(1)->QueryPinInfo(&info), S_OK);
    const ComPtr<IBaseFilter> owner(info.pFilter);
    EXPECT_EQ(std::basic_string_view<WCHAR>(info.achName), TEXT("Output"));
    EXPECT_EQ(owner.Get(), transform.Get());
    EXPECT_EQ(info.dir, PINDIR_OUTPUT);

    ComPtr<IEnumMediaTypes> types;
    ASSERT_EQ(transform->GetPin(1)->EnumMediaTypes(types.Out()), S_OK);
    AM_MEDIA_TYPE* offered[2] = {};
    ULONG fetched = 0;
    EXPECT_EQ(types->Next(2, offered, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 1u);
    EXPECT_EQ(KindOf(*offered[0]), 1);
    DeleteMediaType(offered[0]);
    transform->GetPin(1)->IncrementTypeVersion();
    EXPECT_EQ(types->Next(1, offered, &fetched), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(types->Reset(), S_OK);
    EXPECT_EQ(types->Skip(1), S_OK);
    EXPECT_EQ(types->Skip(1), S_FALSE);

    ComPtr<IEnumPins> pins;
    ASSERT_EQ(transform->EnumPins(pins.Out()), S_OK);
    IPin* both[3] = {};
    EXPECT_EQ(pins->Next(3, both, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 2u);
    EXPECT_EQ(both[0], transform->GetPin(0));
    EXPECT_EQ(both[1], transform->GetPin(1));
    both[0]->Release();
    both[1]->Release();
}

TEST_F(Connection, QualityMessagesTravelUpstream)
{
    class Listener final : public IQualityControl {
    public:
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
        ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
        ULONG STDMETHODCALLTYPE Release() override { return 1; }
        HRESULT STDMETHODCALLTYPE Notify(IBaseFilter*, Quality q) override
        {
            late = q.Late;
            return S_OK;
        }
        HRESULT STDMETHODCALLTYPE SetSink(IQualityControl*) override { return E_NOTIMPL; }
        REFERENCE_TIME late = 0;
    } listener;
    ASSERT_EQ(ConnectSource(), S_OK);
    ASSERT_EQ(ConnectSink(), S_OK);
    EXPECT_EQ(sink->Pin().PassNotify({Famine, 1000, 5, 0}), E_NOTIMPL);   // through the filter to the source's pin
    transform->qualityResult = S_OK;
    EXPECT_EQ(sink->Pin().PassNotify({Famine, 1000, 5, 0}), S_OK);
    EXPECT_EQ(sink->Pin().SetSink(&listener), S_OK);
    EXPECT_EQ(sink->Pin().PassNotify({Flood, 1000, 7, 0}), S_OK);
    EXPECT_EQ(listener.late, 7);
}

// Data comes without a thread here, to see the answers one by one.
TEST_F(Connection, LetsDataInOnlyWhileItMayFlow)
{
    ASSERT_EQ(ConnectSource(), S_OK);
    ASSERT_EQ(ConnectSink(), S_OK);
    const auto allocator = Owned(new CMemAllocator);
    ALLOCATOR_PROPERTIES properties = {1, 4, 1, 0}, granted{};
    ASSERT_EQ(allocator->SetProperties(&properties, &granted), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    ComPtr<IMediaSample> sample;
    ASSERT_EQ(allocator->GetBuffer(sample.Out(), nullptr, nullptr, 0), S_OK);
    const auto in = Query<IMemInputPin>(transform->GetPin(0), IID_IMemInputPin);
    IPin* const pin = transform->GetPin(0);

    EXPECT_EQ(in->Receive(sample.Get()), VFW_E_WRONG_STATE);
    EXPECT_EQ(pin->EndOfStream(), VFW_E_WRONG_STATE);
    ASSERT_GE(sink->Run(0), S_OK);
    ASSERT_EQ(transform->Pause(), S_OK);
    EXPECT_EQ(in->Receive(nullptr), E_POINTER);
    EXPECT_EQ(in->Receive(sample.Get()), S_OK);
    EXPECT_EQ(pin->BeginFlush(), S_OK);
    EXPECT_EQ(in->Receive(sample.Get()), S_FALSE);
    EXPECT_EQ(pin->EndFlush(), S_OK);
    IMediaSample* const three[] = {sample.Get(), sample.Get(), sample.Get()};
    LONG processed = 0;
    EXPECT_EQ(in->ReceiveMultiple(const_cast<IMediaSample**>(three), 3, &processed), S_OK);
    EXPECT_EQ(processed, 3);
    CMediaType unusable = TypeOf(-5);
    sample->SetMediaType(&unusable);
    EXPECT_EQ(in->Receive(sample.Get()), VFW_E_INVALIDMEDIATYPE);
    sample->SetMediaType(nullptr);
    EXPECT_EQ(in->Receive(sample.Get()), VFW_E_RUNTIME_ERROR);
    EXPECT_EQ(pin->BeginFlush(), S_OK);
    EXPECT_EQ(pin->EndFlush(), S_OK);
    EXPECT_EQ(in->Receive(sample.Get()), S_OK);
    EXPECT_EQ(sink->TakenSoFar().size(), 5u);
    ASSERT_EQ(sink->Stop(), S_OK);
    EXPECT_EQ(in->Receive(sample.Get()), VFW_E_NOT_COMMITTED);   // the sink's stop took the buffers away
    ASSERT_EQ(transform->Stop(), S_OK);
    EXPECT_EQ(in->Receive(sample.Get()), VFW_E_WRONG_STATE);
    sample = {};
    allocator->Decommit();
}

}   // namespace
