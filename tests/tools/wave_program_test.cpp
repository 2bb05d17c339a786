// What the program does with WAV files on every system.
#include "tests/tools/program.h"
#include "tests/tools/wave_file.h"

#include <algorithm>

namespace {

constexpr AudioFormat MakeFormat(int32_t channels)
{
    return {channels, 44100, Container::kWav, Encoding::kPcm16, {}};
}

class WaveProgram : public ProgramTest {
protected:
    void SetUp() override
    {
        ProgramTest::SetUp();
        SaveWave(Path("in.wav"), MakeFormat(2), Noise(2 * 30001, 1, 0.25f), {{0x4D414E49, "Title"}});
    }
};

TEST_F(WaveProgram, MakesTheLengthThatWasAsked)
{
    static constexpr struct {
        const char* option;
        const char* value;
        int64_t frames;
    } kCases[] = {{"-t", "1.5", 45001}, {"-T", "2", 15000}, {"-D", "0.5", 22050}, {"-p", "+7.5", 30001}};
    for (const auto& c : kCases) {
        const Outcome run =
            Run({"in.wav", "out \xC3\xA9.wav", c.option, c.value});   // a name with a space and an accent
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out + run.err, "");
        const auto reader = OpenWave(Path("out \xC3\xA9.wav"));
        EXPECT_EQ(reader->Frames(), c.frames) << c.option << ' ' << c.value;
        EXPECT_EQ(reader->Format().channels, 2);
        EXPECT_EQ(reader->Format().encoding, Encoding::kPcm16);
        Signal y(size_t(2 * c.frames));
        reader->Read(y.data(), c.frames);
        EXPECT_GT(*std::ranges::max_element(y), 0.1f) << "it is the recording that comes out";
    }
    EXPECT_EQ(Files().size(), 2u);
}

TEST_F(WaveProgram, LeavesThePlaceAloneWhenItRefuses)
{
    std::ofstream(Path("keep.wav")) << "old";
    std::ofstream(Path("text.wav")) << "this is no audio at all, however one looks at it";
    static constexpr struct {
        const char* input;
        const char* output;
        int status;
        const char* names;
    } kCases[] = {
        {"missing.wav", "keep.wav", 1, "missing.wav: cannot read: No such file"},
        {"text.wav", "keep.wav", 1, "text.wav: not an audio file"},
        {"in.wav", "no/where.wav", 1, "no/where.wav: cannot write: No such file"},
        {"in.wav", "in.wav", 2, "in.wav: input and output are the same"},
        {"in.wav", ".", 1, ".: a folder"},
    };
    const auto before = Files();
    for (const auto& c : kCases) {
        const Outcome run = Run({c.input, c.output});
        EXPECT_EQ(run.status, c.status) << c.names;
        EXPECT_NE(run.err.find(c.names), std::string::npos) << run.err << " lacks " << c.names;
        EXPECT_EQ(std::ranges::count(run.err, '\n'), 1) << run.err;
        EXPECT_EQ(Files(), before) << c.names;
    }
    EXPECT_EQ(Contents(Path("keep.wav")), "old");
    EXPECT_EQ(Run({"in.wav", "keep.wav"}).status, 0);   // an existing file is replaced
    EXPECT_EQ(OpenWave(Path("keep.wav"))->Frames(), 30001);
}

TEST_F(WaveProgram, WritesItsAnalysisAsATable)
{
    ASSERT_EQ(Run({"analyze", "envelope", "in.wav", "--time", "0.3", "--csv", "out.csv"}).status, 0);
    const std::string table = Contents(Path("out.csv"));
    EXPECT_TRUE(table.starts_with("frequency,spectrum,envelope\n")) << table.substr(0, 40);
    EXPECT_EQ(std::ranges::count(table, '\n'), 513);
}

}   // namespace
