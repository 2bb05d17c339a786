#include "tools/output_file.h"

#include "tools/failure.h"
#include "tools/system.h"
#include "tools/utf8_path.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int kMostTries = 100;

std::string Reason()
{
    return std::strerror(errno);
}

void Remove(const std::string& path)
{
    std::error_code error;
    fs::remove(Utf8Path(path), error);
}

// What stands at the place. Throws when that is not to be replaced.
fs::file_status CheckPlace(const std::string& name, const std::string& input)
{
    std::error_code error;
    const fs::path place = Utf8Path(name);
    const fs::file_status status = fs::status(place, error);
    if (!fs::exists(status))
        return status;
    if (fs::equivalent(place, Utf8Path(input), error))
        throw UsageFailure(name + ": input and output are the same file");
    if (fs::is_directory(status))
        throw DataFailure(name + ": a folder, not a file");
    if (!fs::is_regular_file(status))
        throw DataFailure(name + ": not a regular file");
    if (!std::fstream(place, std::ios::in | std::ios::out | std::ios::binary))
        throw DataFailure(name + ": cannot write: " + Reason());
    return status;
}

}   // namespace

OutputFile::OutputFile(const std::string& place, const std::string& input) : name(place)
{
    const fs::file_status existing = CheckPlace(name, input);
    std::error_code error;
    const fs::path resolved = fs::weakly_canonical(Utf8Path(name), error);
    const fs::path path = error ? Utf8Path(name) : resolved;
    target = Utf8Name(path);
    for (int i = 0; i < kMostTries && descriptor < 0; ++i) {
        const std::string unique = std::to_string(getpid()) + "-" + std::to_string(i);
        temporary = Utf8Name(path.parent_path() / (".vantor-" + unique + ".part"));
        descriptor = CreateNewFile(temporary);
        if (descriptor < 0 && errno != EEXIST)
            break;
    }
    if (descriptor < 0)
        throw DataFailure(name + ": cannot write: " + Reason());
    if (fs::exists(existing))
        fs::permissions(Utf8Path(temporary), existing.permissions(), error);
}

OutputFile::~OutputFile()
{
    if (descriptor < 0)
        return;
    close(descriptor);
    Remove(temporary);
}

void OutputFile::Write(std::string_view contents)
{
    while (!contents.empty()) {
        const ssize_t written = write(descriptor, contents.data(), contents.size());
        if (written < 0 && errno != EINTR)
            throw DataFailure(name + ": cannot write: " + Reason());
        contents.remove_prefix(size_t(std::max<ssize_t>(written, 0)));
    }
}

void OutputFile::Commit()
{
    if (close(descriptor) != 0) {
        const std::string reason = Reason();
        Remove(temporary);
        descriptor = -1;
        throw DataFailure(name + ": cannot write: " + reason);
    }
    descriptor = -1;
    std::error_code error;
    fs::rename(Utf8Path(temporary), Utf8Path(target), error);
    if (error) {
        Remove(temporary);
        throw DataFailure(name + ": cannot be put in its place: " + error.message());
    }
}
