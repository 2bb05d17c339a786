// How a tool ends when it cannot do what was asked: one line that names what and why, and the exit status that says
// whose fault it is.
#pragma once

#include <stdexcept>
#include <string>

constexpr int kExitData = 1;    // the file, the device, the machine
constexpr int kExitUsage = 2;   // the command line

class Failure : public std::runtime_error {
public:
    Failure(int theStatus, const std::string& what) : std::runtime_error(what), status(theStatus) {}
    int Status() const noexcept { return status; }

private:
    int status;
};

inline Failure DataFailure(const std::string& what)
{
    return {kExitData, what};
}

inline Failure UsageFailure(const std::string& what)
{
    return {kExitUsage, what};
}
