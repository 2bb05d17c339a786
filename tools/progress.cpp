#include "tools/progress.h"

#include "tools/system.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

constexpr int kBarWidth = 40;
constexpr double kRedrawSeconds = 0.1;
constexpr char kClearLine[] = "\r\033[K";

}   // namespace

Progress::Progress(bool wanted, int64_t totalFrames, int32_t sampleRate)
    : active(wanted && MessagesAreWatched()), total(totalFrames), rate(sampleRate)
{
}

Progress::~Progress()
{
    if (active)
        std::fputs(kClearLine, stderr);
}

double Progress::Seconds() const
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void Progress::Show(int64_t done)
{
    const Clock::time_point now = Clock::now();
    if (!active || done <= 0 || std::chrono::duration<double>(now - drawn).count() < kRedrawSeconds)
        return;
    drawn = now;
    const double part = std::min(1.0, double(done) / double(std::max<int64_t>(total, 1)));
    const double left = Seconds() * (1.0 - part) / part;
    std::string bar(size_t(kBarWidth * part), '=');
    bar.resize(kBarWidth, ' ');
    std::fprintf(stderr, "%s[%s] %3d%%  %d:%02d left  %.1fx", kClearLine, bar.c_str(), int(100.0 * part),
                 int(left) / 60, int(left) % 60, double(done) / rate / Seconds());
    std::fflush(stderr);
}
