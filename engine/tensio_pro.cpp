#include "engine/tensio_pro.h"

#include "dsp/status.h"

#include <algorithm>

namespace {

constexpr double kEstimateReach =
    1.25;   // of a glide: bends more than the pass itself will, so that the input suffices

}   // namespace

CtensioPro::CtensioPro(int32_t blockFrames, int32_t channelCount, float rate, int32_t coreMode)
    : CtensioProDirect(channelCount, rate, coreMode), outBlock(std::max(blockFrames, 0))
{
    for (int32_t c = 0; c < channels; ++c) {
        outBuf.push_back(MakeVtnfBuffer(maxLeadIn + kMaxBlockFrames + maxPassOutput));
        inBuf.push_back(MakeVtnfBuffer(bufSize));
    }
    CtensioPro::Reset();
}

int32_t CtensioPro::Reset() noexcept
{
    CtensioProDirect::Reset();
    outFill = -GetPreFramesOut();
    inFill = 0;
    firstBlock = true;
    return kSuccess;
}

int32_t CtensioPro::SetOutputBlockSize(int32_t frames) noexcept
{
    outBlock = std::clamp(frames, 0, kMaxBlockFrames);
    return GetFramesNeeded();
}

// Before the first pass a change of factors moves the lead-in; after it, it only bends the further course.
int32_t CtensioPro::SetStretchKeepPitch(float* stretch, float pitch, bool sync) noexcept
{
    const int32_t status = CtensioProDirect::SetStretchKeepPitch(stretch, pitch, sync);
    if (status == kSuccess && firstBlock)
        outFill = -GetPreFramesOut();
    return status;
}

int32_t CtensioPro::SetStretchPitch(float stretch, float* pitch, bool sync) noexcept
{
    const int32_t status = CtensioProDirect::SetStretchPitch(stretch, pitch, sync);
    if (status == kSuccess && firstBlock)
        outFill = -GetPreFramesOut();
    return status;
}

int32_t CtensioPro::GetFramesNeeded() noexcept
{
    const float readStep = std::max(pitchFactor, glide.ReadStep(pitchFactor, kEstimateReach, block));
    const int32_t first = firstBlock ? GetFirstFramesNeeded() : 0;
    return std::clamp(first + InputFor(outBlock - outFill, readStep) - inFill, 0, bufSize - inFill);
}

int32_t CtensioPro::ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept
{
    if (frames < 0 || frames > bufSize - inFill || (frames > 0 && !in))
        return kInvalidArgument;
    for (size_t c = 0; c < inBuf.size() && frames > 0; ++c)
        std::copy_n(in[c], frames, inBuf[c].get() + inFill);
    inFill += frames;
    int32_t consumed = 0;
    for (int32_t n = NextPassInput(); outFill < outBlock && consumed + n <= inFill; n = NextPassInput()) {
        RunNextPass(consumed, n);
        consumed += n;
    }
    DropInput(consumed);
    if (outFill < outBlock)
        return kNoResult;
    HandOut(outBlock, out);
    return kSuccess;
}

// What waits in front of the silence is heard before it.
int32_t CtensioPro::FlushBuffer(float* const out[]) noexcept
{
    while (outFill < outBlock) {
        if (inFill > 0) {
            RunPaddedPass();
            continue;
        }
        const int32_t got =
            firstBlock ? kNoResult : CtensioProDirect::FlushBuffer(At(outBuf, maxLeadIn + outFill).data());
        if (got < 0)
            break;
        outFill += got;
    }
    const int32_t given = std::min(outFill, outBlock);
    if (given < 1)
        return kNoResult;
    HandOut(given, out);
    return given;
}

int32_t CtensioPro::NextPassInput() noexcept
{
    return firstBlock ? GetFirstFramesNeeded() : CtensioProDirect::GetFramesNeeded();
}

void CtensioPro::RunNextPass(int32_t at, int32_t frames) noexcept
{
    const Pointers in = At(inBuf, at), out = At(outBuf, maxLeadIn + outFill);
    const int32_t got =
        firstBlock ? ProcessFirstBlock(in.data(), frames, out.data()) : RunPass(in.data(), frames, out.data());
    firstBlock = false;
    outFill += std::max(got, 0);
}

void CtensioPro::RunPaddedPass() noexcept
{
    const int32_t frames = NextPassInput();
    for (const VtnfBuffer& buffer : inBuf)
        std::fill_n(buffer.get() + inFill, std::max(frames - inFill, 0), 0.0f);
    inFill = std::max(inFill, frames);
    RunNextPass(0, frames);
    DropInput(frames);
}

void CtensioPro::DropInput(int32_t frames) noexcept
{
    inFill -= frames;
    for (const VtnfBuffer& buffer : inBuf)
        std::copy_n(buffer.get() + frames, inFill, buffer.get());
}

void CtensioPro::HandOut(int32_t frames, float* const out[]) noexcept
{
    outFill -= frames;
    for (size_t c = 0; c < outBuf.size(); ++c) {
        float* const ready = outBuf[c].get() + maxLeadIn;
        std::copy_n(ready, frames, out[c]);
        std::copy_n(ready + frames, outFill, ready);
    }
}

CtensioPro::Pointers CtensioPro::At(const std::vector<VtnfBuffer>& buffers, int32_t frame) const noexcept
{
    Pointers pointers{};
    std::transform(buffers.begin(), buffers.end(), pointers.begin(),
                   [frame](const VtnfBuffer& buffer) { return buffer.get() + frame; });
    return pointers;
}
