#include "engine/tensio_classic.h"
#include "engine/tensio_pro.h"
#include "engine/tensio_pro_if.h"
#include "engine/tensio_solo.h"

#include <memory>
#include <new>

namespace {

// The object of a mode's row; null for a mode that has none in this build.
std::unique_ptr<CTensioProIf> Make(int32_t blockFrames, int32_t channels, float sampleRate, int32_t mode)
{
    switch (mode) {
    case kModePro:
        return std::make_unique<CtensioPro>(blockFrames, channels, sampleRate, CTensioMC::kFineHop);
    case kModeProCoarse:
        return std::make_unique<CtensioPro>(blockFrames, channels, sampleRate, CTensioMC::kCoarse);
    case kModeEfficient:
    case kModeEfficientAlias:
        return std::make_unique<CtensioClassic>(blockFrames, channels, sampleRate, mode - kModeEfficient);
    case kModeSoloistMono:
    case kModeSoloistSpeech:
        return std::make_unique<CtensioSOLO>(blockFrames, channels, sampleRate, mode);
    default:
        return nullptr;
    }
}

}   // namespace

int32_t CreateInstance(CTensioProIf** ppEngine, int32_t blockFrames, int32_t channels, float sampleRate, int32_t mode)
{
    *ppEngine = nullptr;
    if (blockFrames > kMaxBlockFrames)
        return kInvalidArgument;
    if (!(sampleRate >= kMinSampleRate && sampleRate <= kMaxSampleRate))
        return kInvalidSampleRate;
    if (channels < 1 || channels > kMaxEngineChannels)
        return kInvalidChannelCount;
    if (mode < kModePro || mode > kModeSoloistSpeech)
        return kInvalidArgument;
    try {
        *ppEngine = Make(blockFrames, channels, sampleRate, mode).release();
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return *ppEngine ? kSuccess : kNotAvailable;
}

int32_t DeleteInstance(CTensioProIf** ppEngine)
{
    if (!*ppEngine)
        return kInvalidArgument;
    delete *ppEngine;
    *ppEngine = nullptr;
    return kSuccess;
}
