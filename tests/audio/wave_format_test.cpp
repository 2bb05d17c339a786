#include "audio/wave_format.h"
#include "tests/audio/headers.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

_qxwaveformat Made(const Header& header, DWORD size = sizeof(_qxwaveformat))
{
    _qxwaveformat record;
    record.Init(size, header.Format());
    return record;
}

Header Adpcm()
{
    Header header(2, 44100, 4, 2);
    header.Format().nBlockAlign = 2048;
    header.Format().nAvgBytesPerSec = 44359;
    header.Append({0xF4, 7, 7, 0, 0, 1});
    return header;
}

TEST(WaveFormat, ALinearHeaderBecomesItsType)
{
    const _qxwaveformat record = Made({kSubFormatPcm, 48000, 32, 6, 0x60F, 24});
    EXPECT_EQ(record.eSampleType, QXSAMPLE_PCM_S24_IN_32);
    EXPECT_EQ(record.dwFlags, QXWF_EXTENSIBLE);
    EXPECT_EQ(record.dwChannelMask, 0x60Fu);
    EXPECT_EQ(record.cbRecord, 32u);
    EXPECT_EQ(record.FormatTag(), kTagUnpacked);
    EXPECT_EQ(record.BitsPerSample(), 32);
    EXPECT_EQ(record.BytesPerSample(), 4);
    EXPECT_FALSE(record.IsMaskDefault());
}

TEST(WaveFormat, ABadPcmHeaderIsReadAsMendedAndLeftAlone)
{
    Header header(1, 48000, 20, 2);
    header.Format().nBlockAlign = 5;
    const Header before = header;
    const _qxwaveformat record = Made(header);
    EXPECT_EQ(record.eSampleType, QXSAMPLE_PCM_S24);
    EXPECT_EQ(record.nBlockAlign, 6);
    EXPECT_EQ(record.nAvgBytesPerSec, before.Format().nAvgBytesPerSec);
    EXPECT_EQ(std::memcmp(header.Bytes(), before.Bytes(), 40), 0);
}

TEST(WaveFormat, AHeaderWithoutSubFormatIsSalvagedByItsBits)
{
    static constexpr struct {
        WORD bits;
        QXSAMPLETYPE type;
    } kCases[] = {{8, QXSAMPLE_PCM_U8},   {16, QXSAMPLE_PCM_S16}, {24, QXSAMPLE_PCM_S24},
                  {32, QXSAMPLE_FLOAT32}, {64, QXSAMPLE_FLOAT64}, {12, QXSAMPLE_NONE}};
    for (const auto& c : kCases)
        for (const WORD cbSize : {WORD(0), WORD(22)}) {
            Header header(GUID{}, 48000, c.bits, 2, 3);
            header.Format().cbSize = cbSize;
            EXPECT_EQ(Made(header).eSampleType, c.type) << c.bits;
            EXPECT_EQ(Made(header).IsCompressed(), c.type == QXSAMPLE_NONE) << c.bits;
        }
    Header bytes(GUID{}, 48000, 16, 2, 3), frame = bytes, longer = bytes;
    bytes.Format().nAvgBytesPerSec = 1;
    frame.Format().nBlockAlign = 2;
    longer.Append({1});
    for (const Header& header : {bytes, frame, longer})
        EXPECT_EQ(Made(header).eSampleType, QXSAMPLE_NONE);
}

TEST(WaveFormat, ExtraBytesAreCutToTheRoomAndTheRecordSaysItsLength)
{
    Header large(0x161, 44100, 16, 2);
    large.Format().cbSize = 1500;
    Header extensible(kSubFormatForeign, 44100, 16, 2, 3);
    extensible.Append({9, 8, 7, 6});
    Header withTail(3, 44100, 16, 2);   // a float of 16 bits: compressed, and still no place for extra bytes
    withTail.Append({1, 2});
    const struct {
        Header header;
        DWORD size;
        size_t extra;
        DWORD cbRecord;
    } kCases[] = {
        {Adpcm(), 0, 0, 32},   {Adpcm(), 32, 0, 32},     {Adpcm(), 33, 0, 32},   {Adpcm(), 34, 0, 32},
        {Adpcm(), 38, 4, 36},  {Adpcm(), 40, 6, 38},     {Adpcm(), 1058, 6, 38}, {large, 1058, 1024, 1056},
        {large, 128, 94, 126}, {extensible, 128, 4, 36}, {withTail, 128, 0, 32},
    };
    for (const auto& c : kCases) {
        std::array<BYTE, 1100> memory;
        memory.fill(0xEE);
        auto& record = reinterpret_cast<_qxwaveformat&>(memory);
        record.Init(c.size, c.header.Format());
        EXPECT_TRUE(record.IsCompressed()) << (&c - kCases);
        EXPECT_EQ(record.cbRecord, c.cbRecord) << (&c - kCases);
        EXPECT_EQ(record.Extra().size(), c.extra) << (&c - kCases);
        EXPECT_EQ(memory[std::max<DWORD>(c.size, 32)], 0xEE) << (&c - kCases);   // nothing behind the room
    }
    EXPECT_EQ(Made(extensible).abExtra[0], 9);
    EXPECT_EQ(Made(Adpcm()).FormatTag(), 2);
    EXPECT_EQ(Made(Adpcm()).BitsPerSample(), 4);
    EXPECT_EQ(Made(Adpcm()).BytesPerSample(), 0);
}

TEST(WaveFormat, RecordsAreMadeFromTypesAndTags)
{
    _qxwaveformat record;
    record.Init(48000, QXSAMPLE_PCM_S24, 6, 0x3F, sizeof record);
    EXPECT_EQ(record.nBlockAlign, 18);
    EXPECT_EQ(record.nAvgBytesPerSec, 18 * 48000u);
    EXPECT_EQ(record.cbRecord, 32u);
    record.nChannels = 2;
    EXPECT_EQ(record.UpdateBlockAlign(), 6);
    EXPECT_EQ(record.nAvgBytesPerSec, 6 * 48000u);

    record.InitAsWfx(1, 48000, 20, 2, 0, sizeof record);
    EXPECT_EQ(record.eSampleType, QXSAMPLE_PCM_S24);
    EXPECT_EQ(record.nBlockAlign, 6);
    record.InitAsWfx(0x11, 22050, 4, 2, 3, sizeof record);
    EXPECT_TRUE(record.IsCompressed());
    EXPECT_EQ(record.FormatTag(), 0x11);
    EXPECT_EQ(record.nBlockAlign, 1);
    EXPECT_EQ(record.UpdateBlockAlign(), 1);   // of a compressed format it stays
}

TEST(WaveFormat, EqualityIsThatOfTheAudio)
{
    _qxwaveformat a, b;
    const auto reset = [&] {
        a.Init(48000, QXSAMPLE_FLOAT32, 6, 0, sizeof a);
        b = a;
    };
    reset();
    b.dwChannelMask = 0x3F;
    b.nBlockAlign = 99;
    b.dwFlags |= QXWF_EXTENSIBLE;
    EXPECT_TRUE(a == b);
    b.dwChannelMask = 0x60F;
    EXPECT_FALSE(a == b);
    reset();
    b.nSamplesPerSec = 44100;
    EXPECT_FALSE(a == b);
    reset();
    b.eSampleType = QXSAMPLE_PCM_S32;
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a == Header(3, 48000, 32, 6).Format());
    EXPECT_TRUE(a == Header(kSubFormatFloat, 48000, 32, 6, 0x3F).Format());
    EXPECT_FALSE(a == Header(kSubFormatFloat, 48000, 32, 6, 0x60F).Format());
    EXPECT_FALSE(a == Header(1, 48000, 32, 6).Format());
}

TEST(WaveFormat, CompressedFormatsAreEqualToTheLastExtraByte)
{
    const _qxwaveformat a = Made(Adpcm());
    EXPECT_TRUE(a == Made(Adpcm()));
    EXPECT_TRUE(a == Adpcm().Format());
    Header tail = Adpcm(), shorter = Adpcm(), bytes = Adpcm(), tag = Adpcm();
    const_cast<BYTE*>(tail.Bytes())[18 + 5] ^= 1;
    shorter.Format().cbSize = 5;
    bytes.Format().nAvgBytesPerSec++;
    tag.Format().wFormatTag = 0x11;
    for (const Header& other : {tail, shorter, bytes, tag}) {
        EXPECT_FALSE(a == Made(other));
        EXPECT_FALSE(a == other.Format());
    }
}

}   // namespace
