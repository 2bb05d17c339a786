#include "dsp/vtnf.h"

#include <atomic>

namespace {

constexpr int32_t kLevelNotChosen = -1;
constexpr int32_t kLevelSse2 = 3;   // layouts follow this class: interleaved pairs, 16-byte groups

std::atomic<int32_t> level{kLevelNotChosen};

}   // namespace

void vtnfInit()
{
    level.store(kLevelSse2, std::memory_order_release);
}

int32_t vtnfGetLevel()
{
    return level.load(std::memory_order_acquire);
}

const VtnfTable& vtnfGetTable()
{
    return kVtnfPortable;
}
