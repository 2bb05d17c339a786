#include "platform/native/path.h"

#include "platform/native/refusal.h"
#include "platform/native/wide_text.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>

std::string NativePath(LPCWSTR pszPath)
{
    std::string path = pszPath ? ToUtf8(pszPath) : std::string();
    std::ranges::replace(path, '\\', '/');
    return path;
}

DWORD PathError(const std::string& path, int error)
{
    if (error != ENOENT)
        return ErrorFromErrno(error);
    const size_t end = path.find_last_of('/');
    struct stat folder;
    const bool hasFolder = end == std::string::npos || end == 0 ||
                           (stat(path.substr(0, end).c_str(), &folder) == 0 && S_ISDIR(folder.st_mode));
    return hasFolder && !path.empty() ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}
