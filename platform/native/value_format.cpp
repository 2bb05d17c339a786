#include "platform/native/value_format.h"

#include <algorithm>
#include <cstring>

namespace {

enum class Size { normal, shorter, longer, wide64 };

struct Directive {
    bool left = false, alternate = false, zeros = false;
    size_t width = 0;
    size_t precision = 0;
    bool hasPrecision = false;
    Size size = Size::normal;
    WCHAR conversion = 0;
};

bool Take(WideView& text, WideView what)
{
    if (!text.starts_with(what))
        return false;
    text.remove_prefix(what.size());
    return true;
}

size_t TakeNumber(WideView& text)
{
    size_t number = 0;
    for (; !text.empty() && text.front() >= '0' && text.front() <= '9'; text.remove_prefix(1))
        number = std::min<size_t>(number * 10 + size_t(text.front() - '0'), 1u << 20);
    return number;
}

Size TakeSize(WideView& text)
{
    if (Take(text, u"I64") || Take(text, u"ll"))
        return Size::wide64;
    if (Take(text, u"I32"))
        return Size::normal;
    if (Take(text, u"I"))
        return sizeof(void*) == 8 ? Size::wide64 : Size::normal;
    if (Take(text, u"h"))
        return Size::shorter;
    return Take(text, u"l") || Take(text, u"w") ? Size::longer : Size::normal;
}

Directive TakeDirective(WideView& text)
{
    Directive d;
    for (;; text.remove_prefix(1)) {
        if (text.starts_with(u'-'))
            d.left = true;
        else if (text.starts_with(u'#'))
            d.alternate = true;
        else if (text.starts_with(u'0'))
            d.zeros = true;
        else
            break;
    }
    d.width = TakeNumber(text);
    if (Take(text, u".")) {
        d.hasPrecision = true;
        d.precision = TakeNumber(text);
    }
    d.size = TakeSize(text);
    if (!text.empty()) {
        d.conversion = text.front();
        text.remove_prefix(1);
    }
    return d;
}

WideString Digits(uint64_t value, unsigned base, bool upper)
{
    const char* const digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    WideString out;
    do {
        out.insert(out.begin(), WCHAR(digits[value % base]));
        value /= base;
    } while (value);
    return out;
}

// Sign or prefix stand before the zeros, blanks before both.
WideString Padded(const Directive& d, const WideString& prefix, WideString digits)
{
    if (digits.size() < d.precision)
        digits.insert(0, d.precision - digits.size(), u'0');
    const size_t taken = prefix.size() + digits.size();
    const size_t missing = d.width > taken ? d.width - taken : 0;
    if (d.left)
        return prefix + digits + WideString(missing, u' ');
    if (d.zeros)
        return prefix + WideString(missing, u'0') + digits;
    return WideString(missing, u' ') + prefix + digits;
}

uint64_t Unsigned(Size size, uint64_t argument)
{
    return size == Size::wide64 ? argument : size == Size::shorter ? uint16_t(argument) : uint32_t(argument);
}

int64_t Signed(Size size, uint64_t argument)
{
    return size == Size::wide64 ? int64_t(argument) : size == Size::shorter ? int16_t(argument) : int32_t(argument);
}

WideString SignedText(const Directive& d, int64_t value)
{
    const uint64_t magnitude = value < 0 ? 0 - uint64_t(value) : uint64_t(value);
    return Padded(d, value < 0 ? u"-" : u"", Digits(magnitude, 10, false));
}

WideString HexText(const Directive& d, uint64_t value)
{
    const bool upper = d.conversion == 'X';
    return Padded(d, d.alternate ? (upper ? u"0X" : u"0x") : u"", Digits(value, 16, upper));
}

WideString PointerText(uint64_t value)
{
    WideString digits = Digits(value, 16, true);
    digits.insert(0, 2 * sizeof(void*) - digits.size(), u'0');
    return digits;
}

WideString TextArgument(const Directive& d, uint64_t argument, bool narrow)
{
    if (!argument)
        return u"(null)";
    const size_t limit = d.hasPrecision ? d.precision : SIZE_MAX;
    if (narrow) {
        const char* const text = reinterpret_cast<const char*>(argument);
        return WideString(text, text + strnlen(text, limit));
    }
    const WCHAR* const text = reinterpret_cast<const WCHAR*>(argument);
    size_t length = 0;
    while (length < limit && text[length])
        ++length;
    return WideString(text, length);
}

WideString Blanked(const Directive& d, WideString text)
{
    const size_t missing = d.width > text.size() ? d.width - text.size() : 0;
    return text.insert(d.left ? text.size() : 0, missing, d.zeros && !d.left ? u'0' : u' ');
}

// "S" and "C" are narrow, and so are "s" and "c" with "h"; "l" makes all of them wide.
bool IsNarrow(const Directive& d)
{
    const bool other = d.conversion == 'S' || d.conversion == 'C';
    return d.size == Size::shorter || (other && d.size != Size::longer);
}

WideString Execute(const Directive& d, const NextArgument& next)
{
    switch (d.conversion) {
    case 'd':
    case 'i':
        return SignedText(d, Signed(d.size, next()));
    case 'u':
        return Padded(d, {}, Digits(Unsigned(d.size, next()), 10, false));
    case 'x':
    case 'X':
        return HexText(d, Unsigned(d.size, next()));
    case 'p':
        return Blanked(d, PointerText(next()));
    case 'c':
    case 'C':
        return Blanked(d, WideString(1, IsNarrow(d) ? WCHAR(uint8_t(next())) : WCHAR(next())));
    case 's':
    case 'S':
        return Blanked(d, TextArgument(d, next(), IsNarrow(d)));
    case 0:
        return {};
    default:
        return WideString(1, d.conversion);   // not a conversion: it stands for itself
    }
}

}   // namespace

WideString PrintValues(WideView format, const NextArgument& next, size_t limit)
{
    WideString out;
    while (!format.empty() && out.size() < limit) {
        const WCHAR c = format.front();
        format.remove_prefix(1);
        if (c != '%')
            out += c;
        else
            out += Execute(TakeDirective(format), next);
    }
    out.resize(std::min(out.size(), limit));
    return out;
}
