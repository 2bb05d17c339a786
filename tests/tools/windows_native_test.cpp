// The program and its module under Windows, in the platform's own graph, beside what the native build makes of the same.
#include "tests/tools/program.h"
#include "tests/tools/wave_file.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>

namespace {

class BesideNative : public ProgramTest {
protected:
    void SetUp() override
    {
        ProgramTest::SetUp();
        const char* const renderings = std::getenv("QX_NATIVE_RENDERINGS");
        ASSERT_NE(renderings, nullptr);
        native = renderings;
    }
    std::string Native(const std::string& name) const { return native + "/" + name; }
    static std::string WithoutReturns(std::string text)
    {
        std::erase(text, '\r');
        return text;
    }

    std::string native;
};

TEST_F(BesideNative, GivesTheSameAudioAndTheSameState)
{
    std::istringstream cases(Contents(Native("cases")));
    int compared = 0;
    for (std::string line; std::getline(cases, line); ++compared) {
        std::istringstream words(line);
        std::string name, option;
        words >> name;
        std::vector<std::string> arguments = {"-q", "--bits", "32f", "--save-state", "state"};
        while (words >> option)
            arguments.push_back(option);
        arguments.insert(arguments.end(), {Native("in.wav"), "out.wav"});
        const Outcome run = Run(arguments);
        ASSERT_EQ(run.status, 0) << run.err;
        const Signal expected = LoadWave(Native(name + ".wav")), got = LoadWave(Path("out.wav"));
        ASSERT_EQ(got.size(), expected.size()) << name;
        double worst = 0.0;
        for (size_t i = 0; i < got.size(); ++i)
            worst = std::max(worst, std::abs(double(got[i]) - expected[i]));
        EXPECT_LE(worst, 1e-6) << name;
        EXPECT_EQ(Contents(Path("state")).size(), 108u);
        EXPECT_EQ(Contents(Path("state")), Contents(Native(name + ".state"))) << name;
    }
    EXPECT_EQ(compared, 5);
}

TEST_F(BesideNative, DescribesParametersAndPresetsAlike)
{
    EXPECT_EQ(WithoutReturns(Run({"--list-params"}).out), Contents(Native("params")));
    EXPECT_EQ(WithoutReturns(Run({"--list-presets"}).out), Contents(Native("presets")));
    EXPECT_FALSE(Contents(Native("params")).empty() || Contents(Native("presets")).empty());
}

}   // namespace
