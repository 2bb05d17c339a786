// The two factors that steer the engine on their way from one setting to the next: where they are, where they go, and
// the bound that their product keeps. Steps are taken once per engine pass. The bound is tested in single precision, as
// the engine tests it; targets and steps are formed in double precision.
#pragma once

#include "aplugins/qxvantor/vantor_params.h"

#include <cstdint>

class RatioRamp {
public:
    // Keep the factors of a record in their ranges: 0.1 .. 10 for the stretch, 0.25 .. 4 for the pitch, their product in
    // 0.1 .. 10. What exceeds the product's bound is taken from the factor that has just changed; as long as the stretch
    // stands where the last correction left it, from the pitch. A value that is no number leaves its target as it was.
    void SetTargets(double stretch, double pitch);
    // The targets of a record, which keeps what came of them; a record with bypass set has the targets 1.
    void TakeTargets(QxVantorParams* params);
    // Both factors and both targets at once.
    void JumpTo(double stretch, double pitch);
    void JumpToTargets() { JumpTo(targetStretch, targetPitch); }
    // Sizes the steps for the way from here to the targets: at most 0.1 per pass, a short way in divisor passes.
    void SetSteps(int32_t divisor);
    // One step. The stretch ramps only while the pitch moves, and steps repeat while the product is out of bounds.
    void Step() noexcept;
    // Also where what remains is no longer than a step: a ramp that rested there would never arrive.
    bool NeedsStep() const noexcept;
    // The pair that the engine has in force. A pitch that it moved restarts the pitch ramp from there.
    void SetCurrent(float stretch, float pitch, int32_t divisor) noexcept;

    double CurStretch() const noexcept { return curStretch; }
    double CurPitch() const noexcept { return curPitch; }
    double TargetStretch() const noexcept { return targetStretch; }
    double TargetPitch() const noexcept { return targetPitch; }

private:
    void LimitRatioProduct();

    double curStretch = 1.0;
    double curPitch = 1.0;
    double targetStretch = 1.0;
    double targetPitch = 1.0;
    double lastStretch = 0.0;   // the targets as the last correction of the product left them
    double lastPitch = 0.0;
    double stretchStep = 0.0;   // signed
    double pitchStep = 0.0;
};
