#include "tools/output_file.h"

#include "tools/failure.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int kMostTries = 100;

bool SameFile(const struct stat& a, const std::string& path)
{
    struct stat b {};
    return stat(path.c_str(), &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}   // namespace

OutputFile::OutputFile(const std::string& place, const std::string& input) : name(place)
{
    struct stat existing {};
    const bool exists = stat(name.c_str(), &existing) == 0;
    if (exists) {
        if (SameFile(existing, input))
            throw UsageFailure(name + ": input and output are the same file");
        if (S_ISDIR(existing.st_mode))
            throw DataFailure(name + ": a folder, not a file");
        if (!S_ISREG(existing.st_mode))
            throw DataFailure(name + ": not a regular file");
        if (access(name.c_str(), W_OK) != 0)
            throw DataFailure(name + ": cannot write: " + std::strerror(errno));
    }
    std::error_code error;
    const fs::path resolved = fs::weakly_canonical(name, error);
    const fs::path path = error ? fs::path(name) : resolved;
    target = path.string();
    for (int i = 0; i < kMostTries && descriptor < 0; ++i) {
        const std::string unique = std::to_string(getpid()) + "-" + std::to_string(i);
        temporary = (path.parent_path() / (".vantor-" + unique + ".part")).string();
        descriptor = open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0 && errno != EEXIST)
            break;
    }
    if (descriptor < 0)
        throw DataFailure(name + ": cannot write: " + std::strerror(errno));
    if (exists)
        fchmod(descriptor, existing.st_mode & 0777);
}

OutputFile::~OutputFile()
{
    if (descriptor < 0)
        return;
    close(descriptor);
    unlink(temporary.c_str());
}

void OutputFile::Write(std::string_view contents)
{
    while (!contents.empty()) {
        const ssize_t written = write(descriptor, contents.data(), contents.size());
        if (written < 0 && errno != EINTR)
            throw DataFailure(name + ": cannot write: " + std::strerror(errno));
        contents.remove_prefix(size_t(std::max<ssize_t>(written, 0)));
    }
}

void OutputFile::Commit()
{
    if (close(descriptor) != 0) {
        unlink(temporary.c_str());
        descriptor = -1;
        throw DataFailure(name + ": cannot write: " + std::strerror(errno));
    }
    descriptor = -1;
    if (std::rename(temporary.c_str(), target.c_str()) != 0) {
        const std::string reason = std::strerror(errno);
        unlink(temporary.c_str());
        throw DataFailure(name + ": cannot be put in its place: " + reason);
    }
}
