#include "aplugins/qxvantor/presets.h"
#include "kernel/lang.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Text = std::basic_string<WCHAR>;

class Presets : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(OpenKernelLanguage(GetModuleHandleW(nullptr)), S_OK);
        QxLang_UpdateKernelLCID(KernelLanguage(), 1033, FALSE);
    }
    void TearDown() override { CloseKernelLanguage(); }
};

TEST_F(Presets, NamesSayWhatTheRecordsDo)
{
    static constexpr struct {
        const WCHAR* name;
        double stretch, pitch, aux;
    } kRows[kPresetCount] = {
        {TEXT("1:   Unity     (Time*1, Pitch*1)"), 100, 0, 0},
        {TEXT("1:   Unity     (Time*1, Pitch*1)"), 100, 0, 0},
        {TEXT("2:   2 x Time   (Time*2, Pitch*1)"), 200, 0, 0},
        {TEXT("3:   1/2 Time  (Time/2, Pitch*1)"), 50, 0, 0},
        {TEXT("4:   2 x Pitch (Time*1, Pitch*2)"), 100, 12, 0},
        {TEXT("5:   1/2 Pitch (Time*1, Pitch/2)"), 100, -12, -12},
        {TEXT("6:   2 x Both  (Time*2, Pitch*2)"), 200, 12, 0},
        {TEXT("7:   1/2 Both  (Time/2, Pitch/2)"), 50, -12, 0},
    };
    for (DWORD i = 0; i < kPresetCount; ++i) {
        WCHAR name[80];
        ASSERT_EQ(PresetName(i, name, 80), S_OK);
        EXPECT_TRUE(Text(name) == kRows[i].name) << i;
        const QxVantorParams& record = PresetRecord(i);
        EXPECT_EQ(record.stretchPercent, kRows[i].stretch) << i;
        EXPECT_EQ(record.pitchSemitones, kRows[i].pitch) << i;
        EXPECT_EQ(record.auxSemitones, kRows[i].aux) << i;
        EXPECT_EQ(record.formantPercent, 100.0) << i;
        EXPECT_EQ(record.contentPitch, 7) << i;
        EXPECT_EQ(record.mode | record.tempo | record.tempoFallback | record.sourceRate | record.bypass, 0) << i;
        EXPECT_EQ(record.sourceFrames, 0.0) << i;
    }
}

TEST_F(Presets, NamesAreCutToTheRoomAndRefusedWithoutAny)
{
    WCHAR name[8] = {};
    name[4] = '#';
    EXPECT_EQ(PresetName(2, name, 4), S_OK);
    EXPECT_TRUE(Text(name) == TEXT("2: ") && name[4] == '#');
    EXPECT_EQ(PresetName(kPresetCount, name, 8), E_INVALIDARG);
    EXPECT_EQ(PresetName(0xFFFFFFFF, name, 8), E_INVALIDARG);
    EXPECT_EQ(PresetName(0, name, 0), E_INVALIDARG);
    EXPECT_EQ(PresetName(0, nullptr, 8), E_POINTER);
}

}   // namespace
