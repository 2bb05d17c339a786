#include "tests/signals.h"
#include "tests/tools/program.h"
#include "tests/tools/wave.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace {

class AnalyzeMarks : public ProgramTest {};

TEST_F(AnalyzeMarks, TableHasARowAPeriodUpToTheLastFrame)
{
    for (const int32_t channels : {1, 3}) {
        Signal mono(44100, 0.0f), x;
        for (int32_t h = 1; h <= 8; ++h)
            MixInto(&mono, Tone(44100, 200.0 * h, 44100.0, 0.1 / h, h * h));
        for (const float v : mono)
            x.insert(x.end(), size_t(channels), v);
        Save(Path("in.wav"), {channels, 44100, SF_FORMAT_WAV | SF_FORMAT_PCM_16, x});
        ASSERT_EQ(Run({"analyze", "marks", "in.wav", "--csv", "marks.csv", "--plot", "marks.png"}).status, 0);
        EXPECT_EQ(Contents(Path("marks.png")).substr(1, 3), "PNG");

        std::istringstream table(Contents(Path("marks.csv")));
        std::string line;
        std::getline(table, line);
        EXPECT_EQ(line, "time,position,period,raw_period,power,harmonicity,transient,frequency_change");
        int32_t position = 0, period = 0, expected = 0, rows = 0;
        for (; std::getline(table, line); ++rows, expected = position + period) {
            double time = 0.0;
            ASSERT_EQ(std::sscanf(line.c_str(), "%lf,%d,%d", &time, &position, &period), 3);
            EXPECT_EQ(position, expected);
            EXPECT_NEAR(time, position / 44100.0, 1e-6);
            if (position > 22050 && position < 40000) {
                EXPECT_NEAR(period, 220.5, 4.5);
            }
        }
        EXPECT_EQ(position, 44100);
        EXPECT_EQ(period, 0);
        EXPECT_GT(rows, 180);
    }
}

TEST_F(AnalyzeMarks, RefusesInOneLineAndLeavesNothingBehind)
{
    std::ofstream(Path("text.wav")) << "no audio, but enough of it to look for some";
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {"text.wav", "--csv", "a"}, {"missing.wav", "--csv", "a"}, {"text.wav", "--time", "1"}, {}}) {
        std::vector<std::string> all = {"analyze", "marks"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const Outcome outcome = Run(all);
        EXPECT_TRUE(outcome.status == 1 || outcome.status == 2);
        EXPECT_EQ(std::ranges::count(outcome.err, '\n'), 1) << outcome.err;
        EXPECT_EQ(Files(), std::set<std::string>{"text.wav"});
    }
}

}   // namespace
