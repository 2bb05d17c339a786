#include "kernel/international.h"

#include "kernel/print.h"
#include "kernel/text_output.h"

#include <array>
#include <cstring>

namespace {

QXINTERNATIONALS g_internationals = {};

template <size_t N>
void ReadText(LCID lcid, LCTYPE type, WCHAR (&text)[N])
{
    if (GetLocaleInfoW(lcid, type, text, int(N)) <= 0)
        text[0] = 0;
}

DWORD ReadNumber(LCID lcid, LCTYPE type)
{
    DWORD value = 0;
    const int read = GetLocaleInfoW(lcid, type | LOCALE_RETURN_NUMBER, reinterpret_cast<WCHAR*>(&value),
                                    int(sizeof value / sizeof(WCHAR)));
    return read > 0 ? value : 0;
}

template <size_t N>
void SetText(WCHAR (&text)[N], WideView value)
{
    TextOutput out(text, N - 1);
    out.Put(value);
    out.Terminate();
}

DWORD LeadingNumber(WideView text)
{
    DWORD number = 0;
    for (size_t i = 0; i < text.size() && IsDigit(text[i]); ++i)
        number = number * 10 + DWORD(text[i] - '0');
    return number;
}

// "3;2;0" is 32: each group's size as one digit. Without the closing 0 the groups end, which is written as a 0.
DWORD PackGrouping(WideView text)
{
    DWORD packed = 0;
    bool repeats = false;
    for (const WCHAR c : text) {
        repeats = c == '0';
        if (IsDigit(c) && !repeats && packed < 1000)
            packed = packed * 10 + DWORD(c - '0');
    }
    return repeats ? packed : packed * 10;
}

void ReadNumberItems(LCID lcid, QXINTERNATIONALS& record)
{
    ReadText(lcid, LOCALE_SDECIMAL, record.szDecimal);
    ReadText(lcid, LOCALE_STHOUSAND, record.szThousand);
    if (WideView(record.szDecimal) == WideView(record.szThousand))
        SetText(record.szDecimal, record.szThousand[0] == '.' ? TEXT(",") : TEXT("."));
    WCHAR grouping[16];
    ReadText(lcid, LOCALE_SGROUPING, grouping);
    record.nGroupSize = LeadingNumber(grouping);
    record.nGrouping = PackGrouping(grouping);
    record.bLeadingZero = ReadNumber(lcid, LOCALE_ILZERO);
    record.nDigits = ReadNumber(lcid, LOCALE_IDIGITS);
    ReadText(lcid, LOCALE_SNEGATIVESIGN, record.szNegative);
    SetText(record.szMinus, TEXT("-"));
}

void SetTimeCodeSeparators(QXINTERNATIONALS& record)
{
    SetText(record.szSmpteWhole, TEXT(":"));
    SetText(record.szSmpteNonDrop, TEXT("."));
    SetText(record.szSmpteDrop, TEXT(","));
    SetText(record.szMeasureBeat, TEXT("."));
    SetText(record.szBeatTick, TEXT("."));
}

struct TextItem {
    int id;
    const WCHAR* (*text)(const QXINTERNATIONALS&);
};
constexpr TextItem kTextItems[] = {
    {QXINAT_LANGUAGE_NAME, [](const QXINTERNATIONALS& r) { return r.szLanguage; }},
    {QXINAT_ENGLISH_LANGUAGE_NAME, [](const QXINTERNATIONALS& r) { return r.szEnglishLanguage; }},
    {QXINAT_DECIMAL, [](const QXINTERNATIONALS& r) { return r.szDecimal; }},
    {QXINAT_LIST, [](const QXINTERNATIONALS& r) { return r.szList; }},
    {QXINAT_TIME, [](const QXINTERNATIONALS& r) { return r.szTime; }},
    {QXINAT_SMPTE_WHOLE, [](const QXINTERNATIONALS& r) { return r.szSmpteWhole; }},
    {QXINAT_SMPTE_NONDROP, [](const QXINTERNATIONALS& r) { return r.szSmpteNonDrop; }},
    {QXINAT_SMPTE_DROP, [](const QXINTERNATIONALS& r) { return r.szSmpteDrop; }},
    {QXINAT_MEASURE_BEAT, [](const QXINTERNATIONALS& r) { return r.szMeasureBeat; }},
    {QXINAT_BEAT_TICK, [](const QXINTERNATIONALS& r) { return r.szBeatTick; }},
};

DWORD NumericItem(const QXINTERNATIONALS& record, int id)
{
    return id == QXINAT_SYSTEM_LOCALE ? record.lcidSystem
           : id == QXINAT_LANGUAGE    ? record.dwLanguage
           : id == QXINAT_COUNTRY     ? record.dwCountry
                                      : 0;
}

}   // namespace

const QXINTERNATIONALS& Internationals()
{
    return g_internationals;
}

void ReadInternationals(LCID lcid)
{
    QXINTERNATIONALS record = {};
    record.lcidSystem = GetSystemDefaultLCID();
    record.lcidUser = lcid;
    record.dwLanguage = ReadNumber(lcid, LOCALE_ILANGUAGE);
    ReadText(lcid, LOCALE_SLANGUAGE, record.szLanguage);
    ReadText(lcid, LOCALE_SENGLANGUAGE, record.szEnglishLanguage);
    record.dwCountry = ReadNumber(lcid, LOCALE_ICOUNTRY);
    ReadText(lcid, LOCALE_SLIST, record.szList);
    ReadText(lcid, LOCALE_STIME, record.szTime);
    record.nMeasureSystem = ReadNumber(lcid, LOCALE_IMEASURE);
    ReadNumberItems(lcid, record);
    SetTimeCodeSeparators(record);
    g_internationals = record;
    DefineSeparatorTokens();
}

DWORD QxLang_GetInternationals(QXINTERNATIONALS* pOut, DWORD cbOut)
{
    constexpr DWORD kSize = sizeof(QXINTERNATIONALS);
    if (!pOut) {
        ReadInternationals(LOCALE_USER_DEFAULT);
        return kSize;
    }
    const DWORD cb = std::min(cbOut, kSize);
    std::memcpy(pOut, &g_internationals, cb);
    return cb;
}

int32_t QxGetInat(int nId, WCHAR* pszOut)
{
    return QxGetInatN(nId, pszOut, kInatLanguage);
}

int32_t QxGetInatN(int nId, WCHAR* pszOut, DWORD cchOut)
{
    const auto item = std::ranges::find(kTextItems, nId, &TextItem::id);
    const WideView text = item == std::end(kTextItems) ? WideView() : WideView(item->text(g_internationals));
    size_t length = text.size();
    if (pszOut && cchOut > 0) {
        TextOutput out(pszOut, cchOut - 1);
        out.Put(text);
        out.Terminate();
        length = out.Length();
    }
    return item == std::end(kTextItems) ? int32_t(NumericItem(g_internationals, nId)) : int32_t(length);
}
