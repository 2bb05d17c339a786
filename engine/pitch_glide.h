// Keeps the output in place while the pitch changes in running audio. The delay of a stage whose output is resampled
// depends on the pitch, so a change would make the stream jump. With a synchronised change the read step is bent for a
// while instead, until the output that was given agrees with the output that should have been.
// Positions count output frames since the start of the stream.
#pragma once

#include <algorithm>
#include <cmath>

class PitchGlide {
public:
    void Reset() { *this = PitchGlide(); }

    // The pitch has changed. sync: the position that the new delay, delay / pitch frames, calls for is to be reached by
    // bending; else the stream jumps there.
    void SetTarget(bool sync, float pitch, double delay)
    {
        target = sync ? ideal - (1.0 / pitch * delay - delay) : ideal;
    }
    bool AtIdeal() const { return target == ideal; }

    // The read step, input frames per output frame: pitch when nothing has to be corrected, else bent so that the error
    // would vanish over a span of reach times itself, but at least minSpan frames.
    float ReadStep(float pitch, double reach, double minSpan) const
    {
        if (std::trunc(actual - target) == 0.0)
            return pitch;
        const double error = drift + actual - target;
        const double span = std::max(reach * std::abs(error), minSpan);
        return float((span + error) / span * pitch);
    }

    // frames of input go through at readStep.
    void Advance(double frames, float pitch, float readStep)
    {
        ideal += frames / pitch;
        target += frames / pitch;
        actual += frames / readStep;
    }
    // They gave this many frames of output.
    void NoteOutput(double got, double frames, float readStep) { drift += got - frames / readStep; }

private:
    double ideal = 0.0;    // had every read step been the pitch
    double actual = 0.0;   // by the read steps that were used
    double target = 0.0;   // where actual has to arrive
    double drift = 0.0;    // frames given beyond actual: the resampler gives whole frames and holds some back
};
