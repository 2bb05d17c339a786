// The command line program from end to end: what it writes, what it refuses, and what it leaves behind.
#include "tests/tools/native_program.h"
#include "tests/tools/wave.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

class Vantor : public ProgramTest {
protected:
    using ProgramTest::Run;
    Outcome Run(const std::vector<std::string>& arguments, const std::function<void()>& prepare) const
    {
        return WaitForProgram(folder, StartProgram(program, folder, arguments, prepare));
    }
    void SaveNoise(const std::string& name, int32_t frames, int32_t channels = 2, int32_t rate = 44100,
                   int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16) const
    {
        Save(Path(name), {channels, rate, format, Noise(frames * channels, 1, 0.25f)});
    }
    int64_t FramesOf(const std::string& name) const { return Load(Path(name)).Frames(); }
};

// The number that a key of a JSON report has.
double Value(const std::string& json, const std::string& key, size_t from = 0)
{
    const size_t at = json.find("\"" + key + "\": ", from);
    return at == std::string::npos ? NAN : std::strtod(json.c_str() + at + key.size() + 4, nullptr);
}

}   // namespace

TEST_F(Vantor, MakesTheLengthThatWasAsked)
{
    static constexpr struct {
        const char* option;
        const char* value;
        int64_t frames;
    } kCases[] = {
        {"-t", "1", 30001},     {"-t", "1.5", 45001},          {"--time", "0.1", 3000}, {"-t", "10", 300010},
        {"-T", "2", 15000},     {"--tempo", "0.5", 60002},     {"-D", "0.5", 22050},    {"-D", "1", 44100},
        {"-D", "0.0703", 3100}, {"--duration", "6.8", 299880}, {"-p", "-24", 30001},    {"-p", "+7.5", 30001},
    };
    SaveNoise("in.wav", 30001);
    for (const auto& c : kCases) {
        const Outcome run = Run({"in.wav", "out.wav", c.option, c.value});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out + run.err, "") << c.option << ' ' << c.value;
        EXPECT_EQ(FramesOf("out.wav"), c.frames) << c.option << ' ' << c.value;
    }
    EXPECT_EQ(Files(), (std::set<std::string>{"in.wav", "out.wav"}));
}

TEST_F(Vantor, RendersEmptyAndTinyInputs)
{
    for (int32_t frames : {0, 1, 2, 10}) {
        SaveNoise("in.wav", frames);
        EXPECT_EQ(Run({"in.wav", "out.wav", "-t", "2", "-p", "5"}).status, 0) << frames;
        EXPECT_EQ(FramesOf("out.wav"), 2 * frames);
    }
}

TEST_F(Vantor, KeepsTheFormatUnlessToldOtherwise)
{
    constexpr int kWav = SF_FORMAT_WAV, kFlac = SF_FORMAT_FLAC, kOgg = SF_FORMAT_OGG;
    static constexpr struct {
        int input;
        const char* output;
        const char* option;
        int expected;
    } kCases[] = {
        {kWav | SF_FORMAT_PCM_U8, "o.wav", "-q", kWav | SF_FORMAT_PCM_U8},
        {kWav | SF_FORMAT_PCM_24, "o", "-q", kWav | SF_FORMAT_PCM_24},
        {kWav | SF_FORMAT_DOUBLE, "o.w64", "-q", SF_FORMAT_W64 | SF_FORMAT_DOUBLE},
        {kWav | SF_FORMAT_FLOAT, "o.FLAC", "-q", kFlac | SF_FORMAT_PCM_24},
        {kFlac | SF_FORMAT_PCM_S8, "o.aif", "-q", SF_FORMAT_AIFF | SF_FORMAT_PCM_S8},
        {kFlac | SF_FORMAT_PCM_16, "o.rf64", "-q", SF_FORMAT_RF64 | SF_FORMAT_PCM_16},
        {kWav | SF_FORMAT_PCM_16, "o.ogg", "-q", kOgg | SF_FORMAT_VORBIS},
        {kWav | SF_FORMAT_PCM_16, "o.opus", "-q", kOgg | SF_FORMAT_OPUS},
        {kOgg | SF_FORMAT_VORBIS, "o.wav", "-q", kWav | SF_FORMAT_PCM_16},
        {kWav | SF_FORMAT_PCM_16, "o.wav", "--bits=32f", kWav | SF_FORMAT_FLOAT},
        {kWav | SF_FORMAT_PCM_16, "o.wav", "--format=aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16},
        {kWav | SF_FORMAT_PCM_16, "o.wav", "--bits=32", kWav | SF_FORMAT_PCM_32},
    };
    for (const auto& c : kCases) {
        SaveNoise("in", 4801, 2, 48000, c.input);
        const Outcome run = Run({c.option, "in", c.output});
        ASSERT_EQ(run.status, 0) << run.err;
        const Wave out = Load(Path(c.output));
        EXPECT_EQ(out.format & (SF_FORMAT_TYPEMASK | SF_FORMAT_SUBMASK), c.expected) << c.output;
        EXPECT_EQ(out.rate, 48000);
        EXPECT_EQ(out.channels, 2);
        EXPECT_EQ(out.Frames(), 4801) << c.output;
        std::filesystem::remove(Path(c.output));
    }
}

TEST_F(Vantor, KeepsRateAndChannels)
{
    for (const auto& [channels, rate] : {std::pair{1, 8000}, {6, 96000}, {32, 22050}, {2, 384000}}) {
        SaveNoise("in.wav", 3000, channels, rate);
        ASSERT_EQ(Run({"in.wav", "out.wav", "-t", "2", "--block", "777"}).status, 0);
        const Wave out = Load(Path("out.wav"));
        EXPECT_EQ(out.channels, channels);
        EXPECT_EQ(out.rate, rate);
        EXPECT_EQ(out.Frames(), 6000);
    }
}

TEST_F(Vantor, GivesTheSameFileForEveryHostBlock)
{
    SaveNoise("in.wav", 20000, 2, 44100, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    ASSERT_EQ(Run({"in.wav", "a.wav", "-t", "1.3", "-p", "3"}).status, 0);
    for (const char* block : {"1", "100", "50000"}) {
        ASSERT_EQ(Run({"in.wav", "b.wav", "-t", "1.3", "-p", "3", "--block", block}).status, 0);
        EXPECT_TRUE(Contents(Path("a.wav")) == Contents(Path("b.wav"))) << block;
    }
}

TEST_F(Vantor, RefusesWhatItCannotReadAndSaysWhy)
{
    SaveNoise("good.wav", 3000);
    SaveNoise("33.wav", 100, 33);
    SaveNoise("slow.wav", 100, 1, 7999);
    SaveNoise("fast.wav", 100, 1, 384001);
    SaveNoise("none.wav", 0);
    std::ofstream(Path("empty.wav"));
    std::ofstream(Path("text.wav")) << "this is no audio at all, however one looks at it";
    std::filesystem::create_directory(Path("folder"));
    std::ofstream(Path("keep.wav")) << "old";

    static constexpr struct {
        const char* input;
        const char* output;
        const char* option;
        const char* value;
        int status;
        const char* names;
    } kCases[] = {
        {"missing.wav", "keep.wav", "-t", "1", 1, "missing.wav: cannot read: No such file"},
        {"empty.wav", "keep.wav", "-t", "1", 1, "empty.wav: the file is empty"},
        {"text.wav", "keep.wav", "-t", "1", 1, "text.wav: not an audio file"},
        {"folder", "keep.wav", "-t", "1", 1, "folder: a folder"},
        {"33.wav", "keep.wav", "-t", "1", 1, "33.wav: 33 channels"},
        {"slow.wav", "keep.wav", "-t", "1", 1, "slow.wav: a sample rate of 7999"},
        {"fast.wav", "keep.wav", "-t", "1", 1, "fast.wav: a sample rate of 384001"},
        {"none.wav", "keep.wav", "-D", "1", 1, "none.wav: there is no audio"},
        {"good.wav", "no/where.wav", "-t", "1", 1, "no/where.wav: cannot write: No such file"},
        {"good.wav", "folder", "-t", "1", 1, "folder: a folder"},
        {"good.wav", "/dev/null", "-t", "1", 1, "/dev/null: not a regular file"},
        {"good.wav", "keep.opus", "-t", "1", 1, "keep.opus: Opus only supports sample rates"},
        {"good.wav", "good.wav", "-t", "1", 2, "good.wav: input and output are the same"},
        {"good.wav", "./folder/../good.wav", "-t", "1", 2, "input and output are the same"},
        {"good.wav", "keep.mp3", "-t", "1", 2, "keep.mp3: this format cannot be written"},
        {"good.wav", "keep.flac", "--bits", "32f", 2, "--bits: flac"},
        {"good.wav", "keep.wav", "-t", "nan", 2, "-t nan: not within 0.1 to 10"},
        {"good.wav", "keep.wav", "-t", "inf", 2, "-t inf"},
        {"good.wav", "keep.wav", "-t", "0.0999", 2, "-t 0.0999: not within"},
        {"good.wav", "keep.wav", "--time", "1e999", 2, "--time 1e999"},
        {"good.wav", "keep.wav", "-t", "1.5x", 2, "-t 1.5x: not a number"},
        {"good.wav", "keep.wav", "-t", "", 2, "not a number"},
        {"good.wav", "keep.wav", "-T", "11", 2, "-T 11: not within"},
        {"good.wav", "keep.wav", "-p", "24.01", 2, "-p 24.01: not within -24 to 24"},
        {"good.wav", "keep.wav", "-F", "-1", 2, "-F -1: not within 0 to 100"},
        {"good.wav", "keep.wav", "-c", "3.5", 2, "-c 3.5: not a whole number"},
        {"good.wav", "keep.wav", "-c", "10", 2, "-c 10: not within 3 to 9"},
        {"good.wav", "keep.wav", "-m", "best", 2, "-m best: not one of pro, efficient"},
        {"good.wav", "keep.wav", "-D", "10", 2, "--duration 10: asks for a stretch of 147"},
        {"good.wav", "keep.wav", "--block", "0", 2, "--block 0: not within"},
        {"good.wav", "keep.wav", "--sync", "2", 2, "--sync 2"},
        {"good.wav", "keep.wav", "--fast", "2", 2, "--fast: no such option"},
        {"good.wav", "keep.wav", "third.wav", "-q", 2, "third.wav: one input and one output"},
        {"good.wav", "-", "-t", "1", 2, "-: audio comes from files"},
    };
    const auto before = Files();
    for (const auto& c : kCases) {
        const Outcome run = Run({c.input, c.output, c.option, c.value});
        EXPECT_EQ(run.status, c.status) << c.names;
        EXPECT_NE(run.err.find(c.names), std::string::npos) << run.err << " lacks " << c.names;
        EXPECT_EQ(std::ranges::count(run.err, '\n'), 1) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(Files(), before) << c.names;
        EXPECT_EQ(Contents(Path("keep.wav")), "old") << c.names;
    }
    for (const auto& arguments : {std::vector<std::string>{},
                                  {"good.wav"},
                                  {"-t"},
                                  {"good.wav", "keep.wav", "-p"},
                                  {"good.wav", "keep.wav", "-t", "2", "-D", "3"},
                                  {"good.wav", "keep.wav", "-q=1"}})
        EXPECT_EQ(Run(arguments).status, 2);
}

TEST_F(Vantor, RefusesFilesThatWereCutShort)
{
    static constexpr struct {
        const char* name;
        int format;
    } kCases[] = {
        {"cut.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16},   {"cut.w64", SF_FORMAT_W64 | SF_FORMAT_PCM_16},
        {"cut.rf64", SF_FORMAT_RF64 | SF_FORMAT_PCM_16}, {"cut.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16},
        {"cut.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16}, {"cut.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
    };
    for (const auto& c : kCases) {
        SaveNoise(c.name, 20000, 2, 44100, c.format);
        const auto size = std::filesystem::file_size(Path(c.name));
        for (const auto left : {size / 2, size - size / 20, uintmax_t(30)}) {
            SaveNoise(c.name, 20000, 2, 44100, c.format);
            std::filesystem::resize_file(Path(c.name), left);
            const Outcome run = Run({c.name, "out.wav"});
            EXPECT_EQ(run.status, 1) << c.name << ' ' << left;
            EXPECT_NE(run.err.find(c.name), std::string::npos) << run.err;
            EXPECT_FALSE(std::filesystem::exists(Path("out.wav"))) << c.name << ' ' << left;
        }
    }
}

TEST_F(Vantor, FollowsLinksToTheFilesBehindThem)
{
    SaveNoise("in.wav", 3000);
    std::filesystem::create_symlink("in.wav", Path("link.wav"));
    std::filesystem::create_hard_link(Path("in.wav"), Path("hard.wav"));
    for (const auto& [input, output] :
         {std::pair{"in.wav", "link.wav"}, {"link.wav", "in.wav"}, {"in.wav", "hard.wav"}})
        EXPECT_EQ(Run({input, output}).status, 2) << input << ' ' << output;

    std::ofstream(Path("target.wav")) << "old";
    std::filesystem::create_symlink("target.wav", Path("out.wav"));
    EXPECT_EQ(Run({"in.wav", "out.wav"}).status, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(Path("out.wav")));
    EXPECT_EQ(FramesOf("target.wav"), 3000);
}

TEST_F(Vantor, LeavesNothingWhenInterrupted)
{
    SaveNoise("in.wav", 44100 * 60);
    std::ofstream(Path("out.wav")) << "old";
    for (const int signal : {SIGINT, SIGTERM}) {
        const pid_t child = StartProgram(program, folder, {"in.wav", "out.wav", "-t", "10"});
        while (Files().size() == 2 && waitpid(child, nullptr, WNOHANG) == 0)   // until it has begun to write
            std::this_thread::yield();
        kill(child, signal);
        const Outcome run = WaitForProgram(folder, child);
        EXPECT_EQ(run.status, 128 + signal);
        EXPECT_NE(run.err.find("interrupted"), std::string::npos) << run.err;
        EXPECT_EQ(Files(), (std::set<std::string>{"in.wav", "out.wav"}));
        EXPECT_EQ(Contents(Path("out.wav")), "old");
    }
}

TEST_F(Vantor, LeavesNothingWhenTheDiskIsFull)
{
    SaveNoise("in.wav", 100000);
    std::ofstream(Path("out.wav")) << "old";
    const Outcome run = Run({"in.wav", "out.wav"}, [] {
        const rlimit limit{100000, 100000};
        setrlimit(RLIMIT_FSIZE, &limit);
    });
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("out.wav: cannot write"), std::string::npos) << run.err;
    EXPECT_EQ(Files(), (std::set<std::string>{"in.wav", "out.wav"}));
    EXPECT_EQ(Contents(Path("out.wav")), "old");
}

TEST_F(Vantor, FailsWhenWhatItSaysCannotBeWritten)
{
    SaveNoise("in.wav", 50000);
    for (const auto& arguments : {std::vector<std::string>{"--help"},
                                  {"in.wav", "out.wav", "--json"},
                                  {"analyze", "pitch", "in.wav"},
                                  {"analyze", "marks", "in.wav"}}) {
        const Outcome full = Run(arguments, [] { dup2(open("/dev/full", O_WRONLY), 1); });
        EXPECT_EQ(full.status, 1) << arguments[0];
        EXPECT_NE(full.err.find("standard output: cannot write"), std::string::npos) << full.err;
    }
    // A file that is opened while a standard stream is closed takes its number.
    const std::string before = Contents(Path("out.wav"));
    const Outcome closed = Run({"in.wav", "out.wav", "--json", "-t", "8", "-p", "12"}, [] {
        close(0);
        close(1);
        close(2);
    });
    EXPECT_EQ(closed.status, 1);
    EXPECT_EQ(Load(Path("out.wav")).Frames(), 249997) << "a remark went into it";
}

TEST_F(Vantor, LeavesPermissionsAsTheyWere)
{
    SaveNoise("in.wav", 1000);
    SaveNoise("out.wav", 10);
    std::filesystem::permissions(Path("out.wav"), std::filesystem::perms(0600));
    ASSERT_EQ(Run({"in.wav", "out.wav"}).status, 0);
    EXPECT_EQ(std::filesystem::status(Path("out.wav")).permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(FramesOf("out.wav"), 1000);
}

TEST_F(Vantor, ReplacesWhatIsNoNumberAndCountsIt)
{
    Wave wave{1, 44100, SF_FORMAT_WAV | SF_FORMAT_FLOAT, Noise(5000, 2, 0.25f)};
    wave.samples[100] = INFINITY, wave.samples[2000] = -INFINITY, wave.samples[4999] = NAN;
    Save(Path("in.wav"), wave);
    const Outcome run = Run({"in.wav", "out.wav", "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(Value(run.out, "non_finite_samples"), 3.0);
    EXPECT_NE(run.err.find("3 samples"), std::string::npos);
    for (const float sample : Load(Path("out.wav")).samples)
        ASSERT_TRUE(std::isfinite(sample));
}

TEST_F(Vantor, LimitsWhatExceedsFullScale)
{
    Save(Path("in.wav"), {1, 44100, SF_FORMAT_WAV | SF_FORMAT_FLOAT, Tone(44100, 441.0, 44100.0, 2.0)});
    const Outcome run = Run({"in.wav", "out.wav", "--bits", "16", "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_GT(Value(run.out, "clipped_samples"), 20000.0);   // two thirds of the tone
    EXPECT_GT(Value(run.out, "peak"), 1.9);
    const Signal out = Load(Path("out.wav")).samples;
    for (size_t i = 10001; i < 30000; ++i)   // a sample that wrapped around would leap by full scale
        ASSERT_LT(std::abs(out[i] - out[i - 1]), 0.5f) << i;
}

TEST_F(Vantor, ReportsRequestAndFactorsInForce)
{
    SaveNoise("in \"1\".wav", 44100);
    const Outcome run = Run({"in \"1\".wav", "out.wav", "-t", "1.25", "-p", "3.3", "-q", "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_NE(run.out.find("\"input\": \"in \\\"1\\\".wav\""), std::string::npos) << run.out;
    const size_t inForce = run.out.find("\"in_force\"");
    EXPECT_EQ(Value(run.out, "stretch"), 1.25);
    EXPECT_EQ(Value(run.out, "pitch_semitones"), 3.3);
    EXPECT_EQ(Value(run.out, "stretch", inForce), 1.25);
    EXPECT_NEAR(Value(run.out, "pitch_semitones", inForce), 3.3, 0.1);   // 10 cents, by the even hop
    EXPECT_EQ(Value(run.out, "frames_in"), 44100.0);
    EXPECT_EQ(Value(run.out, "frames_out"), 55125.0);
    EXPECT_EQ(Value(run.out, "frames_promised"), 55125.0);
    EXPECT_GT(Value(run.out, "speed"), 0.0);
    EXPECT_GT(Value(run.out, "peak"), 0.1);
}

// The formants of noise in a band around 2 kHz, an octave up: where the middle of its energy comes to lie, in Hz.
TEST_F(Vantor, HoldsTheFormantsOrLetsThemFollowInModePro)
{
    Signal x = Noise(44100, 1, 0.05f);
    const double pole = 0.985, turn = 2.0 * pole * std::cos(2.0 * std::numbers::pi * 2000.0 / 44100.0);
    for (size_t i = 2; i < x.size(); ++i)
        x[i] += float(turn * x[i - 1] - pole * pole * x[i - 2]);
    Save(Path("in.wav"), {1, 44100, SF_FORMAT_WAV | SF_FORMAT_FLOAT, x});
    const auto middle = [&](std::vector<std::string> more) {
        more.insert(more.end(), {"in.wav", "out.wav", "-p", "12"});
        const Outcome run = Run(more);
        EXPECT_EQ(run.status, 0) << run.err;
        const Signal y = Load(Path("out.wav")).samples;
        double power = 0.0, slope = 0.0;   // their ratio is the mean square of the angular frequency
        for (size_t i = 1; i < y.size(); ++i) {
            power += double(y[i]) * y[i];
            slope += (double(y[i]) - y[i - 1]) * (double(y[i]) - y[i - 1]);
        }
        return 44100.0 / std::numbers::pi * std::asin(std::sqrt(slope / power) / 2.0);
    };
    const double held = middle({"-m", "pro", "-F", "0", "-c", "3"}),
                 half = middle({"-m", "pro", "-F", "50", "-c", "3"}), follows = middle({"-m", "pro", "-F", "100"});
    EXPECT_NEAR(held, 2000.0, 250.0);
    EXPECT_NEAR(half, 2830.0, 350.0);
    EXPECT_NEAR(follows, 4000.0, 400.0);
    EXPECT_EQ(middle({"-F", "50", "-c", "3"}), half) << "pro is the mode that is taken when none is told";
    EXPECT_NE(middle({"-F", "0", "-c", "9"}), held) << "the content pitch counts";
}

TEST_F(Vantor, TellsWhenStretchAndPitchExceedTheEngineTogether)
{
    SaveNoise("in.wav", 3000);
    const Outcome run = Run({"in.wav", "out.wav", "-t", "8", "-p", "12"});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.err.find("stretch becomes 4.99995"), std::string::npos) << run.err;
    EXPECT_EQ(Run({"in.wav", "other.wav", "-D", "0.5", "-p", "12"}).status, 2);   // a duration is met or refused
    EXPECT_FALSE(std::filesystem::exists(Path("other.wav")));
}

TEST_F(Vantor, ExplainsItselfOnOneScreen)
{
    const Outcome help = Run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_LE(std::ranges::count(help.out, '\n'), 24);
    for (size_t at = 0, end = 0; (end = help.out.find('\n', at)) != std::string::npos; at = end + 1)
        EXPECT_LE(end - at, 80u) << help.out.substr(at, end - at);
    EXPECT_EQ(Run({"--version"}).out.find("vantor "), 0u);
}
