// Cubic interpolation at a read step that may change with every call (Catmull and Rom 1974), without an anti-alias
// filter: whoever reads faster than 1 frame per frame sees to it that nothing stands above the new Nyquist frequency.
// The output lags two input frames. The coefficients of an output frame are worked out once and serve all channels.
// One object serves one thread; after construction nothing allocates.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

class CFastResample {
public:
    // capacity: the most frames a call may bring.
    CFastResample(int32_t channels, int32_t capacity);

    // Reads ratio input frames per output frame; in[channel][frame], frames at most capacity; in and out may be the
    // same arrays. Gives the output frames written; a ratio that is not above 0 gives none and takes nothing. The fraction
    // of the read position lives on in the next call.
    int32_t Process(const float* const in[], int32_t frames, float* const out[], float ratio) noexcept;
    // Read position and history back to 0.
    void Reset() noexcept;

private:
    int32_t OutputFrames(int32_t frames, float ratio) const noexcept;

    int32_t channels;
    int32_t capacity;
    std::vector<std::unique_ptr<float[]>>
        channelBuffers;                 // kHistory frames of the past, capacity frames, one to spare
    std::vector<const float*> starts;   // of each channel's coming call, behind the history
    double position = 0.0;              // read position in frames of the coming call
};
