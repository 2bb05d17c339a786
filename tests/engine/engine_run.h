// Runs an engine as a driver does: what it asks for goes in, the last request padded with silence, then the flush.
#pragma once

#include "engine/tensio_pro_if.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

struct EngineDelete {
    void operator()(CTensioProIf* engine) const { DeleteInstance(&engine); }
};
using EnginePtr = std::unique_ptr<CTensioProIf, EngineDelete>;

inline EnginePtr MakeEngine(int32_t mode, int32_t channels = 1, float sampleRate = 44100.0f, int32_t block = 1024)
{
    CTensioProIf* engine = nullptr;
    EXPECT_EQ(CreateInstance(&engine, block, channels, sampleRate, mode), kSuccess);
    return EnginePtr(engine);
}

using Planar = std::vector<Signal>;   // [channel][frame]

inline std::vector<float*> Pointers(Planar& audio, size_t offset = 0)
{
    std::vector<float*> pointers;
    for (Signal& channel : audio)
        pointers.push_back(channel.data() + offset);
    return pointers;
}

inline void Append(Planar& sum, const Planar& block, int32_t frames)
{
    for (size_t c = 0; c < sum.size(); ++c)
        sum[c].insert(sum[c].end(), block[c].begin(), block[c].begin() + frames);
}

// The pitch in force.
inline float SetFactors(CTensioProIf& engine, float stretch, float pitch, bool sync = false)
{
    EXPECT_EQ(engine.SetStretchPitch(stretch, &pitch, sync), kSuccess) << stretch << " x " << pitch;
    return pitch;
}

// Feeds input from frame at on while it has what the engine asks for, not beyond end. Gives where it stopped.
inline int32_t Push(CTensioProIf& engine, Planar& input, int32_t at, int32_t end, Planar* output, int32_t block = 1024)
{
    Planar piece(input.size(), Signal(size_t(block)));
    const auto out = Pointers(piece);
    for (int32_t n = engine.GetFramesNeeded(); at + n <= end; n = engine.GetFramesNeeded()) {
        if (engine.ProcessData(Pointers(input, size_t(at)).data(), n, out.data()) == kSuccess)
            Append(*output, piece, block);
        at += n;
    }
    return at;
}

// All that the engine gives for the input, its tail included. The factors stand.
inline Planar RunEngine(CTensioProIf& engine, Planar input, int32_t block = 1024)
{
    const size_t frames = input[0].size();
    Planar output(input.size()), piece(input.size(), Signal(size_t(block)));
    const auto out = Pointers(piece);
    for (size_t taken = 0; taken < frames;) {
        const auto needed = size_t(engine.GetFramesNeeded());
        for (Signal& channel : input)
            channel.resize(std::max(channel.size(), taken + needed));
        const auto in = Pointers(input, taken);
        taken += needed;
        const int32_t status = engine.ProcessData(in.data(), int32_t(needed), out.data());
        EXPECT_TRUE(status >= kNoResult && status < block) << status;
        Append(output, piece, status == kSuccess ? block : std::max(status, 0));
    }
    for (int32_t given = block; given == block;) {
        given = engine.FlushBuffer(out.data());
        Append(output, piece, std::max(given, 0));
        if (output[0].size() > frames * 50 + 500000) {
            ADD_FAILURE() << "the flush does not end";
            break;
        }
    }
    return output;
}
