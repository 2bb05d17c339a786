#include "aplugins/qxvantor/param_envelope.h"

#include <cassert>
#include <utility>

namespace {

constexpr double kTicksPerSecond = 1e7;
constexpr int32_t kNone = -1;

bool Overlaps(const MP_ENVELOPE_SEGMENT& segment, REFERENCE_TIME start, REFERENCE_TIME end)
{
    return segment.rtEnd > start && segment.rtStart < end;
}

int CALLBACK CompareStarts(DWORD, const void* a, const void* b)
{
    const auto first = static_cast<const EnvelopeSegment*>(a)->segment.rtStart;
    const auto second = static_cast<const EnvelopeSegment*>(b)->segment.rtStart;
    return int(first > second) - int(first < second);
}

}   // namespace

HRESULT ParamEnvelope::Create(float neutral)
{
    tQXLIST* list = nullptr;
    if (const HRESULT hr = QxList_CreateExZ(&list, sizeof(EnvelopeSegment), 0, 0, QXLIST_ARRAY, 0, 0, 0); FAILED(hr))
        return hr;
    segments.reset(list);
    value = neutral;
    return S_OK;
}

std::span<EnvelopeSegment> ParamEnvelope::Segments() const noexcept
{
    return {reinterpret_cast<EnvelopeSegment*>(segments->pItems), size_t(segments->nCount)};
}

// Each segment in turn displaces what it overlaps, so that also segments of one call never overlap each other.
HRESULT ParamEnvelope::Add(std::span<const MP_ENVELOPE_SEGMENT> added)
{
    if (const HRESULT hr = QxList_GrowAllocated(segments.get(), int32_t(added.size())); FAILED(hr))
        return hr;
    for (const MP_ENVELOPE_SEGMENT& segment : added) {
        if (const HRESULT hr = Flush(segment.rtStart, segment.rtEnd); FAILED(hr))
            return hr;
        const EnvelopeSegment item = {segment, FALSE};
        const int32_t place = QxList_FindSortedInsertIndexRange(segments.get(), &item, 0, -1, CompareStarts);
        if (const HRESULT hr = QxList_InsertList(segments.get(), place, &item, 1); FAILED(hr))
            return hr;
    }
    return S_OK;
}

HRESULT ParamEnvelope::Flush(REFERENCE_TIME start, REFERENCE_TIME end)
{
    for (int32_t i = segments->nCount - 1; i >= 0; --i) {
        if (!Overlaps(Segments()[size_t(i)].segment, start, end))
            continue;
        if (const HRESULT hr = QxList_DeleteList(segments.get(), i, 1, FALSE); FAILED(hr))
            return hr;
    }
    return S_OK;
}

bool ParamEnvelope::Rest() noexcept
{
    const bool moved = slope != 0.0 || curvature != 0.0;
    slope = curvature = 0.0;
    return moved;
}

ParamEnvelope::Result ParamEnvelope::Evaluate(REFERENCE_TIME t, double rate) noexcept
{
    Result result;
    if (editing)
        return result;
    active = false;
    if (!HasSegments()) {
        result.changed = Rest();
        return result;
    }
    const int32_t index = Find(t), count = segments->nCount;
    if (index >= 0 && index < count) {
        EnvelopeSegment& item = Segments()[size_t(index)];
        cursor = index;
        active = result.inside = true;
        result.remaining = item.segment.rtEnd - t;
        result.changed = Follow(item, t, rate);
    } else if (index == count) {
        slope = curvature = 0.0;
        result.changed = Segments().back().segment.rtEnd == t;
    }
    result.changed |= std::exchange(editEnded, false);
    return result;
}

// The segment that t lies in; the count when t is behind the last one; kNone between segments and before the first.
// The search starts where the last one ended, so a clock that runs forward finds its segment at once.
int32_t ParamEnvelope::Find(REFERENCE_TIME t) const noexcept
{
    const auto items = Segments();
    const auto count = int32_t(items.size());
    int32_t i = cursor < count ? cursor : 0;
    for (; i < count && t >= items[size_t(i)].segment.rtEnd; ++i) {
    }
    if (i == count || t >= items[size_t(i)].segment.rtStart)
        return i;
    for (--i; i >= 0 && t < items[size_t(i)].segment.rtStart; --i) {
    }
    return i >= 0 && t < items[size_t(i)].segment.rtEnd ? i : kNone;
}

// Takes value and derivatives from the segment; true when the value moves.
bool ParamEnvelope::Follow(EnvelopeSegment& item, REFERENCE_TIME t, double rate) noexcept
{
    const MP_ENVELOPE_SEGMENT& s = item.segment;
    const double seconds = double(s.rtEnd - s.rtStart) / kTicksPerSecond;
    const double x = double(t - s.rtStart) / kTicksPerSecond / seconds;
    const double duration = seconds * rate, span = double(s.valEnd) - s.valStart;
    switch (s.iCurve) {
    case MP_CURVE_LINEAR:
        value = float(span * x + s.valStart);
        slope = span / duration;
        curvature = 0.0;
        break;
    case MP_CURVE_SQUARE:
        SquareFrom(x, s.valStart, span, duration);
        break;
    case MP_CURVE_INVSQUARE:
        SquareFrom(x - 1.0, s.valEnd, -span, duration);
        break;
    default:
        value = s.valStart;
        slope = curvature = 0.0;
    }
    const bool first = t == s.rtStart || !item.bEvaluated;
    item.bEvaluated = TRUE;
    return first || slope != 0.0 || curvature != 0.0;
}

// A parabola that leaves from with slope 0 at x = 0. x: time in durations.
void ParamEnvelope::SquareFrom(double x, double from, double span, double duration) noexcept
{
    value = float(span * x * x + from);
    slope = (2.0 * x + 1.0 / duration) * (span / duration);
    curvature = 2.0 * span / (duration * duration);
}
