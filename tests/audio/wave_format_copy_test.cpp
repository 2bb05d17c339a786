#include "audio/wave_format_copy.h"
#include "tests/audio/headers.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

constexpr auto kAsRecord = QXWFXDEST_AS_RECORD, kWhenNeeded = QXWFXDEST_WHEN_NEEDED, kPlain = QXWFXDEST_PLAIN;
constexpr auto kMultichannel = QXWFXDEST_MULTICHANNEL, kAlways = QXWFXDEST_EXTENSIBLE;
constexpr auto kOther = QXWAVEFORMAT_COPY_DEST(77);

_qxwaveformat Linear(WORD channels, DWORD mask, DWORD flags = 0, QXSAMPLETYPE type = QXSAMPLE_FLOAT32)
{
    _qxwaveformat record;
    record.Init(48000, type, channels, mask, sizeof record);
    record.dwFlags |= flags;
    return record;
}

_qxwaveformat Compressed(WORD channels, DWORD mask, size_t extra, DWORD flags = 0)
{
    _qxwaveformat record;
    record.InitAsWfx(0x161, 48000, 16, channels, mask, sizeof record);
    record.dwFlags |= flags;
    record.cbExtra = WORD(extra);
    record.cbRecord = DWORD(32 + extra);
    for (size_t i = 0; i < extra; ++i)
        record.abExtra[i] = BYTE(i + 1);
    return record;
}

struct Freed {
    explicit Freed(WAVEFORMATEX* p) : format(p) {}
    Freed(const Freed&) = delete;
    Freed& operator=(const Freed&) = delete;
    ~Freed()
    {
        const HGLOBAL block = GlobalHandle(format);
        GlobalUnlock(block);
        GlobalFree(block);
    }
    WAVEFORMATEX* const format;
};

TEST(WaveFormatCopy, ThePolicyDecidesTheForm)
{
    const struct {
        _qxwaveformat record;
        DWORD size;
        QXWAVEFORMAT_COPY_DEST policy;
        DWORD mask;
    } kCases[] = {
        // 0: plain
        {Linear(2, 3), 40, kAsRecord, 0},
        {Linear(2, 3, QXWF_EXTENSIBLE), 40, kAsRecord, 3},
        {Linear(2, 0, QXWF_EXTENSIBLE), 40, kAsRecord, 3},
        {Linear(2, 3, QXWF_EXTENSIBLE), 39, kAsRecord, 0},
        {Linear(2, 0x33), 40, kAsRecord, 0x33},
        {Linear(2, 0x33), 18, kAsRecord, 0},
        {Linear(6, 0), 40, kAsRecord, 0},
        {Linear(2, 3, QXWF_EXTENSIBLE), 40, kWhenNeeded, 0},
        {Linear(6, 0), 40, kWhenNeeded, 0},
        {Linear(6, 0x3F), 40, kWhenNeeded, 0x3F},
        {Linear(1, 4), 40, kWhenNeeded, 4},
        {Linear(1, 4), 40, kOther, 4},
        {Linear(6, 0x60F, QXWF_EXTENSIBLE), 40, kPlain, 0},
        {Linear(2, 0), 40, kMultichannel, 0},
        {Linear(3, 0), 40, kMultichannel, 7},
        {Linear(1, 0), 40, kAlways, 1},
        {Linear(1, 0), 18, kAlways, 0},   // never behind the room
        {Compressed(2, 3, 0), 136, kAsRecord, 0},
        {Compressed(2, 0x30, 0), 136, kAsRecord, 0x30},
        {Compressed(2, 0x30, 0), 136, kMultichannel, 0x30},   // kept where it fits with everything else
        {Compressed(2, 0x30, 10), 49, kMultichannel, 0},
        {Compressed(2, 0x30, 10), 136, kPlain, 0},
        {Compressed(2, 3, 10), 136, kAlways, 3},
    };
    for (const auto& c : kCases) {
        std::array<BYTE, 160> memory;
        memory.fill(0xEE);
        auto& format = reinterpret_cast<WAVEFORMATEX&>(memory);
        QxAudio_GeneralCopyWfx(&format, c.size, &c.record, c.policy);
        const auto row = &c - kCases;
        EXPECT_EQ(format.wFormatTag, c.mask ? 0xFFFE : c.record.FormatTag()) << row;
        EXPECT_EQ(format.nChannels, c.record.nChannels) << row;
        EXPECT_EQ(format.nBlockAlign, c.record.nBlockAlign) << row;
        EXPECT_EQ(format.wBitsPerSample, c.record.BitsPerSample()) << row;
        EXPECT_EQ(QxAudio_GetWaveFormatTag(&format), c.record.FormatTag()) << row;
        EXPECT_TRUE(c.mask == 0 || Extended(format).dwChannelMask == c.mask) << row;
        EXPECT_LE(18u + format.cbSize, c.size) << row;
        EXPECT_EQ(memory[c.size], 0xEE) << row;
    }
}

TEST(WaveFormatCopy, EveryRecordComesBackFromItsHeader)
{
    for (const QXSAMPLETYPE type : {QXSAMPLE_PCM_U8, QXSAMPLE_PCM_S24, QXSAMPLE_FLOAT64, QXSAMPLE_PCM_S24_IN_32,
                                    QXSAMPLE_PCM_S8, QXSAMPLE_PCM_S32_BE})
        for (const WORD channels : {WORD(1), WORD(2), WORD(6)})
            for (const auto policy : {kAsRecord, kWhenNeeded, kMultichannel, kAlways}) {
                const _qxwaveformat record = Linear(channels, channels == 6 ? 0x60F : 0, 0, type);
                Header header(0, 0, 0, 0);
                QxAudio_GeneralCopyWfx(&header.Format(), 40, &record, policy);
                _qxwaveformat back;
                back.Init(sizeof back, header.Format());
                EXPECT_TRUE(record == back) << type << ", " << channels << ", " << policy;
            }
    Header header(0, 0, 0, 0);
    const _qxwaveformat record = Linear(2, 0, 0, QXSAMPLE_PCM_S24_IN_32);
    QxAudio_GeneralCopyWfx(&header.Format(), 40, &record, kAlways);
    EXPECT_EQ(header.Extension().Samples.wValidBitsPerSample, 32);
    EXPECT_EQ(header.Extension().SubFormat.Data1, kTagUnpacked);
}

TEST(WaveFormatCopy, ExtraBytesStandBehindTheHeaderAndAreCutToTheRoom)
{
    const struct {
        _qxwaveformat record;
        DWORD size;
        QXWAVEFORMAT_COPY_DEST policy;
        WORD cbSize, at;
    } kCases[] = {
        {Compressed(2, 0, 10), 136, kPlain, 10, 18},   {Compressed(2, 0, 10), 23, kPlain, 5, 18},
        {Compressed(2, 0, 10), 136, kAlways, 32, 40},  {Compressed(2, 0, 10), 44, kAlways, 26, 40},
        {Compressed(2, 0, 200), 136, kPlain, 118, 18},
    };
    for (const auto& c : kCases) {
        Header header(0, 0, 0, 0);
        QxAudio_GeneralCopyWfx(&header.Format(), c.size, &c.record, c.policy);
        EXPECT_EQ(header.Format().cbSize, c.cbSize) << (&c - kCases);
        const size_t count = c.cbSize + 18u - c.at;
        EXPECT_EQ(std::memcmp(header.Bytes() + c.at, c.record.abExtra, count), 0) << (&c - kCases);
    }
}

TEST(WaveFormatCopy, AllocatedHeadersHaveTheRoomThatTheyNeed)
{
    const struct {
        _qxwaveformat record;
        QXWAVEFORMAT_COPY_DEST policy;
        WORD tag, cbSize;
    } kCases[] = {
        {Linear(2, 3), kAsRecord, 3, 0},
        {Linear(2, 3, QXWF_EXTENSIBLE), kAsRecord, 0xFFFE, 22},
        {Linear(6, 0x3F), kWhenNeeded, 3, 0},   // a default mask is no reason for an allocating copy
        {Linear(6, 0x60F), kWhenNeeded, 0xFFFE, 22},
        {Linear(6, 0x60F), kPlain, 3, 0},
        {Linear(6, 0x60F), kOther, 3, 0},
        {Linear(3, 0), kMultichannel, 0xFFFE, 22},
        {Linear(2, 0), kAlways, 0xFFFE, 22},
        {Compressed(6, 0x3F, 60), kWhenNeeded, 0x161, 60},   // no extra byte is given up for a larger header
        {Compressed(2, 0x30, 60), kWhenNeeded, 0xFFFE, 82},
    };
    for (const auto& c : kCases) {
        const Freed made(QxAudio_AllocAndCopyWfx(c.record, c.policy));
        ASSERT_NE(made.format, nullptr);
        EXPECT_EQ(made.format->wFormatTag, c.tag) << (&c - kCases);
        EXPECT_EQ(made.format->cbSize, c.cbSize) << (&c - kCases);
        EXPECT_GE(GlobalSize(GlobalHandle(made.format)), 18u + c.cbSize) << (&c - kCases);
    }
    EXPECT_EQ(QxAudio_AllocAndCopyWfx(static_cast<const _qxwaveformat*>(nullptr), kPlain), nullptr);
}

TEST(WaveFormatCopy, HeadersAreTakenAsTheyAreWhereThePolicyAllowsIt)
{
    Header adpcm(2, 44100, 4, 2);
    adpcm.Append({1, 2, 3, 4});
    adpcm.Format().nBlockAlign = 7;
    Header extensible(kSubFormatPcm, 44100, 16, 2, 3, 12);   // a rewritten one would say 16 valid bits
    const struct {
        const Header* source;
        QXWAVEFORMAT_COPY_DEST policy;
        bool same;
    } kCases[] = {
        {&adpcm, kAsRecord, true},         {&adpcm, kWhenNeeded, true},    {&adpcm, kPlain, true},
        {&adpcm, kAlways, false},          {&extensible, kAsRecord, true}, {&extensible, kAlways, true},
        {&extensible, kWhenNeeded, false}, {&extensible, kPlain, false},
    };
    for (const auto& c : kCases) {
        const Freed made(QxAudio_AllocAndCopyWfx(&c.source->Format(), c.policy));
        ASSERT_NE(made.format, nullptr);
        const size_t cb = 18u + made.format->cbSize;
        EXPECT_EQ(std::memcmp(made.format, c.source->Bytes(), cb) == 0, c.same) << (&c - kCases);
    }
}

TEST(WaveFormatCopy, RecordsAreCopiedWithAllExtraBytesOrNone)
{
    const _qxwaveformat source = Compressed(2, 3, 10);
    static constexpr struct {
        DWORD size;
        size_t extra;
        DWORD cbRecord;
    } kCases[] = {{0, 0, 32}, {32, 0, 32}, {33, 0, 32}, {34, 0, 32}, {43, 0, 32}, {44, 10, 42}, {1058, 10, 42}};
    for (const auto& c : kCases) {
        std::array<BYTE, 1100> memory;
        memory.fill(0xEE);
        auto& dest = reinterpret_cast<_qxwaveformat&>(memory);
        QxAudio_GeneralCopyQxWaveFormat(&dest, c.size, &source, kAsRecord);
        EXPECT_EQ(dest.cbRecord, c.cbRecord) << c.size;
        EXPECT_EQ(dest.Extra().size(), c.extra) << c.size;
        EXPECT_EQ(memory[std::max<DWORD>(c.size, 32)], 0xEE) << c.size;
        EXPECT_EQ(dest == source, c.extra == 10) << c.size;
    }
}

TEST(WaveFormatCopy, HelpersHoldTheFormThatTheirRecordHas)
{
    EXPECT_EQ(_qxwaveformat_wfxcopyhelper(Linear(6, 0x60F)).Format().wFormatTag, 3);
    EXPECT_EQ(_qxwaveformat_wfxcopyhelper(Compressed(2, 0, 10)).Format().cbSize, 0);
    EXPECT_EQ(_qxwaveformat_wfxecopyhelper(Linear(6, 0x60F)).Format().wFormatTag, 0xFFFE);
    EXPECT_EQ(_qxwaveformat_wfxecopyhelper(Linear(6, 0x3F)).Format().wFormatTag, 3);
    EXPECT_EQ(_qxwaveformat_wfxecopyhelper(Compressed(2, 0, 30)).Format().cbSize, 22);
    EXPECT_EQ(_qxwaveformat_wfxecopyhelper(Compressed(2, 0x30, 30)).Format().cbSize, 22);   // the extension alone
    _qxwaveformat_wfxplus plus;
    plus.Init(Header(kSubFormatPcm, 48000, 16, 6, 0x3F), kPlain);
    EXPECT_EQ(plus.Format().wFormatTag, 1);
    WAVEFORMATEXTENSIBLE extended = {};
    QxAudio_CopyWfExt(&extended, Header(1, 48000, 16, 6), kMultichannel);
    EXPECT_EQ(extended.dwChannelMask, 0x3Fu);
}

}   // namespace
