#include "tests/tools/program.h"
#include "tests/tools/wave.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

namespace {

class AnalyzeEnvelope : public ProgramTest {};

struct Bin {
    double hz, spectrum, envelope;
};

std::vector<Bin> Parse(const std::string& table)
{
    std::istringstream lines(table);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "frequency,spectrum,envelope");
    std::vector<Bin> bins;
    for (Bin b{};
         std::getline(lines, line) && std::sscanf(line.c_str(), "%lf,%lf,%lf", &b.hz, &b.spectrum, &b.envelope) == 3;)
        bins.push_back(b);
    return bins;
}

}   // namespace

// A tone that begins at 1 s, on bin 40 of 43 Hz, 6 dB below full scale on both channels.
TEST_F(AnalyzeEnvelope, ShowsTheFrameAroundTheTime)
{
    const double hz = 40 * 44100.0 / 1024;
    Signal both(2 * 88200, 0.0f);
    for (int32_t i = 44100; i < 88200; ++i)
        both[size_t(2 * i)] = both[size_t(2 * i) + 1] =
            float(0.5 * std::cos(2.0 * std::numbers::pi * hz * i / 44100.0));
    Save(Path("in.wav"), {2, 44100, SF_FORMAT_WAV | SF_FORMAT_FLOAT, both});

    const auto tone = Parse(Run({"analyze", "envelope", "in.wav", "--time", "1.5", "--content", "5"}).out);
    ASSERT_EQ(tone.size(), 512u);
    EXPECT_NEAR(tone[40].hz, hz, 0.01);
    EXPECT_NEAR(tone[40].spectrum, -6.02, 0.05);
    EXPECT_NEAR(tone[40].envelope, tone[40].spectrum, 8.7);   // the estimator's threshold
    EXPECT_LT(tone[400].spectrum, -60.0);
    const auto silence = Parse(Run({"analyze", "envelope", "in.wav", "--time=0.5"}).out);
    for (const Bin& bin : silence)
        EXPECT_LT(bin.envelope, -120.0);
}

TEST_F(AnalyzeEnvelope, RefusesInOneLineAndLeavesNothingBehind)
{
    Save(Path("in.wav"), {1, 44100, SF_FORMAT_WAV | SF_FORMAT_PCM_16, Noise(44100, 1)});
    const struct {
        std::vector<std::string> arguments;
        int status;
    } kCases[] = {{{}, 2},
                  {{"--time", "1"}, 2},   // the end is the first time beyond the recording
                  {{"--time", "-0.1"}, 2},
                  {{"--time", "x"}, 2},
                  {{"--time", "nan"}, 2},
                  {{"--time", "0", "--content", "10"}, 2},
                  {{"--time", "0", "--content", "4.5"}, 2},
                  {{"--time", "0", "--plot", "none/out.png"}, 1}};
    for (const auto& c : kCases) {
        std::vector<std::string> arguments = {"analyze", "envelope", "in.wav"};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        const Outcome run = Run(arguments);
        EXPECT_EQ(run.status, c.status) << testing::PrintToString(c.arguments);
        EXPECT_EQ(std::ranges::count(run.err, '\n'), 1) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(Files(), std::set<std::string>{"in.wav"});
    }
    EXPECT_EQ(Run({"analyze", "envelope", "in.wav", "--time", "0", "--plot", "out.png"}).status, 0);
    EXPECT_EQ(Contents(Path("out.png")).substr(1, 3), "PNG");
}
