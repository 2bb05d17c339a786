// Our own WAV files against another library's.
#include "tests/tools/program.h"
#include "tests/tools/wave.h"
#include "tests/tools/wave_file.h"

namespace {

constexpr struct {
    Encoding encoding;
    int minor;
} kKinds[] = {{Encoding::kPcm8, SF_FORMAT_PCM_U8},   {Encoding::kPcm16, SF_FORMAT_PCM_16},
              {Encoding::kPcm24, SF_FORMAT_PCM_24},  {Encoding::kPcm32, SF_FORMAT_PCM_32},
              {Encoding::kFloat32, SF_FORMAT_FLOAT}, {Encoding::kFloat64, SF_FORMAT_DOUBLE}};

class WaveSndfile : public ProgramTest {};

TEST_F(WaveSndfile, ReadsWhatWeWriteAndTheOtherWayRound)
{
    const Signal x = Noise(2 * 501, 3, 0.5f);
    for (const auto& kind : kKinds)
        for (const int major : {SF_FORMAT_WAV, SF_FORMAT_WAVEX}) {
            Save(Path("theirs.wav"), {2, 22050, major | kind.minor, x});
            const auto reader = OpenWave(Path("theirs.wav"));
            EXPECT_EQ(reader->Format().rate, 22050);
            EXPECT_EQ(reader->Format().encoding, kind.encoding);
            const Signal ours = LoadWave(Path("theirs.wav"));
            EXPECT_EQ(ours, Load(Path("theirs.wav")).samples) << kind.minor;

            const bool extensible = major == SF_FORMAT_WAVEX;
            SaveWave(Path("ours.wav"),
                     {2, 22050, Container::kWav, kind.encoding, extensible ? std::vector<int>{3} : std::vector<int>{}},
                     x);
            const Wave theirs = Load(Path("ours.wav"));
            EXPECT_EQ(theirs.format, major | kind.minor);
            EXPECT_EQ(theirs.rate, 22050);
            EXPECT_EQ(theirs.samples, LoadWave(Path("ours.wav"))) << kind.minor;
        }
}

}   // namespace
