#include "tools/promise.h"

#include "aplugins/qxvantor/promised_length.h"
#include "aplugins/qxvantor/vtn.h"

#include <algorithm>

namespace {

constexpr int32_t kDriverBlock = 2048;

}   // namespace

// Channels do not matter to the factors, so one is enough.
Factors FactorsInForce(QxVantorParams record, int32_t sampleRate)
{
    CVtn driver(1, float(sampleRate), kDriverBlock);
    driver.SetParams(&record, true);
    driver.UpdateRatios(false);
    return {driver.GetStretch(), driver.GetPitch()};
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
