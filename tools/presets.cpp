#include "tools/presets.h"

#include "aplugins/qxvantor/static_preset.h"
#include "platform/com_ptr.h"
#include "tools/failure.h"
#include "tools/wide_text.h"

#include <array>
#include <cctype>

namespace {

ComPtr<IStaticFilterPreset> PresetsOf(IBaseFilter* filter)
{
    auto presets = Query<IStaticFilterPreset>(filter, IID_IStaticFilterPreset);
    if (!presets)
        throw DataFailure("the filter has no presets");
    return presets;
}

// Lower case, without spaces.
std::string Plain(const std::string& text)
{
    std::string plain;
    for (const unsigned char c : text)
        if (!std::isspace(c))
            plain += char(std::tolower(c));
    return plain;
}

// "2:   2 x Time   (Time*2, Pitch*1)" without the number and what is in brackets.
std::string Title(const std::string& name)
{
    const size_t colon = name.find(':');
    const size_t begin = colon == std::string::npos ? 0 : colon + 1;
    return name.substr(begin, name.find('(', begin) - begin);
}

}   // namespace

std::vector<std::string> PresetNames(IBaseFilter* filter)
{
    const auto presets = PresetsOf(filter);
    DWORD count = 0;
    presets->GetPresetCount(&count);
    std::vector<std::string> names;
    for (DWORD i = 1; i < count; ++i) {
        std::array<WCHAR, 256> name{};
        if (FAILED(presets->GetPresetName(i, name.data(), DWORD(name.size()))))
            throw DataFailure("the filter does not tell its presets");
        names.push_back(Utf8(name.data()));
    }
    return names;
}

void ApplyPreset(IBaseFilter* filter, const std::string& wanted)
{
    const auto names = PresetNames(filter);
    const std::string plain = Plain(wanted);
    for (size_t i = 0; i < names.size(); ++i) {
        if (plain == std::to_string(i + 1) || plain == Plain(names[i]) || plain == Plain(Title(names[i]))) {
            if (FAILED(PresetsOf(filter)->SetPreset(DWORD(i + 1))))
                throw DataFailure("the filter does not take its preset " + names[i]);
            return;
        }
    }
    throw UsageFailure("--preset " + wanted + ": no such preset; see --list-presets");
}
