// Drives a CVtn over a whole signal as a host does: blocks of input with so much room for output, then flush until
// drained.
#pragma once

#include "aplugins/qxvantor/vtn.h"
#include "tests/signals.h"

#include <algorithm>
#include <cstdint>
#include <functional>

struct HostBlocks {
    uint32_t in = 4096;
    uint32_t out = 40960;
    std::function<void(CVtn&)> between = {};   // called before each block of input
};

inline QxVantorParams Record(double stretchPercent, double semitones, int32_t mode = kModeEfficient)
{
    QxVantorParams r{};
    r.mode = mode;
    r.stretchPercent = stretchPercent;
    r.pitchSemitones = semitones;
    r.formantPercent = 100.0;
    r.contentPitch = 5;
    return r;
}

inline QxVantorParams Start(CVtn& vtn, QxVantorParams record)
{
    vtn.Reset();
    vtn.SetParams(&record, true);
    vtn.UpdateRatios(false);
    return record;
}

// Pushes all of the interleaved input; appends what comes out. A call that neither takes nor gives ends the loop.
inline void Push(CVtn& vtn, const Signal& in, int32_t channels, const HostBlocks& host, Signal* out)
{
    const size_t frames = in.size() / size_t(channels);
    Signal room(size_t(host.out) * size_t(channels));
    for (size_t at = 0; at < frames;) {
        if (host.between)
            host.between(vtn);
        auto given = uint32_t(std::min<size_t>(host.in, frames - at)), got = host.out;
        vtn.ProcessBlock(false, in.data() + at * size_t(channels), &given, room.data(), &got);
        out->insert(out->end(), room.begin(), room.begin() + std::ptrdiff_t(size_t(got) * size_t(channels)));
        at += given;
        if (given == 0 && got == 0)
            return;
    }
}

// Flushes until the driver says that it is drained, or until it has given limit frames: then it never would.
inline void Drain(CVtn& vtn, int32_t channels, const HostBlocks& host, Signal* out, size_t limit = size_t(1) << 26)
{
    Signal room(size_t(host.out) * size_t(channels));
    for (int32_t result = 0; result == 0 && out->size() < limit * size_t(channels);) {
        uint32_t none = 0, got = host.out;
        result = vtn.ProcessBlock(true, nullptr, &none, room.data(), &got);
        out->insert(out->end(), room.begin(), room.begin() + std::ptrdiff_t(size_t(got) * size_t(channels)));
    }
}

inline Signal RunDriver(CVtn& vtn, const Signal& in, int32_t channels, const HostBlocks& host = {})
{
    Signal out;
    Push(vtn, in, channels, host, &out);
    Drain(vtn, channels, host, &out);
    return out;
}
