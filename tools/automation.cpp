#include "tools/automation.h"

#include "tools/failure.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>

namespace {

constexpr double kTicks = 1e7;     // a second
constexpr double kLongest = 1e9;   // seconds
constexpr size_t kWords = 6;

// In the order of the filter's parameters.
constexpr const char* kParamNames[] = {"stretch", "pitch", "content", "formant", "mode", "sync", "bypass"};

class Line {
public:
    Line(const std::string& thePath, size_t theNumber) : path(thePath), number(theNumber) {}
    Failure Wrong(const std::string& why) const
    {
        return DataFailure(path + ": line " + std::to_string(number) + ": " + why);
    }
    double Number(const std::string& word) const
    {
        double value = 0.0;
        const char* const end = word.data() + word.size();
        const auto [stop, error] = std::from_chars(word.data() + word.starts_with('+'), end, value);
        if (error != std::errc() || stop != end || !std::isfinite(value))
            throw Wrong(word + " is not a number");
        return value;
    }
    REFERENCE_TIME Time(const std::string& word) const
    {
        const double seconds = Number(word);
        if (!(seconds >= 0.0 && seconds <= kLongest))
            throw Wrong(word + " is not within 0 to 1000000000 seconds");
        return std::llround(seconds * kTicks);
    }

private:
    const std::string& path;
    size_t number;
};

std::string Short(float value)
{
    std::ostringstream text;
    text << value;
    return text.str();
}

DWORD Param(const Line& line, const std::string& word)
{
    if (const int found = ParamByName(word); found >= 0)
        return DWORD(found);
    std::string names;
    for (const char* const name : kParamNames)
        names += (names.empty() ? "" : ", ") + std::string(name);
    throw line.Wrong(word + " is not one of " + names);
}

MP_CURVE_TYPE Curve(const Line& line, const std::string& word, MP_CAPS possible)
{
    const auto* const row = std::ranges::find_if(kCurveNames, [&](const CurveName& c) { return word == c.name; });
    if (row == std::end(kCurveNames))
        throw line.Wrong(word + " is not one of jump, linear, square, inverse-square");
    if (!(possible & DWORD(row->curve)))
        throw line.Wrong("the parameter does not follow the curve " + word);
    return row->curve;
}

float Value(const Line& line, const std::string& word, const MP_PARAMINFO& info)
{
    const auto value = float(line.Number(word));
    if (!(value >= info.mpdMinValue && value <= info.mpdMaxValue))
        throw line.Wrong(word + " is not within " + Short(info.mpdMinValue) + " to " + Short(info.mpdMaxValue));
    if (info.mpType != MPT_FLOAT && value != std::floor(value))
        throw line.Wrong(word + " is not a whole number");
    return value;
}

std::vector<std::string> Words(std::string text)
{
    text.resize(std::min(text.size(), text.find('#')));
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

AutomationSegment Segment(const Line& line, const std::vector<std::string>& words, IMediaParamInfo* infos)
{
    if (words.size() != kWords)
        throw line.Wrong("parameter, start, end, start value, end value and curve are needed");
    AutomationSegment made{Param(line, words[0]), {}};
    MP_PARAMINFO info{};
    if (FAILED(infos->GetParamInfo(made.param, &info)))
        throw line.Wrong("the filter has no parameter " + words[0]);
    made.segment.rtStart = line.Time(words[1]);
    made.segment.rtEnd = line.Time(words[2]);
    if (made.segment.rtEnd <= made.segment.rtStart)
        throw line.Wrong("the end is not after the start");
    made.segment.valStart = Value(line, words[3], info);
    made.segment.valEnd = Value(line, words[4], info);
    made.segment.iCurve = Curve(line, words[5], info.mopCaps);
    return made;
}

bool Overlap(const AutomationSegment& a, const AutomationSegment& b)
{
    return a.param == b.param && a.segment.rtStart < b.segment.rtEnd && b.segment.rtStart < a.segment.rtEnd;
}

}   // namespace

int ParamByName(const std::string& name)
{
    for (size_t i = 0; i < std::size(kParamNames); ++i)
        if (name == kParamNames[i] || name == std::to_string(i))
            return int(i);
    return -1;
}

std::string ParamName(DWORD param)
{
    return param < std::size(kParamNames) ? kParamNames[param] : "";
}

std::vector<AutomationSegment> ReadAutomation(const std::string& path, IMediaParamInfo* info)
{
    std::ifstream file(path);
    if (!file)
        throw DataFailure(path + ": " + std::strerror(errno));
    std::vector<AutomationSegment> segments;
    size_t number = 0;
    for (std::string text; std::getline(file, text);) {
        const Line line(path, ++number);
        const auto words = Words(text);
        if (words.empty())
            continue;
        const AutomationSegment made = Segment(line, words, info);
        if (std::ranges::any_of(segments, [&](const auto& other) { return Overlap(made, other); }))
            throw line.Wrong("an earlier line drives the same parameter at that time");
        segments.push_back(made);
    }
    if (file.bad())
        throw DataFailure(path + ": cannot be read");
    return segments;
}
