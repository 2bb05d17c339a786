// The whole command line program, its reading and writing included, against the driver alone.
#include "bench/compare/cpu_time.h"
#include "bench/compare/own_driver.h"
#include "bench/compare/row.h"

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

void Put(std::FILE* file, uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        std::fputc(int(value >> (8 * i) & 255), file);
}

// 16-bit PCM.
void WriteWave(const std::filesystem::path& path, const Material& m)
{
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        std::exit((std::fprintf(stderr, "compare: cannot write %s\n", path.c_str()), 1));
    const auto bytes = uint32_t(2 * m.interleaved.size()), channels = uint32_t(m.channels), rate = uint32_t(m.rate);
    std::fputs("RIFF", file);
    Put(file, 36 + bytes, 4);
    std::fputs("WAVEfmt ", file);
    Put(file, 16, 4);
    Put(file, 1, 2);
    Put(file, channels, 2);
    Put(file, rate, 4);
    Put(file, 2 * channels * rate, 4);
    Put(file, 2 * channels, 2);
    Put(file, 16, 2);
    std::fputs("data", file);
    Put(file, bytes, 4);
    for (const float v : m.interleaved)
        Put(file, uint32_t(int32_t(32767.0f * v)), 2);
    std::fclose(file);
}

// Processor time of a finished program, the system's part for it included.
double ProgramSeconds(const std::vector<std::string>& command)
{
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0)
        std::exit((std::fprintf(stderr, "compare: %s failed\n", command[0].c_str()), 1));
    const auto seconds = [](const timeval& t) { return double(t.tv_sec) + 1e-6 * double(t.tv_usec); };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double MedianShare(const std::vector<std::string>& command, const Work& driver)
{
    std::vector<double> shares;
    for (int i = 0; i < kManyRounds; ++i) {
        const double before = CpuSecondsOf(driver), program = ProgramSeconds(command), after = CpuSecondsOf(driver);
        shares.push_back(program / (0.5 * (before + after)));
    }
    return Median(shares);
}

}   // namespace

Section ProgramRows()
{
    Section section{"The program",
                    "Time of `vantor` on 60 s of stereo WAV (16 bits), reading and writing included, as a "
                    "share of the driver's own; stretch 1.25.",
                    {}};
    std::string folder = (std::filesystem::temp_directory_path() / "compare-XXXXXX").string();
    if (!mkdtemp(folder.data()))
        std::exit((std::fputs("compare: no folder for scratch files\n", stderr), 1));
    const std::string in = folder + "/in.wav", out = folder + "/out.wav";
    const Material music = Music(60.0);
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);   // the driver's memory is as new in every run as it is in a new process
    WriteWave(in, music);
    static constexpr const char* kOptions[] = {"efficient", "pro", "soloist-mono", "soloist-speech"};
    for (size_t i = 0; i < std::size(kModes); ++i) {
        const double share = MedianShare({QX_VANTOR_PROGRAM, "-q", "-m", kOptions[i], "-t", "1.25", in, out}, [&] {
            RenderOurs(kModes[i], music, {1.25, 0.0});
        });
        section.rows.push_back({kModes[i].name, share, Bar::kAtMost, 1.15});
    }
    std::filesystem::remove_all(folder);
    return section;
}
