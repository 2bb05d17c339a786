#include "tests/audio/headers.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(SampleType, TagAndBitsTellTheType)
{
    static constexpr struct {
        WORD tag, bits;
        QXSAMPLETYPE type;
    } kCases[] = {
        {1, 8, QXSAMPLE_PCM_U8},
        {1, 16, QXSAMPLE_PCM_S16},
        {1, 20, QXSAMPLE_PCM_S24},
        {1, 24, QXSAMPLE_PCM_S24},
        {1, 32, QXSAMPLE_PCM_S32},
        {1, 12, QXSAMPLE_NONE},
        {1, 64, QXSAMPLE_NONE},
        {1, 0, QXSAMPLE_NONE},
        {0xFE01, 8, QXSAMPLE_PCM_S8},
        {0xFE01, 16, QXSAMPLE_PCM_S16},
        {0xFE01, 20, QXSAMPLE_PCM_S24},
        {0xFE01, 32, QXSAMPLE_PCM_S32},
        {3, 32, QXSAMPLE_FLOAT32},
        {3, 64, QXSAMPLE_FLOAT64},
        {3, 16, QXSAMPLE_NONE},
        {0xFE00, 24, QXSAMPLE_PCM_S24_IN_32},
        {0xFE00, 32, QXSAMPLE_PCM_S24_IN_32},
        {0xFE00, 16, QXSAMPLE_NONE},
        {0xFE02, 8, QXSAMPLE_PCM_U8},
        {0xFE02, 16, QXSAMPLE_PCM_S16_BE},
        {0xFE02, 24, QXSAMPLE_PCM_S24_BE},
        {0xFE02, 32, QXSAMPLE_PCM_S32_BE},
        {0xFE02, 20, QXSAMPLE_NONE},
        {0xFE03, 16, QXSAMPLE_TAG_FE03_16},
        {0xFE03, 24, QXSAMPLE_TAG_FE03_24},
        {0xFE03, 32, QXSAMPLE_NONE},
        {0x55, 16, QXSAMPLE_NONE},
        {0xFFFE, 16, QXSAMPLE_NONE},
    };
    for (const auto& c : kCases)
        EXPECT_EQ(QxAudio_GetSampleType2(c.tag, c.bits), c.type) << c.tag << ", " << c.bits;
}

// Every type that is written can be read again, and the sizes fit.
TEST(SampleType, WhatIsWrittenIsReadAsTheSame)
{
    int32_t known = 0;
    for (uint32_t value = 0; value < 300; ++value) {
        const auto type = QXSAMPLETYPE(value);
        const WORD tag = QxAudio_FormatTagFromSampleType(type), bits = QxAudio_BitsFromSampleType(type);
        EXPECT_EQ(QxAudio_BytesFromSampleType(type), bits / 8) << value;
        EXPECT_EQ(tag == 0, bits == 0) << value;
        if (tag != 0) {
            EXPECT_EQ(QxAudio_GetSampleType2(tag, bits), type) << value;
            ++known;
        }
    }
    EXPECT_EQ(known, 11);
    EXPECT_EQ(QxAudio_FormatTagFromSampleType(QXSAMPLE_TAG_FE03_16), 0);
}

TEST(SampleType, FullScaleIsThatOfTheBits)
{
    static constexpr struct {
        uint32_t bits;
        double scale;
    } kCases[] = {{8, 128.0}, {16, 32768.0}, {24, 8388608.0}, {32, 2147483648.0}, {0, 1.0}, {20, 1.0}, {64, 1.0}};
    for (const auto& c : kCases)
        EXPECT_EQ(QxAudio_GetNormalizeFactor(c.bits), c.scale) << c.bits;
}

TEST(WaveHeader, ExtensibleHeadersAreClassifiedByTheirSubFormat)
{
    GUID unpacked = kSubFormatPcm, wide = kSubFormatPcm;
    unpacked.Data1 = kTagUnpacked;
    wide.Data1 = 0x10001;   // the high half belongs to the base
    const struct {
        Header header;
        QXSAMPLETYPE type;
        WORD tag;
    } kCases[] = {
        {{kSubFormatPcm, 48000, 16, 2, 3}, QXSAMPLE_PCM_S16, 1},
        {{kSubFormatPcm, 48000, 32, 2, 3, 24}, QXSAMPLE_PCM_S24_IN_32, 1},
        {{kSubFormatPcm, 48000, 32, 2, 3, 32}, QXSAMPLE_PCM_S32, 1},
        {{kSubFormatFloat, 48000, 32, 2, 3, 24}, QXSAMPLE_FLOAT32, 3},
        {{unpacked, 48000, 32, 2, 3}, QXSAMPLE_PCM_S24_IN_32, kTagUnpacked},
        {{kSubFormatForeign, 48000, 16, 2, 3}, QXSAMPLE_NONE, 0},
        {{wide, 48000, 16, 2, 3}, QXSAMPLE_NONE, 0},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(QxAudio_GetSampleType(c.header), c.type) << (&c - kCases);
        EXPECT_EQ(QxAudio_GetWaveFormatTag(c.header), c.tag) << (&c - kCases);
        const bool isPublic = c.tag == 1 || c.tag == 3;
        WORD tag = 99;
        EXPECT_EQ(QxAudio_GetFormatTagExtensible(&Extended(c.header), &tag), isPublic) << (&c - kCases);
        EXPECT_EQ(tag, isPublic ? c.tag : 99) << (&c - kCases);
        EXPECT_EQ(QxAudio_IsCompressed(c.header), !isPublic) << (&c - kCases);
    }
    Header cut(kSubFormatPcm, 48000, 16, 2, 3);
    cut.Format().cbSize = 21;
    WORD tag = 99;
    EXPECT_EQ(QxAudio_GetWaveFormatTag(cut), WAVE_FORMAT_EXTENSIBLE);
    EXPECT_FALSE(QxAudio_GetFormatTagExtensible(&cut.Extension(), &tag));
    EXPECT_TRUE(QxAudio_IsCompressed(cut));
    EXPECT_EQ(QxAudio_GetWaveFormatTag(nullptr), 0);
}

TEST(WaveHeader, LinearTagsAreCompressedWhenTheFrameIsOfAnotherSize)
{
    for (const WORD tag : {WORD(1), WORD(3), kTagUnpacked, kTagSigned, kTagBigEndian}) {
        Header header(tag, 44100, 32, 2);
        EXPECT_FALSE(QxAudio_IsCompressed(header)) << tag;
        header.Format().nBlockAlign = 6;
        EXPECT_TRUE(QxAudio_IsCompressed(header)) << tag;
    }
    EXPECT_TRUE(QxAudio_IsCompressed(Header(kTagFe03, 44100, 16, 2)));
    EXPECT_TRUE(QxAudio_IsCompressed(Header(0x55, 44100, 0, 2)));
    EXPECT_FALSE(QxAudio_IsCompressed(Header(1, 44100, 20, 2)));   // 20 bits count as 2 bytes here
}

TEST(WaveHeader, RepairTouchesPcmAlone)
{
    Header twenty(1, 48000, 20, 2), wrong(1, 48000, 16, 2), good(1, 48000, 16, 2), other(3, 48000, 32, 2);
    twenty.Format().nBlockAlign = 5;
    wrong.Format().nBlockAlign = other.Format().nBlockAlign = 1;
    EXPECT_EQ(QxAudio_FixBadWfx(&twenty.Format()), 1);
    EXPECT_EQ(twenty.Format().wBitsPerSample, 24);
    EXPECT_EQ(twenty.Format().nBlockAlign, 6);
    EXPECT_EQ(twenty.Format().nAvgBytesPerSec, 4 * 48000u);   // left alone
    EXPECT_EQ(QxAudio_FixBadWfx(&wrong.Format()), 1);
    EXPECT_EQ(wrong.Format().nBlockAlign, 4);
    EXPECT_EQ(QxAudio_FixBadWfx(&good.Format()), 0);
    EXPECT_EQ(QxAudio_FixBadWfx(&other.Format()), 0);
    EXPECT_EQ(other.Format().nBlockAlign, 1);
}

TEST(WaveHeader, AMaskMakesAHeaderExtensibleWhereItSaysMore)
{
    static constexpr struct {
        WORD channels;
        DWORD mask, size, expected;
    } kCases[] = {
        // 0: plain
        {2, 0, 40, 0},    {2, 3, 40, 0},       {1, 1, 40, 0},       {6, 0, 40, 0},       {2, 0x30, 18, 0},
        {6, 0x3F, 39, 0}, {2, 0x30, 40, 0x30}, {1, 4, 40, 4},       {6, 0x3F, 40, 0x3F}, {6, 0x60F, 40, 0x60F},
        {2, 0x33, 40, 3}, {1, 3, 40, 1},       {6, 0xFF, 40, 0x3F},   // more speakers than channels
    };
    for (const auto& c : kCases) {
        Header header(0, 0, 0, 0);
        QxAudio_InitWfxFlex(&header.Format(), 3, 48000, 32, c.channels, c.mask, c.size);
        const WAVEFORMATEX& f = header;
        EXPECT_EQ(f.wFormatTag, c.expected ? 0xFFFE : 3) << c.channels << ", " << c.mask;
        EXPECT_EQ(f.cbSize, c.expected ? 22 : 0) << c.channels << ", " << c.mask;
        EXPECT_EQ(f.nBlockAlign, 4 * c.channels);
        EXPECT_EQ(f.nAvgBytesPerSec, 4u * c.channels * 48000u);
        EXPECT_EQ(Extended(f).dwChannelMask, c.expected) << c.channels << ", " << c.mask;
        EXPECT_EQ(Extended(f).Samples.wValidBitsPerSample, c.expected ? 32 : 0);
        EXPECT_TRUE(!c.expected || IsEqualGUID(Extended(f).SubFormat, kSubFormatFloat));
    }
    EXPECT_EQ(DefaultChannelMask(31), 0x7FFFFFFFu);
    EXPECT_EQ(DefaultChannelMask(32), 0xFFFFFFFFu);
    EXPECT_EQ(DefaultChannelMask(200), 0xFFFFFFFFu);
}

TEST(WaveHeader, ShortFormsComeFromLongOnes)
{
    const Header extensible(kSubFormatFloat, 96000, 32, 2, 3), foreign(kSubFormatForeign, 96000, 32, 2, 3);
    Header plain(2, 22050, 4, 1);
    plain.Append({1, 2, 3});
    WAVEFORMATEX out = {};
    QxAudio_CopyWfExtToWfx(&Extended(extensible), &out);
    EXPECT_TRUE(QxAudio_IsEqualFormat(&out, Header(3, 96000, 32, 2)) && out.cbSize == 0 && out.nBlockAlign == 8);
    QxAudio_CopyWfExtToWfx(&Extended(foreign), &out);
    EXPECT_EQ(out.wFormatTag, 3);   // untouched
    QxAudio_CopyWfExtToWfx(&Extended(plain), &out);
    EXPECT_EQ(std::memcmp(&out, plain.Bytes(), 18), 0);

    Header longer(0x161, 44100, 16, 2);
    longer.Format().cbSize = 200;
    WAVEFORMATEXTENSIBLE dest;
    std::memset(static_cast<void*>(&dest), 0xEE, sizeof dest);
    QxAudio_CopyWfxToWfExt(plain, &dest);
    EXPECT_EQ(std::memcmp(&dest, plain.Bytes(), 21), 0);
    EXPECT_EQ(reinterpret_cast<const BYTE*>(&dest)[21], 0xEE);
    QxAudio_CopyWfxToWfExt(longer, &dest);
    EXPECT_EQ(std::memcmp(&dest, longer.Bytes(), 40), 0);
}

}   // namespace
