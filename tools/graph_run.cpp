#include "tools/graph_run.h"

#include "platform/media/filter_graph.h"
#include "tools/failure.h"
#include "tools/interruption.h"

#include <cstdio>

namespace {

constexpr LONG kPoll = 50;   // ms between looks at signals

std::string Code(HRESULT hr)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", unsigned(hr));
    return text;
}

ComPtr<IPin> PinOf(IBaseFilter* filter, LPCWSTR id)
{
    ComPtr<IPin> pin;
    if (FAILED(filter->FindPin(id, pin.Out())))
        throw DataFailure("a filter lacks a pin; memory may be short");
    return pin;
}

std::string WhyNoStart(HRESULT hr)
{
    if (hr == E_OUTOFMEMORY || hr == VFW_E_UNSUPPORTED_AUDIO)
        return "no engine could be made for it; memory may be short";
    return "the filter does not start, code " + Code(hr);
}

std::string WhyEnded(HRESULT hr)
{
    if (hr == VFW_E_RUNTIME_ERROR)
        return "the engine does not go on";
    return hr == E_OUTOFMEMORY ? "memory is short" : "the stream broke off, code " + Code(hr);
}

}   // namespace

GraphRun::GraphRun(std::string theName, IBaseFilter* source, IBaseFilter* filter, IBaseFilter* writer)
    : name(std::move(theName))
{
    if (FAILED(CreateFilterGraph(graph.Out())))
        throw DataFailure("no filter graph could be made");
    control = Query<IMediaControl>(graph.Get(), IID_IMediaControl);
    events = Query<IMediaEvent>(graph.Get(), IID_IMediaEvent);
    HRESULT hr = graph->AddFilter(source, TEXT("source"));
    if (SUCCEEDED(hr))
        hr = graph->AddFilter(filter, TEXT("filter"));
    if (SUCCEEDED(hr))
        hr = graph->AddFilter(writer, TEXT("writer"));
    if (SUCCEEDED(hr))
        hr = graph->Connect(PinOf(source, TEXT("Out")).Get(), PinOf(filter, TEXT("In")).Get());
    if (SUCCEEDED(hr))
        hr = graph->Connect(PinOf(filter, TEXT("Out")).Get(), PinOf(writer, TEXT("In")).Get());
    if (FAILED(hr))
        throw DataFailure(name + ": the filter does not take it, code " + Code(hr));
}

GraphRun::~GraphRun()
{
    control->Stop();
}

bool GraphRun::Run(const std::function<void()>& idle, const std::function<void()>& rethrow)
{
    if (const HRESULT hr = control->Run(); FAILED(hr))
        throw DataFailure(name + ": " + WhyNoStart(hr));
    HRESULT hr = S_OK;
    const End end = Await(idle, &hr);
    control->Stop();
    rethrow();
    if (end == End::kFailed)
        throw DataFailure(name + ": " + WhyEnded(hr));
    return end == End::kComplete;
}

GraphRun::End GraphRun::Await(const std::function<void()>& idle, HRESULT* phr)
{
    for (;;) {
        LONG code = 0;
        LONG_PTR first = 0, second = 0;
        if (events->GetEvent(&code, &first, &second, kPoll) == S_OK) {
            events->FreeEventParams(code, first, second);
            *phr = HRESULT(first);
            if (code == EC_COMPLETE)
                return End::kComplete;
            if (code == EC_ERRORABORT)
                return End::kFailed;
        }
        if (Interruption())
            return End::kSignal;
        idle();
    }
}
