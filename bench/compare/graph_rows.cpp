// What the filter and its graph cost beside the bare driver: a minute of stereo from memory through source, filter and a
// sink that drops it, and the same blocks straight through the driver. Both copy the input into a block, as reading a file
// would; the filter itself copies nothing.
#include "aplugins/qxvantor/presets.h"
#include "aplugins/qxvantor/vantor_filter.h"
#include "bench/compare/cpu_time.h"
#include "bench/compare/own_driver.h"
#include "bench/compare/row.h"
#include "platform/media/base_renderer.h"
#include "platform/media/filter_graph.h"
#include "platform/media/source_stream.h"

#include <mmreg.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int64_t kBlock = 4096;   // frames
constexpr Setting kSetting{1.25, 0.0};

CMediaType FloatType(const Material& material)
{
    WAVEFORMATEX format{};
    format.wFormatTag = WAVE_FORMAT_IEEE_FLOAT;
    format.nChannels = WORD(material.channels);
    format.nSamplesPerSec = DWORD(material.rate);
    format.wBitsPerSample = 32;
    format.nBlockAlign = WORD(format.nChannels * sizeof(float));
    format.nAvgBytesPerSec = format.nSamplesPerSec * format.nBlockAlign;
    CMediaType type;
    type.majortype = MEDIATYPE_Audio;
    type.subtype = MEDIASUBTYPE_IEEE_FLOAT;
    type.formattype = FORMAT_WaveFormatEx;
    type.SetFormat(&format, sizeof format);
    return type;
}

class MemorySource final : public CSource {
public:
    explicit MemorySource(const Material& theMaterial) : CSource(nullptr, CLSID{}), material(theMaterial) {}

private:
    ~MemorySource() override = default;
    HRESULT GetMediaType(CMediaType* pType) override { return pType->Set(FloatType(material)); }
    HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pRequest) override
    {
        pRequest->cBuffers = 1;
        pRequest->cbBuffer = LONG(kBlock * material.channels * int64_t(sizeof(float)));
        ALLOCATOR_PROPERTIES granted{};
        return pAllocator->SetProperties(pRequest, &granted);
    }
    HRESULT OnSeek(REFERENCE_TIME) override
    {
        next = 0;
        return S_OK;
    }
    HRESULT FillBuffer(IMediaSample* pSample) override
    {
        const int64_t frames = std::min(kBlock, material.Frames() - next);
        if (frames == 0)
            return S_FALSE;
        BYTE* buffer = nullptr;
        pSample->GetPointer(&buffer);
        const size_t bytes = size_t(frames * material.channels) * sizeof(float);
        std::memcpy(buffer, material.interleaved.data() + next * material.channels, bytes);
        next += frames;
        return pSample->SetActualDataLength(LONG(bytes));
    }

    const Material& material;
    int64_t next = 0;
};

class NullSink final : public CBaseRenderer {
public:
    NullSink() : CBaseRenderer(nullptr, CLSID{}) {}
    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    HRESULT DoRenderSample(IMediaSample*) override { return S_OK; }

private:
    ~NullSink() override = default;
};

void Must(HRESULT hr, const char* what)
{
    if (FAILED(hr))
        std::exit((std::fprintf(stderr, "%s: 0x%08X\n", what, unsigned(hr)), 1));
}

void RenderInGraph(const Mode& mode, const Material& material)
{
    HRESULT hr = S_OK;
    const ComPtr<MemorySource> source(new MemorySource(material));
    const ComPtr<CQxVantor> filter(static_cast<CQxVantor*>(CQxVantor::CreateInstance(nullptr, &hr)));
    Must(hr, "filter");
    const ComPtr<NullSink> sink(new NullSink);
    filter->SetMode(mode.mode);
    filter->SetStretchPercent(100.0 * kSetting.stretch);
    ComPtr<IGraphBuilder> graph;
    Must(CreateFilterGraph(graph.Out()), "graph");
    for (IBaseFilter* const f : {static_cast<IBaseFilter*>(source.Get()), static_cast<IBaseFilter*>(filter.Get()),
                                 static_cast<IBaseFilter*>(sink.Get())})
        Must(graph->AddFilter(f, nullptr), "add");
    Must(graph->Connect(source->GetPin(0), filter->GetPin(0)), "connect");
    Must(graph->Connect(filter->GetPin(1), sink->GetPin(0)), "connect");
    const auto control = Query<IMediaControl>(graph.Get(), IID_IMediaControl);
    const auto events = Query<IMediaEvent>(graph.Get(), IID_IMediaEvent);
    Must(control->Run(), "run");
    LONG code = 0;
    Must(events->WaitForCompletion(LONG(INFINITE), &code), "wait");
    Must(code == EC_COMPLETE ? S_OK : E_FAIL, "stream");
    control->Stop();
}

void RenderBare(const Mode& mode, const Material& material)
{
    OwnDriver driver(mode, material.channels, material.rate, kSetting);
    Material block{material.channels, material.rate, {}, {{}}};
    for (int64_t at = 0; at < material.Frames(); at += kBlock) {
        const auto from = material.interleaved.begin() + at * material.channels;
        const int64_t frames = std::min(kBlock, material.Frames() - at);
        block.interleaved.assign(from, from + frames * material.channels);
        block.planar[0].resize(size_t(frames));   // tells the length
        driver.Push(block);
    }
    driver.Drain();
}

}   // namespace

Section GraphRows()
{
    Section section{"Filter in a graph",
                    "Processor time of source, filter and sink to that of the bare driver; a minute "
                    "of stereo in blocks of 4096 frames, stretch 1.25.",
                    {}};
    const Material minute = Music(60.0);
    for (const Mode& mode : kModes)
        section.rows.push_back(
            {mode.name,
             MedianRatio([&] { RenderInGraph(mode, minute); }, [&] { RenderBare(mode, minute); }, kManyRounds),
             Bar::kAtMost, 1.03});
    return section;
}
