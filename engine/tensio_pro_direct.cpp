#include "engine/tensio_pro_direct.h"

#include "dsp/status.h"
#include "dsp/vtnf.h"
#include "engine/rate_band.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr int32_t kBaseBlock = 512;           // split frame of the lowest rate band; doubles with each
constexpr int32_t kMarkRoom = 2048;           // marks
constexpr int32_t kMarksKept = 128;           // a list twice as long is pruned to this
constexpr int32_t kResamplerQuality = 3;      // zero crossings
constexpr float kTransientThreshold = 0.7f;   // rating from which the synthesis speaks of an attack
constexpr float kCrossoverHz = 2000.0f;
constexpr float kWideStretch = 2.5f;   // above it, the crossover rises: the vocoder takes more of the spectrum
constexpr int32_t kDefaultEnvelopeOrder = 128;
constexpr int32_t kMinCutOffPitch = 8, kMaxCutOffPitch = 512;
constexpr double kPer44100Hz = 2.2675737e-5;   // 1 / 44100: cut-off pitches are given at that rate
constexpr double kStepReach = 1.5;             // of a glide, see PitchGlide::ReadStep
constexpr double kMaxGlide = 3.0;              // a bent read step stays above pitch / 3

float CrossoverFor(float stretch, float sampleRate)
{
    if (stretch <= kWideStretch)
        return kCrossoverHz;
    const double c = 1.0 + (double(stretch) - kWideStretch);
    return float(std::min(kCrossoverHz * c * c * c, sampleRate / 2.0));
}

}   // namespace

// Creation ----------------------------------------------------------------------------------------------------------

CtensioProDirect::CtensioProDirect(int32_t channelCount, float rate, int32_t coreMode)
    : channels(channelCount), block(kBaseBlock << RateBand(rate)), maxLeadIn(int32_t(float(2 * block) / kMinPitch)),
      sampleRate(rate), crossoverHz(kCrossoverHz)
{
    // The longest pass is 10 times half a block, or the coarse vocoder's hop at factor 1.5, which is less.
    maxPassOutput = int32_t(kMaxTotalFactor * float(block / 2) * kMaxGlide / kMinPitch) + 1;
    CreateStages(coreMode);
    mixBuf = MakeVtnfBuffer(maxPassOutput * channels);
    for (int32_t c = 0; c < channels; ++c) {
        low.push_back(lowBuf.emplace_back(MakeVtnfBuffer(bufSize)).get());
        high.push_back(highBuf.emplace_back(MakeVtnfBuffer(bufSize)).get());
    }
    float stretch = 1.0f;
    CtensioProDirect::SetStretchKeepPitch(&stretch, 1.0f, false);
    CtensioProDirect::Reset();
}

CtensioProDirect::~CtensioProDirect() = default;

template <typename Pointer, typename Create, typename... Arguments>
static void Make(Pointer& owner, Create create, Arguments... arguments)
{
    typename Pointer::pointer made = nullptr;
    if (create(&made, arguments...) != kSuccess || !made)
        throw std::bad_alloc();
    owner.reset(made);
}

void CtensioProDirect::CreateStages(int32_t coreMode)
{
    vtnfInit();   // before its level is asked
    const int32_t mcBlock = block / 16;
    const int32_t pairMode = vtnfGetLevel() >= 2 && vtnfGetLevel() <= 4;
    core = std::make_unique<CTensioMC>(mcBlock, channels, sampleRate, coreMode);
    Make(marks, CreatePitchMarks);
    if (marks->Allocate(kMarkRoom) != kSuccess)
        throw std::bad_alloc();
    Make(resampler, CreateResampler, kResamplerQuality, 5 * block, channels, kResampleFloat, pairMode);
    bufSize = WorkBufferFrames();
    Make(analysis, CreatePSOLAAnalysis, marks.get(), sampleRate, kPeriodModePro, channels, 0, 1, bufSize);
    Make(synthesis, CreatePSOLASynthesis, marks.get(), mcBlock, channels, bufSize);
    synthesis->SetNoInterpolation(1);
    synthesis->SetTransientThreshold(kTransientThreshold);
    Make(resampler, CreateResampler, kResamplerQuality, bufSize, channels, kResampleFloat, pairMode);
    Make(split, CreateFFTSplit, int32_t(sampleRate), channels, kCrossoverHz, block, bufSize);
    core->Reset();
}

// The worst case: what the vocoder, at the lowest total factor, asks for in order to fill the resampler at the highest
// pitch of the interface, and half as much again; and at least what GetFramesNeeded can ask for.
int32_t CtensioProDirect::WorkBufferFrames()
{
    float total = kMinTotalFactor;
    core->SetStretchKeepPitch(&total, 1.0f, false);
    const int32_t hops = core->GetAnalysisHop() / (RateBand(sampleRate) == 0 ? 4 : 2);
    const int32_t resampled = resampler->InputFramesFor(block, 4.0f, 1.0f);
    const int32_t vocoder = core->SetOutputBlockSize(hops + resampled);
    const int32_t leadIn = int32_t(float(2 * block) / kMaxPitch);
    const int32_t needed = GetFirstFramesNeeded() + InputFor(kMaxBlockFrames + leadIn, kMaxPitch) + block;
    return std::max({vocoder + vocoder / 2, 32768, needed});
}

int32_t CtensioProDirect::Reset() noexcept
{
    split->Reset();
    core->Reset();
    float total = totalFactor;   // the vocoder forgets its factors, this class keeps them
    core->SetStretchKeepPitch(&total, 1.0f, false);
    core->SetCutOffFreq(crossoverHz);
    marks->Clear();
    analysis->Reset();
    synthesis->Reset();
    resampler->Reset();
    mcPosition = 0.0;
    flushLeft = 4 * block;
    flushDone = 0;
    marksClosed = false;
    passesDone = 0;
    synthTotal = ratioNow = envelopeFactor = 1.0f;
    envelopeOrder = kDefaultEnvelopeOrder;
    glide.Reset();
    return kSuccess;
}

// Factors -----------------------------------------------------------------------------------------------------------

int32_t CtensioProDirect::SetStretchKeepPitch(float* stretch, float pitch, bool sync) noexcept
{
    if (const int32_t status = SetFactors(*stretch * pitch, pitch); status != kSuccess)
        return status;
    *stretch = totalFactor / pitch;
    SetPitch(pitch, *stretch, sync);
    return kSuccess;
}

int32_t CtensioProDirect::SetStretchPitch(float stretch, float* pitch, bool sync) noexcept
{
    const float asked = stretch * *pitch;
    if (const int32_t status = SetFactors(asked, *pitch); status != kSuccess)
        return status;
    *pitch = float(double(*pitch) / asked * totalFactor);
    SetPitch(*pitch, stretch, sync);
    return kSuccess;
}

// The vocoder takes the whole total factor at pitch 1, so that its own resampler stays idle.
int32_t CtensioProDirect::SetFactors(float total, float pitch) noexcept
{
    if (!(pitch >= kMinPitch && pitch <= kMaxPitch))
        return kInvalidArgument;
    if (const int32_t status = core->SetStretchKeepPitch(&total, 1.0f, false); status != kSuccess)
        return status;
    totalFactor = total;
    return kSuccess;
}

void CtensioProDirect::SetPitch(float pitch, float stretch, bool sync) noexcept
{
    pitchFactor = pitch;
    lookAhead = core->GetAnalysisHop() / 2;
    glide.SetTarget(sync && passesDone > 0, pitch, 2.0 * block);
    crossoverHz = CrossoverFor(stretch, sampleRate);
    split->SetCrossoverHz(crossoverHz);
    core->SetCutOffFreq(crossoverHz);
    flushLeft = FlushLength() - flushDone;
}

// What the stages hold and the lead-in, in input frames. The lead-in is a fixed time before the stretch, and a lower pitch
// makes more output of it.
int32_t CtensioProDirect::FlushLength() const noexcept
{
    const float g = std::max({1.0f, 1.0f / pitchFactor, 1.0f / totalFactor});
    return int32_t(float(block / 2 + 4 * block + 2 * block) * g);
}

int32_t CtensioProDirect::SetEnvelopeFactor(float factor) noexcept
{
    if (!(factor > 0.0f && std::isfinite(factor)))
        return kInvalidArgument;
    envelopeFactor = factor;
    split->SetEnvelopeFactor(factor);
    ApplyEnvelopeOrder();
    return kSuccess;
}

int32_t CtensioProDirect::SetCutOffPitch(int32_t pitch) noexcept
{
    if (pitch < kMinCutOffPitch || pitch > kMaxCutOffPitch)
        return kInvalidArgument;
    envelopeOrder = int32_t(sampleRate * kPer44100Hz * pitch);
    ApplyEnvelopeOrder();
    return kSuccess;
}

// Formants that move down stand closer together in frequency, and so need a smoother curve.
void CtensioProDirect::ApplyEnvelopeOrder() noexcept
{
    split->SetEnvelopeOrder(envelopeFactor > 1.0f ? int32_t(float(envelopeOrder) / envelopeFactor) : envelopeOrder);
}

int32_t CtensioProDirect::SetStereoInputMode(int32_t mode) noexcept
{
    return core->SetStereoInputMode(mode);
}

// Sizes -------------------------------------------------------------------------------------------------------------

int32_t CtensioProDirect::HopsPerPass() const noexcept
{
    return std::max(1, block / 2 / core->GetAnalysisHop());
}

int32_t CtensioProDirect::PassInput() const noexcept
{
    return std::max(block / 2, core->GetAnalysisHop());
}

int32_t CtensioProDirect::PassOutput() const noexcept
{
    return core->GetSynthesisHop() * HopsPerPass();
}

int32_t CtensioProDirect::InputFor(int32_t missing, float readStep) const noexcept
{
    if (missing <= 0)
        return 0;
    const int32_t perPass = std::max(1, int32_t(float(PassOutput()) / readStep - 1.0f));
    return (missing + perPass - 1) / perPass * PassInput();
}

int32_t CtensioProDirect::GetFirstFramesNeeded() noexcept
{
    return block / 2 + 4 * block;
}

int32_t CtensioProDirect::GetFramesNeeded() noexcept
{
    const int32_t half = block / 2;
    int32_t need = PassInput();
    if (core->GetFramesBuffered() < 0) {   // still in the lead-in of a stream that began without ProcessFirstBlock
        const int32_t asked = core->SetOutputBlockSize(PassOutput());
        need = std::max({asked + block, half, core->GetInputPosition()});
    }
    expectFrames = (need + half - 1) / half * half;   // the split works by half frames
    return expectFrames;
}

int32_t CtensioProDirect::GetFramesNeededAt(float stretch, float pitch) noexcept
{
    const float pitchBefore = pitchFactor, totalBefore = totalFactor;
    if (SetStretchPitch(stretch, &pitch, true) != kSuccess)
        return kNoResult;
    core->SetOutputFill(-4 * block);
    const int32_t needed = std::max(GetFramesNeeded(), GetFirstFramesNeeded());
    core->SetOutputFill(-2 * block);
    SetFactors(totalBefore, pitchBefore);   // as they are: quantising stretch x pitch anew could lose a step of the hop
    SetPitch(pitchBefore, totalBefore / pitchBefore, false);
    Reset();
    return needed;
}

int32_t CtensioProDirect::GetPreFramesOut() noexcept
{
    return glide.AtIdeal() ? int32_t(float(2 * block) / pitchFactor) : 2 * block;
}

int32_t CtensioProDirect::GetMaxFramesOut() noexcept
{
    const double hop = core->GetSynthesisHop();
    const double read = resampler->InputFramesFor(core->GetSynthesisHop(), pitchFactor, 1.0f);
    return int32_t(std::ceil(hop * (hop / std::max(read, 1.0)) + 0.5));
}

int32_t CtensioProDirect::GetNumOfProcessCalls() noexcept
{
    return 3;
}

double CtensioProDirect::GetInputPosition() noexcept
{
    return core->GetInputPosition();
}

// Passes ------------------------------------------------------------------------------------------------------------

int32_t CtensioProDirect::ProcessFirstBlock(const float* const in[], int32_t frames, float* const out[]) noexcept
{
    core->SetOutputFill(0);
    core->SetAnalysisPosition(-2.0 * block);
    expectFrames = GetFirstFramesNeeded();
    const int32_t written = RunPass(in, frames, out);
    flushLeft = FlushLength();
    return written;
}

int32_t CtensioProDirect::ProcessLastBlock(const float* const[], int32_t, float* const[], int32_t) noexcept
{
    return 0;
}

int32_t CtensioProDirect::RunPass(const float* const in[], int32_t frames, float* const out[]) noexcept
{
    if (PreProcessData(in, frames) != kSuccess)
        return kNoResult;
    for (int32_t i = 0; i < GetNumOfProcessCalls(); ++i)
        if (ProcessStep() != kSuccess)
            return kNoResult;
    return GetProcessedData(out);
}

int32_t CtensioProDirect::PreProcessData(const float* const in[], int32_t frames) noexcept
{
    if (frames != expectFrames)
        return kInvalidArgument;
    stepIndex = 0;
    SplitBands(in, frames);
    if (passesDone > 0)
        return kSuccess;
    const int32_t lead = std::min(bandFill, block / 2);   // the split begins with half a frame of silence
    bandFill -= lead;
    for (size_t c = 0; c < low.size(); ++c) {
        std::copy_n(low[c] + lead, bandFill, low[c]);
        std::copy_n(high[c] + lead, bandFill, high[c]);
    }
    return kSuccess;
}

// A null in stands for as much silence as a pass takes.
void CtensioProDirect::SplitBands(const float* const in[], int32_t frames) noexcept
{
    std::array<float*, kMaxEngineChannels> lowAt{}, highAt{};
    bandFill = 0;
    do {
        for (size_t c = 0; c < low.size(); ++c) {
            lowAt[c] = low[c] + bandFill;
            highAt[c] = high[c] + bandFill;
        }
        bandFill += split->Process(in, lowAt.data(), highAt.data(), frames, 0.0f);
    } while (!in && bandFill < PassInput());
}

int32_t CtensioProDirect::ProcessStep() noexcept
{
    switch (stepIndex++) {
    case 0:
        FindMarks();
        return kSuccess;
    case 1:
        return StretchLowBand();
    default:
        StretchHighBand();
        SumBands();
        return ChangePitch();
    }
}

void CtensioProDirect::FindMarks() noexcept
{
    if (!marksClosed)
        analysis->ProcessBlock(high.data(), bandFill);
    if (marks->GetNumMarks() > 2 * kMarksKept && synthesis->GetPreviousMarkIndex() > kMarksKept) {
        marks->KeepLast(marks->GetNumMarks() - kMarksKept);
        synthesis->ShiftMarkIndex(-kMarksKept);
    }
}

// The synthesis hears of a new factor when the vocoder has run dry of output made with the old one, and where the vocoder
// reads: that couples the bands. Under strong changes it reads ahead, by half an analysis hop at most, since a hop of the
// vocoder speaks for the time that follows it.
int32_t CtensioProDirect::StretchLowBand() noexcept
{
    passFrames = passesDone == 0 ? core->GetSynthesisHop() : PassOutput();
    core->SetOutputBlockSize(passFrames);
    synthesis->SetOutputBlockSize(passFrames);
    if (core->GetFramesBuffered() < passFrames) {
        synthesis->SetStretchFactor(totalFactor);
        synthTotal = totalFactor;
    }
    ratioNow = glide.ReadStep(pitchFactor, kStepReach, 2.0 * block);
    glide.Advance(passFrames, pitchFactor, ratioNow);
    mcPosition = core->GetInputPosition();
    const float change = synthTotal >= 1.0f ? synthTotal : 1.0f / synthTotal;
    synthesis->SetReadPosition(mcPosition + double(std::min(change - 1.0f, 1.0f)) * lookAhead);
    return core->ProcessData(low.data(), bandFill, low.data());
}

// When the marks run out the list is closed, so that its last marks may be used; beyond them the band is silent.
void CtensioProDirect::StretchHighBand() noexcept
{
    if (synthesis->ProcessData(high.data(), bandFill, high.data()) == kSuccess)
        return;
    if (!marksClosed) {
        marksClosed = true;
        analysis->FinishMarks();
        if (synthesis->ProcessData(high.data(), 0, high.data()) == kSuccess)   // it has taken the input already
            return;
    }
    for (float* band : high)
        std::fill_n(band, passFrames, 0.0f);
}

// Early in the lead-in the low band stands alone: the read position of the high one is still being found.
void CtensioProDirect::SumBands() noexcept
{
    const bool both = mcPosition >= -block;
    for (size_t c = 0; c < low.size(); ++c) {
        if (both)
            vtnfAdd(low[c], high[c], passFrames);
        float* to = mixBuf.get() + c;
        for (int32_t i = 0; i < passFrames; ++i, to += channels)
            *to = low[c][i];
    }
}

int32_t CtensioProDirect::ChangePitch() noexcept
{
    passOut = resampler->Process(mixBuf.get(), mixBuf.get(), ratioNow, 1.0f, channels, passFrames);
    glide.NoteOutput(passOut, passFrames, ratioNow);
    return passOut > 0 ? kSuccess : kNoResult;
}

int32_t CtensioProDirect::GetProcessedData(float* const out[]) noexcept
{
    for (size_t c = 0; c < low.size(); ++c) {
        const float* from = mixBuf.get() + c;
        for (int32_t i = 0; i < passOut; ++i, from += channels)
            out[c][i] = *from;
    }
    ++passesDone;
    return passOut;
}

int32_t CtensioProDirect::FlushBuffer(float* const out[]) noexcept
{
    if (flushLeft <= 0)
        return kNoResult;
    const int32_t covered = CtensioProDirect::GetFramesNeeded();
    flushLeft -= covered;
    flushDone += covered;
    expectFrames = 0;
    return std::max(0, RunPass(nullptr, 0, out));
}
