// The program as a host of the plug-in: the module, presets, parameters, states and automation.
#include "tests/tools/program.h"
#include "tests/tools/wave.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

namespace fs = std::filesystem;

constexpr int32_t kRate = 44100;
constexpr size_t kStateSize = 108;   // of a saved state, as every host keeps it

class Host : public ProgramTest {
protected:
    void SaveSignal(const std::string& name, const Signal& samples) const
    {
        Save(Path(name), {1, kRate, SF_FORMAT_WAV | SF_FORMAT_FLOAT, samples});
    }
    void Write(const std::string& name, const std::string& contents) const
    {
        std::ofstream(Path(name), std::ios::binary) << contents;
    }
    Signal Render(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.end(), {"-q", "in.wav", "out.wav"});
        const Outcome run = Run(arguments);
        EXPECT_EQ(run.status, 0) << run.err;
        return Load(Path("out.wav")).samples;
    }
};

// A tone that glides evenly from one frequency to another over n frames.
Signal Glide(int32_t n, double from, double to)
{
    Signal x;
    for (int32_t i = 0; i < n; ++i) {
        const double t = double(i) / kRate, whole = double(n) / kRate;
        x.push_back(float(0.5 * std::sin(2.0 * std::numbers::pi * (from * t + (to - from) * t * t / (2.0 * whole)))));
    }
    return x;
}

// By the time between the first and the last upward crossing of zero.
double FrequencyAt(const Signal& x, double second)
{
    constexpr int32_t kHalf = 2048;   // frames
    const auto middle = int32_t(second * kRate);
    double first = 0.0, last = 0.0;
    int count = 0;
    for (int32_t i = middle - kHalf; i < middle + kHalf; ++i) {
        const float a = x[size_t(i)], b = x[size_t(i) + 1];
        if (!(a < 0.0f && b >= 0.0f))
            continue;
        last = i + double(-a) / (double(b) - a);
        if (count++ == 0)
            first = last;
    }
    return count < 2 ? 0.0 : (count - 1) * kRate / (last - first);
}

TEST_F(Host, FindsTheModuleBesideItOrWhereItIsInstalled)
{
    SaveSignal("in.wav", Noise(1000, 1));
    for (const char* const part : {"bin", "lib", "lib/qxvantor"})
        fs::create_directory(Path(part));
    fs::copy_file(program, Path("bin/vantor"));
    program = Path("bin/vantor");
    const Outcome alone = Run({"in.wav", "out.wav"});
    EXPECT_EQ(alone.status, 1);
    EXPECT_NE(alone.err.find("plug-in was found neither"), std::string::npos) << alone.err;
    EXPECT_FALSE(fs::exists(Path("out.wav")));

    const std::string name = fs::path(MODULE_PATH).filename();
    fs::copy_file(MODULE_PATH, Path("lib/qxvantor/" + name));
    EXPECT_EQ(Run({"in.wav", "out.wav"}).status, 0);
    Write("bin/" + name, "no module");
    const Outcome broken = Run({"in.wav", "other.wav"});   // one that is there and broken is not passed over
    EXPECT_EQ(broken.status, 1);
    EXPECT_NE(broken.err.find("cannot be loaded"), std::string::npos) << broken.err;
}

TEST_F(Host, StartsFromAPreset)
{
    static constexpr struct {
        std::vector<std::string> (*arguments)();
        size_t frames;
    } kCases[] = {{[] {
                       return std::vector<std::string>{"--preset", "1"};
                   },
                   3000},
                  {[] { return std::vector<std::string>{"--preset=2"}; }, 6000},
                  {[] {
                       return std::vector<std::string>{"--preset", "1/2 Time"};
                   },
                   1500},
                  {[] {
                       return std::vector<std::string>{"--preset", "2 X BOTH"};
                   },
                   6000},
                  {[] {
                       return std::vector<std::string>{"--preset", "7", "-t", "3"};
                   },
                   9000}};
    SaveSignal("in.wav", Noise(3000, 1));
    for (const auto& c : kCases)
        EXPECT_EQ(Render(c.arguments()).size(), c.frames) << &c - kCases;
    EXPECT_EQ(Render({"--preset", "4"}), Render({"-p", "12"}));
    for (const char* const unknown : {"0", "8", "", "Time"}) {
        const Outcome run = Run({"in.wav", "none.wav", "--preset", unknown});
        EXPECT_EQ(run.status, 2) << unknown;
        EXPECT_FALSE(fs::exists(Path("none.wav")));
    }
}

TEST_F(Host, ListsWhatThePlugInTells)
{
    const Outcome presets = Run({"--list-presets"});
    EXPECT_EQ(presets.status, 0);
    EXPECT_EQ(std::ranges::count(presets.out, '\n'), 7);
    EXPECT_EQ(presets.out.find("1:   Unity     (Time*1, Pitch*1)\n2:   2 x Time "), 0u) << presets.out;
    const Outcome params = Run({"--list-params"});
    EXPECT_EQ(params.status, 0);
    for (const char* const part : {"0  stretch: Time stretch ratio\n   number, 0.1 to 10, neutral 1; curves: jump, "
                                   "linear, square, inverse-square\n",
                                   "-24 to 24, neutral 0, in Semitones", "3 = 86, 4 = 172,", "0 = Pro, ",
                                   "5 = Soloist (Speech)\n", "6  bypass: "})
        EXPECT_NE(params.out.find(part), std::string::npos) << part << " in\n" << params.out;
}

TEST_F(Host, KeepsItsStateInAFile)
{
    SaveSignal("in.wav", Noise(20000, 1));
    const Signal told = Render({"-t", "1.5", "-p", "3", "-F", "20", "-c", "4", "--save-state", "a.state"});
    ASSERT_EQ(Contents(Path("a.state")).size(), kStateSize);
    EXPECT_EQ(Render({"--load-state", "a.state", "--save-state", "b.state"}), told);
    EXPECT_EQ(Contents(Path("b.state")), Contents(Path("a.state")));
    EXPECT_EQ(Render({"--load-state", "a.state", "-t", "2"}).size(), 40000u);
    EXPECT_EQ(Run({"--save-state", "c.state", "-t", "1.5", "-p", "3", "-F", "20", "-c", "4"}).status, 0);
    EXPECT_EQ(Contents(Path("c.state")), Contents(Path("a.state")));
}

TEST_F(Host, RefusesStatesThatAreNone)
{
    SaveSignal("in.wav", Noise(1000, 1));
    ASSERT_EQ(Run({"--save-state", "good"}).status, 0);
    const std::string good = Contents(Path("good"));
    for (const size_t size : {size_t(0), size_t(19), good.size() - 1}) {
        Write("bad", good.substr(0, size));
        EXPECT_EQ(Run({"in.wav", "out.wav", "--load-state", "bad"}).status, 1) << size;
    }
    std::string otherMark = good;
    otherMark[4] ^= 1;
    for (const std::string& bad : {good + "x", otherMark}) {
        Write("bad", bad);
        const Outcome run = Run({"in.wav", "out.wav", "--load-state", "bad"});
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find("bad: not a saved state"), std::string::npos) << run.err;
    }
    EXPECT_EQ(Run({"in.wav", "out.wav", "--load-state", "missing"}).status, 1);
    EXPECT_EQ(Run({"in.wav", "out.wav", "--load-state", "good", "--preset", "1"}).status, 2);
    EXPECT_EQ(Run({"in.wav", "--save-state", "s"}).status, 2);
    EXPECT_EQ(Run({"--save-state", "s", "-D", "3"}).status, 2);
    EXPECT_EQ(Files(), (std::set<std::string>{"in.wav", "good", "bad"}));
}

TEST_F(Host, NamesBadLinesOfAutomationByNumber)
{
    static constexpr struct {
        const char* line;
        const char* why;
    } kCases[] = {
        {"stretch 0 1 1 2", "are needed"},
        {"stretch 0 1 1 2 linear more", "are needed"},
        {"tempo 0 1 1 2 linear", "tempo is not one of"},
        {"7 0 1 1 2 linear", "7 is not one of"},
        {"stretch x 1 1 2 linear", "x is not a number"},
        {"stretch 0 1 1 nan linear", "nan is not a number"},
        {"stretch -1 1 1 2 linear", "-1 is not within"},
        {"stretch 1 1 1 2 linear", "end is not after"},
        {"stretch 0 1 0.05 2 linear", "0.05 is not within 0.1 to 10"},
        {"pitch 0 1 0 25 square", "25 is not within -24 to 24"},
        {"stretch 0 1 1 2 sine", "sine is not one of"},
        {"mode 0 1 0 2 linear", "does not follow the curve linear"},
        {"mode 0 1 0 2.5 jump", "2.5 is not a whole number"},
        {"1 0.5 1.5 0 1 jump", "an earlier line"},
    };
    SaveSignal("in.wav", Noise(1000, 1));
    for (const auto& c : kCases) {
        Write("curves", std::string("# comment\n\npitch 0 1 0 -3 inverse-square   # fine\n") + c.line + "\n");
        const Outcome run = Run({"in.wav", "out.wav", "--automation", "curves"});
        EXPECT_EQ(run.status, 1) << c.line;
        EXPECT_NE(run.err.find("curves: line 4: "), std::string::npos) << run.err;
        EXPECT_NE(run.err.find(c.why), std::string::npos) << run.err;
    }
    EXPECT_EQ(Run({"in.wav", "out.wav", "--automation", "missing"}).status, 1);
    Write("curves", "stretch 0 1 1 2 linear\n");
    EXPECT_EQ(Run({"in.wav", "out.wav", "--automation", "curves", "-D", "1"}).status, 2);
    EXPECT_EQ(Files(), (std::set<std::string>{"in.wav", "curves"}));
}

// At stretch 1 the output's time is the input's. The engine has read up to a frame (0.09 s) ahead of what it gives, and takes
// a value over with the next block, so the curve is met within 0.1 s; steps of the engine's hops are 0.05 semitones wide.
TEST_F(Host, RendersASweepOfThePitch)
{
    SaveSignal("in.wav", Tone(4 * kRate, 500.0, kRate, 0.5));
    const struct {
        const char* curve;
        double (*value)(double x);   // of 0 .. 12 semitones, x from 0 to 1
    } cases[] = {{"linear", [](double x) { return 12.0 * x; }},
                 {"square", [](double x) { return 12.0 * x * x; }},
                 {"inverse-square", [](double x) { return 12.0 * (1.0 - (1.0 - x) * (1.0 - x)); }}};
    for (const auto& c : cases) {
        Write("curves", std::string("pitch 0 4 0 12 ") + c.curve + "\n");
        const Signal out = Render({"-m", "efficient", "--block", "1024", "--automation", "curves"});
        for (double second = 0.5; second < 3.75; second += 0.25) {
            const double semitones = 12.0 * std::log2(FrequencyAt(out, second) / 500.0);
            EXPECT_LT(semitones, c.value((second + 0.1) / 4.0) + 0.05) << c.curve << ' ' << second;
            EXPECT_GT(semitones, c.value((second - 0.1) / 4.0) - 0.05) << c.curve << ' ' << second;
        }
    }
}

// The stretch goes from 1 to 2 in 4 s of a glide, which tells by its frequency what time of the input is heard: after t
// seconds of input, t + t * t / 8 seconds of output.
TEST_F(Host, RendersASweepOfTheStretch)
{
    SaveSignal("in.wav", Glide(4 * kRate, 300.0, 1100.0));
    Write("curves", "stretch 0 4 1 2 linear\n");
    const Signal out = Render({"-m", "efficient", "--block", "1024", "--automation", "curves"});
    EXPECT_NEAR(double(out.size()) / kRate, 6.0,
                0.03);   // half a block of lag at a slope of 1/4 a second, and its steps
    for (double t = 0.5; t < 3.6; t += 0.25) {
        const double heard = (FrequencyAt(out, t + t * t / 8.0) - 300.0) / 200.0;   // seconds of the input
        EXPECT_NEAR(heard, t, 0.06) << t;
    }
    Write("jumps",
          "0 1 2 0.5 0.5 jump\n");   // 1 s as it was, and half of the rest, for a value stays when its curve ends
    const Signal jumped = Render({"-m", "efficient", "--block", "1024", "--automation", "jumps"});
    EXPECT_NEAR(double(jumped.size()) / kRate, 2.5, 0.03);
}

}   // namespace
