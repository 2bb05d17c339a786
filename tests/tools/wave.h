// Audio files as the tests of the tools make and judge them, by libsndfile.
#pragma once

#include "tests/signals.h"

#include <cstdint>
#include <sndfile.h>
#include <string>

struct Wave {
    int32_t channels = 1;
    int32_t rate = 44100;
    int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    Signal samples = {};   // interleaved

    int64_t Frames() const { return int64_t(samples.size()) / channels; }
};

inline void Save(const std::string& path, const Wave& wave)
{
    SF_INFO info{};
    info.channels = wave.channels;
    info.samplerate = wave.rate;
    info.format = wave.format;
    SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << path << ": " << sf_strerror(nullptr);
    ASSERT_EQ(sf_writef_float(file, wave.samples.data(), wave.Frames()), wave.Frames());
    ASSERT_EQ(sf_close(file), 0);
}

// Channels 0 when the file cannot be read.
inline Wave Load(const std::string& path)
{
    SF_INFO info{};
    SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file)
        return {0, 0, 0, {}};
    Wave wave{info.channels, info.samplerate, info.format, Signal(size_t(info.frames * info.channels))};
    const auto got = sf_readf_float(file, wave.samples.data(), info.frames);
    wave.samples.resize(size_t(got * info.channels));
    sf_close(file);
    return wave;
}
