#include "kernel/print_spec.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace {

constexpr int32_t kMaxNumber = std::numeric_limits<int32_t>::max();
// A double has at most 309 digits before the point and 1074 behind it; digits asked for beyond are zeros.
constexpr int32_t kExactDecimals = 1074;
using DigitBuffer = std::array<char, 309 + kExactDecimals + 16>;

int32_t AppendDigit(int32_t number, WCHAR digit)
{
    const int32_t value = digit - '0';
    return number > (kMaxNumber - value) / 10 ? kMaxNumber : number * 10 + value;
}

bool SetFlag(PrintSpec& spec, WCHAR c)
{
    switch (c) {
    case '-':
        return spec.left = true;
    case '+':
        return spec.plus = true;
    case ' ':
        return spec.blank = true;
    case '#':
        return spec.alternate = true;
    case '0':
        return spec.zero = true;
    default:
        return false;
    }
}

constexpr int BitsOf(PrintSize size)
{
    switch (size) {
    case PrintSize::kByte:
        return 8;
    case PrintSize::kShort:
        return 16;
    case PrintSize::k32:
        return 32;
    default:
        return 64;
    }
}

// The size prefix at the front of rest; gives its length, 0 when there is none.
size_t TakeSize(PrintSpec& spec, WideView rest)
{
    const auto next = [rest](size_t i) { return i < rest.size() ? rest[i] : WCHAR(0); };
    if (rest[0] == 'I') {
        const bool is64 = next(1) == '6' && next(2) == '4', is32 = next(1) == '3' && next(2) == '2';
        spec.size = is64 ? PrintSize::k64 : PrintSize::k32;
        return is64 || is32 ? 3 : 1;
    }
    if (rest[0] == 'h') {
        spec.narrow = true;
        spec.size = next(1) == 'h' ? PrintSize::kByte : PrintSize::kShort;
        return next(1) == 'h' ? 2 : 1;
    }
    if (rest[0] == 'l') {
        spec.size = next(1) == 'l' ? PrintSize::k64 : PrintSize::k32;
        return next(1) == 'l' ? 2 : 1;
    }
    return 0;
}

// A number taken apart for padding: sign or radix prefix, digits, zeros that stand between digits and tail.
struct NumberParts {
    std::string_view prefix, digits, tail, point;
    size_t leadingZeros = 0, trailingZeros = 0;

    size_t Length() const
    {
        return prefix.size() + leadingZeros + digits.size() + point.size() + trailingZeros + tail.size();
    }
};

bool PutNarrow(std::string_view text, TextOutput& out)
{
    bool fits = true;
    for (const char c : text)
        fits = out.Fill(WCHAR(static_cast<unsigned char>(c)), 1) && fits;
    return fits;
}

bool PutPadded(const PrintSpec& spec, NumberParts parts, bool zeroPad, TextOutput& out)
{
    size_t padding = spec.width > parts.Length() ? spec.width - parts.Length() : 0;
    if (zeroPad && spec.zero && !spec.left) {
        parts.leadingZeros += padding;
        padding = 0;
    }
    bool fits = spec.left || out.Fill(' ', padding);
    fits = PutNarrow(parts.prefix, out) && fits;
    fits = out.Fill('0', parts.leadingZeros) && fits;
    fits = PutNarrow(parts.digits, out) && fits;
    fits = PutNarrow(parts.point, out) && fits;
    fits = out.Fill('0', parts.trailingZeros) && fits;
    fits = PutNarrow(parts.tail, out) && fits;
    return (!spec.left || out.Fill(' ', padding)) && fits;
}

std::string_view SignOf(const PrintSpec& spec, bool negative)
{
    if (negative)
        return "-";
    return spec.plus ? "+" : spec.blank ? " " : "";
}

// part: a view into the buffer.
template <typename Buffer>
void MakeUpper(Buffer& buffer, std::string_view part)
{
    for (size_t i = 0; i < part.size(); ++i)
        if (char& c = buffer[size_t(part.data() - buffer.data()) + i]; c >= 'a' && c <= 'z')
            c = char(c - 'a' + 'A');
}

bool ConvertDigits(const PrintSpec& spec, std::string_view prefix, uint64_t value, int base, TextOutput& out)
{
    std::array<char, 24> buffer;
    char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, base).ptr;
    NumberParts parts = {prefix, {buffer.data(), size_t(end - buffer.data())}, {}, {}};
    if (spec.conversion == 'X')
        MakeUpper(buffer, parts.digits);
    if (spec.precision == 0 && value == 0)
        parts.digits = {};
    if (spec.precision > 0 && size_t(spec.precision) > parts.digits.size())
        parts.leadingZeros = size_t(spec.precision) - parts.digits.size();
    return PutPadded(spec, parts, spec.precision < 0, out);
}

struct FloatText {
    std::string_view mantissa, exponent;   // the exponent with its letter, or nothing
};

FloatText FormatFloat(double magnitude, std::chars_format form, int32_t precision, DigitBuffer& buffer)
{
    char* const begin = buffer.data();
    char* const end = std::to_chars(begin, begin + buffer.size(), magnitude, form, precision).ptr;
    const std::string_view text(begin, size_t(end - begin));
    const size_t split = form == std::chars_format::scientific ? text.find('e') : text.npos;
    return {text.substr(0, split), split == text.npos ? std::string_view() : text.substr(split)};
}

int ExponentOf(std::string_view exponent)   // "e+05"
{
    int value = 0;
    std::from_chars(exponent.data() + 2, exponent.data() + exponent.size(), value);
    return exponent[1] == '-' ? -value : value;
}

// With P significant digits: fixed for exponents from -4 up to P - 1, trailing zeros dropped.
FloatText FormatGeneral(const PrintSpec& spec, double magnitude, DigitBuffer& buffer)
{
    const int32_t asked = spec.precision < 0 ? 6 : std::max(spec.precision, 1);
    const int32_t digits = std::min(asked, kExactDecimals);
    FloatText text = FormatFloat(magnitude, std::chars_format::scientific, digits - 1, buffer);
    if (const int exponent = ExponentOf(text.exponent); exponent >= -4 && exponent < digits)
        text = FormatFloat(magnitude, std::chars_format::fixed, digits - 1 - exponent, buffer);
    if (!spec.alternate && text.mantissa.find('.') != text.mantissa.npos) {
        text.mantissa = text.mantissa.substr(0, text.mantissa.find_last_not_of('0') + 1);
        if (text.mantissa.ends_with('.'))
            text.mantissa.remove_suffix(1);
    }
    return text;
}

bool ConvertNonFinite(const PrintSpec& spec, double value, TextOutput& out)
{
    const bool upper = spec.conversion == 'E' || spec.conversion == 'G';
    const std::string_view name = std::isnan(value) ? (upper ? "NAN" : "nan") : (upper ? "INF" : "inf");
    return PutPadded(spec, {SignOf(spec, std::signbit(value)), name, {}, {}}, false, out);
}

}   // namespace

PrintSpec ParsePrintSpec(WideView inside, WCHAR conversion)
{
    PrintSpec spec;
    spec.conversion = conversion;
    spec.bare = inside.empty();
    int32_t width = 0;
    bool flags = true;
    for (size_t i = 0; i < inside.size();) {
        const WCHAR c = inside[i];
        if (const size_t size = TakeSize(spec, inside.substr(i)); size > 0) {
            i += size;
            continue;
        }
        ++i;
        if (flags && spec.precision < 0 && SetFlag(spec, c))
            continue;
        if (c == '.')
            spec.precision = 0;
        else if (IsDigit(c) && spec.precision >= 0)
            spec.precision = AppendDigit(spec.precision, c);
        else if (IsDigit(c))
            width = AppendDigit(width, c);
        flags = flags && !IsDigit(c);
    }
    spec.width = size_t(width);
    return spec;
}

bool ConvertSigned(const PrintSpec& spec, int64_t value, TextOutput& out)
{
    const int unused = 64 - BitsOf(spec.size);
    value = int64_t(uint64_t(value) << unused) >> unused;
    const uint64_t magnitude = value < 0 ? 0 - uint64_t(value) : uint64_t(value);
    return ConvertDigits(spec, SignOf(spec, value < 0), magnitude, 10, out);
}

bool ConvertUnsigned(const PrintSpec& spec, uint64_t value, TextOutput& out)
{
    value &= ~uint64_t(0) >> (64 - BitsOf(spec.size));
    if (spec.conversion == 'u')
        return ConvertDigits(spec, {}, value, 10, out);
    const bool octal = spec.conversion == 'o', prefixed = spec.alternate && value != 0;
    const std::string_view prefix = octal ? "0" : spec.conversion == 'X' ? "0X" : "0x";
    return ConvertDigits(spec, prefixed ? prefix : std::string_view(), value, octal ? 8 : 16, out);
}

bool ConvertDouble(const PrintSpec& spec, double value, TextOutput& out)
{
    if (!std::isfinite(value))
        return ConvertNonFinite(spec, value, out);
    DigitBuffer buffer;
    const bool general = spec.conversion == 'g' || spec.conversion == 'G';
    const int32_t decimals = spec.precision < 0 ? 6 : spec.precision;
    const auto form = spec.conversion == 'f' ? std::chars_format::fixed : std::chars_format::scientific;
    const double magnitude = std::fabs(value);
    const FloatText text = general ? FormatGeneral(spec, magnitude, buffer)
                                   : FormatFloat(magnitude, form, std::min(decimals, kExactDecimals), buffer);
    if (spec.conversion == 'E' || spec.conversion == 'G')
        MakeUpper(buffer, text.exponent);
    NumberParts parts = {SignOf(spec, std::signbit(value)), text.mantissa, text.exponent, {}};
    if (spec.alternate && text.mantissa.find('.') == text.mantissa.npos)
        parts.point = ".";
    if (!general && decimals > kExactDecimals)
        parts.trailingZeros = size_t(decimals - kExactDecimals);
    return PutPadded(spec, parts, true, out);
}

bool ConvertText(const PrintSpec& spec, WideView text, TextOutput& out)
{
    const size_t padding = spec.width > text.size() ? spec.width - text.size() : 0;
    bool fits = spec.left || out.Fill(' ', padding);
    fits = out.Put(text) && fits;
    return (!spec.left || out.Fill(' ', padding)) && fits;
}
