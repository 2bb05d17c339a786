#include "kernel/number_format.h"

#include "kernel/international.h"
#include "kernel/text_output.h"

#include <array>
#include <charconv>

namespace {

constexpr size_t kNumberChars = 512;      // longest number that is finished; a longer text is copied
constexpr size_t kPlatformDecimals = 9;   // the platform formats no more; further decimals are written as they stand
constexpr size_t kFinishedChars = 1536;   // a separator of several characters for every second digit
constexpr size_t kUnboundedChars = 64;

// A text taken apart. The number is an optional "-", digits, and decimals behind a ".".
struct NumberText {
    WideView prefix, sign, whole, decimals, rest;

    bool IsNumber() const { return whole.size() + decimals.size() > 0; }
};

size_t CountDigits(WideView text)
{
    size_t n = 0;
    while (n < text.size() && IsDigit(text[n]))
        ++n;
    return n;
}

WideView TakeFront(WideView& text, size_t n)
{
    const WideView front = text.substr(0, n);
    text.remove_prefix(front.size());
    return front;
}

size_t PrefixLength(WideView text)
{
    size_t n = 0;
    for (; n < text.size(); ++n) {
        const WCHAR c = text[n];
        const bool zeroBeforePoint = c == '0' && n + 1 < text.size() && text[n + 1] == '.';
        if (c == '-' || c == '.' || (IsDigit(c) && c != '0') || zeroBeforePoint)
            break;
    }
    return n;
}

NumberText SplitNumber(WideView text)
{
    NumberText parts;
    parts.prefix = TakeFront(text, PrefixLength(text));
    parts.sign = TakeFront(text, text.starts_with(WCHAR('-')) ? 1 : 0);
    parts.whole = TakeFront(text, CountDigits(text));
    if (text.starts_with(WCHAR('.'))) {
        text.remove_prefix(1);
        parts.decimals = TakeFront(text, CountDigits(text));
    }
    parts.rest = text;
    return parts;
}

struct Finish {
    int32_t decimals;   // -1: as many as the text has
    bool decimalPoint, grouped;
};

// What the platform formats: the number with the decimals that it takes, terminated.
void PutPlain(const NumberText& parts, bool cutDecimals, WCHAR (&plain)[kNumberChars])
{
    TextOutput out(plain, kNumberChars - 1);
    out.Put(parts.sign);
    out.Put(parts.whole.empty() ? WideView(TEXT("0")) : parts.whole);
    if (!parts.decimals.empty()) {
        out.Put(TEXT("."));
        out.Put(cutDecimals ? parts.decimals.substr(0, kPlatformDecimals) : parts.decimals);
    }
    out.Terminate();
}

// The platform's text for the number, in finished; empty when it refuses.
WideView FormatByPlatform(const WCHAR* plain, const Finish& finish, size_t decimals, WCHAR (&finished)[kFinishedChars])
{
    const QXINTERNATIONALS& locale = Internationals();
    std::array<WCHAR, kInatText> point = {}, thousand = {};
    if (finish.decimalPoint)
        std::copy_n(locale.szDecimal, kInatText, point.data());
    std::copy_n(locale.szThousand, kInatText, thousand.data());
    NUMBERFMTW format = {};
    format.NumDigits = UINT(decimals);
    format.LeadingZero = locale.bLeadingZero;
    format.Grouping = finish.grouped ? locale.nGrouping : 0;
    format.lpDecimalSep = point.data();
    format.lpThousandSep = thousand.data();
    format.NegativeOrder = 1;   // -1.1
    const int length = GetNumberFormatW(locale.lcidUser, 0, plain, &format, finished, int(kFinishedChars));
    return length > 0 ? WideView(finished, size_t(length - 1)) : WideView();
}

bool PutFinished(WideView finished, TextOutput& out)
{
    const WideView negative = Internationals().szNegative;
    if (negative.empty() || !finished.starts_with(negative))
        return out.Put(finished);
    return out.Put(TEXT("-")) && out.Put(finished.substr(negative.size()));
}

bool PutNumber(const NumberText& parts, const Finish& finish, TextOutput& out)
{
    const size_t wanted = finish.decimals < 0 ? parts.decimals.size() : size_t(finish.decimals);
    const bool longTail = wanted > kPlatformDecimals;
    WCHAR plain[kNumberChars], finished[kFinishedChars];
    PutPlain(parts, longTail, plain);
    const WideView text = FormatByPlatform(plain, finish, std::min(wanted, kPlatformDecimals), finished);
    if (text.empty() || !PutFinished(text, out))
        return false;
    if (!longTail)
        return true;
    const WideView tail = parts.decimals.substr(std::min(parts.decimals.size(), kPlatformDecimals));
    const size_t tailLength = wanted - kPlatformDecimals, given = std::min(tail.size(), tailLength);
    return out.Put(tail.substr(0, given)) && out.Fill('0', tailLength - given);
}

int32_t FinishNumber(const WCHAR* pszText, WCHAR* pszOut, DWORD cchOut, const Finish& finish)
{
    if (!pszOut || cchOut == 0)
        return 0;
    const WideView text = pszText ? WideView(pszText) : WideView();
    const NumberText parts = SplitNumber(text);
    TextOutput out(pszOut, cchOut - 1);
    const bool number = parts.IsNumber() && text.size() < kNumberChars;
    const bool fits =
        number ? out.Put(parts.prefix) && PutNumber(parts, finish, out) && out.Put(parts.rest) : out.Put(text);
    out.Terminate();
    if (!fits)
        pszOut[0] = 0;
    return fits ? int32_t(out.Length()) : 0;
}

int32_t DigitsToText(WideView digits, WCHAR* pszOut, DWORD cchOut, BOOL bGroup)
{
    if (!pszOut || cchOut < 2)
        return 0;
    if (bGroup)
        return QxFormatNumber(digits.data(), pszOut, cchOut);
    TextOutput out(pszOut, cchOut - 1);
    const bool fits = out.Put(digits);
    out.Terminate();
    if (!fits)
        pszOut[0] = 0;
    return fits ? int32_t(out.Length()) : 0;
}

int32_t ValueToText(int64_t value, WCHAR* pszOut, DWORD cchOut, BOOL bGroup)
{
    std::array<char, 24> digits;
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    std::array<WCHAR, digits.size() + 1> plain = {};   // terminated
    std::copy(static_cast<const char*>(digits.data()), end, plain.data());
    return DigitsToText({plain.data(), size_t(end - digits.data())}, pszOut, cchOut, bGroup);
}

}   // namespace

int32_t QxFormatNumber(const WCHAR* pszText, WCHAR* pszOut, DWORD cchOut)
{
    return FinishNumber(pszText, pszOut, cchOut, {0, false, true});
}

int32_t QxFormatDecimalNumber(const WCHAR* pszText, WCHAR* pszOut, DWORD cchOut)
{
    return FinishNumber(pszText, pszOut, cchOut, {-1, true, false});
}

int32_t QxFormatGroupDecimalNumber(const WCHAR* pszText, WCHAR* pszOut, DWORD cchOut, int32_t nDecimals)
{
    return FinishNumber(pszText, pszOut, cchOut, {nDecimals, true, true});
}

int32_t QxLongToText(LONG lValue, WCHAR* pszOut, BOOL bGroup)
{
    return ValueToText(lValue, pszOut, kUnboundedChars, bGroup);
}

int32_t QxLongToTextN(LONG lValue, WCHAR* pszOut, DWORD cchOut, BOOL bGroup)
{
    return ValueToText(lValue, pszOut, cchOut, bGroup);
}

int32_t QxDWordToText(DWORD dwValue, WCHAR* pszOut, BOOL bGroup)
{
    return ValueToText(dwValue, pszOut, kUnboundedChars, bGroup);
}

int32_t QxDWordToTextN(DWORD dwValue, WCHAR* pszOut, DWORD cchOut, BOOL bGroup)
{
    return ValueToText(dwValue, pszOut, cchOut, bGroup);
}
