#include "engine/pitch/pitch_track.h"

#include "dsp/status.h"
#include "tests/allocations.h"
#include "tests/signals.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>

namespace {

constexpr double kBin = 11025.0 / 8192.0;   // Hz, of the long mode
constexpr size_t kSettled = 10;             // frames until the memory holds nothing but the tone

PitchTrackPtr Make(int32_t rate = 44100, int32_t channels = 1, int32_t mode = kPitchTrackLong)
{
    CPitchTrack* track = nullptr;
    EXPECT_EQ(CreatePitchTrack(&track, rate, channels, mode), kSuccess);
    return PitchTrackPtr(track);
}

// One record a hop, the hop in pieces that the tracker takes.
std::vector<PitchRecord> Records(CPitchTrack& track, Signal x, int32_t channels = 1)
{
    std::vector<PitchRecord> records;
    for (size_t at = 0;;) {
        int32_t hop = track.GetInputFramesPerHop();
        if (at + size_t(hop * channels) > x.size())
            return records;
        PitchRecord record{};
        for (; hop > 0; hop -= kPitchTrackMaxFrames) {
            const int32_t piece = std::min(hop, kPitchTrackMaxFrames);
            EXPECT_EQ(track.Process(x.data() + at, piece, &record), kSuccess);
            at += size_t(piece * channels);
        }
        records.push_back(record);
    }
}

std::vector<PitchRecord> Records(const Signal& x, int32_t rate = 44100)
{
    return Records(*Make(rate), x);
}

// Harmonics below 5 kHz with the amplitude that the function gives to each.
Signal Harmonics(double frequency, double seconds, const std::function<double(int)>& amplitude, double rate = 44100.0)
{
    Signal sum(size_t(rate * seconds), 0.0f);
    for (int h = 1; h * frequency < std::min(rate / 2.0, 5000.0); ++h) {
        const Signal tone = Tone(int32_t(sum.size()), h * frequency, rate, amplitude(h), 0.7 * h);
        std::transform(sum.begin(), sum.end(), tone.begin(), sum.begin(), std::plus<>());
    }
    return sum;
}

double Falling(int h)
{
    return 0.3 / h;
}

Signal Sum(Signal a, const Signal& b)
{
    std::transform(a.begin(), a.end(), b.begin(), a.begin(), std::plus<>());
    return a;
}

Signal Joined(Signal a, const Signal& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// The worst error in Hz once the track has settled; every such frame has to be judged reliable.
double WorstError(const std::vector<PitchRecord>& records, double frequency)
{
    double worst = 0.0;
    EXPECT_GT(records.size(), kSettled);
    for (size_t i = kSettled; i < records.size(); ++i) {
        worst = std::max(worst, std::fabs(records[i].frequency - frequency));
        EXPECT_GE(records[i].harmonicity, 3.5f) << frequency << " Hz, frame " << i;
    }
    return worst;
}

TEST(PitchTrack, HarmonicTonesSettleWithinAThirtiethOfABin)
{
    for (double f = 60.0; f <= 1500.0; f *= 1.03)
        EXPECT_LT(WorstError(Records(Harmonics(f, 1.0, Falling)), f), kBin / 30.0) << f << " Hz";
}

// Bare sines hold the same, but for a few below 76 Hz: there the side lobes of the frame, not harmonics, feed the product,
// which then may prefer a bin on the flank of the peak.
TEST(PitchTrack, SinesSettleWithinAThirtiethOfABinButForThoseNamed)
{
    constexpr std::array kNamed = {63.69, 64.97, 75.43};
    double f = 60.0;
    for (; f <= 1500.0; f *= 1.01) {
        const auto isThis = [f](double named) { return std::fabs(named - f) < 0.01; };
        const bool named = std::any_of(kNamed.begin(), kNamed.end(), isThis);
        const double error = WorstError(Records(Tone(33000, f, 44100.0, 0.5)), f);
        EXPECT_LT(error, named ? 2.5 * kBin : kBin / 30.0) << f << " Hz";
    }
}

TEST(PitchTrack, ShortModeSettlesWithinAThirtiethOfItsBin)
{
    for (double f = 130.0; f <= 1500.0; f *= 1.07) {
        const auto records = Records(*Make(44100, 1, kPitchTrackShort), Harmonics(f, 0.5, Falling));
        EXPECT_LT(WorstError(records, f), 4.0 * kBin / 30.0) << f << " Hz";
    }
}

// Where no peak stands, the parabola says as much as a bin and a half; at most frequencies it is less.
TEST(PitchTrack, MissingFundamentalIsHeard)
{
    const auto withoutFirst = [](int h) { return h == 1 ? 0.0 : Falling(h); };
    for (double f : {80.0, 90.0, 110.0, 130.0, 140.0, 160.0, 180.0, 200.0, 220.0, 250.0, 300.0, 350.0, 440.0})
        EXPECT_LT(WorstError(Records(Harmonics(f, 1.0, withoutFirst)), f), 1.5) << f << " Hz";
    for (double f = 70.0; f < 700.0; f *= 1.05)
        EXPECT_LT(WorstError(Records(Harmonics(f, 1.0, withoutFirst)), f), 1.5 * kBin) << f << " Hz";
}

TEST(PitchTrack, StrongSecondHarmonicIsNoOctave)
{
    for (double times : {2.0, 4.0, 8.0})
        for (double f = 60.0; f < 1500.0; f *= 1.1) {
            const auto trap = [times](int h) { return h == 2 ? 0.1 * times : 0.1 / h; };
            EXPECT_LT(WorstError(Records(Harmonics(f, 1.0, trap)), f), 0.3) << f << " Hz, second times " << times;
        }
}

// 6 Hz, 50 cents either way. A frame of 93 ms sees more than half a cycle and flattens the extremes by some cents; the
// rest of the bound is the step of the parabola.
TEST(PitchTrack, FollowsAVibrato)
{
    for (double f : {110.0, 220.0, 440.0, 880.0}) {
        Signal x(4 * 44100);
        double phase = 0.0;
        const auto cents = [](double t) { return 50.0 * std::sin(2.0 * std::numbers::pi * 6.0 * t); };
        for (size_t i = 0; i < x.size(); ++i) {
            phase += 2.0 * std::numbers::pi * f * std::exp2(cents(double(i) / 44100.0) / 1200.0) / 44100.0;
            x[i] = 0.0f;
            for (int h = 1; h * f < 5000.0 && h < 12; ++h)
                x[i] += float(Falling(h) * std::sin(h * phase));
        }
        const auto records = Records(x);
        double square = 0.0;
        for (size_t i = kSettled; i < records.size(); ++i) {
            const double middle = (double(i) * 512.0 + 512.0 - 512.0) / 11025.0;   // of the frame that ends with hop i
            const double error = 1200.0 * std::log2(records[i].frequency / f) - cents(middle);
            square += error * error;
            ASSERT_LT(std::fabs(error), 16.0) << f << " Hz, frame " << i;
        }
        EXPECT_LT(std::sqrt(square / double(records.size() - kSettled)), 7.0) << f << " Hz";
    }
}

TEST(PitchTrack, NoiseAndSilenceAreUnreliable)
{
    size_t reliable = 0, all = 0;
    for (unsigned seed = 0; seed < 10; ++seed)
        for (const PitchRecord& r : Records(Noise(4 * 44100, seed, 0.5f))) {
            reliable += r.harmonicity > 0.0f;
            ++all;
        }
    EXPECT_LE(reliable, all / 100) << "of " << all;
    for (const Signal& quiet : {Signal(44100, 0.0f), Tone(44100, 220.0, 44100.0, 3e-4)}) {
        const auto records = Records(quiet);
        for (size_t i = 1; i < records.size(); ++i) {
            EXPECT_EQ(records[i].harmonicity, 0.0f);
            EXPECT_LT(records[i].level, 3.2e-4f);
        }
    }
    EXPECT_NEAR(Records(Signal(44100, 0.0f)).back().frequency, 440.0, 1.5 * kBin) << "the memory as created";
}

TEST(PitchTrack, RateOfTheInputDoesNotMatter)
{
    for (int32_t rate : {11025, 16000, 44100, 48000, 96000, 384000}) {
        const auto records = Records(Harmonics(220.0, 1.5, Falling, rate), rate);
        EXPECT_LT(WorstError(records, 220.0), 0.01) << rate;
        EXPECT_NEAR(double(records.size()), 1.5 * 11025.0 / 512.0, 1.0) << rate;
    }
    EXPECT_EQ(Make(384000)->GetInputFramesPerHop(), 17974)   // 34.83 x 512 + (4 x 34.83 + 1), rounded up
        << "more than a call takes";
    EXPECT_EQ(Make(44100)->GetInputFramesPerHop(), 2065);
}

TEST(PitchTrack, DownwardMovesAreTakenAtOnceAndUpwardOnesFollow)
{
    const Signal low = Harmonics(100.0, 1.0, Falling), high = Harmonics(220.0, 1.0, Falling);
    for (const auto& [x, from, to] : {std::tuple{Joined(high, low), 220.0, 100.0}, {Joined(low, high), 100.0, 220.0}}) {
        const auto records = Records(x);
        EXPECT_NEAR(records[19].frequency, from, 0.05);
        for (size_t i = 24; i < records.size();
             ++i)   // the frame that ends 24 hops in is the first one behind the seam
            EXPECT_NEAR(records[i].frequency, to, 0.05) << "frame " << i;
    }
}

// A louder tone more than an octave above sets in. While the old pitch still stands out of the spectrum it stays; when it
// is 30 dB down the rise is taken.
TEST(PitchTrack, RisesOnlyWhenTheOldPitchIsGone)
{
    const Signal before = Tone(44100, 200.0, 44100.0, 0.5);
    for (const auto& [left, expected] : {std::pair{0.08, 200.0}, {0.015, 470.0}}) {
        const Signal after = Sum(Harmonics(470.0, 1.0, Falling), Tone(44100, 200.0, 44100.0, left));
        const auto records = Records(Joined(before, after));
        for (size_t i = 24; i < records.size(); ++i)
            EXPECT_NEAR(records[i].frequency, expected, 1.5) << left << ", frame " << i;
    }
}

// What an unreliable frame far from the last pitch shows is the pitch of some frames ago: 7 before the last reliable one.
TEST(PitchTrack, UnreliableFramesFallBackOnTheMemory)
{
    const Signal tones = Joined(Harmonics(200.0, 1.0, Falling), Harmonics(260.0, 0.25, Falling));
    const auto records = Records(Joined(tones, Noise(44100, 2, 0.5f)));
    const auto isReliable = [](const PitchRecord& r) { return r.harmonicity > 0.0f; };
    const auto noise = std::find_if_not(records.begin() + 22, records.end(), isReliable);
    ASSERT_GE(records.end() - noise, 15);
    EXPECT_NEAR((noise - 1)->frequency, 260.0, 3.0);
    EXPECT_NEAR((noise - 8)->frequency, 200.0, 3.0);
    const auto fellBack = std::count_if(
        noise, records.end(), [](const PitchRecord& r) { return std::fabs(r.frequency - 200.0) < 1.5 * kBin; });
    EXPECT_GE(fellBack, (records.end() - noise) / 2);
}

// 5 dB are needed, below 160 Hz 3.5.
TEST(PitchTrack, LowVoicesAreReliableSooner)
{
    size_t low = 0, strong = 0;
    for (double f : {90.0, 130.0, 190.0, 260.0})
        for (float noise : {0.2f, 0.6f, 0.8f, 1.0f, 1.2f, 1.4f})
            for (const PitchRecord& r : Records(Sum(Harmonics(f, 1.0, Falling), Noise(44100, 7, noise)))) {
                low += r.harmonicity > 0.0f && r.harmonicity < 5.0f;
                strong += r.harmonicity >= 5.0f;
                EXPECT_TRUE(r.harmonicity == 0.0f || r.harmonicity >= 5.0f ||
                            (r.harmonicity >= 3.5f && r.frequency < 160.0 + 1.5 * kBin))
                    << r.harmonicity << " dB at " << r.frequency << " Hz";
            }
    EXPECT_GT(low, 50u);
    EXPECT_GT(strong, 50u);
}

TEST(PitchTrack, RecordMeasuresLevelAndChanges)
{
    Signal x = Tone(44100, 220.0, 44100.0, 0.5);
    std::for_each(x.begin() + 22050, x.end(), [](float& v) { v *= 0.1f; });
    const auto records = Records(x);
    // The positive half waves of a sine of 0.5: 0.5 / 2, by the resampler's 0.99 and the low-pass.
    EXPECT_NEAR(records[5].level, 0.25, 0.006);
    EXPECT_NEAR(records.back().level, 0.025, 0.0006);
    for (size_t i = 1; i < records.size(); ++i) {
        const PitchRecord &now = records[i], &before = records[i - 1];
        EXPECT_NEAR(now.levelChange, (now.level - before.level) / now.level, 1e-6);
        EXPECT_NEAR(now.frequencyChange, (before.frequency - now.frequency) / (1.0 + now.frequency + before.frequency),
                    1e-6);
    }
}

TEST(PitchTrack, TrackDoesNotDependOnTheCutOrTheChannels)
{
    const Signal x = Harmonics(150.0, 2.0, Falling, 11025.0);
    const auto whole = Make(11025), cut = Make(11025), stereo = Make(11025, 2);
    PitchRecord a{}, b{}, c{};
    Signal first = x, second = x, both(2 * x.size());
    for (size_t i = 0; i < x.size(); ++i)
        both[2 * i] = both[2 * i + 1] = x[i];
    EXPECT_EQ(whole->Process(first.data(), kPitchTrackMaxFrames, &a), kSuccess);   // as much as the ring holds
    EXPECT_EQ(stereo->Process(both.data(), kPitchTrackMaxFrames, &c), kSuccess);
    for (int32_t at = 0, n = 1; at < kPitchTrackMaxFrames;
         at += n, n = std::min(n % 700 + 13, kPitchTrackMaxFrames - at))
        EXPECT_EQ(cut->Process(second.data() + at, n, &b), kSuccess);
    EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0);
    EXPECT_NEAR(a.frequency, 150.0, 0.05);
    EXPECT_NEAR(c.frequency, a.frequency, 1e-3);
    EXPECT_NEAR(c.level, a.level, 1e-6);
}

TEST(PitchTrack, ResetStartsAnewWithTheMemoryAt220)
{
    const auto track = Make();
    const Signal x = Harmonics(330.0, 1.0, Falling);
    Records(*track, x);
    track->Reset();
    const auto once = Records(*track, x);
    track->Reset();
    const auto again = Records(*track, x);
    ASSERT_EQ(once.size(), again.size());
    EXPECT_EQ(std::memcmp(once.data(), again.data(), once.size() * sizeof(PitchRecord)), 0);
    track->Reset();
    EXPECT_NEAR(Records(*track, Signal(22050, 0.0f)).back().frequency, 220.0, 1.5 * kBin);
}

TEST(PitchTrack, RefusesWhatItCannotDo)
{
    static constexpr struct {
        int32_t rate, channels, mode, status;
    } kCases[] = {{11024, 1, 1, kInvalidSampleRate}, {8000, 1, 1, kInvalidSampleRate},
                  {11025, 1, 1, kSuccess},           {44100, 0, 1, kInvalidChannelCount},
                  {44100, 48, 0, kSuccess},          {44100, 49, 1, kInvalidChannelCount},
                  {44100, 1, 2, kInvalidArgument},   {44100, 1, -1, kInvalidArgument}};
    for (const auto& c : kCases) {
        CPitchTrack* track = nullptr;
        EXPECT_EQ(CreatePitchTrack(&track, c.rate, c.channels, c.mode), c.status) << c.rate;
        EXPECT_EQ(track != nullptr, c.status == kSuccess);
        EXPECT_EQ(DestroyPitchTrack(&track), c.status == kSuccess ? kSuccess : kInvalidArgument);
        EXPECT_EQ(track, nullptr);
    }
    const auto track = Make();
    Signal x(kPitchTrackMaxFrames + 1, 0.0f);
    PitchRecord record{1.0f, 2.0f, 3.0f, 4.0f, 5.0f};
    EXPECT_EQ(track->Process(x.data(), kPitchTrackMaxFrames + 1, &record), kInvalidArgument);
    EXPECT_EQ(track->Process(x.data(), -1, &record), kInvalidArgument);
    EXPECT_EQ(record.frequency, 1.0f);
    EXPECT_EQ(track->GetInputFramesPerHop(), 2065) << "nothing of it was taken";
}

TEST(PitchTrack, CreationSurvivesEveryFailingAllocation)
{
    for (int64_t successes = 0;; ++successes) {
        CPitchTrack* track = nullptr;
        const FailingAllocation failing(successes);
        const int32_t status = CreatePitchTrack(&track, 44100, 1, kPitchTrackLong);
        const PitchTrackPtr owner(track);
        if (!failing.HasFailed())
            break;
        EXPECT_EQ(status, kOutOfMemory) << successes;
        EXPECT_EQ(track, nullptr);
    }
}

TEST(PitchTrack, AllocatesNothingAfterCreation)
{
    const auto track = Make();
    Signal x = Noise(8192, 1);
    PitchRecord record{};
    const int64_t before = AllocationCount();
    for (int i = 0; i < 4; ++i)
        track->Process(x.data(), 8192, &record);
    track->Reset();
    EXPECT_EQ(AllocationCount(), before);
}

#ifdef QX_SPEECH_WAV
// A man's voice by espeak-ng, 16-bit mono behind a header of 44 bytes.
TEST(PitchTrack, SpeechStaysInTheRangeOfTheVoice)
{
    std::ifstream file(QX_SPEECH_WAV, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    ASSERT_GT(bytes.size(), 44u + 2u * 22050u);
    int32_t rate = 0;
    std::memcpy(&rate, bytes.data() + 24, sizeof rate);
    std::vector<int16_t> pcm((bytes.size() - 44) / 2);
    std::memcpy(pcm.data(), bytes.data() + 44, 2 * pcm.size());
    Signal x(pcm.size());
    std::transform(pcm.begin(), pcm.end(), x.begin(), [](int16_t v) { return float(v) / 32768.0f; });

    std::vector<float> voiced;
    for (const PitchRecord& r : Records(x, rate))
        if (r.harmonicity > 0.0f)
            voiced.push_back(r.frequency);
    ASSERT_GT(voiced.size(), x.size() / size_t(rate) * 8) << "of 21 frames a second";
    std::sort(voiced.begin(), voiced.end());
    EXPECT_GT(voiced[voiced.size() / 20], 60.0f);
    EXPECT_NEAR(voiced[voiced.size() / 2], 105.0f, 25.0f);
    EXPECT_LT(voiced[voiced.size() * 19 / 20], 190.0f);
}
#endif

}   // namespace
