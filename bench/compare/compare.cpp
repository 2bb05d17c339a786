// compare [SECTION...]: measures every promise of speed, prints the tables and writes docs/performance.md and
// docs/performance.png below the current folder; with sections named, prints those alone. Status 1 when a bar is missed.
#include "bench/compare/performance_page.h"
#include "bench/compare/row.h"
#include "bench/compare/speed_picture.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sched.h>
#include <span>
#include <string_view>

namespace {

constexpr struct {
    std::string_view name;
    Section (*measure)();
} kSections[] = {
    {"start", StartRows}, {"transform", TransformRows}, {"table", TableRows},     {"efficient", EfficientRows},
    {"pro", ProRows},     {"soloist", SoloistRows},     {"program", ProgramRows}, {"growth", GrowthRows},
    {"graph", GraphRows}, {"memory", MemoryRows},
};

// What takes turns, programs that are run included, then has the same clock and caches.
void StayOnThisProcessor()
{
    cpu_set_t here;
    CPU_ZERO(&here);
    CPU_SET(size_t(sched_getcpu()), &here);
    if (sched_setaffinity(0, sizeof here, &here) != 0)
        std::fputs("compare: the figures scatter, as the processor may change\n", stderr);
}

bool IsSection(std::string_view name)
{
    return std::ranges::any_of(kSections, [name](const auto& s) { return s.name == name; });
}

std::vector<Section> Measure(std::span<char* const> names)
{
    std::vector<Section> sections;
    for (const auto& s : kSections) {
        const bool asked = std::ranges::any_of(names, [&s](const char* name) { return s.name == name; });
        if (!names.empty() && !asked)
            continue;
        sections.push_back(s.measure());
        std::fputs(FormatSection(sections.back()).c_str(), stdout);
        std::fflush(stdout);
    }
    return sections;
}

bool Write(const char* path, const std::string& contents)
{
    std::ofstream file(path, std::ios::binary);
    file << contents;
    file.close();
    if (!file)
        std::fprintf(stderr, "compare: cannot write %s\n", path);
    return !file.fail();
}

}   // namespace

int main(int argc, char** argv)
{
    const std::span<char* const> names(argv + 1, size_t(argc - 1));
    if (!std::ranges::all_of(names, IsSection)) {
        std::fputs("usage: compare [SECTION...]   of:", stderr);
        for (const auto& s : kSections)
            std::fprintf(stderr, " %s", s.name.data());
        std::fputs("\n", stderr);
        return 2;
    }
    StayOnThisProcessor();
    const std::vector<Section> sections = Measure(names);
    if (names.empty() &&
        !(Write("docs/performance.png", SpeedPicture()) && Write("docs/performance.md", FormatPage(sections))))
        return 1;
    int missed = 0;
    for (const Section& section : sections)
        missed += int(std::ranges::count_if(section.rows, [](const Row& row) { return !row.Met(); }));
    std::printf("%d missed\n", missed);
    return missed > 0;
}
