// Our own WAV files: what is written comes back, what is no WAV file is refused.
#include "tools/wave_audio.h"

#include "tests/signals.h"
#include "tests/tools/program.h"
#include "tests/tools/wave_file.h"
#include "tools/failure.h"

#include <cmath>
#include <cstring>

namespace {

constexpr struct {
    Encoding encoding;
    int bits;   // of a whole number; 0: the float comes back as it is
} kKinds[] = {{Encoding::kPcm8, 8},   {Encoding::kPcm16, 16},  {Encoding::kPcm24, 24},
              {Encoding::kPcm32, 32}, {Encoding::kFloat32, 0}, {Encoding::kFloat64, 0}};

class WaveAudio : public ProgramTest {
protected:
    void Put(const std::string& bytes) const { std::ofstream(Path("a.wav"), std::ios::binary) << bytes; }

    // The failure's text, or "read".
    std::string Fate() const
    {
        try {
            const auto reader = OpenWave(Path("a.wav"));
            Signal room(size_t(reader->Format().channels) * 100);
            while (reader->Read(room.data(), 100) > 0) {
            }
            return "read";
        } catch (const Failure& failure) {
            return failure.what();
        }
    }
};

TEST_F(WaveAudio, GivesBackWhatWasWritten)
{
    const Signal x = Noise(3 * 777, 4, 0.9f);   // an odd number of odd frames, so that there is a pad byte
    for (const auto& kind : kKinds)
        for (const std::vector<int>& map : {std::vector<int>{}, {7}}) {
            const std::vector<Tag> tags = {{0x4D414E49, "Title"}, {0x54524149, "Someone"}};
            SaveWave(Path("a.wav"), {3, 12345, Container::kWav, kind.encoding, map}, x, tags);
            const auto reader = OpenWave(Path("a.wav"));
            EXPECT_EQ(reader->Format().channels, 3);
            EXPECT_EQ(reader->Format().rate, 12345);
            EXPECT_EQ(reader->Format().encoding, kind.encoding);
            EXPECT_EQ(reader->Format().channelMap, map);
            ASSERT_EQ(reader->Tags().size(), 2u);
            EXPECT_EQ(reader->Tags()[1].kind, 0x54524149);
            EXPECT_EQ(reader->Tags()[1].text, "Someone");
            const Signal y = LoadWave(Path("a.wav"));
            ASSERT_EQ(y.size(), x.size());
            const double grain = kind.bits ? std::ldexp(0.5001, 1 - kind.bits) : 0.0;   // half a step, and float's own
            for (size_t i = 0; i < x.size(); ++i)
                ASSERT_NEAR(y[i], x[i], grain) << kind.bits << " bits, sample " << i;
            SaveWave(Path("b.wav"), reader->Format(), y, reader->Tags());
            EXPECT_EQ(Contents(Path("a.wav")), Contents(Path("b.wav"))) << kind.bits << " bits";
        }
}

TEST_F(WaveAudio, LimitsAndCountsWhatExceedsFullScale)
{
    const Signal x = {1.0f, -1.0f, 1.5f, -1.5f, 0.5f};
    EXPECT_EQ(SaveWave(Path("a.wav"), {1, 8000, Container::kWav, Encoding::kPcm16, {}}, x), 3);
    EXPECT_EQ(LoadWave(Path("a.wav")), (Signal{32767 / 32768.0f, -1.0f, 32767 / 32768.0f, -1.0f, 0.5f}));
}

TEST_F(WaveAudio, RefusesEveryFileThatWasCut)
{
    SaveWave(Path("a.wav"), {2, 44100, Container::kWav, Encoding::kPcm24, {3}}, Noise(200, 1), {{1, "tag"}});
    const std::string whole = Contents(Path("a.wav"));
    EXPECT_EQ(Fate(), "read");
    for (size_t left = 0; left < whole.size(); ++left) {
        Put(whole.substr(0, left));
        EXPECT_TRUE(Fate().starts_with(Path("a.wav") + ": ")) << left << ": " << Fate();
    }
}

TEST_F(WaveAudio, RefusesFormatsThatItDoesNotKnow)
{
    SaveWave(Path("a.wav"), {2, 44100, Container::kWav, Encoding::kPcm16, {}}, Noise(20, 1));
    const std::string whole = Contents(Path("a.wav"));
    const struct {
        size_t at;
        const char* bytes;
        const char* names;
    } kCases[] = {
        {0, "RIFX", "not an audio file"},
        {0, "fLaC", "not an audio file"},
        {8, "AVI ", "not an audio file"},
        {20, "\x55", "no WAV format"},
        {22, "\7", "no WAV format"},
        {34, "\x0C", "no WAV format"},
        {12, "xmt ", "lacks its format"},
        {36, "dota", "lacks its format"},
        {40, "\xFF\x01", "ends before its audio"},
        {24, "\xFF\xFF\xFF\xFF", "no WAV format"},
    };
    for (const auto& c : kCases) {
        std::string bytes = whole;
        bytes.replace(c.at, std::strlen(c.bytes), c.bytes);
        Put(bytes);
        EXPECT_NE(Fate().find(c.names), std::string::npos) << Fate() << " lacks " << c.names;
    }
    EXPECT_THROW(CreateWave(-1, "x", {1, 8000, Container::kFlac, Encoding::kPcm16, {}}, 1, {}), Failure);
    EXPECT_THROW(CreateWave(-1, "x", {1, 8000, Container::kWav, Encoding::kPcm16, {}}, int64_t(1) << 31, {}), Failure);
}

}   // namespace
