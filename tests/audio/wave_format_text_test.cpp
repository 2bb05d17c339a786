#include "audio/wave_format_text.h"
#include "kernel/lang.h"
#include "tests/audio/headers.h"
#include "tests/kernel/wide.h"

#include <gtest/gtest.h>

namespace {

class WaveFormatText : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(OpenKernelLanguage(GetModuleHandleW(nullptr)), S_OK);
        QxLang_UpdateKernelLCID(KernelLanguage(), 1033, FALSE);
    }
    void TearDown() override { CloseKernelLanguage(); }

    static std::string Tag(WORD tag, HRESULT expected = S_OK)
    {
        WCHAR text[128] = {};
        EXPECT_EQ(QxAudio_GetTagText(tag, text, 128), expected);
        return Narrow(text);
    }
    template <class Format>
    static std::string Attributes(const Format* format, HRESULT expected = S_OK)
    {
        WCHAR text[128] = {};
        EXPECT_EQ(QxAudio_GetAttribsText(format, text, 128), expected);
        return Narrow(text);
    }
    static std::string Attributes(const Header& header) { return Attributes(&header.Format()); }
};

TEST_F(WaveFormatText, TagsHaveNames)
{
    EXPECT_EQ(Tag(1), "PCM");
    EXPECT_EQ(Tag(3), "PCM (float)");
    EXPECT_EQ(Tag(0xFE00), "PCM (unpacked)");
    EXPECT_EQ(Tag(0xFE01), "PCM (signed)");
    EXPECT_EQ(Tag(0xFE02), "PCM (big endian)");
    EXPECT_NE(Tag(2).find("ADPCM"), std::string::npos);   // from the system
    EXPECT_EQ(Tag(0xFE03, E_FAIL), "Unknown");
}

TEST_F(WaveFormatText, AttributesOfLinearFormatsNameSpeakers)
{
    GUID unpacked = kSubFormatPcm;
    unpacked.Data1 = kTagUnpacked;
    EXPECT_EQ(Attributes(Header(1, 44100, 16, 1)), "44,100 Hz, 16 Bit, Mono");
    EXPECT_EQ(Attributes(Header(3, 96000, 32, 2)), "96,000 Hz, 32 Bit (IEEE Float), Stereo");
    EXPECT_EQ(Attributes(Header(kSubFormatPcm, 48000, 24, 6, 63)), "48,000 Hz, 24 Bit, 5.1");
    EXPECT_EQ(Attributes(Header(kSubFormatFloat, 48000, 32, 6, 1551)), "48,000 Hz, 32 Bit (IEEE Float), 5.1");
    EXPECT_EQ(Attributes(Header(kSubFormatFloat, 48000, 32, 8, 1599)), "48,000 Hz, 32 Bit (IEEE Float), 7.1");
    EXPECT_EQ(Attributes(Header(kSubFormatPcm, 48000, 24, 8, 255)), "48,000 Hz, 24 Bit, 7.1");
    EXPECT_EQ(Attributes(Header(kSubFormatPcm, 48000, 24, 6, 0xFC)), "48,000 Hz, 24 Bit, 6 Channel");
    EXPECT_EQ(Attributes(Header(1, 48000, 24, 6)), "48,000 Hz, 24 Bit, 6 Channel");
    EXPECT_EQ(Attributes(Header(kSubFormatFloat, 48000, 32, 2, 3)), "48,000 Hz, 32 Bit, Stereo");
    EXPECT_EQ(Attributes(&Header(unpacked, 48000, 32, 2, 3).Format(), E_FAIL), "Unknown");
    _qxwaveformat record;
    record.Init(48000, QXSAMPLE_PCM_S24, 6, 0x3F, sizeof record);
    EXPECT_EQ(Attributes(&record), "48,000 Hz, 24 Bit, 5.1");
}

TEST_F(WaveFormatText, AttributesOfCompressedFormatsComeFromTheSystem)
{
    Header adpcm(2, 44100, 4, 2);   // the header that the system's own codec makes
    adpcm.Append({0xF4, 7, 7,    0, 0,    1, 0, 0, 0,    2, 0,    0xFF, 0,    0, 0,    0,
                  0xC0, 0, 0x40, 0, 0xF0, 0, 0, 0, 0xCC, 1, 0x30, 0xFF, 0x88, 1, 0x18, 0xFF});
    adpcm.Format().nBlockAlign = 2048;
    adpcm.Format().nAvgBytesPerSec = 44359;
    EXPECT_NE(Attributes(adpcm).find("Stereo"), std::string::npos);
    EXPECT_EQ(Attributes(&Header(0xFE03, 44100, 16, 2).Format(), E_FAIL), "Unknown");
}

TEST_F(WaveFormatText, WithoutADestinationTheResultAloneIsGiven)
{
    WCHAR text[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(QxAudio_GetTagText(1, nullptr, 10), S_OK);
    EXPECT_EQ(QxAudio_GetTagText(0xFE03, text, 0), E_FAIL);
    EXPECT_EQ(QxAudio_GetAttribsText(&Header(1, 44100, 16, 2).Format(), text, -1), S_OK);
    EXPECT_EQ(text[0], '#');
    EXPECT_EQ(QxAudio_GetTagText(0xFE01, text, 3), S_OK);
    EXPECT_EQ(Narrow(text), "PC");
    EXPECT_EQ(text[3], '#');
}

}   // namespace
