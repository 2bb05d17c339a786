// A progress bar on the terminal, with the time left and the speed; nothing at all when standard error is no terminal.
#pragma once

#include <chrono>
#include <cstdint>

class Progress {
public:
    // total: input frames; rate: frames per second.
    Progress(bool wanted, int64_t total, int32_t rate);
    ~Progress();   // clears the line
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Draws at most ten times a second.
    void Show(int64_t done);
    double Seconds() const;   // since the start

private:
    using Clock = std::chrono::steady_clock;

    bool active;
    int64_t total;
    int32_t rate;
    Clock::time_point start = Clock::now(), drawn = start;
};
