#include "platform/native/locale_info.h"

#include "platform/native/locale_name.h"
#include "platform/native/refusal.h"

#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/ulocdata.h>
#include <unicode/unum.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

namespace {

using NumberFormat = std::unique_ptr<UNumberFormat, decltype(&unum_close)>;
using DateFormat = std::unique_ptr<UDateFormat, decltype(&udat_close)>;

WideString Ascii(std::string_view text)
{
    return WideString(text.begin(), text.end());
}

NumberFormat Numbers(const std::string& locale)
{
    UErrorCode status = U_ZERO_ERROR;
    return NumberFormat(unum_open(UNUM_DECIMAL, nullptr, 0, locale.c_str(), nullptr, &status), unum_close);
}

WideString Symbol(const std::string& locale, UNumberFormatSymbol symbol)
{
    std::array<UChar, 16> text;
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = unum_getSymbol(Numbers(locale).get(), symbol, text.data(), int32_t(text.size()), &status);
    return U_SUCCESS(status) ? WideString(text.data(), size_t(length)) : WideString();
}

WideString Grouping(const std::string& locale)
{
    const NumberFormat numbers = Numbers(locale);
    const int32_t first = unum_getAttribute(numbers.get(), UNUM_GROUPING_SIZE);
    const int32_t second = unum_getAttribute(numbers.get(), UNUM_SECONDARY_GROUPING_SIZE);
    std::string text = std::to_string(first);
    if (second > 0 && second != first)
        text += ";" + std::to_string(second);
    return Ascii(text + ";0");
}

// What stands behind the first field of the short pattern, which is the separator of its fields.
WideString PatternSeparator(const std::string& locale, UDateFormatStyle time, UDateFormatStyle date)
{
    UErrorCode status = U_ZERO_ERROR;
    const DateFormat format(udat_open(time, date, locale.c_str(), nullptr, 0, nullptr, 0, &status), udat_close);
    std::array<UChar, 64> pattern;
    const int32_t length = udat_toPattern(format.get(), false, pattern.data(), int32_t(pattern.size()), &status);
    if (U_FAILURE(status))
        return {};
    const WideView text(pattern.data(), size_t(length));
    const auto isField = [](WCHAR c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    const auto field = std::find_if(text.begin(), text.end(), isField);
    const auto begin = std::find_if_not(field, text.end(), isField);
    return WideString(begin, std::find_if(begin, text.end(), isField));
}

using NamePart = int32_t (*)(const char*, const char*, UChar*, int32_t, UErrorCode*);
WideString DisplayName(NamePart part, const std::string& locale, const std::string& inLanguage)
{
    std::array<UChar, 128> text;
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = part(locale.c_str(), inLanguage.c_str(), text.data(), int32_t(text.size()), &status);
    return U_SUCCESS(status) ? WideString(text.data(), size_t(length)) : WideString();
}

std::string Part(int32_t (*part)(const char*, char*, int32_t, UErrorCode*), const std::string& locale)
{
    std::array<char, 16> text = {};
    UErrorCode status = U_ZERO_ERROR;
    part(locale.c_str(), text.data(), int32_t(text.size()), &status);
    return U_SUCCESS(status) ? text.data() : "";
}

std::string Country(const std::string& locale)
{
    if (const std::string country = Part(uloc_getCountry, locale); !country.empty())
        return country;
    std::array<char, ULOC_FULLNAME_CAPACITY> likely = {};
    UErrorCode status = U_ZERO_ERROR;
    uloc_addLikelySubtags(locale.c_str(), likely.data(), int32_t(likely.size()), &status);
    return Part(uloc_getCountry, likely.data());
}

struct CountryCode {
    char country[3];
    int code;
};
// Telephone codes of ITU-T E.164.
constexpr CountryCode kCountryCodes[] = {
    {"AR", 54},  {"AT", 43},  {"AU", 61},  {"BE", 32},  {"BG", 359}, {"BR", 55},  {"CA", 1},   {"CH", 41},  {"CL", 56},
    {"CN", 86},  {"CO", 57},  {"CZ", 420}, {"DE", 49},  {"DK", 45},  {"EE", 372}, {"EG", 20},  {"ES", 34},  {"FI", 358},
    {"FR", 33},  {"GB", 44},  {"GR", 30},  {"HK", 852}, {"HR", 385}, {"HU", 36},  {"IE", 353}, {"IL", 972}, {"IN", 91},
    {"IR", 98},  {"IS", 354}, {"IT", 39},  {"JP", 81},  {"KR", 82},  {"LT", 370}, {"LU", 352}, {"LV", 371}, {"MO", 853},
    {"MX", 52},  {"NL", 31},  {"NO", 47},  {"NZ", 64},  {"PK", 92},  {"PL", 48},  {"PT", 351}, {"RO", 40},  {"RS", 381},
    {"RU", 7},   {"SA", 966}, {"SE", 46},  {"SG", 65},  {"SI", 386}, {"SK", 421}, {"TH", 66},  {"TR", 90},  {"TW", 886},
    {"UA", 380}, {"US", 1},   {"VN", 84},  {"ZA", 27},
};

std::optional<WideString> TelephoneCode(const std::string& locale)
{
    const std::string country = Country(locale);
    for (const auto& row : kCountryCodes)
        if (country == row.country)
            return Ascii(std::to_string(row.code));
    return std::nullopt;
}

struct Abbreviation {
    LANGID language;
    char text[4];
};
// The platform's own three letters, where they are not the ISO 639-2 ones with the country's mark.
constexpr Abbreviation kAbbreviations[] = {
    {0x0401, "ARA"}, {0x0402, "BGR"}, {0x0403, "CAT"}, {0x0404, "CHT"}, {0x0405, "CSY"}, {0x0406, "DAN"},
    {0x0407, "DEU"}, {0x0408, "ELL"}, {0x0409, "ENU"}, {0x040A, "ESP"}, {0x040B, "FIN"}, {0x040C, "FRA"},
    {0x040D, "HEB"}, {0x040E, "HUN"}, {0x040F, "ISL"}, {0x0410, "ITA"}, {0x0411, "JPN"}, {0x0412, "KOR"},
    {0x0413, "NLD"}, {0x0414, "NOR"}, {0x0415, "PLK"}, {0x0416, "PTB"}, {0x0418, "ROM"}, {0x0419, "RUS"},
    {0x041A, "HRV"}, {0x041B, "SKY"}, {0x041D, "SVE"}, {0x041E, "THA"}, {0x041F, "TRK"}, {0x0420, "URD"},
    {0x0422, "UKR"}, {0x0424, "SLV"}, {0x0425, "ETI"}, {0x0426, "LVI"}, {0x0427, "LTH"}, {0x0429, "FAR"},
    {0x0439, "HIN"}, {0x0804, "CHS"}, {0x0807, "DES"}, {0x0809, "ENG"}, {0x080A, "ESM"}, {0x080C, "FRB"},
    {0x0810, "ITS"}, {0x0813, "NLB"}, {0x0814, "NON"}, {0x0816, "PTG"}, {0x0C04, "ZHH"}, {0x0C07, "DEA"},
    {0x0C09, "ENA"}, {0x0C0A, "ESN"}, {0x0C0C, "FRC"}, {0x1004, "ZHI"}, {0x1007, "DEL"}, {0x1009, "ENC"},
    {0x100C, "FRS"}, {0x1404, "ZHM"}, {0x1407, "DEC"}, {0x1409, "ENZ"}, {0x1809, "ENI"},
};

std::optional<WideString> LanguageAbbreviation(LANGID language)
{
    for (const auto& row : kAbbreviations)
        if (row.language == language)
            return Ascii(row.text);
    return std::nullopt;
}

WideString LanguageTag(const std::string& locale)
{
    const std::string country = Part(uloc_getCountry, locale), language = Part(uloc_getLanguage, locale);
    return Ascii(country.empty() ? language : language + "-" + country);
}

WideString HexadecimalId(LCID lcid)
{
    std::array<char, 5> text;
    std::snprintf(text.data(), text.size(), "%04x", unsigned(LANGIDFROMLCID(lcid)));
    return Ascii(text.data());
}

bool IsMetric(const std::string& locale)
{
    UErrorCode status = U_ZERO_ERROR;
    return ulocdata_getMeasurementSystem(locale.c_str(), &status) != UMS_US;
}

std::optional<WideString> NumberItem(const std::string& locale, LCTYPE type)
{
    switch (type) {
    case LOCALE_SDECIMAL:
        return Symbol(locale, UNUM_DECIMAL_SEPARATOR_SYMBOL);
    case LOCALE_STHOUSAND:
        return Symbol(locale, UNUM_GROUPING_SEPARATOR_SYMBOL);
    case LOCALE_SGROUPING:
        return Grouping(locale);
    case LOCALE_IDIGITS:
        return Ascii("2");
    case LOCALE_ILZERO:
        return Ascii("1");
    case LOCALE_INEGNUMBER:
        return Ascii("1");
    case LOCALE_SNEGATIVESIGN:
        return Ascii("-");
    case LOCALE_SPOSITIVESIGN:
        return WideString();
    // A list needs another sign than the decimal point.
    case LOCALE_SLIST:
        return Ascii(Symbol(locale, UNUM_DECIMAL_SEPARATOR_SYMBOL) == u"," ? ";" : ",");
    case LOCALE_IMEASURE:
        return Ascii(IsMetric(locale) ? "0" : "1");
    default:
        return std::nullopt;
    }
}

std::optional<WideString> NameItem(LCID lcid, const std::string& locale, LCTYPE type)
{
    switch (type) {
    case LOCALE_ILANGUAGE:
        return HexadecimalId(lcid);
    case LOCALE_SLANGUAGE:
        return DisplayName(uloc_getDisplayName, locale, LocaleName(GetUserDefaultUILanguage()));
    case LOCALE_SENGLANGUAGE:
        return DisplayName(uloc_getDisplayLanguage, locale, "en");
    case LOCALE_SENGCOUNTRY:
        return DisplayName(uloc_getDisplayCountry, "und_" + Country(locale), "en");
    case LOCALE_SABBREVLANGNAME:
        return LanguageAbbreviation(LANGIDFROMLCID(lcid));
    case LOCALE_ICOUNTRY:
        return TelephoneCode(locale);
    case LOCALE_SISO639LANGNAME:
        return Ascii(Part(uloc_getLanguage, locale));
    case LOCALE_SISO3166CTRYNAME:
        return Ascii(Country(locale));
    case LOCALE_SNAME:
        return LanguageTag(locale);
    case LOCALE_IDEFAULTANSICODEPAGE:
        return Ascii(std::to_string(AnsiCodePage(lcid)));
    case LOCALE_STIME:
        return PatternSeparator(locale, UDAT_SHORT, UDAT_NONE);
    case LOCALE_SDATE:
        return PatternSeparator(locale, UDAT_NONE, UDAT_SHORT);
    default:
        return std::nullopt;
    }
}

// Whether an item is a number that can also be had as one, and the base its text is written in.
int NumberBase(LCTYPE type)
{
    switch (type) {
    case LOCALE_ILANGUAGE:
        return 16;
    case LOCALE_ICOUNTRY:
    case LOCALE_IMEASURE:
    case LOCALE_IDIGITS:
    case LOCALE_ILZERO:
    case LOCALE_INEGNUMBER:
    case LOCALE_IDEFAULTANSICODEPAGE:
        return 10;
    default:
        return 0;
    }
}

int GiveNumber(const WideString& item, int base, LPWSTR pszOut, int cch)
{
    constexpr int kUnits = sizeof(DWORD) / sizeof(WCHAR);
    if (cch == 0)
        return kUnits;
    if (cch < kUnits)
        return Refuse<int>(ERROR_INSUFFICIENT_BUFFER);
    const DWORD value = DWORD(std::stoul(std::string(item.begin(), item.end()), nullptr, base));
    std::memcpy(pszOut, &value, sizeof value);
    return kUnits;
}

}   // namespace

std::optional<WideString> LocaleItem(LCID lcid, LCTYPE type)
{
    const LCID resolved = ResolveLocale(lcid);
    const std::string locale = LocaleName(resolved);
    if (locale.empty())
        return std::nullopt;
    if (auto item = NumberItem(locale, type))
        return item;
    return NameItem(resolved, locale, type);
}

int GetLocaleInfoW(LCID lcid, LCTYPE type, LPWSTR pszOut, int cch)
{
    if (cch < 0 || (cch > 0 && !pszOut))
        return Refuse<int>(ERROR_INVALID_PARAMETER);
    const LCTYPE plain = type & ~(LOCALE_NOUSEROVERRIDE | LOCALE_RETURN_NUMBER);
    const bool asNumber = type & LOCALE_RETURN_NUMBER;
    const int base = NumberBase(plain);
    if (asNumber && base == 0)
        return Refuse<int>(ERROR_INVALID_FLAGS);
    const auto item = LocaleItem(lcid, plain);
    if (!item)
        return Refuse<int>(LocaleName(lcid).empty() ? ERROR_INVALID_PARAMETER : ERROR_INVALID_FLAGS);
    if (asNumber)
        return GiveNumber(*item, base, pszOut, cch);
    const int needed = int(item->size()) + 1;
    if (cch == 0)
        return needed;
    if (cch < needed)
        return Refuse<int>(ERROR_INSUFFICIENT_BUFFER);
    std::memcpy(pszOut, item->c_str(), size_t(needed) * sizeof(WCHAR));
    return needed;
}
