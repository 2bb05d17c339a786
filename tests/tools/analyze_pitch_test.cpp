#include "tools/analyze.h"

#include "tests/signals.h"
#include "tools/failure.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace {

class AnalyzePitch : public testing::Test {
protected:
    void SetUp() override { std::filesystem::create_directories(folder); }
    void TearDown() override { std::filesystem::remove_all(folder); }

    std::string Path(const std::string& name) const { return folder / name; }
    size_t Files() const
    {
        return size_t(
            std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
    }
    std::string Contents(const std::string& name) const
    {
        std::ifstream file(Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // A 16-bit WAV file with the signal on every channel.
    std::string WriteWav(const std::string& name, const Signal& x, uint32_t rate, uint16_t channels) const
    {
        const uint32_t bytes = uint32_t(x.size()) * channels * 2, riff = bytes + 36, chunk = 16,
                       perSecond = rate * channels * 2;
        const uint16_t pcm = 1, align = uint16_t(channels * 2), bits = 16;
        std::ofstream file(Path(name), std::ios::binary);
        const auto put = [&](const auto& v) { file.write(reinterpret_cast<const char*>(&v), sizeof v); };
        file << "RIFF", put(riff), file << "WAVEfmt ", put(chunk), put(pcm), put(channels), put(rate), put(perSecond),
            put(align), put(bits), file << "data", put(bytes);
        for (float v : x)
            for (int c = 0; c < channels; ++c)
                put(int16_t(std::lrint(v * 32767.0f)));
        return Path(name);
    }
    // As from the command line: 0, or the status of the failure.
    static int Run(std::vector<std::string> arguments)
    {
        std::vector<char*> pointers;
        for (std::string& argument : arguments)
            pointers.push_back(argument.data());
        try {
            return Analyze(pointers);
        } catch (const Failure& failure) {
            EXPECT_GT(std::strlen(failure.what()), 10u);
            return failure.Status();
        }
    }
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("analyze_pitch_test." + std::to_string(::getpid()));
};

TEST_F(AnalyzePitch, TableHasARowForEachHopOfTheRecording)
{
    static constexpr struct {
        uint32_t rate;
        uint16_t channels;
        int32_t frames;
        size_t rows;   // the hops of 512/11025 s that begin within it, the first at 0
    } kCases[] = {
        {44100, 2, 44100, 22}, {11025, 1, 512, 2}, {11025, 1, 511, 1}, {384000, 1, 192000, 11}, {44100, 1, 1, 1}};
    for (const auto& c : kCases) {
        const auto in = WriteWav("in.wav", Tone(c.frames, 220.0, c.rate, 0.5), c.rate, c.channels);
        ASSERT_EQ(Run({"pitch", in, "--csv", Path("out.csv")}), 0);
        std::istringstream table(Contents("out.csv"));
        std::string line;
        ASSERT_TRUE(std::getline(table, line));
        EXPECT_EQ(line, "time,frequency,harmonicity,level,level_change,frequency_change");
        size_t rows = 0;
        for (; std::getline(table, line); ++rows) {
            std::array<double, 6> v{};
            ASSERT_EQ(std::sscanf(line.c_str(), "%lf,%lf,%lf,%lf,%lf,%lf", &v[0], &v[1], &v[2], &v[3], &v[4], &v[5]),
                      6);
            EXPECT_NEAR(v[0], double(rows) * 512.0 / 11025.0, 1e-6);
            if (rows >= 3 && rows + 2 < c.rows) {
                EXPECT_NEAR(v[1], 220.0, 0.05) << "row " << rows;
                EXPECT_GT(v[2], 5.0);
                EXPECT_NEAR(v[3], 0.25, 0.01);
            }
        }
        EXPECT_EQ(rows, c.rows) << c.frames << " frames at " << c.rate;
    }
}

TEST_F(AnalyzePitch, PlotIsAPictureAndReplacesAnOldOne)
{
    const auto in = WriteWav("in.wav", Noise(30000, 1, 0.3f), 22050, 1);
    std::ofstream(Path("out.png")) << "old";
    ASSERT_EQ(Run({"pitch", in, "--plot=" + Path("out.png")}), 0);
    EXPECT_EQ(Contents("out.png").substr(1, 3), "PNG");
    EXPECT_EQ(Files(), 2u);
}

TEST_F(AnalyzePitch, RefusesInOneLineAndLeavesNothingBehind)
{
    const auto in = WriteWav("in.wav", Tone(4000, 220.0, 44100.0), 44100, 1);
    const auto slow = WriteWav("slow.wav", Tone(4000, 220.0, 8000.0), 8000, 1);
    const auto empty = WriteWav("empty.wav", {}, 44100, 1);
    const auto wide = WriteWav("wide.wav", Signal(100, 0.0f), 44100, 33);
    std::ofstream(Path("text.wav")) << "no audio, but enough of it to look for some";
    const std::string before = Contents("in.wav");
    const size_t files = Files();
    const struct {
        std::vector<std::string> arguments;
        int status;
    } kCases[] = {
        {{}, kExitUsage},
        {{"nonsense", in}, kExitUsage},
        {{"pitch"}, kExitUsage},
        {{"pitch", in, in}, kExitUsage},
        {{"pitch", in, "--time", "1"}, kExitUsage},
        {{"pitch", in, "--csv"}, kExitUsage},
        {{"pitch", in, "--csv="}, kExitUsage},
        {{"pitch", in, "--csv", Path("a"), "--csv", Path("b")}, kExitUsage},
        {{"pitch", in, "--csv", in}, kExitUsage},
        {{"pitch", in, "--csv", Path("a"), "--plot", Path("a")}, kExitUsage},
        {{"pitch", in, "--csv", Path("a"), "--plot", Path("./a")}, kExitUsage},
        {{"pitch", in, "--csv", Path("a"), "--plot", Path("missing/b.png")}, kExitData},
        {{"pitch", in, "--csv", folder}, kExitData},
        {{"pitch", Path("missing.wav"), "--csv", Path("a")}, kExitData},
        {{"pitch", Path("text.wav"), "--csv", Path("a")}, kExitData},
        {{"pitch", slow, "--csv", Path("a")}, kExitData},
        {{"pitch", empty, "--csv", Path("a")}, kExitData},
        {{"pitch", wide, "--csv", Path("a")}, kExitData},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(Run(c.arguments), c.status) << testing::PrintToString(c.arguments);
        EXPECT_EQ(Files(), files) << testing::PrintToString(c.arguments);
    }
    EXPECT_EQ(Contents("in.wav"), before);
}

}   // namespace
