// make_sample [--part all|music|drums|voice] [--mono] [--seconds S] OUTPUT: writes the example recording, or one part of it, as
// 16-bit stereo at 44100 Hz; FLAC when OUTPUT ends in .flac, WAV otherwise. S from 0.1 to 3600, 8 when not given.
#include "tools/sample_synth.h"

#include <sndfile.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int kRate = 44100;
constexpr float kCeiling = 0.98f;   // of full scale, for a mix that would clip

struct Request {
    std::string part = "all", output;
    double seconds = 8.0;
    int channels = 2;   // 1: the left one alone
};

std::optional<Request> Parse(int argc, char** argv)
{
    Request request;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--part" && i + 1 < argc)
            request.part = argv[++i];
        else if (argument == "--mono")
            request.channels = 1;
        else if (argument == "--seconds" && i + 1 < argc)
            request.seconds = std::atof(argv[++i]);
        else if (request.output.empty() && !argument.starts_with('-'))
            request.output = argument;
        else
            return {};
    }
    const bool known =
        request.part == "all" || request.part == "music" || request.part == "drums" || request.part == "voice";
    if (!known || request.output.empty() || !(request.seconds >= 0.1 && request.seconds <= 3600.0))
        return {};
    return request;
}

std::vector<float> Render(const Request& request)
{
    static constexpr struct {
        const char* name;
        StereoSignal (*synthesise)(double sampleRate, double seconds);
    } kParts[] = {{"music", SynthesiseMusic}, {"drums", SynthesiseDrums}, {"voice", SynthesiseVoice}};

    std::vector<float> mix(2 * size_t(kRate * request.seconds));
    for (const auto& part : kParts) {
        if (request.part != "all" && request.part != part.name)
            continue;
        const StereoSignal signal = part.synthesise(kRate, request.seconds);
        for (size_t i = 0; i < mix.size() / 2; ++i) {
            mix[2 * i] += signal.left[i];
            mix[2 * i + 1] += signal.right[i];
        }
    }
    float peak = kCeiling;
    for (const float v : mix)
        peak = v > peak ? v : -v > peak ? -v : peak;
    for (float& v : mix)
        v *= kCeiling / peak;
    if (request.channels == 1) {
        for (size_t i = 0; i < mix.size() / 2; ++i)
            mix[i] = mix[2 * i];
        mix.resize(mix.size() / 2);
    }
    return mix;
}

bool Write(const Request& request, const std::vector<float>& interleaved)
{
    SF_INFO info = {};
    info.samplerate = kRate;
    info.channels = request.channels;
    info.format = (request.output.ends_with(".flac") ? SF_FORMAT_FLAC : SF_FORMAT_WAV) | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(request.output.c_str(), SFM_WRITE, &info);
    if (!file)
        return false;
    const auto frames = sf_count_t(interleaved.size()) / request.channels;
    const bool whole = sf_writef_float(file, interleaved.data(), frames) == frames;
    return sf_close(file) == 0 && whole;
}

}   // namespace

int main(int argc, char** argv)
{
    const auto request = Parse(argc, argv);
    if (!request) {
        std::fputs("usage: make_sample [--part all|music|drums|voice] [--mono] [--seconds 0.1..3600] OUTPUT\n", stderr);
        return 2;
    }
    if (!Write(*request, Render(*request))) {
        std::fprintf(stderr, "make_sample: cannot write %s\n", request->output.c_str());
        return 1;
    }
    return 0;
}
