// The print scanner on any format, with arguments that suit any directive: texts, whose addresses serve as numbers.

#include "kernel/international.h"
#include "kernel/print.h"
#include "kernel/wide_view.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr size_t kArguments = 48;   // each directive takes at most one, and begins with an introducer

void Start()
{
    CreateTokenTable();
    ReadInternationals(0x0439);   // uneven groups
    QxPrintF_AddToken(TEXT("AppName"), TEXT("$(m.b)%d"));
}

// UTF-16 from the bytes: plain ones as they are, so that the fuzzer finds directives, or pairs of them.
std::basic_string<WCHAR> MakeFormat(const uint8_t* data, size_t size, bool pairs)
{
    std::basic_string<WCHAR> format;
    size_t introducers = 0;
    for (size_t i = 0; i + (pairs ? 1 : 0) < size; i += pairs ? 2 : 1) {
        const auto unit = WCHAR(pairs ? data[i] | data[i + 1] << 8 : data[i]);
        introducers += unit == '%' || unit == '$';
        if (unit == 0 || introducers > kArguments)
            break;
        format += unit;
    }
    return format;
}

void Require(bool held)
{
    if (!held)
        std::abort();
}

// The first arguments of either kind come from registers, the others from the stack in order: 8 doubles fill theirs.
#define QX_EIGHT text, text, text, text, text, text, text, text
void PrintWithin(DWORD capacity, const WCHAR* format, double number)
{
    constexpr WCHAR kGuard = 0x7E7E;
    const WCHAR* const text = TEXT("text \x00E9");
    std::vector<WCHAR> out(capacity + 1, kGuard);
    DWORD length = 0;
    const HRESULT hr =
        QxCchPrintF(out.data(), capacity, &length, format, number, -number, number * 1e9, number / 3, number, number,
                    number, number, QX_EIGHT, QX_EIGHT, QX_EIGHT, QX_EIGHT, QX_EIGHT, QX_EIGHT, QX_EIGHT);
    Require(out[capacity] == kGuard);
    if (capacity == 0)
        return Require(hr == E_INVALIDARG);
    Require(length < capacity && out[length] == 0);
}

}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool started = (Start(), true);
    if (!started || size < 12)
        return 0;
    double number;
    std::memcpy(&number, data, sizeof number);
    const DWORD capacity = data[8] | (data[9] & 15) << 8;
    const auto format = MakeFormat(data + 11, size - 11, (data[10] & 1) != 0);
    PrintWithin(capacity, format.c_str(), number);
    PrintWithin(DWORD(format.size() + 1), format.c_str(), number);
    return 0;
}
