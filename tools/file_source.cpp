#include "tools/file_source.h"

#include "tools/sample_scan.h"

#include <mmreg.h>

#include <algorithm>

namespace {

constexpr CLSID kClass = {0x7A0E5F14, 0x2D6B, 0x4C98, {0x8F, 0x31, 0x6B, 0x1C, 0x90, 0xA7, 0x24, 0x5D}};
constexpr double kTicks = 1e7;      // a second
constexpr LONG kLeastBuffer = 64;   // bytes: the filter does not deliver into buffers below eight times that

}   // namespace

FileSource::FileSource(AudioReader* theReader, uint32_t theBlock)
    : CSource(nullptr, kClass), reader(theReader), block(theBlock)
{
}

FileSource::~FileSource() = default;

HRESULT FileSource::GetMediaType(CMediaType* pType)
{
    WAVEFORMATEX format{};
    format.wFormatTag = WAVE_FORMAT_IEEE_FLOAT;
    format.nChannels = WORD(reader->Format().channels);
    format.nSamplesPerSec = DWORD(reader->Format().rate);
    format.wBitsPerSample = 32;
    format.nBlockAlign = WORD(format.nChannels * sizeof(float));
    format.nAvgBytesPerSec = format.nSamplesPerSec * format.nBlockAlign;
    pType->majortype = MEDIATYPE_Audio;
    pType->subtype = MEDIASUBTYPE_IEEE_FLOAT;
    pType->formattype = FORMAT_WaveFormatEx;
    pType->bFixedSizeSamples = TRUE;
    pType->lSampleSize = format.nBlockAlign;
    return pType->SetFormat(&format, sizeof format);
}

HRESULT FileSource::DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pRequest)
{
    pRequest->cBuffers = 1;
    pRequest->cbBuffer = std::max(kLeastBuffer, LONG(block * sizeof(float)) * reader->Format().channels);
    ALLOCATOR_PROPERTIES granted{};
    return pAllocator->SetProperties(pRequest, &granted);
}

HRESULT FileSource::OnSeek(REFERENCE_TIME start)
{
    return start == 0 && framesRead == 0 ? S_OK : E_NOTIMPL;
}

HRESULT FileSource::FillBuffer(IMediaSample* pSample)
{
    BYTE* buffer = nullptr;
    if (const HRESULT hr = pSample->GetPointer(&buffer); FAILED(hr))
        return hr;
    return failure.Guard([&] {
        const auto samples = reinterpret_cast<float*>(buffer);
        const int64_t got = reader->Read(samples, block);
        const int64_t count = got * reader->Format().channels;
        nonFinite += MendNonFinite({samples, size_t(count)});
        if (got == 0)
            return S_FALSE;
        Stamp(pSample, got);
        return pSample->SetActualDataLength(LONG(size_t(count) * sizeof(float)));
    });
}

// No sample is a discontinuity: the stream is whole, and the first one meets the filter as it started.
void FileSource::Stamp(IMediaSample* pSample, int64_t frames)
{
    LONGLONG first = framesRead, end = first + frames;
    REFERENCE_TIME from = TimeOf(first), to = TimeOf(end);
    pSample->SetTime(&from, &to);
    pSample->SetMediaTime(&first, &end);
    pSample->SetSyncPoint(TRUE);
    framesRead = end;
}

REFERENCE_TIME FileSource::TimeOf(int64_t frame) const
{
    return REFERENCE_TIME(double(frame) * kTicks / reader->Format().rate + 0.5);
}
