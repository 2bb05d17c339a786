// The source of a rendering: an audio file as a stream of 32-bit float samples, from its start.
#pragma once

#include "platform/media/source_stream.h"
#include "tools/audio_file.h"
#include "tools/stream_failure.h"

#include <atomic>

class FileSource final : public CSource {
public:
    // The reader outlives it and stands at its start. block: frames of a sample.
    FileSource(AudioReader* theReader, uint32_t theBlock);

    int64_t FramesRead() const { return framesRead; }   // [any]
    int64_t NonFinite() const { return nonFinite; }     // samples that were no number and became 0; after the end
    StreamFailure failure;                              // after the end

private:
    ~FileSource() override;
    HRESULT GetMediaType(CMediaType* pType) override;
    HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pRequest) override;
    HRESULT OnSeek(REFERENCE_TIME start) override;   // a rendering runs once, from the start
    HRESULT FillBuffer(IMediaSample* pSample) override;
    void Stamp(IMediaSample* pSample, int64_t frames);
    REFERENCE_TIME TimeOf(int64_t frame) const;

    AudioReader* reader;
    uint32_t block;
    std::atomic<int64_t> framesRead = 0;
    int64_t nonFinite = 0;
};
