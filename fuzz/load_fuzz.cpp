// Any bytes as a persisted block: what is loaded saves and loads again as the same record.

#include "aplugins/qxvantor/persistence.h"
#include "platform/com_ptr.h"

#include <objbase.h>

#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    ComPtr<IStream> stream;
    if (FAILED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Out())) ||
        FAILED(stream->Write(data, ULONG(size), nullptr)) || FAILED(stream->Seek({}, STREAM_SEEK_SET, nullptr)))
        return 0;
    const LoadedParams first = LoadParams(stream.Get());
    if (FAILED(first.hr))
        return 0;
    ComPtr<IStream> copy;
    if (FAILED(CreateStreamOnHGlobal(nullptr, TRUE, copy.Out())) || FAILED(SaveParams(copy.Get(), first.record)) ||
        FAILED(copy->Seek({}, STREAM_SEEK_SET, nullptr)))
        return 0;
    const LoadedParams second = LoadParams(copy.Get());
    if (FAILED(second.hr) || std::memcmp(&first.record, &second.record, sizeof first.record) != 0)
        std::abort();
    return 0;
}
