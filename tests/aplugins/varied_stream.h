// A stream through the driver on which everything changes: ramps, jumps, formants, block sizes, and the flush at its end.
#pragma once

#include "tests/aplugins/driver_run.h"

class VariedStream {
public:
    static constexpr int kBlocks = 60;

    // Blocks after which the streaming path asks for nothing more: the stores of the Soloist grains grow at first.
    static int Settling(int32_t mode) { return mode == kModePro || mode == kModeEfficient ? 1 : 20; }

    explicit VariedStream(int32_t streamMode, int32_t channels = 2)
        : mode(streamMode), vtn(channels, 44100.0f, 2048), in(Noise(channels * int32_t(kIn), 5, 0.25f)),
          room(size_t(channels) * kRoom, 0.0f)
    {
        Start(vtn, Record(1000.0, -24.0, mode));
    }

    // Runs blocks from .. to - 1 of kBlocks. False when the last one gave nothing.
    bool Run(int from, int to)
    {
        uint32_t given = 0, got = 0;
        for (int i = from; i < to; ++i) {
            if (i % 3 == 0)
                Change(i);
            given = i % 2 ? kIn : 31, got = kRoom;
            vtn.ProcessBlock(i >= kBlocks - 3, in.data(), &given, room.data(), &got);
        }
        return got > 0;
    }

private:
    static constexpr uint32_t kIn = 4096, kRoom = 40960;

    void Change(int i)
    {
        QxVantorParams record = Record(i % 2 ? 30.0 + 5.0 * i : 500.0 - 8.0 * i, double(i % 48) - 24.0, mode);
        record.formantPercent = i % 4 ? 0.0 : 100.0;
        record.contentPitch = 3 + i % 7;
        record.syncPitch = i % 2;
        vtn.SetParams(&record, i % 5 == 0);
        vtn.UpdateRatios(false);
    }

    int32_t mode;
    CVtn vtn;
    Signal in, room;
};

constexpr int32_t kAllModes[] = {kModePro, kModeEfficient, kModeSoloistMono, kModeSoloistSpeech};
