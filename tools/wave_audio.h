// WAV files without a library: RIFF with whole or floating samples of up to 64 bits, the plain format record or the
// extensible one, and text tags. Behind audio_file.h where no file library is; a Tag's kind is then the id of its chunk,
// and the channel map one number, the speaker mask.
#pragma once

#include "tools/audio_file.h"

std::unique_ptr<AudioReader> OpenWave(const std::string& path);
// The sizes have 32 bits: a longer file is refused, here if it is expected, else when they are exceeded.
std::unique_ptr<AudioWriter> CreateWave(int descriptor, const std::string& name, const AudioFormat& format,
                                        int64_t expectedFrames, const std::vector<Tag>& tags);
