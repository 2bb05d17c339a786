#include "tools/audio_file.h"
#include "tools/failure.h"
#include "tools/utf8_path.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace {

constexpr ContainerEntry kContainers[] = {
    {"wav", ".wav.wave.", Container::kWav}, {"w64", ".w64.", Container::kW64},
    {"rf64", ".rf64.", Container::kRf64},   {"aiff", ".aiff.aif.aifc.", Container::kAiff},
    {"flac", ".flac.", Container::kFlac},   {"ogg", ".ogg.oga.", Container::kOgg},
    {"opus", ".opus.", Container::kOpus},
};

// Names of formats that are read at most. Whoever asks for one of them is told so instead of getting another.
constexpr char kNotWritten[] = ".mp3.m4a.mp4.aac.wma.caf.au.snd.voc.svx.iff.sf.raw.ape.wv.mka.webm.";

bool IsLossy(Container container)
{
    return container == Container::kOgg || container == Container::kOpus;
}

bool Holds(Container container, Encoding encoding)
{
    if (container == Container::kFlac)
        return encoding <= Encoding::kPcm24;
    return (encoding == Encoding::kLossy) == IsLossy(container) && encoding != Encoding::kOther;
}

bool Lists(std::string_view extensions, const std::string& extension)
{
    return extension.size() > 1 && extensions.find(extension + ".") != std::string_view::npos;
}

std::optional<Container> ByExtension(const std::string& path)
{
    std::string extension = Utf8Name(Utf8Path(path).extension());
    std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    for (const ContainerEntry& entry : kContainers)
        if (Lists(entry.extensions, extension))
            return entry.container;
    if (Lists(kNotWritten, extension))
        throw UsageFailure(path + ": this format cannot be written; another can be chosen with --format");
    return {};
}

// What comes nearest to an input's encoding without losing of it more than the container must.
Encoding Nearest(Container container, Encoding input)
{
    if (IsLossy(container))
        return Encoding::kLossy;
    if (Holds(container, input))
        return input;
    const bool coarse = input == Encoding::kLossy || input == Encoding::kOther;
    return coarse ? Encoding::kPcm16 : Encoding::kPcm24;
}

}   // namespace

std::span<const ContainerEntry> Containers()
{
    return kContainers;
}

AudioFormat ChooseFormat(const AudioFormat& input, const std::string& outputPath, std::optional<Container> container,
                         std::optional<Encoding> encoding)
{
    AudioFormat format = input;
    format.container = container ? *container : ByExtension(outputPath).value_or(input.container);
    if (format.container == Container::kOther)
        throw UsageFailure(outputPath + ": no format is known for this name, and the input's cannot be written; "
                                        "give one with --format");
    if (encoding && !Holds(format.container, *encoding)) {
        const auto* const row = std::ranges::find(kContainers, format.container, &ContainerEntry::container);
        throw UsageFailure("--bits: " + std::string(row->name) + " does not hold such samples");
    }
    format.encoding = encoding ? *encoding : Nearest(format.container, input.encoding);
    return format;
}
