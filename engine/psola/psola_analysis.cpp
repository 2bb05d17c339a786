#include "engine/psola/psola_analysis.h"

#include "dsp/status.h"
#include "engine/psola/pitch_marks.h"
#include "engine/rate_band.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace {

constexpr float kRateLimit = 512000.0f;   // Hz
constexpr float kSilence = 1e-24f;
constexpr float kHarmonicSpan = 0.0625f;   // of the tracked period: where the next mark is looked for
constexpr float kInharmonicSpan = 0.125f;
constexpr float kNoTrackerHarmonicity = 12.0f;
constexpr float kVoicedLow = 0.02f;     // below this level of the low band a period is not harmonic
constexpr double kStrongerBy = 1.25f;   // energy of a sample that may draw a mark away
constexpr int32_t kDrawStep = 2;        // frames a mark moves towards a distant one

int32_t BaseLength(int32_t periodMode, int32_t band)
{
    return periodMode > 0 ? periodMode << std::max(band - 1, 0) : 256 << band;
}

int32_t SearchSpan(int32_t periodMode, int32_t length)
{
    if (periodMode <= 0)
        return length / 2;
    if (periodMode < 512)
        return length / 8;
    return periodMode < 1024 ? length / 16 : length / 4;
}

int32_t MinPeriod(int32_t periodMode, int32_t band, bool trackPitch)
{
    if (periodMode > 0)
        return (trackPitch ? 16 : 64) << band;
    return periodMode == 0 ? 256 << band : 64 << band;
}

PitchTrackPtr MakeTracker(bool wanted, float sampleRate)
{
    CPitchTrack* tracker = nullptr;
    if (wanted && CreatePitchTrack(&tracker, int32_t(sampleRate), 1, kPitchTrackLong) == kOutOfMemory)
        throw std::bad_alloc();
    return PitchTrackPtr(tracker);
}

}   // namespace

CPSOLAAnalysis::CPSOLAAnalysis(CPitchMarks* sharedMarks, float rate, int32_t periodMode, int32_t channelCount,
                               bool track, int32_t size)
    : marks(sharedMarks), sampleRate(rate), channels(channelCount), trackPitch(track && periodMode > 0),
      baseLength(BaseLength(periodMode, RateBand(rate))), bufferSize(size > 0 ? size : 16384 << RateBand(rate)),
      minPeriod(MinPeriod(periodMode, RateBand(rate), trackPitch)),
      tailStep(periodMode == kPeriodModePro ? baseLength / 2 : 512 << RateBand(rate)), padChunk(4096 << RateBand(rate)),
      frameLength(baseLength), half(baseLength / 2), quarter(baseLength / 4),
      searchSpan(SearchSpan(periodMode, baseLength)), rating(4 * baseLength), tracker(MakeTracker(trackPitch, rate))
{
    // Room for the longest frame and the chunk of FinishMarks, whatever the caller asks for; behind it the zeros that a
    // frame at the end reads.
    bufferSize = std::max({bufferSize, padChunk, 4 * baseLength});
    buffer.resize(size_t(bufferSize + 4 * baseLength));
    pitchBuffer.resize(size_t(bufferSize));
    trackPitch = tracker != nullptr;
    MakeCorrelators();
    lastPeriod = half;
    trackedPeriod = float(padChunk / (2 * baseLength));
    if (marks->GetNumMarks() == 0 && marks->AppendPlainMark(0, 0.0f, 0.0f, 0.0f, 0.0f) != kSuccess)
        throw std::bad_alloc();
}

void CPSOLAAnalysis::MakeCorrelators()
{
    for (size_t i = 0; i < (trackPitch ? correlators.size() : 1); ++i) {
        CKKF* correlator = nullptr;
        CreateKKF(&correlator, trackPitch ? (baseLength / 4) << i : 2 * baseLength);
        if (!correlator)
            throw std::bad_alloc();
        correlators[i].reset(correlator);
    }
}

void CPSOLAAnalysis::Reset() noexcept
{
    std::ranges::fill(buffer, 0.0f);
    lastMark = candidate = lag = predictedLag = period = bufferFill = pitchFill = trackerStep = 0;
    lastPeriod = half;
    trackedPeriod = float(padChunk / (2 * baseLength));
    record = {};
    rating.Reset();
    marks->KeepLast(0);
    marks->AppendPlainMark(0, 0.0f, 0.0f, 0.0f, 0.0f);
    if (tracker)
        tracker->Reset();
}

// A block that the buffers cannot hold at once goes through in pieces.
int32_t CPSOLAAnalysis::ProcessBlock(const float* const planes[], int32_t frames) noexcept
{
    int32_t taken = 0;
    do {
        const int32_t room = bufferSize - std::max(bufferFill, trackPitch ? pitchFill : 0);
        const int32_t n = planes ? std::min(frames - taken, room) : 0;
        TakeInput(planes, taken, n);
        taken += n;
        PlaceMarks();
    } while (planes && taken < frames);
    return kSuccess;
}

void CPSOLAAnalysis::TakeInput(const float* const planes[], int32_t first, int32_t frames) noexcept
{
    float* sum = buffer.data() + bufferFill;
    for (int32_t i = 0; i < frames; ++i) {
        float value = 0.0f;
        for (int32_t c = 0; c < channels; ++c)
            value += planes[c][first + i];
        sum[i] = value;
    }
    bufferFill += frames;
    if (!trackPitch)
        return;
    std::copy_n(sum, frames, pitchBuffer.data() + pitchFill);
    pitchFill += frames;
}

void CPSOLAAnalysis::PlaceMarks() noexcept
{
    while (bufferFill >= 2 * baseLength && PlaceMark())
        ;
}

// One step of the walk; false when it has to wait for more input.
bool CPSOLAAnalysis::PlaceMark() noexcept
{
    if (trackPitch) {
        FollowTracker();
    } else {
        record.harmonicity = kNoTrackerHarmonicity;
        record.level = 0.0f;
    }
    if (frameLength > bufferFill)
        return false;
    Correlate();
    predictedLag = lag;
    if (trackPitch && record.harmonicity != 0.0f)
        CheckEnergy();
    candidate = lastMark + half - lag;
    period = candidate - lastMark;
    if (!CheckSpacing())
        return true;
    if (period > bufferFill)
        return false;
    Commit();
    return true;
}

// The tracker ----------------------------------------------------------------------------------------------------------

// Keeps the tracker half the buffered audio ahead of the marks.
void CPSOLAAnalysis::FollowTracker() noexcept
{
    trackerStep = tracker->GetInputFramesPerHop();
    while (pitchFill > bufferFill / 2 + trackerStep) {
        RunTracker();
        // A silent frame may have a negative frequency: it then tells no period and the frame stays.
        const float longest = float(2 * baseLength);
        const float length = record.frequency == 0.0f ? longest : std::min(sampleRate / record.frequency, longest);
        trackedPeriod = length > 0.0f ? length : -1.0f;
        if (std::floor(trackedPeriod + 0.5f) > 0.0f)
            SetFrame(record.harmonicity == 0.0f ? kInharmonicSpan : kHarmonicSpan, true);
    }
    const auto length = int32_t(trackedPeriod);
    if (length > 0 && length < 2 * minPeriod)
        SetFrame(kHarmonicSpan, false);
}

void CPSOLAAnalysis::RunTracker() noexcept
{
    for (int32_t done = 0; done < trackerStep; done += kPitchTrackMaxFrames)
        tracker->Process(pitchBuffer.data() + done, std::min(trackerStep - done, kPitchTrackMaxFrames), &record);
    std::copy(pitchBuffer.data() + trackerStep, pitchBuffer.data() + pitchFill, pitchBuffer.data());
    pitchFill -= trackerStep;
    trackerStep = tracker->GetInputFramesPerHop();
}

// A frame of two tracked periods puts the expected peak at lag 0.
void CPSOLAAnalysis::SetFrame(float spanFactor, bool withinHalf) noexcept
{
    const auto length = int32_t(trackedPeriod);
    frameLength = std::max(2 * minPeriod, std::min(2 * length, 2 * baseLength));
    half = frameLength >> 1;
    quarter = frameLength >> 2;
    searchSpan = std::min(quarter, std::max(minPeriod / 4, int32_t(trackedPeriod * spanFactor)));
    predictedLag = half - (withinHalf ? std::min(length, half) : length);
}

// The mark -------------------------------------------------------------------------------------------------------------

// Short frames take a short transform.
CKKF& CPSOLAAnalysis::Correlator() noexcept
{
    size_t i = 0;
    if (trackPitch)
        while (i + 1 < correlators.size() && frameLength > (baseLength / 8) << i)
            ++i;
    return *correlators[i];
}

void CPSOLAAnalysis::Correlate() noexcept
{
    const float* x = buffer.data();
    lag = 0;
    if (std::none_of(x, x + frameLength, [](float v) { return std::fabs(v) >= kSilence; }))
        return;
    CKKF& correlator = Correlator();
    correlator.Correlate(x, x + half, frameLength, frameLength);
    lag = correlator.FindMaxNear(half - 1, predictedLag, searchSpan);
}

// In a long period the mark moves to a much stronger sample close to the nominal place; when the strongest sample lies far
// away, it only moves a little.
void CPSOLAAnalysis::CheckEnergy() noexcept
{
    const int32_t nominal = half - lag;
    int32_t w = lag;
    if (nominal > 4 * minPeriod) {
        const auto energy = [this](int32_t i) { return double(buffer[size_t(i)]) * buffer[size_t(i)]; };
        double strongest = kStrongerBy * energy(nominal);
        for (int32_t j = -(nominal / 2); j < nominal / 2; ++j) {
            const double here = energy(std::max(nominal + j, 1));
            if (here > strongest) {
                strongest = here;
                w = j;
            }
        }
        if (w < -4)
            w = lag + kDrawStep;
        else if (w > 4)
            w = lag - kDrawStep;
        else
            w = half - std::max(w + nominal, 1);
    }
    if (w > -half && w < half)
        lag = w;
}

// Marks stand a quarter of the shortest period apart. false: this one was passed over.
bool CPSOLAAnalysis::CheckSpacing() noexcept
{
    if (candidate - marks->GetLastPosition() >= minPeriod / 4)
        return true;
    if (trackPitch) {
        Remove(period);
        lastPeriod = period;
        lastMark = candidate;
        return false;
    }
    candidate = lastMark + lastPeriod;
    period = lastPeriod;
    if (baseLength >= 1024) {
        frameLength = baseLength;
        half = baseLength / 2;
        quarter = baseLength / 4;
        searchSpan = baseLength / 2;
        predictedLag = baseLength / 2 - lastPeriod;
    }
    return true;
}

void CPSOLAAnalysis::Commit() noexcept
{
    const float transient = rating.Rate(buffer.data(), period);
    if (!trackPitch && rating.PeakLow() < kVoicedLow)
        record.harmonicity = 0.0f;
    double energy = 0.0;
    for (int32_t i = 0; i < period; ++i)
        energy += double(buffer[size_t(i)]) * buffer[size_t(i)];
    Remove(period);
    lastMark = candidate;
    marks->AppendMark(candidate, record.harmonicity, float(energy / period), transient, record.frequencyChange,
                      float(half - predictedLag));
    rating.Place(transient);
    lastPeriod = period;
}

void CPSOLAAnalysis::Remove(int32_t frames) noexcept
{
    float* x = buffer.data();
    std::copy(x + frames, x + bufferFill, x);
    std::fill(x + bufferFill - frames, x + bufferFill, 0.0f);
    bufferFill -= frames;
}

// The end --------------------------------------------------------------------------------------------------------------

void CPSOLAAnalysis::CloseLastMark() noexcept
{
    lastMark += tailStep;
    marks->AppendPlainMark(lastMark, 0.0f, 0.0f, 0.0f, 0.0f);
}

void CPSOLAAnalysis::FinishMarks() noexcept
{
    const int32_t end = lastMark + bufferFill;
    while (marks->GetLastPosition() < end) {
        if (padChunk - bufferFill < 1)
            break;
        bufferFill = padChunk;   // behind it the buffer holds zeros
        ProcessBlock(nullptr, 0);
    }
    while (marks->GetNumMarks() > 0 && marks->GetLastPosition() >= end)
        marks->RemoveLast();
    marks->AppendMark(end, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f);
}

int32_t CreatePSOLAAnalysis(CPSOLAAnalysis** ppAnalysis, CPitchMarks* marks, float sampleRate, int32_t periodMode,
                            int32_t channels, int32_t trackPitch, int32_t offline, int32_t bufferSize)
{
    *ppAnalysis = nullptr;
    if (!marks || !(sampleRate < kRateLimit))
        return kInvalidArgument;
    if (offline != 1)
        return kNotAvailable;
    try {
        *ppAnalysis = new CPSOLAAnalysis(marks, sampleRate, periodMode, channels, trackPitch != 0, bufferSize);
    } catch (const std::bad_alloc&) {
        return kSuccess;   // told by the null object
    }
    return kSuccess;
}

int32_t DestroyPSOLAAnalysis(CPSOLAAnalysis* pAnalysis)
{
    if (!pAnalysis)
        return kInvalidArgument;
    delete pAnalysis;
    return kSuccess;
}
