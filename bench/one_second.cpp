// one_second efficient|pro|pro-held|soloist-mono|soloist-speech: one second of a mode in the midst of a stream, a quarter
// longer and three semitones up: stereo music, or one voice for the Soloist modes. Instructions are counted within
// OneSecond; see bench/counts.sh.
#include "bench/compare/own_driver.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

extern "C" [[gnu::noinline]] void OneSecond(OwnDriver* driver, const Material* in)
{
    driver->Push(*in);
}

namespace {

struct Run {
    std::string_view name;
    Mode mode;
    bool voice, holdFormants;
};
constexpr Run kRuns[] = {
    {"efficient", kEfficient, false, false},
    {"pro", kPro, false, false},
    {"pro-held", kPro, false, true},
    {"soloist-mono", kSoloistMono, true, false},
    {"soloist-speech", kSoloistSpeech, true, false},
};

}   // namespace

int main(int argc, char** argv)
{
    const auto* const run = std::ranges::find(kRuns, std::string_view(argc == 2 ? argv[1] : ""), &Run::name);
    if (run == std::end(kRuns)) {
        std::fputs("usage: one_second efficient|pro|pro-held|soloist-mono|soloist-speech\n", stderr);
        return 2;
    }
    const Material in = run->voice ? Voice(1.0) : Music(1.0);
    OwnDriver driver(run->mode, in.channels, in.rate, {1.25, 3.0, run->holdFormants});
    driver.Push(in);
    OneSecond(&driver, &in);
    return 0;
}
