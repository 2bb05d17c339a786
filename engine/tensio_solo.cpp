#include "engine/tensio_solo.h"

#include <algorithm>
#include <new>

namespace {

constexpr int32_t kMarkRoom = 2048;
constexpr int32_t kPruneAbove = 1024;   // marks
constexpr int32_t kPruned = 128;        // marks dropped at a time, from the oldest on
constexpr int32_t kSynthBlocksPerFrame = 128;

int32_t FrameSize(float sampleRate)
{
    if (sampleRate < 64000.0f)
        return 2048;
    if (sampleRate < 128000.0f)
        return 4096;
    return sampleRate < 256000.0f ? 8192 : 16384;
}

template <typename Ptr>
Ptr Owned(typename Ptr::pointer object)
{
    if (!object)
        throw std::bad_alloc();
    return Ptr(object);
}

}   // namespace

CtensioSOLO::CtensioSOLO(int32_t blockFrames, int32_t channelCount, float sampleRate, int32_t mode)
    : outBlock(blockFrames), channels(channelCount), frameSize(FrameSize(sampleRate)),
      synthBlock(frameSize / kSynthBlocksPerFrame)
{
    CPitchMarks* list = nullptr;
    CreatePitchMarks(&list);
    marks = Owned<PitchMarksPtr>(list);
    if (marks->Allocate(kMarkRoom) != kSuccess)
        throw std::bad_alloc();

    CPSOLASynthesis* synth = nullptr;
    CreatePSOLASynthesis(&synth, marks.get(), synthBlock, channels, 0);
    synthesis = Owned<PSOLASynthesisPtr>(synth);

    const bool mono = mode == kModeSoloistMono;
    CPSOLAAnalysis* walk = nullptr;
    CreatePSOLAAnalysis(&walk, marks.get(), sampleRate, mono ? kPeriodModeMono : kPeriodModeSpeech, channels, mono, 1,
                        0);
    analysis = Owned<PSOLAAnalysisPtr>(walk);
    synthesis->SetNoInterpolation(mono);
}

int32_t CtensioSOLO::ProcessData(const float* const in[], int32_t frames, float* const out[]) noexcept
{
    if (!in || inputEnded) {   // behind the end nothing is taken: the list of marks is closed
        frames = 0;
        if (!inputEnded)
            analysis->FinishMarks();
        inputEnded = true;
    } else {
        analysis->ProcessBlock(in, frames);
        PruneMarks();
    }
    const bool begun = frames > 0 || marks->GetNumMarks() > 1;
    const int32_t produced = begun ? FillBlock(in, frames, out) : 0;
    if (produced >= outBlock)
        return kSuccess;
    for (int32_t c = 0; c < channels; ++c)
        std::fill(out[c] + produced, out[c] + outBlock, 0.0f);
    return produced > 0 ? produced : kNoResult;
}

// Gives the frames written. While input still comes, no grain is made before the marks around its place are known: the
// newest one would have to serve for all times behind it, and the output would run ahead of the input.
int32_t CtensioSOLO::FillBlock(const float* const in[], int32_t frames, float* const out[]) noexcept
{
    synthesis->SetBlockOnly(0);
    int32_t status = synthesis->ProcessData(in, frames, out);   // stores the input
    int32_t produced = 0;
    while (status == kSuccess && produced < outBlock) {
        const int32_t n = std::min(synthBlock, outBlock - produced);
        for (int32_t c = 0; c < channels; ++c)
            outPointers[size_t(c)] = out[c] + produced;
        if (synthesis->SetOutputBlockSize(n) < 0 && !inputEnded)
            break;
        status = synthesis->ProcessData(nullptr, 0, outPointers.data());
        produced += status == kSuccess ? n : 0;
    }
    return produced;
}

// In portions, so that a list that is not full costs nothing; never past the mark that the synthesis stands on.
void CtensioSOLO::PruneMarks() noexcept
{
    while (marks->GetNumMarks() > kPruneAbove && synthesis->GetPreviousMarkIndex() >= kPruned) {
        marks->KeepLast(marks->GetNumMarks() - kPruned);
        synthesis->ShiftMarkIndex(-kPruned);
    }
}

int32_t CtensioSOLO::DefaultNeeded() const noexcept
{
    return std::max(frameSize * 5 / 2, 2 * outBlock);
}

// The synthesis cannot tell as long as no marks lie ahead; the default keeps the input flowing then.
int32_t CtensioSOLO::GetFramesNeeded() noexcept
{
    const int32_t needed = synthesis->SetOutputBlockSize(outBlock + synthBlock);
    synthesis->SetBlockOnly(synthBlock);
    return needed >= 0 ? needed : DefaultNeeded();
}

int32_t CtensioSOLO::SetOutputBlockSize(int32_t frames) noexcept
{
    outBlock = frames;
    return GetFramesNeeded();
}

int32_t CtensioSOLO::SetStretchKeepPitch(float* stretch, float pitch, bool) noexcept
{
    synthesis->SetStretchFactor(*stretch);
    synthesis->SetPitchFactor(pitch);
    return kSuccess;
}

int32_t CtensioSOLO::SetStretchPitch(float stretch, float* pitch, bool sync) noexcept
{
    return SetStretchKeepPitch(&stretch, *pitch, sync);
}

int32_t CtensioSOLO::Reset() noexcept
{
    inputEnded = false;
    analysis->Reset();
    synthesis->Reset();
    return kSuccess;
}

int32_t CtensioSOLO::FlushBuffer(float* const out[]) noexcept
{
    const int32_t status = ProcessData(nullptr, 0, out);
    return status == kSuccess ? outBlock : status;
}
