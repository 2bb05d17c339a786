#include "tools/file_writer.h"

#include "dsp/kernels.h"

#include <mmreg.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

constexpr CLSID kClass = {0x1F93B0C6, 0x84E2, 0x4A5D, {0xB6, 0x07, 0xD3, 0x58, 0x1E, 0x6F, 0x42, 0x90}};
constexpr int64_t kSilence = 4096;   // frames written at once

}   // namespace

FileWriter::FileWriter(AudioWriter* theWriter, const AudioFormat& theFormat)
    : CBaseRenderer(nullptr, kClass), writer(theWriter), format(theFormat)
{
}

FileWriter::~FileWriter() = default;

HRESULT FileWriter::CheckMediaType(const CMediaType* pType)
{
    WAVEFORMATEX offered{};
    if (pType->majortype != MEDIATYPE_Audio || pType->formattype != FORMAT_WaveFormatEx ||
        pType->cbFormat < sizeof offered)
        return VFW_E_TYPE_NOT_ACCEPTED;
    std::memcpy(&offered, pType->pbFormat, sizeof offered);
    const bool fits = offered.wFormatTag == WAVE_FORMAT_IEEE_FLOAT && offered.wBitsPerSample == 32 &&
                      offered.nChannels == format.channels && offered.nSamplesPerSec == DWORD(format.rate);
    return fits ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT FileWriter::DoRenderSample(IMediaSample* pSample)
{
    BYTE* buffer = nullptr;
    if (const HRESULT hr = pSample->GetPointer(&buffer); FAILED(hr))
        return hr;
    const int64_t frames = pSample->GetActualDataLength() / (format.channels * int64_t(sizeof(float)));
    return failure.Guard([&] {
        framesTaken += frames;
        Write(reinterpret_cast<const float*>(buffer), std::min(frames, end - framesWritten));
        return S_OK;
    });
}

void FileWriter::Write(const float* samples, int64_t frames)
{
    peak = std::max(peak, double(Kernels().PeakMagnitude(samples, int32_t(frames * format.channels))));
    writer->Write(samples, frames);
    framesWritten += frames;
}

void FileWriter::FillToEnd()
{
    const std::vector<float> silence(size_t(kSilence * format.channels));
    while (framesWritten < end)
        Write(silence.data(), std::min(kSilence, end - framesWritten));
}
