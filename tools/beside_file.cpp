#include "tools/beside_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <unistd.h>

namespace {

[[noreturn]] void Fail(const std::string& path, int reason)
{
    throw std::runtime_error("cannot write " + path + ": " + std::strerror(reason));
}

bool WriteAll(std::FILE* file, const std::string& contents)
{
    const bool written = std::fwrite(contents.data(), 1, contents.size(), file) == contents.size();
    const bool flushed = std::fflush(file) == 0;
    const int reason = errno;
    const bool closed = std::fclose(file) == 0;
    if (!written || !flushed)
        errno = reason;
    return written && flushed && closed;
}

}   // namespace

void WriteBeside(const std::string& path, const std::string& contents)
{
    const std::string beside = path + ".part" + std::to_string(::getpid());
    std::FILE* file = std::fopen(beside.c_str(), "wbx");
    if (!file)
        Fail(path, errno);
    if (!WriteAll(file, contents) || std::rename(beside.c_str(), path.c_str()) != 0) {
        const int reason = errno;
        std::remove(beside.c_str());
        Fail(path, reason);
    }
}
