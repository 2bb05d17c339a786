#include "tools/filter_settings.h"

#include "aplugins/qxvantor/param_table.h"
#include "aplugins/qxvantor/prop2.h"
#include "platform/com_ptr.h"
#include "tools/automation.h"
#include "tools/failure.h"
#include "tools/presets.h"

#include <objbase.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace {

constexpr size_t kMostState = 1 << 20;   // bytes of a file that can be a saved state

template <class T>
ComPtr<T> Need(IBaseFilter* filter, REFIID riid)
{
    auto found = Query<T>(filter, riid);
    if (!found)
        throw DataFailure("the filter lacks an interface that this program needs");
    return found;
}

ComPtr<IStream> MemoryStream()
{
    ComPtr<IStream> stream;
    if (FAILED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Out())))
        throw DataFailure("memory is short");
    return stream;
}

void Rewind(IStream* stream)
{
    stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr);
}

void LoadState(IBaseFilter* filter, const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw DataFailure(path + ": " + std::strerror(errno));
    std::string bytes;
    for (auto at = std::istreambuf_iterator<char>(file); at != std::istreambuf_iterator<char>(); ++at) {
        bytes += *at;
        if (bytes.size() > kMostState)
            break;
    }
    const auto persist = Need<IPersistStream>(filter, IID_IPersistStream);
    ULARGE_INTEGER size{};
    if (persist->GetSizeMax(&size) != S_OK || bytes.size() != size.QuadPart)
        throw DataFailure(path + ": not a saved state of the filter, which has " + std::to_string(size.QuadPart) +
                          " bytes");
    const auto stream = MemoryStream();
    ULONG written = 0;
    stream->Write(bytes.data(), ULONG(bytes.size()), &written);
    Rewind(stream.Get());
    if (persist->Load(stream.Get()) != S_OK)
        throw DataFailure(path + ": not a saved state of the filter");
}

// S_FALSE: the value is in force already.
void Set(IMediaParams* params, DWORD param, double value)
{
    if (FAILED(params->SetParam(param, float(value))))
        throw UsageFailure("the filter does not take " + std::to_string(value) + " for " + ParamName(param));
}

}   // namespace

void ApplyStart(IBaseFilter* filter, const Options& options)
{
    if (options.preset)
        ApplyPreset(filter, *options.preset);
    if (options.loadState)
        LoadState(filter, *options.loadState);
}

void ApplyValues(IBaseFilter* filter, const Options& options, std::optional<double> stretch)
{
    const auto params = Need<IMediaParams>(filter, IID_IMediaParams);
    const struct {
        DWORD param;
        std::optional<double> value;
    } told[] = {{kParamStretch, stretch},         {kParamPitch, options.pitch}, {kParamContent, options.content},
                {kParamFormant, options.formant}, {kParamMode, options.mode},   {kParamSyncPitch, options.sync}};
    for (const auto& one : told)
        if (one.value)
            Set(params.Get(), one.param, *one.value);
}

bool ApplyAutomation(IBaseFilter* filter, const Options& options)
{
    if (!options.automation)
        return false;
    const auto params = Need<IMediaParams>(filter, IID_IMediaParams);
    const auto info = Need<IMediaParamInfo>(filter, IID_IMediaParamInfo);
    bool stretch = false;
    for (AutomationSegment& made : ReadAutomation(*options.automation, info.Get())) {
        if (FAILED(params->AddEnvelope(made.param, 1, &made.segment)))
            throw DataFailure(*options.automation + ": the filter does not take the curves; memory may be short");
        stretch |= made.param == kParamStretch;
    }
    return stretch;
}

QxVantorParams RecordOf(IBaseFilter* filter)
{
    QxVantorParams record{};
    if (FAILED(Need<IQxVantorProp2>(filter, IID_IQxVantorProp2)->GetParameters(&record)))
        throw DataFailure("the filter does not tell its parameters");
    return record;
}

std::string SavedState(IBaseFilter* filter)
{
    const auto persist = Need<IPersistStream>(filter, IID_IPersistStream);
    const auto stream = MemoryStream();
    if (persist->Save(stream.Get(), TRUE) != S_OK)
        throw DataFailure("the filter does not save its state; memory may be short");
    Rewind(stream.Get());
    std::string bytes(4096, 0);
    ULONG read = 0;
    stream->Read(bytes.data(), ULONG(bytes.size()), &read);
    bytes.resize(read);
    return bytes;
}
