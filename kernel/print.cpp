#include "kernel/print.h"

#include "kernel/international.h"
#include "kernel/number_format.h"
#include "kernel/print_spec.h"
#include "kernel/print_tokens.h"
#include "kernel/result.h"
#include "kernel/text_output.h"

#include <array>
#include <cmath>
#include <limits>

namespace {

constexpr size_t kMaxSpec = 260;          // characters of a gathered directive, and of a token's name
constexpr size_t kScratchChars = 260;     // a number before it is finished
constexpr size_t kFinishedChars = 1024;   // the same with separators
constexpr size_t kPlatformText = 1024;    // where the platform's own print of a text ends
constexpr size_t kUnbounded = std::numeric_limits<size_t>::max() / sizeof(WCHAR);

constexpr WCHAR kConversions[] = TEXT("!&*,:EGXcdefgiosuxz");

// The arguments in order. A va_list may be an array, which only a member carries from call to call.
class Arguments {
public:
    explicit Arguments(va_list from) { va_copy(list, from); }
    ~Arguments() { va_end(list); }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    // NOLINTBEGIN(clang-analyzer-valist.Uninitialized): the constructor copies the list
    int32_t Take32() { return va_arg(list, int); }
    int64_t Take64() { return va_arg(list, long long); }
    double TakeDouble() { return va_arg(list, double); }
    const void* TakePointer() { return va_arg(list, const void*); }
    // NOLINTEND(clang-analyzer-valist.Uninitialized)

private:
    va_list list;
};

enum class Finishing { kNone, kGroup, kDecimal, kGroupDecimal };

class Scanner {
public:
    Scanner(WideView format, TextOutput& destination, bool bounded, va_list list)
        : rest(format), out(destination), textLimit(bounded ? kUnbounded : kPlatformText), arguments(list)
    {
    }

    // Each step runs against the room that is left; when there is none, the rest of the format is dropped.
    HRESULT Run()
    {
        while (!rest.empty() && out.Room() > 0)
            Step();
        return result;
    }

private:
    void Step();
    void Token();
    void NumberLiteral();
    void Directive();
    void Execute(WideView directive, bool dollar);
    bool Separator(WCHAR conversion);
    void Integer(const PrintSpec& spec, bool dollar);
    void Unsigned(const PrintSpec& spec);
    void Double(const PrintSpec& spec, bool dollar);
    void ImpliedDecimals(PrintSpec spec, bool dollar);
    void Character(const PrintSpec& spec);
    void String(const PrintSpec& spec);
    void Text(const PrintSpec& spec, WideView text);
    void Finished(const WCHAR* number, Finishing finishing, int32_t decimals = -1);
    template <typename Convert>
    void Number(Finishing finishing, Convert convert);

    void Literal(WideView text) { out.Put(text); }
    void Note(HRESULT hr)
    {
        if (SUCCEEDED(result))
            result = hr;
    }
    void PutWhole(WideView text)
    {
        if (!out.Put(text))
            Note(QX_E_BUFFER_TOO_SMALL);
    }
    WideView Take(size_t n)
    {
        const WideView front = rest.substr(0, n);
        rest.remove_prefix(front.size());
        return front;
    }

    WideView rest;
    TextOutput& out;
    const size_t textLimit;
    Arguments arguments;
    HRESULT result = S_OK;
};

void Scanner::Step()
{
    constexpr WCHAR kIntroducers[] = TEXT("$%");
    const size_t literal = std::min(rest.find_first_of(kIntroducers), rest.size());
    if (literal > 0)
        return Literal(Take(literal));
    const WCHAR next = rest.size() > 1 ? rest[1] : WCHAR(0);
    if (next == '%' || (next == '$' && rest[0] == '$'))
        return Literal(Take(2).substr(1));
    if (rest[0] == '$' && next == '(') {
        const WCHAR first = rest.size() > 2 ? rest[2] : WCHAR(0);
        return IsDigit(first) || first == '-' || first == '.' ? NumberLiteral() : Token();
    }
    Directive();
}

void Scanner::Token()
{
    const WideView window = rest.substr(2, kMaxSpec + 1);
    const size_t close = window.find(WCHAR(')'));
    if (close == window.npos)
        return Literal(Take(2 + std::min(window.size(), kMaxSpec)));
    const TokenResult found = PutToken(window.substr(0, close), out);
    const WideView whole = Take(2 + close + 1);
    if (found == TokenResult::kUnknown)
        PutWhole(whole);
    else if (found == TokenResult::kCut)
        Note(QX_E_BUFFER_TOO_SMALL);
}

void Scanner::NumberLiteral()
{
    constexpr WCHAR kLiteralChars[] = TEXT("0123456789.,");
    const WideView window = rest.substr(2, kScratchChars);
    const size_t length = std::min(window.find_first_not_of(kLiteralChars, 1), window.size());
    const WideView whole = Take(2 + length);
    if (!rest.starts_with(WCHAR(')')))
        return Literal(whole);
    rest.remove_prefix(1);
    // Commas part groups in the format and are made anew in the locale's way.
    std::array<WCHAR, kScratchChars + 1> number = {};
    std::copy_if(whole.begin() + 2, whole.end(), number.begin(), [](WCHAR c) { return c != ','; });
    Finished(number.data(), Finishing::kGroupDecimal);
}

void Scanner::Directive()
{
    const size_t end = rest.substr(0, kMaxSpec).find_first_of(kConversions, 1);
    if (end == rest.npos)
        return Literal(Take(kMaxSpec));
    const WideView directive = Take(end + 1);
    Execute(directive, directive.front() == '$');
}

void Scanner::Execute(WideView directive, bool dollar)
{
    const WCHAR conversion = directive.back();
    const PrintSpec spec = ParsePrintSpec(directive.substr(1, directive.size() - 2), conversion);
    switch (conversion) {
    case 'd':
    case 'i':
    case 'u':
        return Integer(spec, dollar);
    case 'x':
    case 'X':
    case 'o':
        return Unsigned(spec);
    case 'e':
    case 'E':
    case 'f':
    case 'g':
    case 'G':
        return Double(spec, dollar);
    case 'z':
        return ImpliedDecimals(spec, dollar);
    case 'c':
        return Character(spec);
    case 's':
        return String(spec);
    default:
        if (!Separator(conversion))
            Literal(directive);
    }
}

// False when the character behind ! or & names no separator: the directive is unfinished.
bool Scanner::Separator(WCHAR conversion)
{
    const QXINTERNATIONALS& locale = Internationals();
    const WCHAR next = rest.empty() ? WCHAR(0) : rest.front();
    const WCHAR* item = nullptr;
    if (conversion == '*')
        item = locale.szDecimal;
    else if (conversion == ',')
        item = locale.szList;
    else if (conversion == ':')
        item = locale.szTime;
    else if (conversion == '!')
        item = next == ','   ? locale.szSmpteDrop
               : next == '.' ? locale.szSmpteNonDrop
               : next == ':' ? locale.szSmpteWhole
                             : nullptr;
    else
        item = next == ':' ? locale.szMeasureBeat : next == '.' ? locale.szBeatTick : nullptr;
    if (!item)
        return false;
    if (conversion == '!' || conversion == '&')
        rest.remove_prefix(1);
    PutWhole(item);
    return true;
}

// A standard conversion: straight into the output, or into a scratch text that is finished then.
template <typename Convert>
void Scanner::Number(Finishing finishing, Convert convert)
{
    if (finishing == Finishing::kNone) {
        if (!convert(out))
            Note(QX_E_TEXT_CUT);
        return;
    }
    std::array<WCHAR, kScratchChars> scratch;
    TextOutput number(scratch.data(), scratch.size() - 1);
    if (!convert(number))
        Note(QX_E_BUFFER_TOO_SMALL);
    number.Terminate();
    Finished(scratch.data(), finishing);
}

void Scanner::Finished(const WCHAR* number, Finishing finishing, int32_t decimals)
{
    std::array<WCHAR, kFinishedChars> finished;
    int32_t length = 0;
    if (finishing == Finishing::kGroup)
        length = QxFormatNumber(number, finished.data(), DWORD(finished.size()));
    else if (finishing == Finishing::kDecimal)
        length = QxFormatDecimalNumber(number, finished.data(), DWORD(finished.size()));
    else
        length = QxFormatGroupDecimalNumber(number, finished.data(), DWORD(finished.size()), decimals);
    PutWhole({finished.data(), size_t(length)});
}

void Scanner::Integer(const PrintSpec& spec, bool dollar)
{
    const bool isSigned = spec.conversion != 'u';
    if (spec.bare) {
        std::array<WCHAR, kScratchChars> text;
        const int32_t value = arguments.Take32();
        const int32_t length = isSigned ? QxLongToTextN(value, text.data(), DWORD(text.size()), dollar)
                                        : QxDWordToTextN(DWORD(value), text.data(), DWORD(text.size()), dollar);
        return PutWhole({text.data(), size_t(length)});
    }
    const int64_t value = spec.Is64() ? arguments.Take64() : arguments.Take32();
    const uint64_t unsignedValue = spec.Is64() ? uint64_t(value) : uint32_t(value);
    Number(dollar ? Finishing::kGroup : Finishing::kNone, [&](TextOutput& to) {
        return isSigned ? ConvertSigned(spec, value, to) : ConvertUnsigned(spec, unsignedValue, to);
    });
}

void Scanner::Unsigned(const PrintSpec& spec)
{
    const uint64_t value = spec.Is64() ? uint64_t(arguments.Take64()) : uint32_t(arguments.Take32());
    Number(Finishing::kNone, [&](TextOutput& to) { return ConvertUnsigned(spec, value, to); });
}

void Scanner::Double(const PrintSpec& spec, bool dollar)
{
    const double value = arguments.TakeDouble();
    const auto convert = [&](TextOutput& to) { return ConvertDouble(spec, value, to); };
    const bool fixed = spec.conversion == 'f', general = spec.conversion == 'g' || spec.conversion == 'G';
    if (!dollar || !(fixed || general))
        return Number(Finishing::kNone, convert);
    if (fixed)
        return Number(Finishing::kGroupDecimal, convert);
    std::array<WCHAR, kScratchChars> scratch;
    TextOutput number(scratch.data(), scratch.size() - 1);
    convert(number);
    const bool hasExponent = number.Text().find_first_of(TEXT("eE")) != WideView::npos;
    Number(hasExponent ? Finishing::kNone : Finishing::kDecimal, convert);
}

// The value has as many decimals as the precision says; without one it is a plain integer.
void Scanner::ImpliedDecimals(PrintSpec spec, bool dollar)
{
    const int32_t value = arguments.Take32();
    if (spec.precision <= 0) {
        spec.conversion = 'd';
        return Number(dollar ? Finishing::kGroup : Finishing::kNone,
                      [&](TextOutput& to) { return ConvertSigned(spec, value, to); });
    }
    PrintSpec fixed;
    fixed.conversion = 'f';
    fixed.precision = spec.precision;
    std::array<WCHAR, kScratchChars> scratch;
    TextOutput number(scratch.data(), scratch.size() - 1);
    if (!ConvertDouble(fixed, value / std::pow(10.0, spec.precision), number))
        Note(QX_E_BUFFER_TOO_SMALL);
    number.Terminate();
    const int32_t decimals = std::min(spec.precision, int32_t(kScratchChars));
    Finished(scratch.data(), dollar ? Finishing::kGroupDecimal : Finishing::kDecimal, decimals);
}

void Scanner::Text(const PrintSpec& spec, WideView text)
{
    PrintSpec held = spec;
    held.width = std::min(spec.width, textLimit);
    if (!ConvertText(held, text.substr(0, textLimit), out))
        Note(QX_E_TEXT_CUT);
}

// A character of 0 prints nothing.
void Scanner::Character(const PrintSpec& spec)
{
    const auto value = WCHAR(arguments.Take32());
    WCHAR character = value;
    if (spec.narrow) {
        const char narrow = char(value);
        if (MultiByteToWideChar(CP_ACP, 0, &narrow, 1, &character, 1) != 1)
            character = '?';
    }
    Text(spec, WideView(&character, value == 0 ? 0 : 1));
}

// Never reads behind the precision: such a text need not be terminated.
template <typename Char>
size_t BoundedLength(const Char* text, size_t limit)
{
    size_t n = 0;
    while (n < limit && text[n] != 0)
        ++n;
    return n;
}

void Scanner::String(const PrintSpec& spec)
{
    const void* const pointer = arguments.TakePointer();
    const size_t precision = spec.precision < 0 ? kUnbounded : size_t(spec.precision);
    if (!pointer)
        return Text(spec, WideView(TEXT("(null)")).substr(0, precision));
    if (!spec.narrow) {
        const auto* const text = static_cast<const WCHAR*>(pointer);
        return Text(spec, {text, BoundedLength(text, precision)});
    }
    const auto* const narrow = static_cast<const char*>(pointer);
    const size_t bytes = BoundedLength(narrow, std::min(precision, kPlatformText));
    std::array<WCHAR, kPlatformText> wide;
    const int length =
        bytes == 0 ? 0 : MultiByteToWideChar(CP_ACP, 0, narrow, int(bytes), wide.data(), int(wide.size()));
    Text(spec, {wide.data(), size_t(std::max(length, 0))});
}

}   // namespace

int32_t QxPrintF(WCHAR* pszOut, const WCHAR* pszFormat, ...)
{
    va_list arguments;
    va_start(arguments, pszFormat);
    const int32_t length = QxVPrintF(pszOut, pszFormat, arguments);
    va_end(arguments);
    return length;
}

int32_t QxVPrintF(WCHAR* pszOut, const WCHAR* pszFormat, va_list arguments)
{
    if (!pszOut)
        return 0;
    TextOutput out(pszOut, kUnbounded);
    if (pszFormat)
        Scanner(pszFormat, out, false, arguments).Run();
    out.Terminate();
    return int32_t(out.Length());
}

HRESULT QxCchPrintF(WCHAR* pszOut, DWORD cchOut, DWORD* pcchWritten, const WCHAR* pszFormat, ...)
{
    va_list arguments;
    va_start(arguments, pszFormat);
    const HRESULT hr = QxNVPrintF(pszOut, cchOut, pcchWritten, pszFormat, arguments);
    va_end(arguments);
    return hr;
}

HRESULT QxNVPrintF(WCHAR* pszOut, DWORD cchOut, DWORD* pcchWritten, const WCHAR* pszFormat, va_list arguments)
{
    if (pcchWritten)
        *pcchWritten = 0;
    if (!pszOut || cchOut == 0 || cchOut > DWORD(std::numeric_limits<int32_t>::max()))
        return E_INVALIDARG;
    TextOutput out(pszOut, cchOut - 1);
    const HRESULT hr = pszFormat ? Scanner(pszFormat, out, true, arguments).Run() : E_INVALIDARG;
    out.Terminate();
    if (pcchWritten)
        *pcchWritten = DWORD(out.Length());
    return hr;
}

int32_t QxComposeStr(WCHAR* pszOut, DWORD cchOut, const WCHAR* pszFormat, ...)
{
    if (!pszOut || cchOut == 0)
        return 0;
    pszOut[0] = 0;
    va_list arguments;
    va_start(arguments, pszFormat);
    const DWORD length =
        pszFormat ? FormatMessageW(FORMAT_MESSAGE_FROM_STRING, pszFormat, 0, 0, pszOut, cchOut, &arguments) : 0;
    va_end(arguments);
    return int32_t(length);
}
