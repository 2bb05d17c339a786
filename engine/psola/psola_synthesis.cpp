#include "engine/psola/psola_synthesis.h"

#include "dsp/kaiser_sinc.h"
#include "dsp/status.h"
#include "engine/psola/pitch_marks.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <numbers>

namespace PSOLASynthForTensioPro {

namespace {

constexpr int32_t kDefaultFrames = 131072;   // of either store
constexpr int32_t kKept = 4096;              // frames that stay in the input store before the oldest sample in use
constexpr int32_t kFadeSize = 32768;
constexpr int32_t kSincLength = 3 * kSincPerCrossing;
constexpr double kSincRolloff = 0.90234375, kSincBeta = 9.0;
constexpr int32_t kStepUnits = 128;     // parts of a table entry that the filter step counts in
constexpr int32_t kFractionBits = 15;   // of a fixed-point read position
constexpr int32_t kFractionMask = (1 << kFractionBits) - 1;
constexpr float kFilterGain = 0.99f;
constexpr int32_t kTransientFade = 16;   // a copied attack fades in over this part of the run before it

int32_t Rounded(double x)
{
    return int32_t(std::floor(x + 0.5));
}

// Steps through the fade table so that length frames cross it.
float FadeStep(int32_t length)
{
    return length < 2 ? float(kFadeSize) : float(kFadeSize - 1) / float(length - 1);
}

// Factors are not refused here; far outside of what anybody hears they would leave the integer range.
constexpr float kExtremePitch = 64.0f, kExtremeStretch = 1024.0f;

float Bounded(float factor, float extreme)
{
    return factor > 0.0f ? std::clamp(factor, 1.0f / extreme, extreme) : 1.0f;
}

bool Grow(std::vector<float>& buffer, int64_t size) noexcept
{
    if (int64_t(buffer.size()) >= size)
        return true;
    try {
        buffer.resize(size_t(size));
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}   // namespace

CPSOLASynthesis::CPSOLASynthesis(CPitchMarks* sharedMarks, int32_t blockFrames, int32_t channelCount,
                                 int32_t bufferFrames)
    : marks(sharedMarks), channels(channelCount), outBlock(blockFrames),
      inRing(size_t(channelCount), std::vector<float>(size_t(bufferFrames > 0 ? bufferFrames : kDefaultFrames))),
      outRing(inRing), scratch(size_t(kDefaultFrames))
{
    BuildTables();
    Reset();
}

void CPSOLASynthesis::BuildTables()
{
    fadeTable.resize(size_t(kFadeSize));
    for (int32_t i = 0; i < kFadeSize; ++i)
        fadeTable[size_t(i)] = float(std::pow(std::sin(std::numbers::pi / 2.0 * i / (kFadeSize - 1)), 3.0));
    sincTable.resize(size_t(kSincLength));
    sincDelta.resize(size_t(kSincLength));
    for (int32_t i = 0; i < kSincLength; ++i)
        sincTable[size_t(i)] = float(KaiserSinc(i, kSincLength, kSincRolloff, kSincBeta));
    for (int32_t i = 0; i + 1 < kSincLength; ++i)
        sincDelta[size_t(i)] = sincTable[size_t(i) + 1] - sincTable[size_t(i)];
}

int32_t CPSOLASynthesis::Reset() noexcept
{
    inFill = inTotal = outEnd = outReady = 0;
    readPos = 0.0;
    hop = period = markPos = markIdx = prevIdx = lastTransientPos = 0;
    repeats = 1;
    started = inTransient = false;
    SetStretchFactor(1.0f);
    SetPitchFactor(1.0f);
    return kSuccess;
}

void CPSOLASynthesis::ResetMarkPosition(int32_t position) noexcept
{
    const int32_t nearest = position < 0 ? -1 : marks->FindNearest(0, position);
    prevIdx = markIdx = std::max(nearest, 0);
    readPos = nearest < 0 ? position : marks->GetPosition(nearest);
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
    filterStep = int32_t(std::min(256.0, 256.0 / factor) * kStepUnits + 0.5);
    interpGain = factor >= 1.0f ? kFilterGain / factor : kFilterGain;
    maxPitchLen = factor >= 1.0f ? 1.0f : 1.0f / factor;
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
        const float t = float(length) * invPitch;
        step = std::max(Rounded(t), 2);
        position += double(invStretch) * t;
    }
    return need;
}

// The road of a block -----------------------------------------------------------------------------------------------

int32_t CPSOLASynthesis::ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept
{
    if (const int32_t status = Store(in, frames); status != kSuccess)
        return status;
    if (inFill < 1 && outReady < outBlock)
        return kNoResult;
    if (inFill > 0) {
        if (const int32_t status = FillOutput(); status != kSuccess)
            return status;
        ReleaseInput();
    }
    HandOut(out);
    return kSuccess;
}

int32_t CPSOLASynthesis::Store(const float* const in[], int32_t frames) noexcept
{
    if (frames < 1)
        return kSuccess;
    for (auto& ring : inRing)
        if (!Grow(ring, int64_t(inFill) + frames))
            return kOutOfMemory;
    for (size_t c = 0; c < inRing.size(); ++c)
        std::copy_n(in[c], frames, inRing[c].data() + inFill);
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
            return kNoResult;
        period = marks->GetPeriod(markIdx);
        if (period < 0)
            period = int32_t(hop * pitch + 0.5f);
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
int32_t CPSOLASynthesis::ChooseMark() noexcept
{
    const int32_t i = marks->FindNearest(prevIdx, int32_t(readPos));
    if (transientGrains && i - 1 > prevIdx && marks->GetTransient(i - 1) > transientThreshold)
        return i - 1;
    return i;
}

// Input starts at time 0: a stream that is read from before it begins with that much silence, so that the first mark
// lands on its own time. Silence goes no further than the block, since the read position may be anchored anew there.
int32_t CPSOLASynthesis::BridgeStart() noexcept
{
    if (started || readPos >= 0.0)
        return kSuccess;
    const int32_t whole = Rounded(-readPos * stretch), silence = std::clamp(outBlock - outReady, 0, whole);
    if (!ReserveOutput(int64_t(outEnd) + silence))
        return kOutOfMemory;
    for (auto& ring : outRing)
        std::fill_n(ring.data() + outEnd, silence, 0.0f);
    outEnd += silence;
    outReady = outEnd;
    readPos = silence < whole ? readPos + silence * double(invStretch) : 0.0;
    return kSuccess;
}

int32_t CPSOLASynthesis::AddGrain() noexcept
{
    const float spaced = float(period) * invPitch;
    const int32_t spacing = Rounded(spaced);
    const bool resampled = interpolate && pitch != 1.0f;
    const int32_t rise = resampled || pitch >= 1.0f ? hop : std::min(hop, int32_t(hop * pitch));
    const int32_t fall = int32_t(std::min(float(period), spaced));
    if (!ReserveOutput(int64_t(outEnd) + std::max(spacing, fall) + 1))
        return kOutOfMemory;
    const double reach = (double(rise) + spacing + 2.0) * std::max(pitch, 1.0f) + 8.0 * std::max(pitch, 1.0f);
    if (!ReserveScratch(int64_t(reach)))
        return kOutOfMemory;
    for (int32_t c = 0; c < channels; ++c)
        if (resampled)
            AddResampledGrain(c, rise, spacing);
        else
            AddPlainGrain(c, rise, fall, spacing);
    outReady = outEnd;
    outEnd += spacing;
    repeats = markIdx == prevIdx ? repeats + 1 : 1;
    Advance();
    return kSuccess;
}

void CPSOLASynthesis::Advance() noexcept
{
    prevIdx = markIdx;
    const float t = float(std::max(period, markIdx + 1 < marks->GetNumMarks() ? 1 : 0)) * invPitch;
    hop = std::max(Rounded(t), 0);
    readPos += double(invStretch) * t;
}

float CPSOLASynthesis::Fade(int32_t i, float step) const noexcept
{
    return fadeTable[size_t(float(i) * step + 0.5f)];
}

// The falling flank is assigned and the next rising one added: together they cross over at constant amplitude. Behind the
// period there is silence when the pitch is lowered.
void CPSOLASynthesis::AddPlainGrain(int32_t channel, int32_t rise, int32_t fall, int32_t spacing) noexcept
{
    float* out = outRing[size_t(channel)].data() + outEnd;
    const float* x = Read(channel, int64_t(markPos) - rise, rise + fall) + rise;
    const float rising = FadeStep(rise), falling = FadeStep(fall);
    for (int32_t i = 0; i < rise; ++i)
        out[i - rise] += Fade(i, rising) * x[i - rise];
    for (int32_t i = 0; i < fall; ++i)
        out[i] = (1.0f - Fade(i, falling)) * x[i];
    std::fill(out + fall, out + std::max(spacing + 1, fall), 0.0f);
}

// The whole period stands unfaded behind the mark; the next grain's rising part takes its place.
void CPSOLASynthesis::AddResampledGrain(int32_t channel, int32_t rise, int32_t spacing) noexcept
{
    const int32_t reach = kSincLength * kStepUnits / std::max(filterStep, 1) + 2;
    const int32_t back = Rounded(double(rise) * pitch);
    const int32_t ahead = int32_t(double(spacing) * pitch) + 1;
    const float* centre = Read(channel, int64_t(markPos) - back - reach, back + ahead + 2 * reach) + back + reach;
    float* out = outRing[size_t(channel)].data() + outEnd;
    const float rising = FadeStep(rise);
    for (int32_t i = 0; i < rise; ++i) {
        const float w = Fade(i, rising);
        const auto t = int64_t(double(i) * pitch * (1 << kFractionBits) + 0.5);
        const float value = Interpolate(centre - back + (t >> kFractionBits), int32_t(t & kFractionMask));
        out[i - rise] = (1.0f - w) * out[i - rise] + w * interpGain * value;
    }
    for (int32_t i = 0; i < spacing; ++i) {
        const auto t = int64_t(double(i) * pitch * (1 << kFractionBits) + 0.5);
        out[i] = interpGain * Interpolate(centre + (t >> kFractionBits), int32_t(t & kFractionMask));
    }
}

// The signal at x plus fraction / 2^15 frames: a wing of the filter on either side.
float CPSOLASynthesis::Interpolate(const float* x, int32_t fraction) const noexcept
{
    const auto tap = [this](int64_t q) {
        const auto entry = size_t(q / kStepUnits);
        return sincTable[entry] + float(q % kStepUnits) / kStepUnits * sincDelta[entry];
    };
    double sum = 0.0;
    const int64_t ahead = -fraction & kFractionMask;
    int64_t q = ((int64_t(filterStep) * ahead) >> kFractionBits) + (ahead == 0 ? filterStep : 0);
    for (const float* y = x + 1; q < int64_t(kSincLength - 1) * kStepUnits; q += filterStep)
        sum += double(tap(q)) * *y++;
    q = (int64_t(filterStep) * fraction) >> kFractionBits;
    for (const float* y = x; q < int64_t(kSincLength) * kStepUnits; q += filterStep)
        sum += double(tap(q)) * *y--;
    return float(sum);
}

// Copies the input around an attack as it is, up to the next attack or maxMarkDistance on, so that it keeps its rise.
// The copy fades in early in the run before the mark and out over its last period, where the next grain rises.
int32_t CPSOLASynthesis::AddTransient() noexcept
{
    int32_t last = markIdx;
    int32_t run = marks->NextAfter(&last, int32_t(float(maxMarkDistance) * invPitch));
    if (run < 0)
        last = marks->GetNumMarks() - 1;
    for (int32_t i = markIdx + 1; i < last; ++i)
        if (marks->GetTransient(i) > transientThreshold)
            last = i;
    run = marks->GetPosition(last) - markPos;
    if (run < 1)
        return AddGrain();
    const int32_t lead = std::max(std::min({hop * repeats, (markPos - lastTransientPos) / 2, outEnd}), 0);
    const int32_t fall = std::min(marks->GetPeriod(last - 1), run);
    if (!ReserveOutput(int64_t(outEnd) + run + 1) || !ReserveScratch(int64_t(lead) + run))
        return kOutOfMemory;
    for (int32_t c = 0; c < channels; ++c) {
        float* out = outRing[size_t(c)].data() + outEnd;
        const float* x = Read(c, int64_t(markPos) - lead, lead + run) + lead;
        const int32_t fade = lead / kTransientFade;
        for (int32_t i = 0; i < fade; ++i) {
            const float w = Fade(i, FadeStep(fade));
            out[i - lead] = (1.0f - w) * out[i - lead] + w * x[i - lead];
        }
        std::copy(x - lead + fade, x + run, out - lead + fade);
        for (int32_t i = 0; i < fall; ++i)
            out[run - fall + i] *= 1.0f - Fade(i, FadeStep(fall));
    }
    lastTransientPos = markPos;
    outEnd += run;
    hop = fall;
    outReady = outEnd - fall;
    prevIdx = markIdx;
    repeats = 1;
    readPos += double(invStretch) * run;
    return kSuccess;
}

void CPSOLASynthesis::ReleaseInput() noexcept
{
    const int64_t oldest = int64_t(markPos) - int64_t(hop) * repeats - inTotal + inFill - kKept;
    const int32_t n = int32_t(std::clamp<int64_t>(oldest, 0, inFill));
    if (n == 0)
        return;
    for (auto& ring : inRing)
        std::copy(ring.data() + n, ring.data() + inFill, ring.data());
    inFill -= n;
}

void CPSOLASynthesis::HandOut(float* const out[]) noexcept
{
    for (size_t c = 0; c < outRing.size(); ++c) {
        float* ring = outRing[c].data();
        std::copy_n(ring, outBlock, out[c]);
        std::copy(ring + outBlock, ring + std::max(outEnd + 1, outBlock), ring);
    }
    outEnd -= outBlock;
    outReady -= outBlock;
}

// Stores ------------------------------------------------------------------------------------------------------------

bool CPSOLASynthesis::ReserveOutput(int64_t frames) noexcept
{
    return std::ranges::all_of(outRing,
                               [&](auto& ring) { return Grow(ring, std::max<int64_t>(frames, outBlock) + 1); });
}

bool CPSOLASynthesis::ReserveScratch(int64_t frames) noexcept
{
    return Grow(scratch, frames);
}

// count frames from input position first on; silence where nothing was received or nothing is kept.
const float* CPSOLASynthesis::Read(int32_t channel, int64_t first, int32_t count) noexcept
{
    const float* ring = inRing[size_t(channel)].data();
    const int64_t index = first - inTotal + inFill;
    if (index >= 0 && index + count <= inFill)
        return ring + index;
    const int64_t from = std::clamp<int64_t>(-index, 0, count);
    const int64_t to = std::clamp<int64_t>(inFill - index, from, count);
    std::fill_n(scratch.data(), from, 0.0f);
    std::copy(ring + index + from, ring + index + to, scratch.data() + from);
    std::fill_n(scratch.data() + to, count - to, 0.0f);
    return scratch.data();
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
