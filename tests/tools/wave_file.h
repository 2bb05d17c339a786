// Whole files by our own reader and writer of WAV.
#pragma once

#include "tests/signals.h"
#include "tools/output_file.h"
#include "tools/wave_audio.h"

// Gives the number of samples that were limited.
inline int64_t SaveWave(const std::string& path, const AudioFormat& format, const Signal& interleaved,
                        const std::vector<Tag>& tags = {})
{
    OutputFile file(path, "");
    const auto frames = int64_t(interleaved.size()) / format.channels;
    const auto writer = CreateWave(file.Descriptor(), path, format, frames, tags);
    writer->Write(interleaved.data(), frames);
    writer->Finish();
    file.Commit();
    return writer->Clipped();
}

inline Signal LoadWave(const std::string& path)
{
    const auto reader = OpenWave(path);
    Signal samples(size_t(reader->Frames() * reader->Format().channels));
    EXPECT_EQ(reader->Read(samples.data(), reader->Frames()), reader->Frames());
    return samples;
}
