#include "engine/tensio_mc.h"

#include "dsp/vtnf.h"
#include "engine/rate_band.h"
#include "engine/tensio_pro_if.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int32_t kResampleCapacity = 16384;   // frames: the longest synthesis hop of all frame sizes
constexpr float kHungriestPitch = 4.0f;        // what input room is sized for, at the smallest total factor
constexpr double kGlideReach = 1.25;           // a glide spreads its correction over this much of the error
constexpr double kSlowestGlide = 1.0 - 1.0 / kGlideReach;   // so it never reads slower than this part of the pitch
constexpr float kHighestPitch = 65536.0f;                   // a hop still gives a frame now and then
constexpr int32_t kLongestBlock = 3;                        // frames of the vocoder

// Two channels go in as 0.6 L +- 0.4 R; these weights bring them back.
constexpr float kLeftIn = 0.6f, kRightIn = 0.4f;
constexpr float kLeftOut = 0.8333333f, kRightOut = 1.25f;

// The stronger the stretch, the finer the analysis hop. frame / divisor.
int32_t HopDivisor(float total, bool fineHop)
{
    if (total <= 1.5f)
        return fineHop ? 8 : 4;
    if (total <= 2.2f)
        return 8;
    if (total <= 3.2f)
        return 16;
    return total <= 4.2f ? 32 : 64;
}

// A total that was handed back and comes again, rounded to the two factors, has to find its own hop.
constexpr double kFactorRounding = 2e-7;

int32_t EvenHop(int32_t hop, double total)
{
    return int32_t(hop * total * (1.0 + kFactorRounding)) & ~1;
}

}   // namespace

CTensioMC::CTensioMC(int32_t block, int32_t channelCount, float rate, int32_t coreMode)
    : realChannels(channelCount), channels(channelCount > 2 ? channelCount + 1 : channelCount),
      mixScale(channels > 1 ? 1.0f / float(channels - 1) : 1.0f), sampleRate(rate), frame(2048 << RateBand(rate)),
      fineHop(coreMode == kFineHop), outBlock(std::clamp(block, 0, kLongestBlock * frame)), cutBin(frame / 2)
{
    vtnfInit();
    AllocateBuffers();
    ChooseFactors(1.0, 1.0f);
    vocoder = std::make_unique<VocoderState>(frame, factors.hopS, factors.hopA, factors.total, channels);
    resampler = std::make_unique<CFastResample>(channels, kResampleCapacity);
    float stretch = 1.0f;
    SetStretchKeepPitch(&stretch, 1.0f, false);
    Reset();
}

// Input room: the largest request is made at the smallest total factor and the highest pitch, for a whole block and a
// lead-in of half a frame. Output room: as much before the origin, for the lead-in, as behind it.
void CTensioMC::AllocateBuffers()
{
    const int32_t hop = frame / HopDivisor(kMinTotalFactor, fineHop);
    const int32_t perHop = int32_t(float(EvenHop(hop, kMinTotalFactor)) / kHungriestPitch);
    const int32_t hops = (std::max(outBlock, kMaxBlockFrames) + frame / 2) / perHop + 2;
    inCapacity = std::max(16 * frame, hops * hop + frame);
    outCapacity = 32 * frame;
    for (int32_t c = 0; c < channels; ++c) {
        inBuf.push_back(MakeVtnfBuffer(inCapacity));
        outBuf.push_back(MakeVtnfBuffer(outCapacity));
        outOrigin.push_back(outBuf.back().get() + outCapacity / 2);
    }
    hopIn.resize(size_t(channels));
    hopOut.resize(size_t(channels));
}

// Factors ----------------------------------------------------------------------------------------------------------

// Refuses a total outside its limits, and a pitch whose hop has no place behind a block that is almost full.
bool CTensioMC::ChooseFactors(double total, float pitch) noexcept
{
    if (!(total >= kMinTotalFactor && total <= kMaxTotalFactor) || !(pitch > 0.0f && pitch <= kHighestPitch))
        return false;
    const int32_t hop = frame / HopDivisor(float(total), fineHop);
    const int32_t synthesis = EvenHop(hop, total);
    const int32_t room = outCapacity / 2 - kLongestBlock * frame;
    if (synthesis / (pitch * kSlowestGlide) > room || frame / 2 / double(pitch) > outCapacity / 2)
        return false;
    factors = {float(double(synthesis) / hop), double(hop) / synthesis, pitch, hop, synthesis};
    return true;
}

int32_t CTensioMC::SetStretchKeepPitch(float* stretch, float pitch, bool sync) noexcept
{
    if (!ChooseFactors(double(*stretch) * pitch, pitch))
        return kInvalidArgument;
    *stretch = factors.total / pitch;
    ApplyFactors(sync);
    resampleAlways = false;
    return kSuccess;
}

int32_t CTensioMC::SetStretchPitch(float stretch, float* pitch, bool sync) noexcept
{
    if (!ChooseFactors(double(stretch) * *pitch, *pitch))
        return kInvalidArgument;
    factors.pitch = factors.total / stretch;
    *pitch = factors.pitch;
    ApplyFactors(sync);
    resampleAlways = true;
    return kSuccess;
}

// Before the first hop the lead-in follows the factors: the first half window belongs to time before 0.
void CTensioMC::ApplyFactors(bool sync) noexcept
{
    if (firstHop) {
        positionBase = -(frame / 2);
        outFill = sync ? positionBase : int32_t(positionBase / double(factors.pitch));
        analysisPos = positionBase;
        positionOffset = 0;
    }
    vocoder->VocoderSetHops(factors.hopS, factors.hopA, factors.total);
    glide.SetTarget(sync, factors.pitch, frame / 2);
}

int32_t CTensioMC::SetCutOffFreq(float hz) noexcept
{
    const double bin = std::ceil(double(hz) / sampleRate * frame);
    cutBin = int32_t(std::clamp(bin, 0.0, double(frame / 2)));
    vocoder->VocoderSetBins(cutBin);
    return kSuccess;
}

int32_t CTensioMC::SetStereoInputMode(int32_t mode) noexcept
{
    if (realChannels != 2)
        return kNotAvailable;
    stereoMode = mode;
    return kSuccess;
}

int32_t CTensioMC::Reset() noexcept
{
    inRead = inFill = outFill = tailOut = 0;
    firstHop = true;
    resampleAlways = false;
    factors.pitch = ratioNow = 1.0f;
    factors.invTotal = invTotalActive = 1.0;
    analysisPos = 0.0;
    positionBase = positionOffset = 0;
    glide.Reset();
    resampler->Reset();
    vocoder->VocoderReset();
    return kSuccess;
}

// Blocks -----------------------------------------------------------------------------------------------------------

int32_t CTensioMC::ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept
{
    if (in && (frames < 0 || frames > inCapacity - inFill))
        return kInvalidArgument;
    if (in && frames > 0)
        TakeInput(in, frames);
    if (!in && firstHop && inFill > 0)
        FillFirstWindow();
    while (outFill < outBlock && RunHop(!in)) {
    }
    CloseInputGap();
    if (outFill < outBlock)
        return kNoResult;
    GiveOutput(out, outBlock);
    return kSuccess;
}

int32_t CTensioMC::FlushBuffer(float* const out[]) noexcept
{
    GetFramesNeeded();   // for the read step of the hops to come
    const int32_t status = ProcessData(nullptr, 0, out);
    if (status == kSuccess)
        return outBlock;
    if (status != kNoResult || outFill <= 0)
        return kNoResult;
    const int32_t rest = outFill;
    GiveOutput(out, rest);
    return rest;
}

int32_t CTensioMC::SetOutputBlockSize(int32_t frames) noexcept
{
    outBlock = std::clamp(frames, 0, kLongestBlock * frame);
    return GetFramesNeeded();
}

// One hop more than a block strictly takes, so that the answer also holds when a glide shortens a hop. A block that
// takes more than the input has room for is asked for in pieces.
int32_t CTensioMC::GetFramesNeeded() noexcept
{
    ratioNow = std::max(glide.ReadStep(factors.pitch, kGlideReach, frame / 2), factors.pitch);
    const double perHop = std::max(std::floor(double(factors.hopS) / ratioNow), 1.0);
    const double hops = outFill > outBlock ? 0.0 : std::floor((outBlock - outFill) / perHop) + 1.0;
    double need = hops * factors.hopA - inFill + (firstHop ? frame / 2 : 0);
    need = std::max(std::ceil(need / factors.hopA) * factors.hopA, 0.0);
    const double room = (inCapacity - inFill) / factors.hopA * double(factors.hopA);
    return int32_t(std::min(need, room));
}

// Asked on a copy of the factors, so that neither they nor running audio notice.
int32_t CTensioMC::GetFramesNeededAt(float stretch, float pitch) noexcept
{
    const Factors before = factors;
    const PitchGlide glideBefore = glide;
    const int32_t fillBefore = outFill;
    const float ratioBefore = ratioNow;
    int32_t need = kNoResult;
    if (ChooseFactors(double(stretch) * pitch, pitch)) {
        factors.pitch = factors.total / stretch;
        if (firstHop)
            outFill = -(frame / 2);
        glide.SetTarget(true, factors.pitch, frame / 2);
        need = GetFramesNeeded();
    }
    factors = before;
    glide = glideBefore;
    outFill = fillBefore;
    ratioNow = ratioBefore;
    return need;
}

int32_t CTensioMC::GetInputPosition() noexcept
{
    return int32_t(positionOffset + analysisPos - outFill * invTotalActive);
}

// A stream that ends before it fills half a window is heard too: silence makes up for the rest.
void CTensioMC::FillFirstWindow() noexcept
{
    const int32_t missing = frame / 2 - inFill;
    if (missing <= 0)
        return;
    for (const VtnfBuffer& buffer : inBuf)
        vtnfZero(buffer.get() + inFill, missing);
    inFill += missing;
}

// Between calls what waits stands at the front of inBuf.
void CTensioMC::CloseInputGap() noexcept
{
    for (const VtnfBuffer& buffer : inBuf)
        std::copy_n(buffer.get() + inRead, inFill, buffer.get());
    inRead = 0;
}

void CTensioMC::TakeInput(const float* const in[], int32_t frames) noexcept
{
    float* first = inBuf[0].get() + inFill;
    if (channels == 2 && stereoMode == 0) {
        float* second = inBuf[1].get() + inFill;
        for (int32_t i = 0; i < frames; ++i) {
            const float left = kLeftIn * in[0][i], right = kRightIn * in[1][i];
            first[i] = left + right;
            second[i] = left - right;
        }
    } else if (channels > 2) {
        vtnfZero(first, frames);
        for (int32_t c = 0; c < realChannels; ++c) {
            vtnfAdd(first, in[c], frames);
            std::copy_n(in[c], frames, inBuf[size_t(c) + 1].get() + inFill);
        }
        vtnfMulScalar(first, mixScale, frames);
    } else {
        for (int32_t c = 0; c < channels; ++c)
            std::copy_n(in[c], frames, inBuf[size_t(c)].get() + inFill);
    }
    inFill += frames;
}

void CTensioMC::GiveOutput(float* const out[], int32_t frames) noexcept
{
    if (channels == 2 && stereoMode == 0) {
        const float *a = outOrigin[0], *b = outOrigin[1];
        for (int32_t i = 0; i < frames; ++i) {
            out[0][i] = (a[i] + b[i]) * kLeftOut;
            out[1][i] = (a[i] - b[i]) * kRightOut;
        }
    } else {
        const int32_t skip = channels - realChannels;   // the mean
        for (int32_t c = 0; c < realChannels; ++c)
            std::copy_n(outOrigin[size_t(c + skip)], frames, out[c]);
    }
    outFill -= frames;
    for (float* buffer : outOrigin)
        std::copy(buffer + frames, buffer + frames + outFill, buffer);
}

// Hops -------------------------------------------------------------------------------------------------------------

// What the window holds beyond the last input frame, counted at the output.
int32_t CTensioMC::TailLength() const noexcept
{
    return int32_t(-positionBase * (double(factors.total) + 1.0) / factors.pitch);
}

// The next hop, of the input that waits or, at its end, of the tail. False when there is none.
bool CTensioMC::RunHop(bool atEnd) noexcept
{
    if (inFill >= (firstHop ? frame / 2 : factors.hopA))
        RunWholeHop();
    else if (atEnd && tailOut < TailLength())
        RunFlushHop();
    else
        return false;
    return true;
}

void CTensioMC::RunWholeHop() noexcept
{
    BeginHop();
    if (firstHop)
        PrimeWindow();
    UpdateReadStep();
    if (!fineHop)
        LimitBins();
    RunVocoder();
    outFill += Resample();
    DropInput();
    analysisPos += factors.hopA;
}

// Silence goes in; what still waits for a whole hop is not heard. The read step is updated behind the vocoder, as the
// bins of a tail stay limited by the step of the hop before.
void CTensioMC::RunFlushHop() noexcept
{
    CloseInputGap();
    BeginHop();
    for (float* input : hopIn)
        vtnfZero(input, factors.hopA);
    LimitBins();
    RunVocoder();
    UpdateReadStep();
    const int32_t given = Resample();
    outFill += given;
    tailOut += given;
    analysisPos += factors.hopA;
    if (const int32_t excess = tailOut - TailLength(); excess > 0)
        outFill -= excess;
}

void CTensioMC::BeginHop() noexcept
{
    if (factors.invTotal != invTotalActive) {
        positionOffset = int32_t(frame / 2 - frame / 2 * factors.invTotal);
        invTotalActive = factors.invTotal;
    }
    for (size_t c = 0; c < hopOut.size(); ++c) {
        hopIn[c] = inBuf[c].get() + inRead;
        hopOut[c] = outOrigin[c] + outFill;
    }
}

// Fills the window so that the first frame that is analysed is centred on input frame 0.
void CTensioMC::PrimeWindow() noexcept
{
    for (int32_t i = 0; i < frame / factors.hopA / 2 - 1; ++i) {
        for (int32_t c = 0; c < channels; ++c)
            vocoder->VocoderStep(hopIn.data(), hopOut.data(), -1 - c);
        DropInput();
    }
    firstHop = false;
}

void CTensioMC::UpdateReadStep() noexcept
{
    ratioNow = glide.ReadStep(factors.pitch, kGlideReach, frame / 2);
    glide.Advance(factors.hopS, factors.pitch, ratioNow);
}

// Nothing may stand above the Nyquist frequency that reading at ratioNow leaves.
void CTensioMC::LimitBins() noexcept
{
    const double usable = std::ceil(frame / (2.0 * ratioNow));
    vocoder->VocoderSetBins(int32_t(std::min(double(cutBin), usable)));
}

void CTensioMC::RunVocoder() noexcept
{
    for (int32_t step = 0; step < VocoderState::kStages * channels; ++step)
        vocoder->VocoderStep(hopIn.data(), hopOut.data(), step);
}

int32_t CTensioMC::Resample() noexcept
{
    int32_t given = factors.hopS;
    if (ratioNow != 1.0f || resampleAlways)
        given = resampler->Process(hopOut.data(), factors.hopS, hopOut.data(), ratioNow);
    glide.NoteOutput(given, factors.hopS, ratioNow);
    return given;
}

void CTensioMC::DropInput() noexcept
{
    inRead += factors.hopA;
    inFill -= factors.hopA;
    for (float*& input : hopIn)
        input += factors.hopA;
}
