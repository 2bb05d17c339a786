#include "engine/psola/psola_synthesis.h"

#include "dsp/status.h"
#include "engine/psola/pitch_marks.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace PSOLASynthForTensioPro {

namespace {

constexpr int32_t kDefaultFrames = 131072;   // of either store
constexpr int32_t kKept = 4096;              // frames that stay in the input store before the oldest sample in use

// Factors are not refused here; far outside of what anybody hears they would leave the integer range.
constexpr float kExtremePitch = 64.0f, kExtremeStretch = 1024.0f;

float Bounded(float factor, float extreme)
{
    return factor > 0.0f ? std::clamp(factor, 1.0f / extreme, extreme) : 1.0f;
}

}   // namespace

CPSOLASynthesis::CPSOLASynthesis(CPitchMarks* sharedMarks, int32_t blockFrames, int32_t channelCount,
                                 int32_t bufferFrames)
    : marks(sharedMarks), channels(channelCount), outBlock(blockFrames),
      inRing(channelCount, bufferFrames > 0 ? bufferFrames : kDefaultFrames), outRing(inRing),
      scratch(size_t(kDefaultFrames))
{
    Reset();
}

int32_t CPSOLASynthesis::Reset() noexcept
{
    inRing.Clear();
    outRing.Clear();
    inFill = inTotal = outEnd = outReady = 0;
    readPos = 0.0;
    hop = period = markPos = markIdx = prevIdx = lastTransientPos = 0;
    repeats = 1;
    started = tailFaded = inTransient = false;
    SetStretchFactor(1.0f);
    SetPitchFactor(1.0f);
    return kSuccess;
}

void CPSOLASynthesis::ResetMarkPosition(int32_t position) noexcept
{
    const int32_t nearest = position < 0 ? -1 : marks->FindNearest(0, position);
    prevIdx = markIdx = std::max(nearest, 0);
    readPos = nearest < 0 ? position : marks->GetPosition(nearest);
    inRing.Clear();
    inFill = 0;
    inTotal = std::max(int32_t(readPos), 0);
}

void CPSOLASynthesis::ShiftMarkIndex(int32_t delta) noexcept
{
    markIdx += delta;
    prevIdx += delta;
}

void CPSOLASynthesis::SetPitchFactor(float asked) noexcept
{
    const float factor = Bounded(asked, kExtremePitch);
    pitch = factor;
    invPitch = 1.0f / factor;
    maxPitchLen = std::max(1.0f, 1.0f / factor);
    interpolator.SetPitch(factor);
}

void CPSOLASynthesis::SetStretchFactor(float asked) noexcept
{
    const float factor = Bounded(asked, kExtremeStretch);
    stretch = factor;
    invStretch = 1.0f / factor;
    maxStretchLen = std::max(1.0f, 1.0f / factor);
}

void CPSOLASynthesis::SetFreeze(int32_t on) noexcept
{
    if (on)
        invStretch = 0.0f;
    else
        SetStretchFactor(stretch);
}

void CPSOLASynthesis::SetReadPosition(double anchor) noexcept
{
    readPos = outEnd * double(invStretch) + anchor;
}

float CPSOLASynthesis::GetCurrentPeriod() noexcept
{
    const int32_t i = marks->FindNearest(std::max(markIdx - 1, 0), int32_t(readPos));
    return marks->GetHarmonicity(i) > 0.0f ? float(marks->GetRawPeriod(i)) : -1.0f;
}

float CPSOLASynthesis::GetCurrentPower() noexcept
{
    return marks->GetPower(markIdx);
}

float CPSOLASynthesis::GetCurrentFrequencyChange() noexcept
{
    return std::fabs(marks->GetFrequencyChange(markIdx));
}

int32_t CPSOLASynthesis::SetOutputBlockSize(int32_t frames) noexcept
{
    outBlock = frames;
    return GetFramesNeeded();
}

// A dry run of FillOutput on copies of what it changes.
int32_t CPSOLASynthesis::GetFramesNeeded() noexcept
{
    if (marks->GetNumMarks() == 0)
        return kNoResult;
    int32_t ready = outReady, step = outEnd - outReady, previous = prevIdx, need = 0;
    double position = readPos;
    while (ready < outBlock) {
        int32_t i = marks->FindNearest(previous, int32_t(position));
        if (i == previous && marks->GetTransient(i) > transientThreshold)
            ++i;
        if (i < 0)
            return i;
        const int32_t length = marks->GetPeriod(i);
        if (length < 0)
            return kNoResult;
        const int32_t reach = int32_t(double(maxStretchLen) * maxPitchLen * length);
        need = std::max(need, marks->GetPosition(i) + reach - inTotal);
        previous = i;
        ready += step;
        const int32_t spacing = SpacingOf(length);
        step = std::max(spacing, 2);
        position += double(invStretch) * spacing;
    }
    return need;
}

// The road of a block -----------------------------------------------------------------------------------------------

int32_t CPSOLASynthesis::ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept
{
    int32_t status = Store(in, frames);
    if (status == kSuccess && inFill > 0)
        status = FillOutput();
    if (status == kSuccess && outReady >= outBlock) {
        ReleaseInput();
        HandOut(out);
        return kSuccess;
    }
    for (int32_t c = 0; c < channels; ++c)
        std::fill_n(out[c], outBlock, 0.0f);
    return status;
}

int32_t CPSOLASynthesis::Store(const float* const in[], int32_t frames) noexcept
{
    if (frames < 1)
        return kSuccess;
    if (!inRing.Reserve(int64_t(inFill) + frames, inFill))
        return kOutOfMemory;
    for (int32_t c = 0; c < channels; ++c)
        std::copy_n(in[c], frames, inRing.Row(c) + inFill);
    inFill += frames;
    inTotal += frames;
    return kSuccess;
}

int32_t CPSOLASynthesis::FillOutput() noexcept
{
    if (const int32_t status = BridgeStart(); status != kSuccess)
        return status;
    while (outReady < outBlock + (transientGrains ? hop * repeats : 0)) {
        markIdx = ChooseMark();
        if (markIdx < 0)
            return outReady < outBlock ? kNoResult : kSuccess;
        const int32_t toNext = marks->GetPeriod(markIdx);
        period = std::max(toNext < 0 ? int32_t(float(hop) * pitch + 0.5f) : toNext, 1);
        markPos = marks->GetPosition(markIdx);
        const bool attack = transientGrains && !inTransient && marks->GetTransient(markIdx) > transientThreshold;
        if (const int32_t status = attack ? AddTransient() : AddGrain(); status != kSuccess)
            return status;
        inTransient = attack;
        started = true;
    }
    return kSuccess;
}

// With attacks copied, a jump over one falls back to it.
int32_t CPSOLASynthesis::ChooseMark() const noexcept
{
    const int32_t i = marks->FindNearest(prevIdx, int32_t(readPos));
    if (transientGrains && i - 1 > prevIdx && marks->GetTransient(i - 1) > transientThreshold)
        return i - 1;
    return i;
}

// Output frames from a grain's centre to the next one's. Below half a frame grains would stand still.
int32_t CPSOLASynthesis::SpacingOf(int32_t periodFrames) const noexcept
{
    return std::max(int32_t(std::floor(double(float(periodFrames) * invPitch) + 0.5)), 1);
}

// Input starts at time 0: a stream that is read from before it begins with that much silence, so that the first mark
// lands on its own time. Silence goes no further than the block, since the read position may be anchored anew there.
int32_t CPSOLASynthesis::BridgeStart() noexcept
{
    if (started || readPos >= 0.0)
        return kSuccess;
    const auto whole = int32_t(std::floor(-readPos * double(stretch) + 0.5));
    const int32_t silence = std::clamp(outBlock - outReady, 0, whole);
    if (!ReserveOutput(int64_t(outEnd) + silence))
        return kOutOfMemory;
    for (int32_t c = 0; c < channels; ++c)
        std::fill_n(outRing.Row(c) + outEnd, silence + 1, 0.0f);
    outEnd += silence;
    outReady = outEnd;
    readPos = silence < whole ? readPos + silence * double(invStretch) : 0.0;
    return kSuccess;
}

void CPSOLASynthesis::ReleaseInput() noexcept
{
    const int64_t oldest = int64_t(markPos) - int64_t(hop) * repeats - inTotal + inFill - kKept;
    const auto n = int32_t(std::clamp<int64_t>(oldest, 0, inFill));
    inRing.Drop(n);
    inFill -= n;
}

void CPSOLASynthesis::HandOut(float* const out[]) noexcept
{
    for (int32_t c = 0; c < channels; ++c)
        std::copy_n(outRing.Row(c), outBlock, out[c]);
    outRing.Drop(outBlock);
    outEnd -= outBlock;
    outReady -= outBlock;
}

}   // namespace PSOLASynthForTensioPro

int32_t CreatePSOLASynthesis(CPSOLASynthesis** ppSynthesis, CPitchMarks* marks, int32_t blockFrames, int32_t channels,
                             int32_t bufferFrames)
{
    try {
        *ppSynthesis = new CPSOLASynthesis(marks, blockFrames, channels, bufferFrames);
    } catch (const std::bad_alloc&) {
        *ppSynthesis = nullptr;
    }
    return kSuccess;
}

int32_t DestroyPSOLASynthesis(CPSOLASynthesis* pSynthesis)
{
    delete pSynthesis;
    return kSuccess;
}
