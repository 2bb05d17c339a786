#include "bench/compare/material.h"

#include "tools/sample_synth.h"

#include <algorithm>

namespace {

constexpr double kPeriod = 10.0;   // s

Material FromChannels(std::vector<std::vector<float>> planar, int32_t rate)
{
    Material m{int32_t(planar.size()), rate, {}, std::move(planar)};
    m.interleaved.resize(m.planar.size() * m.planar[0].size());
    for (size_t c = 0; c < m.planar.size(); ++c)
        for (size_t i = 0; i < m.planar[c].size(); ++i)
            m.interleaved[i * m.planar.size() + c] = m.planar[c][i];
    return m;
}

std::vector<float> Repeat(const std::vector<float>& a, const std::vector<float>& b, size_t frames)
{
    std::vector<float> x(frames);
    for (size_t i = 0; i < frames; ++i)
        x[i] = 0.7f * (a[i % a.size()] + b[i % b.size()]);
    return x;
}

}   // namespace

Material Music(double seconds, int32_t channels, int32_t rate)
{
    const double period = std::min(seconds, kPeriod);
    const StereoSignal music = SynthesiseMusic(rate, period), drums = SynthesiseDrums(rate, period);
    const auto frames = size_t(seconds * rate);
    std::vector<std::vector<float>> planar;
    for (int32_t c = 0; c < channels; ++c)
        planar.push_back(c % 2 ? Repeat(music.right, drums.right, frames) : Repeat(music.left, drums.left, frames));
    return FromChannels(std::move(planar), rate);
}

Material Voice(double seconds)
{
    return FromChannels({SynthesiseVoice(44100.0, seconds).left}, 44100);
}
