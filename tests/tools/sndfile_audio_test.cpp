// What the tools write in pieces comes back whole, headers and all.
#include "tests/tools/program.h"
#include "tests/tools/wave.h"
#include "tools/audio_file.h"
#include "tools/output_file.h"

#include <cmath>

namespace {

class SndfileAudio : public ProgramTest {};

TEST_F(SndfileAudio, GivesBackWhatIsLongerThanAPiece)
{
    Signal x = Noise(2 * 300001, 5, 0.5f);
    for (float& v : x)
        v = std::round(v * 32768.0f) / 32768.0f;   // exact in each of the encodings
    static constexpr struct {
        Container container;
        Encoding encoding;
    } kCases[] = {{Container::kWav, Encoding::kPcm16},   {Container::kWav, Encoding::kFloat32},
                  {Container::kRf64, Encoding::kPcm24},  {Container::kW64, Encoding::kFloat64},
                  {Container::kAiff, Encoding::kPcm16},  {Container::kAiff, Encoding::kPcm32},
                  {Container::kFlac, Encoding::kPcm24}};
    for (const auto& c : kCases) {
        OutputFile file(Path("out"), "");
        const auto writer = CreateAudio(file.Descriptor(), "out", {2, 48000, c.container, c.encoding}, 300001, {});
        for (int64_t at = 0, block = 1; at < 300001; at += block, block = 1 + block * 7 % 50021)
            writer->Write(x.data() + 2 * at, std::min(block, 300001 - at));
        writer->Finish();
        file.Commit();
        EXPECT_EQ(Load(Path("out")).samples, x) << int(c.container) << ", " << int(c.encoding);
    }
}

}   // namespace
