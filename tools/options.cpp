#include "tools/options.h"

#include "engine/tensio_pro_if.h"
#include "tools/failure.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace {

using std::string_literals::operator""s;

struct ModeEntry {
    const char* name;
    int32_t mode;
};
constexpr ModeEntry kModes[] = {{"pro", kModePro},
                                {"efficient", kModeEfficient},
                                {"soloist-mono", kModeSoloistMono},
                                {"soloist-speech", kModeSoloistSpeech}};

constexpr struct {
    const char* name;
    Encoding encoding;
} kBits[] = {{"8", Encoding::kPcm8},   {"16", Encoding::kPcm16},    {"24", Encoding::kPcm24},
             {"32", Encoding::kPcm32}, {"32f", Encoding::kFloat32}, {"64f", Encoding::kFloat64}};

struct Argument {
    const std::string& option;   // as it was written
    const std::string& value;

    Failure Wrong(const std::string& why) const { return UsageFailure(option + " " + value + ": " + why); }
};

double Number(const Argument& a, double low, double high, const std::string& range)
{
    const bool plus = a.value.starts_with('+') && a.value.size() > 1 && a.value[1] != '-';
    const char* const end = a.value.data() + a.value.size();
    double number = 0.0;
    const auto [stop, error] = std::from_chars(a.value.data() + plus, end, number);
    if (error == std::errc::invalid_argument || stop != end)
        throw a.Wrong("not a number");
    if (error != std::errc() || !(number >= low && number <= high))
        throw a.Wrong("not within " + range);
    return number;
}

int32_t WholeNumber(const Argument& a, int32_t low, int32_t high)
{
    const double number = Number(a, low, high, std::to_string(low) + " to " + std::to_string(high));
    if (number != std::floor(number))
        throw a.Wrong("not a whole number");
    return int32_t(number);
}

template <class Table>
auto Named(const Argument& a, const Table& table)
{
    std::string names;
    for (const auto& row : table) {
        if (a.value == row.name)
            return row;
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    }
    throw a.Wrong("not one of " + names);
}

// Stretch, tempo and duration are three ways to say one thing.
void SetLengthOnce(bool* given, const Argument& a)
{
    if (*given)
        throw a.Wrong("only one of --time, --tempo and --duration can be given");
    *given = true;
}

struct Parsed {
    Options options;
    bool lengthGiven = false;
};

using Setter = void (*)(Parsed*, const Argument&);

struct Option {
    char letter;   // 0: none
    const char* name;
    Setter take;              // with a value,
    void (*flag)(Options*);   // or without one
};

constexpr Option kOptions[] = {
    {'t', "time",
     [](Parsed* p, const Argument& a) {
         SetLengthOnce(&p->lengthGiven, a);
         p->options.stretch = Number(a, 0.1, 10.0, "0.1 to 10");
     },
     nullptr},
    {'T', "tempo",
     [](Parsed* p, const Argument& a) {
         SetLengthOnce(&p->lengthGiven, a);
         p->options.stretch = 1.0 / Number(a, 0.1, 10.0, "0.1 to 10");
     },
     nullptr},
    {'D', "duration",
     [](Parsed* p, const Argument& a) {
         SetLengthOnce(&p->lengthGiven, a);
         p->options.duration = Number(a, 1e-6, 1e9, "0.000001 to 1000000000 seconds");
     },
     nullptr},
    {'p', "pitch",
     [](Parsed* p, const Argument& a) { p->options.pitch = Number(a, -24.0, 24.0, "-24 to 24 semitones"); }, nullptr},
    {'F', "formant",
     [](Parsed* p, const Argument& a) { p->options.formant = Number(a, 0.0, 100.0, "0 to 100 percent"); }, nullptr},
    {'c', "content", [](Parsed* p, const Argument& a) { p->options.content = WholeNumber(a, 3, 9); }, nullptr},
    {'m', "mode", [](Parsed* p, const Argument& a) { p->options.mode = Named(a, kModes).mode; }, nullptr},
    {0, "sync", [](Parsed* p, const Argument& a) { p->options.sync = WholeNumber(a, 0, 1) == 1; }, nullptr},
    {0, "block", [](Parsed* p, const Argument& a) { p->options.block = uint32_t(WholeNumber(a, 1, 1 << 20)); },
     nullptr},
    {0, "format", [](Parsed* p, const Argument& a) { p->options.container = Named(a, Containers()).container; },
     nullptr},
    {0, "bits", [](Parsed* p, const Argument& a) { p->options.encoding = Named(a, kBits).encoding; }, nullptr},
    {0, "preset", [](Parsed* p, const Argument& a) { p->options.preset = a.value; }, nullptr},
    {0, "load-state", [](Parsed* p, const Argument& a) { p->options.loadState = a.value; }, nullptr},
    {0, "save-state", [](Parsed* p, const Argument& a) { p->options.saveState = a.value; }, nullptr},
    {0, "automation", [](Parsed* p, const Argument& a) { p->options.automation = a.value; }, nullptr},
    {0, "list-presets", nullptr, [](Options* o) { o->action = Options::Action::kListPresets; }},
    {0, "list-params", nullptr, [](Options* o) { o->action = Options::Action::kListParams; }},
    {'q', "quiet", nullptr, [](Options* o) { o->quiet = true; }},
    {0, "json", nullptr, [](Options* o) { o->json = true; }},
    {0, "version", nullptr, [](Options* o) { o->action = Options::Action::kVersion; }},
    {'h', "help", nullptr, [](Options* o) { o->action = Options::Action::kHelp; }},
};

const Option& FindOption(std::string_view written)
{
    const bool isLong = written.starts_with("--");
    const std::string_view name = written.substr(isLong ? 2 : 1);
    for (const Option& option : kOptions)
        if (isLong ? name == option.name : option.letter && name.size() == 1 && name[0] == option.letter)
            return option;
    throw UsageFailure(std::string(written) + ": no such option; see --help");
}

// An argument as far as it names an option, and the value that is attached to it: --time=2, -t2.
struct Split {
    std::string option;
    std::optional<std::string> value;
};

Split SplitArgument(const std::string& argument)
{
    if (argument.starts_with("--")) {
        const size_t equals = argument.find('=');
        if (equals == std::string::npos)
            return {argument, {}};
        return {argument.substr(0, equals), argument.substr(equals + 1)};
    }
    if (argument.size() == 2)
        return {argument, {}};
    return {argument.substr(0, 2), argument.substr(2)};
}

void TakePlace(Options* options, const std::string& argument)
{
    if (options->input.empty())
        options->input = argument;
    else if (options->output.empty())
        options->output = argument;
    else
        throw UsageFailure(argument + ": one input and one output are all there is; see --help");
    if (argument.empty())
        throw UsageFailure("a file name is empty");
    if (argument == "-")
        throw UsageFailure("-: audio comes from files and goes to files; ./- names a file");
}

void CheckTogether(Options* options)
{
    if (options->preset && options->loadState)
        throw UsageFailure("--load-state " + *options->loadState +
                           ": only one of --preset and --load-state can be given");
    if (options->action != Options::Action::kRender || !options->output.empty())
        return;
    if (!options->input.empty())
        throw UsageFailure(options->input + ": an output file is needed too; see --help");
    if (!options->saveState)
        throw UsageFailure("an input and an output file are needed; see --help");
    options->action = Options::Action::kSaveState;
    if (options->duration)
        throw UsageFailure("--duration: there is no input to bring to a duration");
}

}   // namespace

Options ParseOptions(std::span<char* const> arguments)
{
    Parsed parsed;
    bool optionsEnd = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string argument = arguments[i];
        if (optionsEnd || argument.size() < 2 || argument[0] != '-') {
            TakePlace(&parsed.options, argument);
            continue;
        }
        if (argument == "--") {
            optionsEnd = true;
            continue;
        }
        auto [written, value] = SplitArgument(argument);
        const Option& option = FindOption(written);
        if (option.flag) {
            if (value)
                throw UsageFailure(argument + ": " + written + " takes no value");
            option.flag(&parsed.options);
            continue;
        }
        if (!value && ++i < arguments.size())
            value = arguments[i];
        if (!value)
            throw UsageFailure(written + ": a value is missing");
        option.take(&parsed, {written, *value});
    }
    CheckTogether(&parsed.options);
    return parsed.options;
}

const char* HelpText()
{
    return "usage: vantor [options] INPUT OUTPUT\n"
           "       vantor analyze WHAT INPUT ...\n"
           "Changes the duration and the pitch of a recording, each without the other.\n"
           "  -t, --time X            output duration / input duration, 0.1 to 10\n"
           "  -T, --tempo X           the same told as a tempo, 1/X\n"
           "  -D, --duration SEC      output duration in seconds, exact to the frame\n"
           "  -p, --pitch ST          pitch shift in semitones, -24 to 24, fractions too\n"
           "  -F, --formant PERCENT   0 keeps the formants, 100 (default) lets them follow\n"
           "  -c, --content 3..9      lowest pitch of the content, 86 to 5512 Hz; default 7\n"
           "  -m, --mode MODE         pro (default), efficient, soloist-mono, soloist-speech\n"
           "      --sync 0|1          1 keeps the output in time while the pitch glides\n"
           "      --preset N|NAME     start from a preset;  --list-presets shows them\n"
           "      --automation FILE   curves: PARAM START END FROM TO CURVE, a line each;\n"
           "                          --list-params shows names, ranges and curves\n"
           "      --save-state FILE, --load-state FILE    the settings as hosts keep them\n"
           "      --block FRAMES      host block size, 1 to 1048576; default 4096\n"
           "      --format NAME       wav, w64, rf64, aiff, flac, ogg or opus; default: by\n"
           "                          OUTPUT's extension, or else as the input\n"
           "      --bits N            8, 16, 24, 32, 32f or 64f; default: as the input\n"
           "  -q, --quiet             no progress bar, no remarks\n"
           "      --json, --version, --help\n"
           "OUTPUT appears when it is whole. Exit status: 0 done, 1 data, 2 usage.\n";
}

const char* ModeName(int32_t mode)
{
    if (mode == kModePro + 1 || mode == kModeEfficient + 1)   // numbers that run as the mode before them
        --mode;
    const auto* const row = std::ranges::find(kModes, mode, &ModeEntry::mode);
    return row == std::end(kModes) ? "" : row->name;
}
