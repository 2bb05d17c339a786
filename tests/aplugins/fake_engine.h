// An engine that can be foreseen, in place of a real one: output frame k is input frame floor(k / stretch), held, whatever
// the pitch. It wants kLookAhead frames beyond what a block covers, as a real one does. What it is told and how it is to
// misbehave stands in one plan per test.
#pragma once

#include "engine/tensio_pro_if.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

struct FakePlan {
    static constexpr int32_t kLookAhead = 700;
    struct Pair {
        float stretch, pitch;
        bool sync;
    };

    int32_t createStatus = kSuccess;
    int32_t worstCase = 0;                  // of GetFramesNeededAt; 0: computed
    float pitchGrain = 0.0f;                // pitches snap to multiples of this; 0: none
    bool refuseAll = false;                 // every pair,
    float lowest = 0.1f, highest = 10.0f;   // or those whose product is outside
    int32_t emptyPasses = 0;                // so many passes give kNoResult first
    int32_t shortPasses = 0;                // then so many give half a block, and say so
    int32_t status = kSuccess;              // when not kSuccess, what every pass gives
    int32_t tail = 500;                     // frames beyond the input's end that FlushBuffer still renders

    int32_t made = 0, resets = 0, offers = 0, mode = -1;
    std::vector<Pair> accepted;
    std::vector<float> envelope;
    std::vector<int32_t> cutOff, asked;

    FakePlan() { accepted.reserve(4096), envelope.reserve(64), cutOff.reserve(64), asked.reserve(65536); }
};

class FakeEngine : public CTensioProIf {
public:
    FakeEngine(FakePlan* thePlan, int32_t theBlock, int32_t theChannels)
        : plan(thePlan), block(theBlock), history(size_t(theChannels))
    {
        for (auto& h : history)
            h.reserve(1 << 20);
    }

    int32_t ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept override
    {
        plan->asked.push_back(frames);
        for (size_t c = 0; c < history.size(); ++c)
            history[c].insert(history[c].end(), in[c], in[c] + frames);
        if (plan->status != kSuccess)
            return plan->status;
        if (plan->emptyPasses > 0 && plan->emptyPasses--)
            return kNoResult;
        if (plan->shortPasses > 0 && plan->shortPasses--)
            return Render(out, block / 2);
        if (GetFramesNeeded() > 0)
            return kNoResult;
        Render(out, block);
        return kSuccess;
    }
    int32_t GetFramesNeeded() noexcept override
    {
        return std::max(0, int32_t(std::ceil(position + block / double(stretch))) + FakePlan::kLookAhead - Received());
    }
    int32_t SetOutputBlockSize(int32_t frames) noexcept override
    {
        block = frames;
        return GetFramesNeeded();
    }
    int32_t GetFramesNeededAt(float, float) noexcept override
    {
        return plan->worstCase ? plan->worstCase : 10 * block + FakePlan::kLookAhead + 1;
    }
    int32_t SetStretchKeepPitch(float*, float, bool) noexcept override { return kNotAvailable; }
    int32_t SetStretchPitch(float s, float* p, bool sync) noexcept override
    {
        ++plan->offers;
        if (plan->refuseAll || s * *p < plan->lowest || s * *p > plan->highest)
            return kInvalidArgument;
        if (plan->pitchGrain > 0.0f)
            *p = std::round(*p / plan->pitchGrain) * plan->pitchGrain;
        stretch = s;
        plan->accepted.push_back({s, *p, sync});
        return kSuccess;
    }
    int32_t Reset() noexcept override
    {
        for (auto& h : history)
            h.clear();
        position = 0.0;
        ++plan->resets;
        return kSuccess;
    }
    int32_t FlushBuffer(float* const out[]) noexcept override
    {
        const double left = (Received() + plan->tail - position) * stretch;
        const auto n = int32_t(std::min<double>(block, left));
        return n > 0 ? Render(out, n) : kNoResult;
    }
    int32_t GetFramesBuffered() noexcept override { return 0; }
    int32_t SetStereoInputMode(int32_t) noexcept override { return kNotAvailable; }
    int32_t SetEnvelopeFactor(float factor) noexcept override
    {
        plan->envelope.push_back(factor);
        return kSuccess;
    }
    int32_t SetCutOffPitch(int32_t pitch) noexcept override
    {
        plan->cutOff.push_back(pitch);
        return kSuccess;
    }
    double GetInputPosition() noexcept override { return position; }

private:
    int32_t Received() const { return int32_t(history[0].size()); }
    int32_t Render(float* const out[], int32_t n)
    {
        for (int32_t f = 0; f < n; ++f, position += 1.0 / stretch)
            for (size_t c = 0; c < history.size(); ++c) {
                const auto at = size_t(position + 1e-6);
                out[c][f] = at < history[c].size() ? history[c][at] : 0.0f;
            }
        return n;
    }

    FakePlan* plan;
    int32_t block;
    float stretch = 1.0f;
    double position = 0.0;   // input frame of the next output frame
    std::vector<std::vector<float>> history;
};

inline FakePlan* thePlan = nullptr;   // of the test that runs

inline int32_t CreateFake(CTensioProIf** ppEngine, int32_t blockFrames, int32_t channels, float, int32_t mode)
{
    *ppEngine = nullptr;
    thePlan->mode = mode;
    if (thePlan->createStatus != kSuccess)
        return thePlan->createStatus;
    ++thePlan->made;
    *ppEngine = new FakeEngine(thePlan, blockFrames, channels);
    return kSuccess;
}

// The plan that CreateFake follows while this lives.
struct FakeScope : FakePlan {
    FakeScope() { thePlan = this; }
    ~FakeScope() { thePlan = nullptr; }
    FakeScope(const FakeScope&) = delete;
};
