#include "tools/report.h"

#include "tools/promise.h"

#include <charconv>
#include <cmath>

namespace {

// Text as a JSON string. Bytes that are not UTF-8 on their own stand as they came.
std::string Quoted(const std::string& text)
{
    static constexpr char kHex[] = "0123456789abcdef";
    std::string out = "\"";
    for (const unsigned char c : text) {
        if (c == '"' || c == '\\')
            (out += '\\') += char(c);
        else if (c < 0x20)
            ((out += "\\u00") += kHex[c >> 4]) += kHex[c & 15];
        else
            out += char(c);
    }
    return out + '"';
}

// The shortest text that reads back as the same number.
std::string Shortest(double value)
{
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, value);
    return {text, result.ptr};
}

class Lines {
public:
    void Text(const char* key, const std::string& value) { Add(key, Quoted(value)); }
    void Number(const char* key, double value) { Add(key, std::isfinite(value) ? Shortest(value) : "null"); }
    void Count(const char* key, int64_t value) { Add(key, std::to_string(value)); }
    void Nested(const char* key, const Lines& lines) { Add(key, lines.Object("  ")); }
    std::string Object(const std::string& indent = "") const { return "{" + Body(indent) + "\n" + indent + "}"; }

private:
    void Add(const char* key, const std::string& value) { entries.push_back(Quoted(key) + ": " + value); }
    std::string Body(const std::string& indent) const
    {
        std::string body;
        for (const std::string& entry : entries)
            body.append(body.empty() ? "\n  " : ",\n  ").append(indent).append(entry);
        return body;
    }
    std::vector<std::string> entries;
};

Lines Requested(const Report& r, const Options& o)
{
    Lines lines;
    lines.Number("stretch", r.requestedStretch);
    if (o.duration)
        lines.Number("duration", *o.duration);
    lines.Number("pitch_semitones", o.pitch.value_or(r.record.pitchSemitones));
    lines.Number("formant_percent", o.formant.value_or(r.record.formantPercent));
    lines.Count("content", r.record.contentPitch);
    return lines;
}

Lines InForce(const Report& r)
{
    Lines lines;
    lines.Number("stretch", r.stretch);
    const double pitch = PitchInForce(r.record, r.input.rate);
    lines.Number("pitch_semitones", 12.0 * std::log2(pitch));
    lines.Number("pitch_factor", pitch);
    return lines;
}

}   // namespace

std::string ReportAsJson(const Report& r, const Options& o)
{
    Lines lines;
    lines.Text("input", o.input);
    lines.Text("output", o.output);
    lines.Text("mode", ModeName(r.record.mode));
    lines.Count("channels", r.input.channels);
    lines.Count("sample_rate", r.input.rate);
    lines.Nested("request", Requested(r, o));
    lines.Nested("in_force", InForce(r));
    lines.Count("frames_in", r.framesIn);
    lines.Count("frames_out", r.framesOut);
    lines.Count("frames_promised", r.framesPromised);
    lines.Count("frames_trimmed", r.framesTrimmed);
    lines.Count("non_finite_samples", r.nonFinite);
    lines.Count("clipped_samples", r.clipped);
    lines.Number("peak", r.peak);
    lines.Number("seconds", r.seconds);
    lines.Number("speed", r.seconds > 0.0 ? double(r.framesIn) / r.input.rate / r.seconds : 0.0);
    return lines.Object() + "\n";
}
