#include "tests/platform/wide.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>

namespace {

template <class... Values>
std::string Printed(const Wide& format, Values... values)
{
    std::array<WCHAR, 1025> out;
    const int length = wsprintfW(out.data(), format.c_str(), values...);
    const Wide text = out.data();
    EXPECT_EQ(size_t(length), text.size());
    return ToAscii(text);
}

TEST(Wsprintf, ConvertsEachKind)
{
    EXPECT_EQ(Printed(TEXT("%d|%5d|%-5d|%05d|%i"), 7, 42, 42, -42, -1), "7|   42|42   |-0042|-1");
    EXPECT_EQ(Printed(TEXT("%u|%x|%X|%#x|%08X"), -1, 255, 255, 255, 0xBEEF), "4294967295|ff|FF|0xff|0000BEEF");
    EXPECT_EQ(Printed(TEXT("%I64d|%I64x"), int64_t(-5000000000), int64_t(0x123456789A)), "-5000000000|123456789a");
    EXPECT_EQ(Printed(TEXT("%c%c|%3c"), 'a', 'b', 'c'), "ab|  c");
    EXPECT_EQ(Printed(TEXT("%s|%5s|%-5s|%.2s"), TEXT("abc"), TEXT("abc"), TEXT("abc"), TEXT("abc")),
              "abc|  abc|abc  |ab");
    EXPECT_EQ(Printed(TEXT("%S|%hs|%ls"), "narrow", "short", TEXT("long")), "narrow|short|long");
    EXPECT_EQ(Printed(TEXT("100%%")), "100%");
    EXPECT_EQ(Printed(TEXT("%.4d"), 12), "0012");
}

TEST(Wsprintf, CutsAtItsBuffer)
{
    const Wide half(800, WCHAR('x'));
    std::array<WCHAR, 1025> out;
    wsprintfW(out.data(), TEXT("%s%s"), half.c_str(), half.c_str());
    EXPECT_LE(Wide(out.data()).size(), 1024u);
    EXPECT_GE(Wide(out.data()).size(), 1023u);
}

DWORD Compose(WCHAR* out, DWORD size, const WCHAR* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_STRING, format, 0, 0, out, size, &arguments);
    va_end(arguments);
    return length;
}

TEST(FormatMessage, PlacesInsertsByNumber)
{
    std::array<WCHAR, 200> out;
    EXPECT_EQ(Compose(out.data(), 200, TEXT("%2 before %1, %2 again"), TEXT("one"), TEXT("two")), 25u);
    EXPECT_EQ(ToAscii(out.data()), "two before one, two again");
    Compose(out.data(), 200, TEXT("%1!d! and %2!04x!, 100%% %3!-4s!|"), 7, 255, TEXT("ab"));
    EXPECT_EQ(ToAscii(out.data()), "7 and 00ff, 100% ab  |");
    Compose(out.data(), 200, TEXT("a%nb%. %!c%0 hidden"));
    EXPECT_EQ(ToAscii(out.data()), "a\r\nb. !c");
}

TEST(FormatMessage, WritesNothingThatDoesNotFit)
{
    std::array<WCHAR, 4> out = {'k', 0};
    EXPECT_EQ(Compose(out.data(), 4, TEXT("%1"), TEXT("four")), 0u);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(Compose(out.data(), 4, TEXT("%1"), TEXT("six")), 3u);
}

TEST(FormatMessage, AllocatesWhenAskedAndTakesAnArray)
{
    const DWORD_PTR values[] = {DWORD_PTR(TEXT("x")), DWORD_PTR(5)};
    WCHAR* out = nullptr;
    const DWORD flags = FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_ARGUMENT_ARRAY;
    EXPECT_EQ(FormatMessageW(flags, TEXT("%1=%2!u!"), 0, 0, reinterpret_cast<WCHAR*>(&out), 0,
                             reinterpret_cast<va_list*>(const_cast<DWORD_PTR*>(values))),
              3u);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(ToAscii(out), "x=5");
    EXPECT_EQ(LocalFree(out), nullptr);
}

TEST(Strings, MeasureCopyAndJoin)
{
    std::array<WCHAR, 20> out;
    EXPECT_EQ(lstrlenW(nullptr), 0);
    EXPECT_EQ(lstrlenW(TEXT("abc")), 3);
    lstrcpyW(out.data(), TEXT("abc"));
    lstrcatW(out.data(), TEXT("def"));
    EXPECT_EQ(ToAscii(out.data()), "abcdef");
    lstrcpynW(out.data(), TEXT("abcdef"), 4);
    EXPECT_EQ(ToAscii(out.data()), "abc");
}

TEST(Strings, ChangeCaseOneUnitForOne)
{
    WCHAR text[] = {'a', 0xE4, 0x44F, 0x3C9, '1', 0};
    CharUpperW(text);
    EXPECT_EQ(Wide(text), (Wide{'A', 0xC4, 0x42F, 0x3A9, '1'}));
    CharLowerW(text);
    EXPECT_EQ(Wide(text), (Wide{'a', 0xE4, 0x44F, 0x3C9, '1'}));
    EXPECT_EQ(reinterpret_cast<UINT_PTR>(CharUpperW(reinterpret_cast<WCHAR*>(UINT_PTR('q')))), UINT_PTR('Q'));
    EXPECT_EQ(CharUpperBuffW(text, 2), 2u);
    EXPECT_EQ(Wide(text), (Wide{'A', 0xC4, 0x44F, 0x3C9, '1'}));
    EXPECT_EQ(CharLowerBuffW(text, 1), 1u);
    EXPECT_EQ(text[0], 'a');
}

int Sign(int value)
{
    return (value > 0) - (value < 0);
}

TEST(Comparison, OrdersAsADictionaryDoes)
{
    const WCHAR aUmlaut[] = {0xE4, 0};
    const struct {
        const WCHAR *a, *b;
        int order, ignoringCase;
    } kCases[] = {
        {TEXT("abc"), TEXT("abc"), 0, 0},
        {TEXT("abc"), TEXT("ABC"), -1, 0},
        {TEXT("b"), TEXT("A"), 1, 1},
        {TEXT("a"), TEXT("ab"), -1, -1},
        {TEXT("10"), TEXT("a"), -1, -1},
        {TEXT("_"), TEXT("1"), -1, -1},
        {aUmlaut, TEXT("b"), -1, -1},
        {aUmlaut, TEXT("a"), 1, 1},
        {TEXT(""), TEXT("a"), -1, -1},
        {TEXT("co-op"), TEXT("coop"), 1, 1},
        {TEXT("co-op"), TEXT("cop"), -1, -1},
        {TEXT("coop"), TEXT("co-opt"), -1, -1},
        {TEXT("App.Name"), TEXT("AppName"), -1, -1},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(Sign(lstrcmpW(c.a, c.b)), c.order) << ToAscii(c.a) << " - " << ToAscii(c.b);
        EXPECT_EQ(Sign(lstrcmpW(c.b, c.a)), -c.order) << ToAscii(c.b) << " - " << ToAscii(c.a);
        EXPECT_EQ(Sign(lstrcmpiW(c.a, c.b)), c.ignoringCase) << ToAscii(c.a) << " - " << ToAscii(c.b);
    }
    EXPECT_EQ(CompareStringW(0x0409, NORM_IGNORECASE, TEXT("abX"), 2, TEXT("ABY"), 2), CSTR_EQUAL);
    EXPECT_EQ(CompareStringW(0x0409, 0, nullptr, 2, TEXT("a"), 1), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PARAMETER));
}

}   // namespace
