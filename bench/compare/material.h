// What is rendered: the example recording's parts at any length, rate and number of channels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

struct Material {
    int32_t channels, rate;                   // Hz
    std::vector<float> interleaved;           // what the driver and SoundTouch take
    std::vector<std::vector<float>> planar;   // what Rubber Band takes

    int64_t Frames() const { return int64_t(planar[0].size()); }
};

// Music with drums, left and right in turn over the channels; the first ten seconds again and again.
Material Music(double seconds, int32_t channels = 2, int32_t rate = 44100);
// One voice, one channel, 44100 Hz.
Material Voice(double seconds);

struct Setting {
    double stretch, semitones;
    bool holdFormants = false;
};
constexpr Setting kSettings[] = {{1.25, 0.0}, {2.0, 0.0}, {0.5, 0.0}, {1.0, 7.0}};
