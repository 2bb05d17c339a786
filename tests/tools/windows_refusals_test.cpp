// What the program cannot do without the libraries of the native build, and says so.
#include "tests/tools/program.h"
#include "tests/tools/wave_file.h"

namespace {

class WindowsProgram : public ProgramTest {};

TEST_F(WindowsProgram, NamesWhatItDoesNotHave)
{
    SaveWave(Path("in.wav"), {1, 44100, Container::kWav, Encoding::kPcm16, {}}, Noise(4410, 1));
    const struct {
        std::vector<std::string> arguments;
        const char* names;
    } kCases[] = {
        {{"in.wav", "out.flac"}, "out.flac: this program writes WAV files alone"},
        {{"in.wav", "out.wav", "--format", "aiff"}, "out.wav: this program writes WAV files alone"},
        {{"analyze", "pitch", "in.wav", "--plot", "out.png"}, "--plot: this program draws no plots"},
    };
    for (const auto& c : kCases) {
        const Outcome run = Run(c.arguments);
        EXPECT_EQ(run.status, 2);
        EXPECT_NE(run.err.find(c.names), std::string::npos) << run.err << " lacks " << c.names;
        EXPECT_EQ(Files(), std::set<std::string>{"in.wav"});
    }
}

}   // namespace
