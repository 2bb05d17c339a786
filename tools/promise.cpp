#include "tools/promise.h"

#include "aplugins/qxvantor/promised_length.h"
#include "aplugins/qxvantor/ratio_ramp.h"
#include "aplugins/qxvantor/vtn.h"

#include <algorithm>

namespace {

constexpr int32_t kDriverBlock = 2048;

}   // namespace

// The engine takes it in single precision.
double StretchInForce(QxVantorParams record)
{
    RatioRamp ramp;
    ramp.TakeTargets(&record);
    return float(ramp.TargetStretch());
}

// Channels do not matter, so one is enough.
double PitchInForce(QxVantorParams record, int32_t sampleRate)
{
    CVtn driver(1, float(sampleRate), kDriverBlock, &CreateInstance, record.mode);
    driver.SetParams(&record, true);
    driver.UpdateRatios(false);
    return driver.GetPitch();
}

int64_t PromisedFrames(int64_t framesIn, double stretch)
{
    PromisedLength length;
    while (framesIn > 0) {
        const auto part = int32_t(std::min<int64_t>(framesIn, 1 << 30));
        length.Take(part, stretch);
        framesIn -= part;
    }
    return length.Frames();
}
