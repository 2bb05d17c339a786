// The curves of one parameter over time, and the value that they give it.
#pragma once

#include "kernel/list.h"
#include "platform/media/media_params.h"

#include <windows.h>

#include <memory>
#include <span>

struct EnvelopeSegment {
    MP_ENVELOPE_SEGMENT segment;
    DWORD bEvaluated;   // an evaluation has fallen into it
};
static_assert(sizeof(EnvelopeSegment) == 40);

// No two stored segments overlap: a new one displaces what it overlaps, whole. Segments are not checked for sense; an
// unknown curve acts as a jump. The owner's lock is held around all operations; evaluation never allocates.
class ParamEnvelope {
public:
    struct Result {
        bool inside = false;            // the time lies in a segment,
        REFERENCE_TIME remaining = 0;   // which ends after this many ticks
        bool changed = false;           // the value may differ from what was reported last
    };

    HRESULT Create(float neutral);   // E_OUTOFMEMORY
    // All or none of the segments; E_OUTOFMEMORY.
    HRESULT Add(std::span<const MP_ENVELOPE_SEGMENT> segments);
    // Removes the segments that overlap start .. end: that end after start and start before end.
    HRESULT Flush(REFERENCE_TIME start, REFERENCE_TIME end);
    bool HasSegments() const noexcept { return segments->nCount > 0; }

    // rate: of the clock, 1 for the speed of the stream. Outside of segments the value stays as the last evaluation left it.
    Result Evaluate(REFERENCE_TIME t, double rate) noexcept;
    // What an evaluation without any segments does. True when that is a change.
    bool Rest() noexcept;

    float value = 0.0f;
    bool editing = false;     // a hand is on the parameter: curves wait
    bool editEnded = false;   // the next evaluation reports a change
    bool active = false;      // the last evaluation fell into a segment

private:
    struct ListDeleter {
        void operator()(tQXLIST* p) const { QxList_Destroy(p); }
    };
    std::span<EnvelopeSegment> Segments() const noexcept;
    int32_t Find(REFERENCE_TIME t) const noexcept;
    bool Follow(EnvelopeSegment& item, REFERENCE_TIME t, double rate) noexcept;
    void SquareFrom(double x, double from, double span, double duration) noexcept;

    std::unique_ptr<tQXLIST, ListDeleter> segments;   // by start time
    double slope = 0.0, curvature = 0.0;              // first and second derivative at the last evaluation
    int32_t cursor = 0;                               // the segment last found: where the next search starts
};
