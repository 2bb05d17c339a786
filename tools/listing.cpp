#include "tools/listing.h"

#include "platform/com_ptr.h"
#include "platform/media/media_params.h"
#include "tools/automation.h"
#include "tools/failure.h"
#include "tools/presets.h"
#include "tools/wide_text.h"

#include <objbase.h>

#include <cstdio>

namespace {

const char* TypeName(MP_TYPE type)
{
    switch (type) {
    case MPT_FLOAT:
        return "number";
    case MPT_BOOL:
        return "switch";
    case MPT_ENUM:
        return "choice";
    default:
        return "whole number";
    }
}

std::string Curves(MP_CAPS caps)
{
    std::string text;
    for (const CurveName& row : kCurveNames)
        if (caps & DWORD(row.curve))
            text += (text.empty() ? "" : ", ") + std::string(row.name);
    return text;
}

// The items of an enumeration, which follow label and unit.
std::string Items(IMediaParamInfo* info, DWORD param, int first)
{
    WCHAR* texts = nullptr;
    if (FAILED(info->GetParamText(param, &texts)))
        throw DataFailure("the filter does not tell its parameters");
    std::string items;
    int index = 0;
    for (const WCHAR* at = texts; index < 2 || *at; at += lstrlenW(at) + 1, ++index)
        if (index >= 2)
            items += (items.empty() ? "" : ", ") + std::to_string(first + index - 2) + " = " + Utf8(at);
    CoTaskMemFree(texts);
    return items;
}

std::string Paragraph(IMediaParamInfo* info, DWORD param)
{
    MP_PARAMINFO p{};
    if (FAILED(info->GetParamInfo(param, &p)))
        throw DataFailure("the filter does not tell its parameters");
    char range[96];
    std::snprintf(range, sizeof range, "%s, %g to %g, neutral %g", TypeName(p.mpType), double(p.mpdMinValue),
                  double(p.mpdMaxValue), double(p.mpdNeutralValue));
    std::string text = std::to_string(param) + "  " + ParamName(param) + ": " + Utf8(p.szLabel) + "\n   " + range;
    if (p.szUnitText[0])
        text += ", in " + Utf8(p.szUnitText);
    text += "; curves: " + Curves(p.mopCaps) + "\n";
    if (p.mpType == MPT_ENUM)
        text += "   " + Items(info, param, int(p.mpdMinValue)) + "\n";
    return text;
}

}   // namespace

std::string PresetListing(IBaseFilter* filter)
{
    std::string text;
    for (const std::string& name : PresetNames(filter))
        text += name + "\n";
    return text;
}

std::string ParamListing(IBaseFilter* filter)
{
    const auto info = Query<IMediaParamInfo>(filter, IID_IMediaParamInfo);
    DWORD count = 0;
    if (!info || FAILED(info->GetParamCount(&count)))
        throw DataFailure("the filter does not tell its parameters");
    std::string text;
    for (DWORD param = 0; param < count; ++param)
        text += Paragraph(info.Get(), param);
    return text;
}
