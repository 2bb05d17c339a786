// What CPSOLASynthesis writes at a mark: a plain grain, a resampled one, or an attack as it is.
#include "dsp/status.h"
#include "engine/psola/pitch_marks.h"
#include "engine/psola/psola_synthesis.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace PSOLASynthForTensioPro {

namespace {

constexpr int32_t kAttackFade = 16;   // a copied attack fades in over this part of the run before it

int32_t Rounded(double x)
{
    return int32_t(std::floor(x + 0.5));
}

}   // namespace

int32_t CPSOLASynthesis::AddGrain() noexcept
{
    const int32_t spacing = SpacingOf(period);
    const bool resampled = interpolate && pitch != 1.0f;
    const int32_t rise = resampled || pitch >= 1.0f ? hop : std::min(hop, int32_t(float(hop) * pitch));
    const auto fall = int32_t(std::min(float(period), float(period) * invPitch));
    const int32_t reach = resampled ? interpolator.Reach() : 0;
    const int32_t before = resampled ? Rounded(double(rise) * double(pitch)) + reach : rise;
    const int32_t after = resampled ? Rounded(double(spacing) * double(pitch)) + 1 + reach : fall;
    if (!ReserveOutput(int64_t(outEnd) + std::max(spacing, fall)) || !ReserveScratch(int64_t(before) + after))
        return kOutOfMemory;
    for (int32_t c = 0; c < channels; ++c) {
        const float* centre = Read(c, int64_t(markPos) - before, before + after) + before;
        if (resampled)
            AddResampledGrain(c, centre, rise, spacing);
        else
            AddPlainGrain(c, centre, rise, fall, spacing);
    }
    tailFaded = !resampled;
    outReady = outEnd;
    outEnd += spacing;
    repeats = markIdx == prevIdx ? repeats + 1 : 1;
    prevIdx = markIdx;
    hop = spacing;
    readPos += double(invStretch) * spacing;
    return kSuccess;
}

// The falling flank is assigned and the next rising one added: together they cross over at constant amplitude. Behind the
// fall there is silence up to the next grain, when the pitch is lowered.
void CPSOLASynthesis::AddPlainGrain(int32_t channel, const float* centre, int32_t rise, int32_t fall,
                                    int32_t spacing) noexcept
{
    float* out = outRing.Row(channel) + outEnd;
    const auto rising = fade.Over(rise), falling = fade.Over(fall);
    if (!tailFaded)
        for (int32_t i = 0; i < rise; ++i)
            out[i - rise] *= 1.0f - rising[i];
    for (int32_t i = 0; i < rise; ++i)
        out[i - rise] += rising[i] * centre[i - rise];
    for (int32_t i = 0; i < fall; ++i)
        out[i] = (1.0f - falling[i]) * centre[i];
    std::fill(out + fall, out + std::max(spacing + 1, fall), 0.0f);
}

// The period stands unfaded behind the mark; the next grain's rise takes its place.
void CPSOLASynthesis::AddResampledGrain(int32_t channel, const float* centre, int32_t rise, int32_t spacing) noexcept
{
    float* out = outRing.Row(channel) + outEnd;
    const float* start = centre - Rounded(double(rise) * double(pitch));
    const auto rising = fade.Over(rise);
    for (int32_t i = 0; i < rise; ++i) {
        const float w = rising[i], keep = tailFaded ? 1.0f : 1.0f - w;
        out[i - rise] = keep * out[i - rise] + w * interpolator.Read(start, interpolator.Place(i));
    }
    for (int32_t i = 0; i < spacing; ++i)
        out[i] = interpolator.Read(centre, interpolator.Place(i));
    out[spacing] = 0.0f;
}

// Copies the input from before an attack up to the next one, or maxMarkDistance on, so that it keeps its rise. The copy
// fades in early in the run before the mark and out over its last period, where the next grain rises.
int32_t CPSOLASynthesis::AddTransient() noexcept
{
    const int32_t next = NextAttack(), run = marks->GetPosition(next) - markPos;
    if (run < 1)
        return AddGrain();
    const int32_t lead = std::clamp(std::min(hop * repeats, (markPos - lastTransientPos) / 2), 0, outEnd);
    const int32_t fall = std::clamp(marks->GetPeriod(next - 1), 1, run);
    if (!ReserveOutput(int64_t(outEnd) + run) || !ReserveScratch(int64_t(lead) + run))
        return kOutOfMemory;
    for (int32_t c = 0; c < channels; ++c)
        CopyAttack(c, lead, run, fall);
    tailFaded = true;
    lastTransientPos = markPos;
    outEnd += run;
    outReady = outEnd - fall;
    hop = fall;
    prevIdx = markIdx;
    repeats = 1;
    readPos += double(invStretch) * run;
    return kSuccess;
}

int32_t CPSOLASynthesis::NextAttack() const noexcept
{
    int32_t last = markIdx;
    if (marks->NextAfter(&last, int32_t(float(maxMarkDistance) * invPitch)) < 0)
        last = marks->GetNumMarks() - 1;
    for (int32_t i = markIdx + 1; i < last; ++i)
        if (marks->GetTransient(i) > transientThreshold)
            return i;
    return last;
}

void CPSOLASynthesis::CopyAttack(int32_t channel, int32_t lead, int32_t run, int32_t fall) noexcept
{
    float* out = outRing.Row(channel) + outEnd;
    const float* x = Read(channel, int64_t(markPos) - lead, lead + run) + lead;
    const int32_t fadeIn = lead / kAttackFade;
    const auto rising = fade.Over(fadeIn), falling = fade.Over(fall);
    for (int32_t i = 0; i < fadeIn; ++i)
        out[i - lead] = (1.0f - rising[i]) * out[i - lead] + rising[i] * x[i - lead];
    std::copy(x - lead + fadeIn, x + run, out - lead + fadeIn);
    for (int32_t i = 0; i < fall; ++i)
        out[run - fall + i] *= 1.0f - falling[i];
    out[run] = 0.0f;
}

bool CPSOLASynthesis::ReserveScratch(int64_t frames) noexcept
{
    if (int64_t(scratch.size()) >= frames)
        return true;
    try {
        scratch.resize(size_t(frames));
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// count frames from input position first on; silence where nothing was received or nothing is kept.
const float* CPSOLASynthesis::Read(int32_t channel, int64_t first, int32_t count) noexcept
{
    const float* ring = inRing.Row(channel);
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
