#include "kernel/international.h"
#include "kernel/result.h"
#include "tests/kernel/wide.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>

namespace {

constexpr LCID kEnglishUs = 0x0409;

class PrintTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(CreateTokenTable(), S_OK);
        ReadInternationals(kEnglishUs);
    }
    void TearDown() override { DestroyTokenTable(); }
};

TEST_F(PrintTest, CopiesWhatIsNoDirective)
{
    static constexpr struct {
        const char *format, *text;
    } kCases[] = {
        {"", ""},
        {"plain text", "plain text"},
        {"$$ %% $%", "$ % %"},
        {"50%%", "50%"},
        {"%", "%"},
        {"$", "$"},
        {"a%", "a%"},
        {"%5", "%5"},
        {"$ 12.h", "$ 12.h"},
        {"%!x", "%!x"},
        {"$&", "$&"},
        {"%!", "%!"},
        {"tail $", "tail $"},
        {"%%d", "%d"},
        {"$$(m.b)", "$(m.b)"},
    };
    for (const auto& c : kCases)
        EXPECT_EQ(Print(c.format), c.text);
}

TEST_F(PrintTest, ConvertsIntegersInTheStandardWay)
{
    EXPECT_EQ(Print("%d %i %u", -44100, 0, -1), "-44100 0 4294967295");
    EXPECT_EQ(Print("%d", std::numeric_limits<int>::min()), "-2147483648");
    EXPECT_EQ(Print("[%5d][%-5d][%05d][%+d][% d]", 42, 42, -42, 42, 42), "[   42][42   ][-0042][+42][ 42]");
    EXPECT_EQ(Print("[%.4d][%6.3d][%-6.3d][%.0d]", 42, 42, 42, 0), "[0042][   042][042   ][]");
    EXPECT_EQ(Print("%x %X %o %#x %#X %#o %08x", 48879, 48879, 8, 255, 255, 8, 48879),
              "beef BEEF 10 0xff 0XFF 010 0000beef");
    EXPECT_EQ(Print("%I64d %I64u %I64x", INT64_MIN, UINT64_MAX, UINT64_MAX),
              "-9223372036854775808 18446744073709551615 ffffffffffffffff");
    EXPECT_EQ(Print("%I32d %Id %ld %lu %hd %hu", -5, -6, -7, 8, 0x18000, 0x18000), "-5 -6 -7 8 -32768 32768");
    EXPECT_EQ(Print("%d%%", 50), "50%");
}

TEST_F(PrintTest, ConvertsDoublesAsTheCLibraryDoes)
{
    const double values[] = {0.0,  -0.0,  1.0,    -2.5, 1.0 / 3.0, 9.9999995, 123456789.125,
                             1e-7, 1e300, 5e-324, 0.5,  1.5,       0.00002,   0.0002};
    const char* const specs[] = {"%f",  "%.0f",  "%.3f", "%12.4f", "%-12.4f|", "%+f",   "% f",   "%012.2f", "%#.0f",
                                 "%e",  "%.0e",  "%E",   "%14.3e", "%#.0e",    "%g",    "%.0g",  "%.10g",   "%G",
                                 "%#g", "%.17g", "%10g", "%.20f",  "%010.3g",  "%.50e", "%+.2E", "%.1100f"};
    for (const char* const spec : specs)
        for (const double value : values) {
            char expected[2048];
            std::snprintf(expected, sizeof expected, spec, value);
            EXPECT_EQ(PrintInto(2048, spec, value).text, expected) << spec;
        }
    EXPECT_EQ(Print("%f %5g %E", std::nan(""), HUGE_VAL, -HUGE_VAL), "nan   inf -INF");
    EXPECT_EQ(Print("$f|$010.1f", HUGE_VAL, -HUGE_VAL), "inf|      -inf");
}

TEST_F(PrintTest, ConvertsTexts)
{
    EXPECT_EQ(Print("%s|%5s|%-5s|%.2s", TEXT("abc"), TEXT("abc"), TEXT("abc"), TEXT("abc")), "abc|  abc|abc  |ab");
    EXPECT_EQ(Print("%c%c|%3c|$s", 'x', 0x20AC, 'y', TEXT("z")), "x\xE2\x82\xAC|  y|z");
    EXPECT_EQ(Print("[%c]", 0), "[]");
    EXPECT_EQ(Print("%hs %.1hs %ls %hc", "narrow", "narrow", TEXT("wide"), 'n'), "narrow n wide n");
    const WCHAR* const none = nullptr;
    EXPECT_EQ(Print("%s %.3s", none, none), "(null) (nu");
    const WCHAR unterminated[] = {'a', 'b', 'c'};
    EXPECT_EQ(Print("%.3s", unterminated), "abc");
}

TEST_F(PrintTest, OneTextEndsAt1024CharactersWhereNothingBoundsIt)
{
    const Wide text(3000, 'x');
    std::vector<WCHAR> buffer(4096);
    EXPECT_EQ(QxPrintF(buffer.data(), TEXT("%s"), text.c_str()), 1024);
    EXPECT_EQ(PrintInto(4096, "%s", text.c_str()).text.size(), 3000u);
}

TEST_F(PrintTest, FinishesNumbersForTheLocale)
{
    EXPECT_EQ(Print("$d $i $u %d", 44100, -1234567, -1, 44100), "44,100 -1,234,567 4,294,967,295 44100");
    EXPECT_EQ(Print("$d Hz", 44100), "44,100 Hz");
    EXPECT_EQ(Print("[$8d][$-8d][$08d][$+d]", 44100, 44100, 44100, 44100),
              "[   44,100][44,100   ][00044,100][+44,100]");
    EXPECT_EQ(Print("$5d", 7), "    7");
    EXPECT_EQ(Print("$d $d", 0, 999), "0 999");
    EXPECT_EQ(Print("$I64d $I64u", INT64_C(-1234567890123), UINT64_MAX),
              "-1,234,567,890,123 18,446,744,073,709,551,615");
    EXPECT_EQ(Print("$x $X $o", 65535, 65535, 8), "ffff FFFF 10");
    EXPECT_EQ(Print("$f $.2f $.0f $10.1f", 1234.5, -1234.567, 1234.5, 1234.56),
              "1,234.500000 -1,234.57 1,234     1,234.6");
    EXPECT_EQ(Print("$g $g $G $e", 1234.5, 1e20, 1e20, 1.5), "1234.5 1e+20 1E+20 1.500000e+00");
    EXPECT_EQ(Print("$.12f", 1234.123456789012), "1,234.123456789012");
}

TEST_F(PrintTest, PlacesImpliedDecimals)
{
    EXPECT_EQ(Print("$.1z %.1z $.2z %.2z", 1234, 1234, -5, 123456), "123.4 123.4 -0.05 1234.56");
    EXPECT_EQ(Print("$.2z", 123456789), "1,234,567.89");
    EXPECT_EQ(Print("%z $z %5z $.0z", 1234, 1234, 12, 1234), "1234 1,234    12 1,234");
    EXPECT_EQ(Print("$.9z $.11z", 5, 5), "0.000000005 0.00000000005");
}

TEST_F(PrintTest, PrintsSeparatorsWithoutAnArgument)
{
    EXPECT_EQ(Print("%d%*%d", 1, 2), "1.2");
    EXPECT_EQ(Print("%02u$:%02u$:%02u$*%03u", 1, 2, 3, 4), "01:02:03.004");
    EXPECT_EQ(Print("$d Hz$, %d Bit$, %s", 48000, 16, TEXT("Mono")), "48,000 Hz, 16 Bit, Mono");
    EXPECT_EQ(Print("$!:$!.%!,|$&:%&.", 0), ":.,|..");
    EXPECT_EQ(Print("%17l*|%-3:"), ".|:");
}

TEST_F(PrintTest, PassesOverWhatIsNoPartOfASpecification)
{
    EXPECT_EQ(Print("%p%d|%n%S%C%i", 7, 8), "7|8");
    EXPECT_EQ(Print("%nd %Sd", 1, 2), "1 2");
    EXPECT_EQ(Print("%$5d|", 3), "    3|");
}

TEST_F(PrintTest, GroupsNumbersInTheFormat)
{
    EXPECT_EQ(Print("$(1234567.5) $(-1000) $(.5) $(1,234,567)"), "1,234,567.5 -1,000 0.5 1,234,567");
    EXPECT_EQ(Print("$(12 $(-x) $(12ab) $(1234"), "$(12 $(-x) $(12ab) $(1234");
}

TEST_F(PrintTest, ReplacesTokens)
{
    EXPECT_EQ(Print("$(AppName) starts"), "$(AppName) starts");
    EXPECT_TRUE(QxPrintF_AddToken(TEXT("AppName"), TEXT("One")));
    EXPECT_TRUE(QxPrintF_AddToken(TEXT("Zeta"), TEXT("")));
    EXPECT_TRUE(QxPrintF_AddToken(TEXT("Beta"), TEXT("$(AppName)%d")));
    EXPECT_EQ(Print("<$(appNAME)|$(Zeta)|$(Beta)>"), "<One||$(AppName)%d>");
    EXPECT_TRUE(QxPrintF_AddToken(TEXT("APPNAME"), TEXT("Two")));
    EXPECT_EQ(Print("$(AppName)"), "Two");
    EXPECT_TRUE(QxPrintF_DeleteToken(TEXT("appname")));
    EXPECT_FALSE(QxPrintF_DeleteToken(TEXT("appname")));
    EXPECT_EQ(Print("$(AppName)"), "$(AppName)");
    EXPECT_EQ(Print("$(Name $(Beta"), "$(Name $(Beta");
    EXPECT_FALSE(QxPrintF_AddToken(nullptr, TEXT("x")));
}

TEST_F(PrintTest, KnowsTheTokensOfTimeCodes)
{
    EXPECT_EQ(Print("$(SMPTE.Whole)$(SMPTE.NonDrop)$(SMPTE.Drop)$(m.b)$(b.t)"), ":.,..");
    EXPECT_EQ(Print("$(SMPTE.Label.NonDrop) $(SMPTE.Label.Drop)"), "hr:mn:sc.fr hr:mn:sc,fr");
    EXPECT_EQ(Print("$(SMPTE.Label.NonDrop.Full)"), "hours:minutes:seconds.frames");
    EXPECT_EQ(Print("$(SMPTE.Label.Drop.Full)"), "hours:minutes:seconds,frames");
    EXPECT_EQ(Print("$(MusicTime.Label) $(MusicTime.Label.Full)"), "ms.bt.tk measures.beats.ticks");
}

TEST_F(PrintTest, TokensEndWithTheTable)
{
    DestroyTokenTable();
    EXPECT_FALSE(QxPrintF_AddToken(TEXT("A"), TEXT("b")));
    EXPECT_FALSE(QxPrintF_DeleteToken(TEXT("A")));
    EXPECT_EQ(Print("$(m.b)"), "$(m.b)");
}

TEST_F(PrintTest, TokensServeManyThreads)
{
    QxPrintF_AddToken(TEXT("Fixed"), TEXT("always"));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            const Wide name = Widen("Token" + std::to_string(t));
            for (int i = 0; i < 200; ++i) {
                EXPECT_TRUE(QxPrintF_AddToken(name.c_str(), Widen(std::to_string(i)).c_str()));
                EXPECT_EQ(Print("$(Fixed) $(" + Narrow(name) + ")"), "always " + std::to_string(i));
                EXPECT_TRUE(QxPrintF_DeleteToken(name.c_str()));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(PrintTest, CutsAtTheBudgetAndSaysHow)
{
    const WCHAR* const text = TEXT("abcdefgh");
    EXPECT_EQ(PrintInto(5, "abcdefgh").text, "abcd");
    EXPECT_EQ(PrintInto(5, "abcdefgh").hr, S_OK);
    EXPECT_EQ(PrintInto(5, "%s", text).text, "abcd");
    EXPECT_EQ(PrintInto(5, "%s", text).hr, QX_E_TEXT_CUT);
    EXPECT_EQ(PrintInto(9, "%s", text).hr, S_OK);
    EXPECT_EQ(PrintInto(4, "%5d", 12345).hr, QX_E_TEXT_CUT);
    EXPECT_EQ(PrintInto(4, "%d", 12345).hr, QX_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(PrintInto(4, "$d", 12345).text, "12,");
    EXPECT_EQ(PrintInto(4, "$d", 12345).hr, QX_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(PrintInto(3, "x$(SMPTE.Label.Drop)").text, "xh");
    EXPECT_EQ(PrintInto(3, "x$(SMPTE.Label.Drop)").hr, QX_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(PrintInto(400, "$300d", 1).hr, QX_E_BUFFER_TOO_SMALL);   // a number is finished up to 259 characters
    WCHAR one = 'x';
    DWORD length = 7;
    EXPECT_EQ(QxCchPrintF(&one, 0, &length, TEXT("a")), E_INVALIDARG);
    EXPECT_EQ(one, 'x');
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(QxCchPrintF(&one, 0x80000000u, &length, TEXT("a")), E_INVALIDARG);
    EXPECT_EQ(QxCchPrintF(&one, 1, &length, TEXT("a")), S_OK);
    EXPECT_EQ(one, 0);
}

// At every capacity the text is the beginning of the full one, nothing is overrun, and the result is S_OK only when
// nothing was cut but literal text.
template <typename... Args>
void CheckEveryBudget(const char* format, Args... args)
{
    const Printed full = PrintInto(4096, format, args...);
    ASSERT_EQ(full.hr, S_OK) << format;
    for (DWORD capacity = 1; capacity <= full.text.size() + 2; ++capacity) {
        const Printed cut = PrintInto(capacity, format, args...);
        EXPECT_EQ(cut.text, full.text.substr(0, capacity - 1)) << format << " in " << capacity;
        EXPECT_TRUE(capacity <= full.text.size() || cut.hr == S_OK);
    }
}

TEST_F(PrintTest, KeepsEveryBudget)
{
    CheckEveryBudget("$d Hz$, %d Bit$, %s", 44100, 16, TEXT("Stereo"));
    CheckEveryBudget("a%%b$$c%20s|%-20s|%020d|%x", TEXT("t"), TEXT("u"), -5, 0xBEEF);
    CheckEveryBudget("%f $f %e $g $.3z %c $(1234567.5)", 1234.5, -1234567.5, 2.5, 0.25, -123456, 'q');
    CheckEveryBudget("$(MusicTime.Label.Full)$(none)$(open $I64d $!:%&.%*", INT64_C(-1234567890123));
}

TEST_F(PrintTest, SurvivesHostileFormats)
{
    const std::string digits(10000, '9');
    EXPECT_EQ(Print("%" + digits).size(), 10001u);
    EXPECT_EQ(Print("$(" + digits).size(), 10002u);
    EXPECT_EQ(Print("$(x" + digits + ")").size(), 10004u);
    EXPECT_EQ(Print("$(" + digits + ")").size(), 10003u);
    EXPECT_EQ(Print(std::string(10001, '%')).size(), 5001u);
    EXPECT_EQ(Print(std::string(10000, '$')).size(), 5000u);
    EXPECT_EQ(PrintInto(100, "%99999999999999999999d", 1).text, std::string(99, ' '));
    EXPECT_EQ(PrintInto(100, "%.99999999999999999999d", 1).text, std::string(99, '0'));
    EXPECT_EQ(PrintInto(10, "%.99999999999999999999f", 1.5).text, "1.5000000");
    EXPECT_EQ(PrintInto(10, "%2147483648s", TEXT("a")).text, std::string(9, ' '));
    EXPECT_EQ(PrintInto(10, "$.2147483647z", 1).text.substr(0, 4), "0.00");
}

TEST_F(PrintTest, ComposesInserts)
{
    WCHAR out[32];
    EXPECT_EQ(QxComposeStr(out, 32, TEXT("%2 of %1"), TEXT("one"), TEXT("two")), 10);
    EXPECT_EQ(Narrow(out), "two of one");
    EXPECT_EQ(QxComposeStr(out, 8, TEXT("%2 of %1"), TEXT("one"), TEXT("two")), 0);
    EXPECT_EQ(QxComposeStr(out, 0, TEXT("x")), 0);
}

}   // namespace
