#include "engine/tensio_pro_if.h"

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
    return kNotAvailable;
}

int32_t DeleteInstance(CTensioProIf** ppEngine)
{
    if (!*ppEngine)
        return kInvalidArgument;
    delete *ppEngine;
    *ppEngine = nullptr;
    return kSuccess;
}
