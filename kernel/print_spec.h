// One directive of the print dialect, taken apart, and the standard conversion of one value by it: what the
// platform's wide printf writes for it, the same on every platform and for every runtime locale.
#pragma once

#include "kernel/text_output.h"

#include <cstdint>

enum class PrintSize { kByte, kShort, k32, k64 };

struct PrintSpec {
    bool left = false, plus = false, blank = false, alternate = false, zero = false;
    size_t width = 0;
    int32_t precision = -1;   // -1: none given
    PrintSize size = PrintSize::k32;
    bool narrow = false;   // an h: 8-bit text for s and c
    WCHAR conversion = 0;
    bool bare = false;   // nothing between the introducer and the conversion

    bool Is64() const { return size == PrintSize::k64; }
};

// inside: what stands between the introducer and the conversion. Numbers out of range are held at the largest int32_t;
// what is no part of a directive is passed over.
PrintSpec ParsePrintSpec(WideView inside, WCHAR conversion);

// All return false when the text was cut.
bool ConvertSigned(const PrintSpec& spec, int64_t value, TextOutput& out);      // d i
bool ConvertUnsigned(const PrintSpec& spec, uint64_t value, TextOutput& out);   // u x X o
bool ConvertDouble(const PrintSpec& spec, double value, TextOutput& out);       // e E f g G
bool ConvertText(const PrintSpec& spec, WideView text, TextOutput& out);        // s c: width alone
