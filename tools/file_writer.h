// The end of a rendering: takes 32-bit float samples into an audio file.
#pragma once

#include "platform/media/base_renderer.h"
#include "tools/audio_file.h"
#include "tools/stream_failure.h"

class FileWriter final : public CBaseRenderer {
public:
    FileWriter(AudioWriter* theWriter, const AudioFormat& theFormat);   // the writer outlives it

    // While stopped: what comes beyond this many frames is counted and dropped.
    void EndAt(int64_t frames) { end = frames; }
    void FillToEnd();   // with silence, after the end

    int64_t FramesTaken() const { return framesTaken; }       // all of them; after the end
    int64_t FramesWritten() const { return framesWritten; }   // after the end
    double Peak() const { return peak; }                      // after the end
    StreamFailure failure;                                    // after the end

private:
    ~FileWriter() override;
    HRESULT CheckMediaType(const CMediaType* pType) override;
    HRESULT DoRenderSample(IMediaSample* pSample) override;
    void Write(const float* samples, int64_t frames);

    AudioWriter* writer;
    AudioFormat format;
    int64_t end = INT64_MAX;
    int64_t framesTaken = 0, framesWritten = 0;
    double peak = 0.0;
};
