// Audio files where there is no file library: WAV alone.
#include "tools/wave_audio.h"

std::unique_ptr<AudioReader> OpenAudio(const std::string& path)
{
    return OpenWave(path);
}

std::unique_ptr<AudioWriter> CreateAudio(int descriptor, const std::string& name, const AudioFormat& format,
                                         int64_t expectedFrames, const std::vector<Tag>& tags)
{
    return CreateWave(descriptor, name, format, expectedFrames, tags);
}
