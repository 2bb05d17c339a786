#include "platform/codepage_detect.h"
#include "platform/thread_language.h"
#include "tests/platform/wide.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

constexpr LCID kEnUs = 0x0409, kDeDe = 0x0407, kFrFr = 0x040C, kPlPl = 0x0415, kJaJp = 0x0411, kHiIn = 0x0439;

Wide Item(LCID lcid, LCTYPE type)
{
    std::array<WCHAR, 128> out = {};
    const int length = GetLocaleInfoW(lcid, type, out.data(), int(out.size()));
    EXPECT_EQ(length, GetLocaleInfoW(lcid, type, nullptr, 0));
    return Wide(out.data());
}

DWORD Number(LCID lcid, LCTYPE type)
{
    DWORD value = 0;
    EXPECT_EQ(GetLocaleInfoW(lcid, type | LOCALE_RETURN_NUMBER, reinterpret_cast<WCHAR*>(&value), 2), 2);
    return value;
}

TEST(Locale, TellsHowNumbersAreWritten)
{
    // No-break spaces. Editions of the locale data differ in the width of the French one.
    const Wide kSpace(1, WCHAR(0xA0)), kNarrowSpace(1, WCHAR(0x202F));
    const struct {
        LCID lcid;
        Wide decimal, thousand, grouping;
    } kCases[] = {
        {kEnUs, TEXT("."), TEXT(","), TEXT("3;0")}, {kDeDe, TEXT(","), TEXT("."), TEXT("3;0")},
        {kFrFr, TEXT(","), kSpace, TEXT("3;0")},    {kPlPl, TEXT(","), kSpace, TEXT("3;0")},
        {kJaJp, TEXT("."), TEXT(","), TEXT("3;0")}, {kHiIn, TEXT("."), TEXT(","), TEXT("3;2;0")},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(Item(c.lcid, LOCALE_SDECIMAL), c.decimal) << c.lcid;
        const Wide thousand = Item(c.lcid, LOCALE_STHOUSAND);
        EXPECT_EQ(thousand == kNarrowSpace ? kSpace : thousand, c.thousand) << c.lcid << ' ' << ToAscii(thousand);
        EXPECT_EQ(Item(c.lcid, LOCALE_SGROUPING), c.grouping) << c.lcid;
        EXPECT_EQ(Item(c.lcid, LOCALE_SNEGATIVESIGN), TEXT("-")) << c.lcid;
        EXPECT_EQ(Item(c.lcid, LOCALE_STIME), TEXT(":")) << c.lcid;
        EXPECT_EQ(Number(c.lcid, LOCALE_ILZERO), 1u) << c.lcid;
        EXPECT_EQ(Number(c.lcid, LOCALE_INEGNUMBER), 1u) << c.lcid;
    }
    EXPECT_EQ(Item(kDeDe, LOCALE_SLIST), TEXT(";"));
}

TEST(Locale, TellsItsNames)
{
    const struct {
        LCID lcid;
        const WCHAR *abbreviation, *english, *iso, *country, *name;
        DWORD telephone, codePage;
    } kCases[] = {
        {0x0409, TEXT("ENU"), TEXT("English"), TEXT("en"), TEXT("US"), TEXT("en-US"), 1, 1252},
        {0x0407, TEXT("DEU"), TEXT("German"), TEXT("de"), TEXT("DE"), TEXT("de-DE"), 49, 1252},
        {0x0411, TEXT("JPN"), TEXT("Japanese"), TEXT("ja"), TEXT("JP"), TEXT("ja-JP"), 81, 932},
        {0x0415, TEXT("PLK"), TEXT("Polish"), TEXT("pl"), TEXT("PL"), TEXT("pl-PL"), 48, 1250},
        {0x0416, TEXT("PTB"), TEXT("Portuguese"), TEXT("pt"), TEXT("BR"), TEXT("pt-BR"), 55, 1252},
        {0x0419, TEXT("RUS"), TEXT("Russian"), TEXT("ru"), TEXT("RU"), TEXT("ru-RU"), 7, 1251},
        {0x0404, TEXT("CHT"), TEXT("Chinese"), TEXT("zh"), TEXT("TW"), TEXT("zh-TW"), 886, 950},
        {0x0804, TEXT("CHS"), TEXT("Chinese"), TEXT("zh"), TEXT("CN"), TEXT("zh-CN"), 86, 936},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(Item(c.lcid, LOCALE_SABBREVLANGNAME), c.abbreviation);
        EXPECT_EQ(Item(c.lcid, LOCALE_SENGLANGUAGE).substr(0, Wide(c.english).size()), c.english);
        EXPECT_EQ(Item(c.lcid, LOCALE_SISO639LANGNAME), c.iso);
        EXPECT_EQ(Item(c.lcid, LOCALE_SISO3166CTRYNAME), c.country);
        EXPECT_EQ(Item(c.lcid, LOCALE_SNAME), c.name);
        EXPECT_EQ(Number(c.lcid, LOCALE_ICOUNTRY), c.telephone);
        EXPECT_EQ(Number(c.lcid, LOCALE_IDEFAULTANSICODEPAGE), c.codePage);
        EXPECT_EQ(Number(c.lcid, LOCALE_ILANGUAGE), c.lcid);
        EXPECT_FALSE(Item(c.lcid, LOCALE_SLANGUAGE).empty());
        EXPECT_TRUE(IsValidLocale(c.lcid, LCID_INSTALLED));
    }
    EXPECT_EQ(Number(kEnUs, LOCALE_IMEASURE), 1u);
    EXPECT_EQ(Number(kDeDe, LOCALE_IMEASURE), 0u);
}

TEST(Locale, RefusesWhatItDoesNotKnow)
{
    std::array<WCHAR, 32> out;
    EXPECT_EQ(GetLocaleInfoW(0xF3F3, LOCALE_SDECIMAL, out.data(), 32), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(GetLocaleInfoW(kEnUs, LOCALE_SENGLANGUAGE, out.data(), 3), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(GetLocaleInfoW(kEnUs, LOCALE_SDECIMAL | LOCALE_RETURN_NUMBER, out.data(), 32), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_FLAGS));
    EXPECT_FALSE(IsValidLocale(0xF3F3, LCID_INSTALLED));
}

TEST(Locale, OfAThreadIsItsOwn)
{
    const LCID before = GetThreadLocale();
    LCID inside = 0;
    std::thread([&] {
        EXPECT_TRUE(SetThreadLanguage(0x0407));
        inside = GetThreadLocale();
    }).join();
    EXPECT_EQ(inside, 0x0407u);
    EXPECT_EQ(GetThreadLocale(), before);
    EXPECT_FALSE(SetThreadLocale(0xF3F3));
    EXPECT_TRUE(SetThreadLocale(before));
    EXPECT_TRUE(IsValidLocale(GetUserDefaultLCID(), LCID_INSTALLED));
    EXPECT_TRUE(IsValidLocale(GetSystemDefaultLCID(), LCID_INSTALLED));
    EXPECT_NE(GetUserDefaultUILanguage(), 0);
    EXPECT_EQ(GetUserDefaultLangID(), LANGIDFROMLCID(GetUserDefaultLCID()));
}

std::string Formatted(const WCHAR* value, UINT digits, UINT grouping, UINT leadingZero = 1, UINT order = 1)
{
    WCHAR decimal[] = TEXT("."), thousand[] = TEXT(",");
    const NUMBERFMTW format = {digits, leadingZero, grouping, decimal, thousand, order};
    std::array<WCHAR, 128> out;
    if (GetNumberFormatW(kEnUs, 0, value, &format, out.data(), int(out.size())) == 0)
        return "error " + std::to_string(GetLastError());
    return ToAscii(out.data());
}

TEST(NumberFormat, GroupsAndRounds)
{
    const struct {
        const WCHAR* value;
        UINT digits, grouping;
        const char* expected;
    } kCases[] = {
        {TEXT("1234567"), 0, 3, "1,234,567"}, {TEXT("1234567"), 2, 3, "1,234,567.00"},
        {TEXT("1234567"), 0, 0, "1234567"},   {TEXT("1234567"), 0, 32, "12,34,567"},
        {TEXT("123"), 0, 3, "123"},           {TEXT("-1234"), 0, 3, "-1,234"},
        {TEXT("0.005"), 2, 3, "0.01"},        {TEXT("0.995"), 2, 3, "1.00"},
        {TEXT("-0.05"), 2, 3, "-0.05"},       {TEXT("00012"), 0, 3, "12"},
        {TEXT("1.5"), 3, 3, "1.500"},         {TEXT("99999999999999999999"), 0, 3, "99,999,999,999,999,999,999"},
    };
    for (const auto& c : kCases)
        EXPECT_EQ(Formatted(c.value, c.digits, c.grouping), c.expected) << ToAscii(c.value);
    EXPECT_EQ(Formatted(TEXT("0.5"), 1, 3, 0), ".5");
    const char* const kOrders[] = {"(1)", "-1", "- 1", "1-", "1 -"};
    for (UINT order = 0; order < 5; ++order)
        EXPECT_EQ(Formatted(TEXT("-1"), 0, 3, 1, order), kOrders[order]);
}

TEST(NumberFormat, RefusesWhatIsNoPlainNumber)
{
    for (const WCHAR* value : {TEXT("1e5"), TEXT("1,5"), TEXT(" 1"), TEXT("+1"), TEXT("1.2.3"), TEXT("1-"), TEXT("x")})
        EXPECT_EQ(Formatted(value, 0, 3), "error 87") << ToAscii(value);
    std::array<WCHAR, 8> out;
    WCHAR sign[] = TEXT(".");
    const NUMBERFMTW format = {2, 1, 3, sign, sign, 1};
    EXPECT_EQ(GetNumberFormatW(kEnUs, 0, TEXT("12345678"), &format, out.data(), 8), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(GetNumberFormatW(kEnUs, 0, TEXT("1234"), &format, nullptr, 0), 9);   // "1.234.00" and its end
}

Wide ToWide(UINT codePage, const std::string& text)
{
    std::array<WCHAR, 64> out;
    const int length = MultiByteToWideChar(codePage, 0, text.data(), int(text.size()), out.data(), 64);
    EXPECT_EQ(length, MultiByteToWideChar(codePage, 0, text.data(), int(text.size()), nullptr, 0));
    return Wide(out.data(), size_t(length));
}

std::string ToBytes(UINT codePage, const Wide& text)
{
    std::array<char, 64> out;
    const int length =
        WideCharToMultiByte(codePage, 0, text.data(), int(text.size()), out.data(), 64, nullptr, nullptr);
    return std::string(out.data(), size_t(length));
}

TEST(CodePage, ConvertsThereAndBack)
{
    const struct {
        UINT codePage;
        std::string bytes;
        Wide wide;
    } kCases[] = {
        {1252, "A\x80\xE4", {'A', 0x20AC, 0xE4}},
        {1250, "\xB3", {0x142}},
        {1251, "\xDF", {0x42F}},
        {932, "\x93\xFA", {0x65E5}},
        {936, "\xD6\xD0", {0x4E2D}},
        {949, "\xB0\xA1", {0xAC00}},
        {950, "\xA4\xA4", {0x4E2D}},
        {CP_UTF8, "\xC3\xA4\xF0\x9F\x8E\xB5", {0xE4, 0xD83C, 0xDFB5}},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(ToAscii(ToWide(c.codePage, c.bytes)), ToAscii(c.wide)) << c.codePage;
        EXPECT_EQ(ToBytes(c.codePage, c.wide), c.bytes) << c.codePage;
        EXPECT_TRUE(IsValidCodePage(c.codePage));
    }
    EXPECT_TRUE(IsValidCodePage(GetACP()));
    EXPECT_EQ(ToWide(CP_ACP, "plain"), TEXT("plain"));
    EXPECT_FALSE(IsValidCodePage(4711));
}

TEST(CodePage, CountsTheTerminatorOfAWholeText)
{
    std::array<WCHAR, 8> out;
    EXPECT_EQ(MultiByteToWideChar(1252, 0, "abc", -1, out.data(), 8), 4);
    EXPECT_EQ(out[3], 0);
    EXPECT_EQ(MultiByteToWideChar(1252, 0, "abcdefgh", -1, out.data(), 8), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(MultiByteToWideChar(4711, 0, "abc", -1, out.data(), 8), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, "a\xFF", 2, out.data(), 8), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_NO_UNICODE_TRANSLATION));
    EXPECT_EQ(ToWide(CP_UTF8, "a\xFF"), (Wide{'a', 0xFFFD}));
}

TEST(CodePage, SaysWhenACharacterHasNoPlace)
{
    const WCHAR text[] = {'a', 0x4E2D, 0};
    std::array<char, 8> out;
    BOOL used = FALSE;
    EXPECT_EQ(WideCharToMultiByte(1252, 0, text, -1, out.data(), 8, "#", &used), 3);
    EXPECT_STREQ(out.data(), "a#");
    EXPECT_TRUE(used);
    EXPECT_EQ(WideCharToMultiByte(1252, 0, TEXT("ab"), -1, out.data(), 8, nullptr, &used), 3);
    EXPECT_FALSE(used);
    EXPECT_EQ(WideCharToMultiByte(1252, 0, TEXT("abcdefgh"), -1, out.data(), 8, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INSUFFICIENT_BUFFER));
}

TEST(CodePage, TellsItsShape)
{
    CPINFO info;
    ASSERT_TRUE(GetCPInfo(1252, &info));
    EXPECT_EQ(info.MaxCharSize, 1u);
    ASSERT_TRUE(GetCPInfo(932, &info));
    EXPECT_EQ(info.MaxCharSize, 2u);
    EXPECT_FALSE(GetCPInfo(4711, &info));
    EXPECT_TRUE(IsDBCSLeadByteEx(932, 0x81));
    EXPECT_FALSE(IsDBCSLeadByteEx(932, 'A'));
    EXPECT_FALSE(IsDBCSLeadByteEx(932, 0xB1));   // half-width kana stand alone
    EXPECT_FALSE(IsDBCSLeadByteEx(1252, 0x81));
}

TEST(CodePage, DetectionStaysWithinItsRoom)
{
    const std::string text = "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE6\x96\x87";
    CodePageCandidate found[2] = {};
    const int count = DetectCodePages(text.data(), DWORD(text.size()), found, 2);
    ASSERT_LE(count, 2);
    for (int i = 0; i < count; ++i) {
        EXPECT_LE(found[i].confidence, 100);
        EXPECT_LE(found[i].documentPercent, 100);
        EXPECT_NE(found[i].codePage, 0u);
    }
    EXPECT_EQ(DetectCodePages(nullptr, 0, found, 2), 0);
}

TEST(Layout, IsRememberedForTheProcess)
{
    DWORD layout = 9;
    EXPECT_TRUE(SetProcessDefaultLayout(LAYOUT_RTL));
    EXPECT_TRUE(GetProcessDefaultLayout(&layout));
    EXPECT_EQ(layout, DWORD(LAYOUT_RTL));
    EXPECT_TRUE(SetProcessDefaultLayout(0));
    EXPECT_TRUE(GetProcessDefaultLayout(&layout));
    EXPECT_EQ(layout, 0u);
}

}   // namespace
