#include "dsp/resample.h"

#include "dsp/kaiser_sinc.h"
#include "dsp/resample_tap.h"
#include "dsp/status.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

namespace {

constexpr int32_t kMaxQuality = 120;
constexpr double kMinRatio = 1.0 / 1000.0;   // the headroom is laid out for it
constexpr int32_t kSpareFrames = 8;          // of the history, for the frame or two that rounding may ask for
constexpr double kGain = 0.99;               // leaves room for the filter's overshoot

}   // namespace

// ---- the road of a call, in frames ------------------------------------------------------------------------------------

CResampleBase::CResampleBase(int32_t quality, int32_t maxFrames, int32_t maxChannels, bool pair)
    : tableLength(kSincPerCrossing * quality), rolloff(0.9f + float(quality) * 0.00078125f),
      halfTaps((tableLength / 128 + 2) / 2), maxFramesPerCall(maxFrames), channelsAtCreation(maxChannels),
      headroom(ptrdiff_t(halfTaps * 1000 + 1) * maxChannels), channels(maxChannels), pairMode(pair)
{
    Rewind();
}

void CResampleBase::Rewind() noexcept
{
    origin = headroom;
    xOff = 2 * halfTaps;
    xRead = xOff;
    xPos = xOff;
    pending = 0;
    time = xOff;
    firstCall = true;
}

size_t CResampleBase::HistorySamples() const noexcept
{
    return size_t(headroom) * 2 + (size_t(halfTaps) * 2 + size_t(maxFramesPerCall) + kSpareFrames) * size_t(channels);
}

int32_t CResampleBase::InputFramesFor(int32_t outFrames, float inRate, float outRate) const noexcept
{
    const double q = double(inRate) / outRate;
    double frames = q * outFrames;
    if (firstCall)
        frames += std::max(double(xOff), halfTaps * std::max(1.0, q) + 1.0);
    else
        frames -= pending;
    return int32_t(std::max(0.0, std::ceil(frames)));
}

bool CResampleBase::Accepts(float inRate, float outRate, int32_t channelCount, int32_t frames) const noexcept
{
    const double ratio = double(outRate) / inRate;
    return inRate > 0.0f && ratio >= kMinRatio && std::isfinite(ratio) && channelCount >= 1 &&
           channelCount <= channelsAtCreation && frames >= 0 && frames <= maxFramesPerCall;
}

void CResampleBase::GrowLookAhead(double ratio) noexcept
{
    const double reach = halfTaps * std::max(1.0, 1.0 / ratio) + 1.0;
    if (reach < xOff)
        return;
    const int32_t growth = int32_t(reach) - xOff;
    xOff += growth;
    xRead += growth;
    xPos += growth;
    time += growth;
    origin -= ptrdiff_t(growth) * channels;
}

CResampleBase::Pass CResampleBase::PlanPass(double ratio) noexcept
{
    Pass pass;
    pass.ratio = ratio;
    pass.step = 1.0 / ratio;
    pass.scale = ratio >= 1.0 ? kGain : kGain * ratio;
    pass.filterStep = int32_t(std::floor(std::min(1.0, ratio) * kSincPerCrossing * kTableSteps + 0.5));
    pass.frames = firstCall ? pending - xOff : pending;
    firstCall = false;
    return pass;
}

// Compared in hundredths of a frame, so that rounding of the rates gives no frame too many.
bool CResampleBase::Pass::Complete(int32_t outputFrame) const noexcept
{
    if (ratio >= 1.0)
        return outputFrame * 100.0 >= std::rint(float(ratio * frames * 100.0));
    return std::rint(float(outputFrame * double(float(step)) * 100.0)) >= frames * 100.0;
}

int32_t CResampleBase::Pass::OutputFrames() const noexcept
{
    auto i = int32_t(std::max(0.0, frames * ratio - 2.0));   // never beyond the first complete one
    while (!Complete(i))
        ++i;
    return i;
}

// The read position stands up to a step behind the frames used up. Its whole frames ("creep") move on at once, and the
// look-ahead that is then missing is owed by the next call.
int32_t CResampleBase::FinishPass(const Pass& pass) noexcept
{
    time -= pass.frames;
    xPos += pass.frames;
    const auto creep = int32_t(time - xOff);
    time -= creep;
    xPos += creep;

    const int32_t moved = xPos - xOff;
    pending = xRead + pending - moved - 2 * xOff;
    xRead = 2 * xOff;
    xPos = xOff;
    return moved;
}

// ---- what depends on the sample type ----------------------------------------------------------------------------------

template <typename Sample>
CResampleOf<Sample>::CResampleOf(int32_t quality, int32_t maxFrames, int32_t maxChannels, bool pair)
    : CResampleBase(quality, maxFrames, maxChannels, pair), history(HistorySamples())
{
}

template <typename Sample>
int32_t CResampleOf<Sample>::Process(const void* in, void* out, float inRate, float outRate, int32_t channelCount,
                                     int32_t frames) noexcept
{
    if (!Accepts(inRate, outRate, channelCount, frames))
        return 0;
    channels = channelCount;
    const double ratio = double(outRate) / inRate;
    GrowLookAhead(ratio);
    Append(static_cast<const Sample*>(in), frames);
    const Pass pass = PlanPass(ratio);
    const int32_t written = pass.OutputFrames();
    time = Interpolate(pass, written, static_cast<Sample*>(out));
    MoveDown(FinishPass(pass));
    return written;
}

template <typename Sample>
void CResampleOf<Sample>::Append(const Sample* in, int32_t frames) noexcept
{
    Sample* end = history.data() + origin + ptrdiff_t(xRead + pending) * channels;
    std::copy_n(in, ptrdiff_t(frames) * channels, end);
    pending += frames;
    // After a growth the look-ahead of this pass is short; it reads as silence, not as what stood there before.
    Sample* reach = history.data() + origin + ptrdiff_t(2 * xOff + pending) * channels;
    end += ptrdiff_t(frames) * channels;
    if (end < reach)
        std::fill(end, reach, Sample(0));
}

// Frame moved becomes frame 0. The frames below it move along, as a growth will want them.
template <typename Sample>
void CResampleOf<Sample>::MoveDown(int32_t frames) noexcept
{
    Sample* zero = history.data() + origin;
    const ptrdiff_t shift = ptrdiff_t(frames) * channels;
    const ptrdiff_t below = std::min({ptrdiff_t(xOff) * channels, origin, origin + shift});
    const ptrdiff_t kept = below + ptrdiff_t(2 * xOff + pending) * channels;   // to the end of what has come in
    std::memmove(zero - below, zero + shift - below, size_t(kept) * sizeof(Sample));
}

template <typename Sample>
void CResampleOf<Sample>::Reset() noexcept
{
    std::fill(history.begin(), history.end(), Sample(0));
    Rewind();
}

template class CResampleOf<float>;
template class CResampleOf<int16_t>;

int32_t CreateResampler(CResampleBase** ppResampler, int32_t quality, int32_t maxFrames, int32_t channels,
                        int32_t sampleType, int32_t pairMode)
{
    *ppResampler = nullptr;
    if (quality < 1 || quality > kMaxQuality || (sampleType != kResampleFloat && sampleType != kResampleInt16))
        return kInvalidArgument;
    if (maxFrames < 0 || channels < 1)
        return kInvalidArgument;
    try {
        if (sampleType == kResampleFloat)
            *ppResampler = new CResampleFloat(quality, maxFrames, channels, pairMode != 0);
        else
            *ppResampler = new CResampleInt(quality, maxFrames, channels, pairMode != 0);
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return kSuccess;
}

int32_t DestroyResampler(CResampleBase** ppResampler)
{
    delete *ppResampler;
    *ppResampler = nullptr;
    return 0;
}
