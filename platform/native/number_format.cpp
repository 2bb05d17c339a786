#include "platform/native/locale_name.h"
#include "platform/native/refusal.h"
#include "platform/native/wide_text.h"

#include <winnls.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr UINT kMaxDecimals = 9, kMaxGrouping = 9999, kMaxNegativeOrder = 4;

// A plain number taken apart. Leading zeros of the whole part are gone; zero has an empty one.
struct PlainNumber {
    bool negative = false;
    WideString whole, decimals;
};

bool IsDigit(WCHAR c)
{
    return c >= '0' && c <= '9';
}

bool Parse(WideView text, PlainNumber& number)
{
    if (!text.empty() && text.front() == '-') {
        number.negative = true;
        text.remove_prefix(1);
    }
    const size_t point = std::min(text.find(u'.'), text.size());
    number.whole = text.substr(0, point);
    number.decimals = text.substr(std::min(point + 1, text.size()));
    if (number.whole.empty() && number.decimals.empty())
        return false;
    return std::ranges::all_of(number.whole, IsDigit) && std::ranges::all_of(number.decimals, IsDigit);
}

// Adds one to a row of digits; true when it ran over and is all zeros now.
bool Increment(WideString& digits)
{
    for (auto i = digits.rbegin(); i != digits.rend(); ++i) {
        if (*i != '9') {
            ++*i;
            return false;
        }
        *i = '0';
    }
    return true;
}

void RoundTo(PlainNumber& number, size_t decimals)
{
    const bool up = number.decimals.size() > decimals && number.decimals[decimals] >= '5';
    number.decimals.resize(decimals, u'0');
    if (up && Increment(number.decimals) && Increment(number.whole))
        number.whole.insert(0, 1, u'1');
    number.whole.erase(0, std::min(number.whole.find_first_not_of(u'0'), number.whole.size()));
}

bool IsZero(const PlainNumber& number)
{
    return number.whole.empty() && number.decimals.find_first_not_of(u'0') == WideString::npos;
}

// The digits of the grouping are the sizes of the groups from the point on; the last repeats, and a last 0 ends them.
WideString Grouped(const WideString& digits, UINT grouping, WideView separator)
{
    const std::string sizes = std::to_string(grouping);
    WideString out;
    size_t end = digits.size(), next = 0;
    while (true) {
        const size_t size = size_t(sizes[next] - '0');
        if (size == 0 || size >= end)
            break;
        out.insert(0, digits, end - size, size);
        out.insert(0, separator);
        end -= size;
        next = std::min(next + 1, sizes.size() - 1);
    }
    return out.insert(0, digits, 0, end);
}

WideString Signed(const WideString& number, UINT order)
{
    switch (order) {
    case 0:
        return u"(" + number + u")";
    case 1:
        return u"-" + number;
    case 2:
        return u"- " + number;
    case 3:
        return number + u"-";
    default:
        return number + u" -";
    }
}

WideString Format(PlainNumber number, const NUMBERFMTW& format)
{
    RoundTo(number, format.NumDigits);
    const bool negative = number.negative && !IsZero(number);
    WideString out = Grouped(number.whole, format.Grouping, format.lpThousandSep);
    if (out.empty() && (format.LeadingZero || number.decimals.empty()))
        out = u"0";
    if (!number.decimals.empty())
        out += format.lpDecimalSep + number.decimals;
    return negative ? Signed(out, format.NegativeOrder) : out;
}

bool IsValid(const NUMBERFMTW& format)
{
    return format.NumDigits <= kMaxDecimals && format.LeadingZero <= 1 && format.Grouping <= kMaxGrouping &&
           format.NegativeOrder <= kMaxNegativeOrder && format.lpDecimalSep && format.lpThousandSep;
}

}   // namespace

int GetNumberFormatW(LCID lcid, DWORD dwFlags, LPCWSTR pszValue, const NUMBERFMTW* pFormat, LPWSTR pszOut, int cch)
{
    if (!pszValue || cch < 0 || (cch > 0 && !pszOut) || !pFormat || !IsValid(*pFormat) || LocaleName(lcid).empty())
        return Refuse<int>(ERROR_INVALID_PARAMETER);
    if (dwFlags)
        return Refuse<int>(ERROR_INVALID_FLAGS);   // a format and the locale's own settings exclude each other
    PlainNumber number;
    if (!Parse(pszValue, number))
        return Refuse<int>(ERROR_INVALID_PARAMETER);
    const WideString out = Format(std::move(number), *pFormat);
    const int needed = int(out.size()) + 1;
    if (cch == 0)
        return needed;
    if (cch < needed)
        return Refuse<int>(ERROR_INSUFFICIENT_BUFFER);
    std::memcpy(pszOut, out.c_str(), size_t(needed) * sizeof(WCHAR));
    return needed;
}
