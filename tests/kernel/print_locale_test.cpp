// The same values in the locales of users: only separators and groups differ.

#include "kernel/international.h"
#include "kernel/number_format.h"
#include "tests/kernel/wide.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

struct Locale {
    LCID lcid;
    const char *point, *thousands;   // all that locale data of different ages give, parted by blanks
    DWORD grouping;
    const char* language;
};

constexpr char kAnySpace[] = "\xC2\xA0 \xE2\x80\xAF";

const Locale kLocales[] = {
    {0x0409, ".", ",", 3, "English"},      {0x0407, ",", ".", 3, "German"},   {0x040C, ",", kAnySpace, 3, "French"},
    {0x0415, ",", kAnySpace, 3, "Polish"}, {0x0411, ".", ",", 3, "Japanese"}, {0x0439, ".", ",", 32, "Hindi"},
};

// A text written for en-US with the separators of the locale.
std::string InLocale(std::string_view english)
{
    std::string out;
    for (const char c : english)
        out += c == ','   ? Narrow(Internationals().szThousand)
               : c == '.' ? Narrow(Internationals().szDecimal)
                          : std::string(1, c);
    return out;
}

class PrintLocale : public testing::TestWithParam<Locale> {
protected:
    void SetUp() override { ReadInternationals(GetParam().lcid); }
    std::string Grouped(const char* even, const char* uneven) const
    {
        return InLocale(GetParam().grouping == 32 ? uneven : even);
    }
};
INSTANTIATE_TEST_SUITE_P(, PrintLocale, testing::ValuesIn(kLocales),
                         [](const auto& row) { return std::string(row.param.language); });

TEST_P(PrintLocale, ItemsComeFromTheLocale)
{
    WCHAR text[kInatLanguage];
    EXPECT_EQ(QxGetInat(QXINAT_DECIMAL, text), 1);
    EXPECT_EQ(Narrow(text), GetParam().point);
    EXPECT_NE(std::string(GetParam().thousands).find(Narrow(Internationals().szThousand)), std::string::npos);
    EXPECT_EQ(Internationals().nGrouping, GetParam().grouping);
    EXPECT_EQ(Internationals().nGroupSize, 3u);
    EXPECT_EQ(QxGetInat(QXINAT_LANGUAGE, text), int32_t(GetParam().lcid));
    EXPECT_GT(QxGetInat(QXINAT_ENGLISH_LANGUAGE_NAME, text), 0);
    EXPECT_EQ(Narrow(text).substr(0, 4), std::string(GetParam().language).substr(0, 4));
    EXPECT_GT(QxGetInat(QXINAT_LANGUAGE_NAME, text), 0);
    EXPECT_GT(QxGetInat(QXINAT_COUNTRY, text), 0);
    EXPECT_EQ(QxGetInat(QXINAT_LIST, text), 1);
    EXPECT_EQ(QxGetInat(QXINAT_TIME, text), 1);
    EXPECT_EQ(QxGetInatN(QXINAT_ENGLISH_LANGUAGE_NAME, text, 3), 2);
    EXPECT_EQ(QxGetInat(77, text), 0);
    EXPECT_EQ(text[0], 0);
}

TEST_P(PrintLocale, FinishesIntegers)
{
    EXPECT_EQ(Print("$d", 1234567), Grouped("1,234,567", "12,34,567"));
    EXPECT_EQ(Print("$d", -44100), InLocale("-44,100"));
    EXPECT_EQ(Print("$12d|", 1234), "        " + InLocale("1,234") + "|");
    EXPECT_EQ(Print("$I64d", INT64_C(123456789012)), Grouped("123,456,789,012", "1,23,45,67,89,012"));
    EXPECT_EQ(Print("%d $u $d", 1234567, 999, 0), "1234567 999 0");
}

TEST_P(PrintLocale, FinishesDecimals)
{
    EXPECT_EQ(Print("$.2f", 1234567.891), Grouped("1,234,567.89", "12,34,567.89"));
    EXPECT_EQ(Print("$g", 1234.25), InLocale("1234.25"));
    EXPECT_EQ(Print("%.2z", -123456), InLocale("-1234.56"));
    EXPECT_EQ(Print("$.2z", -123456), InLocale("-1,234.56"));
    EXPECT_EQ(Print("$.2z", -5), InLocale("-0.05"));
    EXPECT_EQ(Print("$(1234567.5)"), Grouped("1,234,567.5", "12,34,567.5"));
    EXPECT_EQ(Print("%f", 1234.5), "1234.500000");
    EXPECT_EQ(Print("1%*5"), InLocale("1.5"));
}

TEST_P(PrintLocale, KeepsWhatStandsAroundTheNumber)
{
    static constexpr struct {
        const char *plain, *grouped;
    } kCases[] = {
        {"  0012345", "  0012,345"},
        {"+1234.5", "+1,234.5"},
        {"0", "0"},
        {"000", "000"},
        {"12345  ", "12,345  "},
        {"0.25", "0.25"},
        {"00.25", "00.25"},
        {"-inf", "-inf"},
        {"", ""},
        {"-", "-"},
    };
    for (const auto& c : kCases) {
        WCHAR out[64];
        const int32_t length = QxFormatGroupDecimalNumber(Widen(c.plain).c_str(), out, 64, -1);
        EXPECT_EQ(size_t(length), WideView(out).size());
        EXPECT_EQ(Narrow(out), InLocale(c.grouped));
    }
}

Printed PrintAny(const char* format, DWORD capacity)
{
    return std::string_view(format).ends_with('s') ? PrintInto(capacity, format, TEXT("caf\x00E9"))
           : std::string_view("eEfgG").find(format[std::strlen(format) - 1]) != std::string_view::npos
               ? PrintInto(capacity, format, -1234567.5)
               : PrintInto(capacity, format, INT64_C(-1234567));
}

// How many characters of UTF-8 stand in the text: the unit in which a budget counts.
size_t Characters(std::string_view text)
{
    return size_t(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

TEST_P(PrintLocale, KeepsEveryBudgetInEveryDirective)
{
    for (const char* const format :
         {"%!,",  "$!.",  "%!:",   "%&:",   "$&.", "%*",   "$,",   "%:",   "%d", "$i",           "$u",
          "$12d", "%05i", "$I64d", "%I64u", "%x",  "$X",   "%o",   "%e",   "$E", "%f",           "$.3f",
          "%g",   "$g",   "$G",    "%c",    "%s",  "$-9s", "%.2z", "$.2z", "$z", "$(1234567.5)", "$(SMPTE.Label.Drop)",
          "%%",   "$$",   "$%"}) {
        const Printed full = PrintAny(format, 512);
        ASSERT_EQ(full.hr, S_OK) << format;
        const size_t length = Characters(full.text);
        ASSERT_GT(length, 0u) << format;
        for (DWORD capacity = 1; capacity <= length + 1; ++capacity) {
            const Printed cut = PrintAny(format, capacity);
            EXPECT_EQ(Characters(cut.text), std::min<size_t>(capacity - 1, length)) << format << " in " << capacity;
            EXPECT_TRUE(full.text.starts_with(cut.text)) << format << " in " << capacity << ": " << cut.text;
            EXPECT_EQ(cut.hr == S_OK, capacity == 1 || capacity > length) << format << " in " << capacity;
        }
    }
}

TEST_P(PrintLocale, GivesNothingThatDoesNotFit)
{
    WCHAR out[16] = {'x'};
    const int32_t length = QxLongToTextN(1234567, out, 16, TRUE);
    ASSERT_GT(length, 8);
    EXPECT_EQ(QxLongToTextN(1234567, out, DWORD(length + 1), TRUE), length);
    EXPECT_EQ(QxLongToTextN(1234567, out, DWORD(length), TRUE), 0);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(QxDWordToTextN(7, out, 1, FALSE), 0);
    EXPECT_EQ(QxFormatGroupDecimalNumber(TEXT("2.345"), out, 16, 1), 3);
    EXPECT_EQ(Narrow(out), InLocale("2.3"));
}

}   // namespace
