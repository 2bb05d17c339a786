// The output length that the input taken so far promises: the sum of frames * stretch, by the stretch in force when each
// piece was taken, truncated to whole frames only when it is read. Free of rounding, so that neither the cutting into
// pieces nor days of streaming move it by a frame.
#pragma once

#include <cmath>
#include <cstdint>

class PromisedLength {
public:
    void Clear() noexcept { *this = {}; }

    // stretch: at most 10, of 24 significant bits as the engine's factors are. frames: 0 or more.
    void Take(int32_t frames, double stretch) noexcept
    {
        if (stretch != runStretch || runFrames > kLongestRun) {
            Close();
            runStretch = stretch;
        }
        runFrames += frames;
    }

    int64_t Frames() const noexcept { return whole + int64_t(fraction + double(runFrames) * runStretch); }

private:
    static constexpr int64_t kLongestRun = int64_t(1)
                                           << 28;   // frames: times 24 bits of stretch still exact in a double

    void Close() noexcept
    {
        const double length = fraction + double(runFrames) * runStretch;
        whole += int64_t(length);
        fraction = length - std::floor(length);
        runFrames = 0;
    }

    int64_t whole = 0;       // frames of all closed runs,
    double fraction = 0.0;   // and what they leave below one frame
    int64_t runFrames = 0;   // input frames of the open run, all taken at runStretch
    double runStretch = 0.0;
};
