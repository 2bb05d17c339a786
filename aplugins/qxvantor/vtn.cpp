#include "aplugins/qxvantor/vtn.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int32_t kMostAttempts = 10000;
constexpr float kNudge = 4.9999e-5f;   // of pitch factor, per attempt to bring a refused pair into range
constexpr float kSamePitch = 1e-6f;    // relative; two quantised pitches are hundreds of times further apart
constexpr int32_t kLongestBlock = 1 << 24;
constexpr int32_t kLargestRequest = 1 << 26;   // frames; an engine that asks for more than this is out of its mind

int32_t NormalizedMode(int32_t mode)
{
    switch (mode) {
    case kModeEfficient:
    case kModeEfficientAlias:
        return kModeEfficient;
    case kModeSoloistMono:
    case kModeSoloistSpeech:
        return mode;
    default:
        return kModePro;
    }
}

}   // namespace

// The caller's output area and how far it is filled, in frames.
struct CVtn::Output {
    float* data;
    uint32_t capacity;
    uint32_t produced;

    uint32_t Room() const noexcept { return capacity - produced; }
};

CVtn::CVtn(int32_t channelCount, float rate, int32_t block, EngineFactory engineFactory, int32_t firstMode)
    : channels(channelCount), blockSize(std::clamp(block, 1, kLongestBlock)),
      engineBlock(std::min(blockSize, kMaxBlockFrames)), sampleRate(rate), factory(engineFactory),
      mode(firstMode == kModeUnset ? kModeUnset : NormalizedMode(firstMode))
{
    InitEngine();
}

CVtn::~CVtn()
{
    FreeBuffers();
}

bool CVtn::InitEngine()
{
    channels = std::min(channels, kMaxDriverChannels);
    FreeBuffers();
    framesOut = framesForgotten = framesPadded = 0;
    framesExpected.Clear();
    accepted = {1.0f, 1.0f};
    offered = {0.0f, 0.0f};
    CTensioProIf* made = nullptr;
    if (factory(&made, engineBlock, channels, sampleRate, mode > kModeSoloistSpeech ? kModePro : mode) != kSuccess)
        return false;
    engine.reset(made);
    if (MakeBuffers())
        return true;
    FreeBuffers();
    return false;
}

bool CVtn::MakeBuffers()
{
    const int32_t worstCase = engine->GetFramesNeededAt(0.025f, 4.0f);
    engineInCapacity = worstCase > 0 ? worstCase : engineBlock;
    return engineInCapacity <= kLargestRequest && engineIn.Create(channels, engineInCapacity) &&
           engineOut.Create(channels, engineBlock) && stageBuf.Create(channels, engineInCapacity + blockSize) &&
           workBuf.Create(channels, engineBlock + blockSize);
}

void CVtn::FreeBuffers()
{
    engineIn.Release();
    engineOut.Release();
    stageBuf.Release();
    workBuf.Release();
    engineInCapacity = 0;
    engine.reset();
}

bool CVtn::SetParams(QxVantorParams* params, bool immediate)
{
    const int32_t oldMode = mode;
    ramp.TakeTargets(params);
    cutOffExponent = 12 - std::clamp(params->contentPitch, 3, 9);
    if (!std::isnan(params->formantPercent))
        formantPercent = std::clamp(params->formantPercent, 0.0, 100.0);
    mode = NormalizedMode(params->mode);
    syncPitch = params->syncPitch;

    params->contentPitch = 12 - cutOffExponent;
    params->formantPercent = formantPercent;
    params->mode = mode;

    if (immediate || params->bypass)
        ramp.JumpToTargets();
    ramp.SetSteps(RampDivisor());
    if (mode != oldMode || params->bypass)
        InitEngine();
    return true;
}

// A short ramp is over in this many passes.
int32_t CVtn::RampDivisor() const noexcept
{
    return std::max(blockSize / 1024, 1);
}

void CVtn::UpdateRatios(bool stepping) noexcept
{
    const Pair target{float(ramp.TargetStretch()), float(ramp.TargetPitch())};
    if (!engine || (stepping && (!ramp.NeedsStep() || offered == target)))
        return;
    ramp.Step();
    const Pair next{float(ramp.CurStretch()), float(ramp.CurPitch())};
    if (stepping && next == offered)
        ramp.SetCurrent(accepted.stretch, accepted.pitch, RampDivisor());
    else
        OfferPair(next);
    if (!stepping && mode == kModePro)
        UpdateEnvelope();
}

// Once the target itself has been offered, the ramp rests where the engine's quantised pitch is. A ramp that never gets
// there, because each step is quantised back, offers each place once: answers that differ by rounding count as one, so that
// the number of passes, and with it the cutting into blocks, has no say in the factors. A refused pair walks towards a product of 1, by the pitch alone. When that does not help, the
// engine still has the pair that it took last, and that becomes the target too: no later pass starts the walk again.
void CVtn::OfferPair(const Pair& next) noexcept
{
    const float s = next.stretch;
    float p = next.pitch;
    int32_t status = engine->SetStretchPitch(s, &p, syncPitch != 0);
    for (int32_t attempt = 1; status != kSuccess && attempt < kMostAttempts; ++attempt) {
        p += s * p < 1.0f ? kNudge : -kNudge;
        status = engine->SetStretchPitch(s, &p, syncPitch != 0);
    }
    if (status != kSuccess) {
        ramp.JumpTo(accepted.stretch, accepted.pitch);
        return;
    }
    offered = next;
    if (s != accepted.stretch || std::abs(p - accepted.pitch) > kSamePitch * p)
        accepted = {s, p};
    ramp.SetCurrent(accepted.stretch, accepted.pitch, RampDivisor());
}

// The envelope moves against the pitch by what the formants are not to follow. The factor is that of the pitch in force
// now; while a ramp runs it is not renewed.
void CVtn::UpdateEnvelope() noexcept
{
    engine->SetCutOffPitch(1 << cutOffExponent);
    engine->SetEnvelopeFactor(float(std::pow(ramp.CurPitch(), 1.0 - formantPercent / 100.0)));
}

void CVtn::Reset() noexcept
{
    if (!engine)
        return;
    engine->Reset();
    offered = {0.0f, 0.0f};   // an engine that was reset wants its factors again
    const auto staged = int64_t(double(stageBuf.Fill()) * ramp.CurStretch());
    framesForgotten += std::max<int64_t>(FramesExpected() - framesOut - staged, 0);
}

int32_t CVtn::ProcessBlock(bool flush, const float* in, uint32_t* inFrames, float* out, uint32_t* outFrames) noexcept
{
    const uint32_t given = *inFrames;
    uint32_t taken = 0;
    Output output{out, *outFrames, 0};
    *inFrames = *outFrames = 0;
    if (!engine)
        return 1;

    DrainWork(output);
    int32_t needed = FramesWanted();
    while (output.Room() > 0) {
        taken = FeedInput(in, given, needed, taken, flush);
        const bool ran = TakeEngineInput(needed);
        int32_t gained = 0;
        if (ran) {
            gained = RunEngine(needed);
            AppendEngineOutput(flush ? LimitToPromise(gained) : gained);
            DrainWork(output);
        }
        const bool stuck = needed == 0 && gained == 0;   // neither took nor gave: another pass would do the same
        UpdateRatios(true);
        needed = FramesWanted();
        if (!ran || stuck)
            break;
    }
    if (flush && output.Room() > 0)
        FlushEngine(output);
    *inFrames = taken;
    *outFrames = output.produced;
    return given == 0 && output.Room() > 0 ? 1 : 0;
}

int32_t CVtn::FramesWanted() noexcept
{
    return std::clamp(engine->GetFramesNeeded(), 0, kLargestRequest);
}

// Appends what the stage has room for and gives the new count of frames taken. Under flush a stage that falls short is
// filled up with silence, which promises no output; an empty one is not.
uint32_t CVtn::FeedInput(const float* in, uint32_t given, int32_t needed, uint32_t taken, bool flush) noexcept
{
    if (needed > engineInCapacity && !GrowStage(needed))
        return taken;
    const auto n = int32_t(std::min(given - taken, uint32_t(stageBuf.Room())));
    if (n > 0) {
        stageBuf.AppendInterleaved(in + size_t(taken) * size_t(channels), n);
        framesExpected.Take(n, ramp.CurStretch());
    }
    if (flush && stageBuf.Fill() > 0 && stageBuf.Fill() < needed)
        stageBuf.AppendSilence(needed - stageBuf.Fill());
    return taken + uint32_t(n);
}

bool CVtn::GrowStage(int32_t needed) noexcept
{
    PlanarBlock larger;
    if (!larger.Create(channels, needed) || !stageBuf.Grow(needed + blockSize))
        return false;
    engineIn = std::move(larger);
    engineInCapacity = needed;
    return true;
}

// Whether the engine can run; if so, engineIn holds its input.
bool CVtn::TakeEngineInput(int32_t needed) noexcept
{
    if (stageBuf.Fill() == 0 || stageBuf.Fill() < needed || needed > engineInCapacity)
        return false;
    if (needed > 0)
        stageBuf.TakePlanar(engineIn.Rows(), needed);
    return true;
}

// One pass; gives the frames that now stand in engineOut. Input that completes no block stays in the engine, and a
// status that is no count means that nothing came.
int32_t CVtn::RunEngine(int32_t needed) noexcept
{
    const int32_t result = engine->ProcessData(engineIn.Rows(), needed, engineOut.Rows());
    if (result == kSuccess)
        return engineBlock;
    return result > 0 && result <= engineBlock ? result : 0;
}

int32_t CVtn::LimitToPromise(int32_t n) const noexcept
{
    return int32_t(std::clamp<int64_t>(FramesExpected() - framesOut, 0, n));
}

void CVtn::AppendEngineOutput(int32_t n) noexcept
{
    workBuf.AppendPlanar(engineOut.Rows(), n);
    framesOut += n;
}

void CVtn::DrainWork(Output& output) noexcept
{
    const auto n = int32_t(std::min(output.Room(), uint32_t(workBuf.Fill())));
    if (n == 0)
        return;
    workBuf.TakeInterleaved(output.data + size_t(output.produced) * size_t(channels), n);
    output.produced += uint32_t(n);
}

// The engine's tail, up to the promise. A flush that gives less than a block is the engine's last.
void CVtn::FlushEngine(Output& output) noexcept
{
    int32_t gained = engineBlock;
    while (gained == engineBlock && output.Room() > 0) {
        gained = std::clamp(engine->FlushBuffer(engineOut.Rows()), 0, engineBlock);
        const int32_t n = LimitToPromise(gained);
        if (gained > 0 && n == 0)
            return;   // the promise is kept; what the engine still has is beyond it
        AppendEngineOutput(n);
        DrainWork(output);
    }
    if (gained < engineBlock)
        PadToPromise(output);
}

void CVtn::PadToPromise(Output& output) noexcept
{
    while (output.Room() > 0) {
        const int32_t n = LimitToPromise(engineBlock);
        if (n == 0)
            return;
        workBuf.AppendSilence(n);
        framesOut += n;
        framesPadded += n;
        DrainWork(output);
    }
}
