#include "platform/codepage_detect.h"

#include <unicode/ucnv.h>
#include <unicode/ucsdet.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace {

struct Charset {
    std::string_view name;
    UINT codePage;
};
constexpr Charset kCharsets[] = {
    {"UTF-8", 65001},       {"UTF-16LE", 1200},     {"UTF-16BE", 1201},     {"Shift_JIS", 932},
    {"GB18030", 54936},     {"Big5", 950},          {"EUC-KR", 949},        {"EUC-JP", 51932},
    {"ISO-2022-JP", 50220}, {"KOI8-R", 20866},      {"ISO-8859-1", 28591},  {"ISO-8859-2", 28592},
    {"ISO-8859-5", 28595},  {"ISO-8859-7", 28597},  {"windows-1250", 1250}, {"windows-1251", 1251},
    {"windows-1252", 1252}, {"windows-1253", 1253}, {"windows-1254", 1254}, {"windows-1255", 1255},
    {"windows-1256", 1256},
};

UINT CodePageOf(std::string_view name)
{
    const auto row = std::ranges::find(kCharsets, name, &Charset::name);
    return row == std::end(kCharsets) ? 0 : row->codePage;
}

// Percent of the bytes that stand before the first one the charset has no character for.
int ReadablePercent(const char* name, const char* pText, DWORD cb)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open(name, &status), ucnv_close);
    if (!converter)
        return 0;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    const auto wide = std::make_unique<UChar[]>(size_t(cb) * 2 + 1);
    UChar* out = wide.get();
    const char* in = pText;
    ucnv_toUnicode(converter.get(), &out, wide.get() + size_t(cb) * 2 + 1, &in, pText + cb, nullptr, true, &status);
    return U_SUCCESS(status) ? 100 : int(std::min<int64_t>(99, (in - pText) * 100 / int64_t(cb)));
}

}   // namespace

int DetectCodePages(const char* pText, DWORD cb, CodePageCandidate* pCandidates, int count)
{
    if (!pText || cb == 0)
        return 0;
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UCharsetDetector, decltype(&ucsdet_close)> detector(ucsdet_open(&status), ucsdet_close);
    ucsdet_setText(detector.get(), pText, int32_t(cb), &status);
    int32_t matches = 0;
    const UCharsetMatch** const found = ucsdet_detectAll(detector.get(), &matches, &status);
    int given = 0;
    for (int32_t i = 0; U_SUCCESS(status) && i < matches && given < count; ++i) {
        const char* const name = ucsdet_getName(found[i], &status);
        if (const UINT codePage = CodePageOf(name))
            pCandidates[given++] = {codePage, ReadablePercent(name, pText, cb),
                                    ucsdet_getConfidence(found[i], &status)};
    }
    return given;
}
