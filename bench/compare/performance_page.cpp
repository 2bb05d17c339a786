#include "bench/compare/performance_page.h"

#include "bench/compare/peers.h"
#include "dsp/processor_class.h"

#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>

namespace {

std::string Figure(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, value < 1.0 ? "%.2f" : value < 100.0 ? "%.3g" : "%.0f", value);
    return text;
}

std::string FormatBar(const Row& row)
{
    if (!row.bar)
        return "| |";
    return std::string(row.sense == Bar::kAtLeast ? "at least " : "at most ") + Figure(*row.bar) + row.unit +
           (row.Met() ? " | met |" : " | **not met** |");
}

std::string ProcessorName()
{
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);)
        if (line.starts_with("model name"))
            return line.substr(line.find(':') + 2);
    return "unknown";
}

std::string Today()
{
    const std::time_t now = std::time(nullptr);
    char text[16];
    std::strftime(text, sizeof text, "%Y-%m-%d", std::gmtime(&now));
    return text;
}

}   // namespace

std::string FormatSection(const Section& section)
{
    std::string text = "## " + section.title + "\n\n" + section.text + "\n\n";
    if (section.rows.empty())
        return text + "Not measured: the peers' libraries are not installed.\n\n";
    text += "| | measured | bar | |\n|---|---|---|---|\n";
    for (const Row& row : section.rows)
        text += "| " + row.what + " | " + Figure(row.measured) + row.unit + " | " + FormatBar(row) + "\n";
    return text + "\n";
}

std::string FormatPage(const std::vector<Section>& sections)
{
    std::string text = "# Speed, as measured\n\nWritten by `bench/compare` (`bench/README.md`) on " + Today() +
                       ": medians of processor time, each figure against its peer in turn in the same run.\n\n";
    text += "- Processor: " + ProcessorName() + "; vector class `" + ActiveClass().name + "`\n";
    text += "- Compiler: GCC " __VERSION__ ", release build\n";
    text += "- Peers: " + PeerVersions() + "\n\n";
    text +=
        "![Speed over stretch factor](performance.png)\n\n"
        "Where a bar is missed, [performance_limits.md](performance_limits.md) has the profile and what was tried.\n\n";
    for (const Section& section : sections)
        text += FormatSection(section);
    text.pop_back();
    return text;
}
