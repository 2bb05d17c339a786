// Files and folders by name.
#include "platform/native/file_sharing.h"
#include "platform/native/file_time.h"
#include "platform/native/path.h"
#include "platform/native/refusal.h"
#include "platform/native/wide_text.h"

#include <fileapi.h>
#include <winnt.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

bool IsReadOnly(const struct stat& info)
{
    return (info.st_mode & 0222) == 0;
}

// Whether a file may go from its name: nobody has it open without sharing that.
DWORD CheckRemovable(const struct stat& info)
{
    const FileUse use = {DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE};
    return AllowsFileUse({info.st_dev, info.st_ino}, use) ? ERROR_SUCCESS : ERROR_SHARING_VIOLATION;
}

DWORD CheckReplaceable(const struct stat& info)
{
    return S_ISDIR(info.st_mode) || IsReadOnly(info) ? ERROR_ACCESS_DENIED : CheckRemovable(info);
}

// Over a device's edge a name cannot move: the content is copied and the source goes.
DWORD CopyAndRemove(const std::string& from, const std::string& to, bool replace)
{
    const auto options =
        replace ? std::filesystem::copy_options::overwrite_existing : std::filesystem::copy_options::none;
    std::error_code code;
    std::filesystem::copy_file(from, to, options, code);
    if (code)
        return ErrorFromErrno(code.value());
    return unlink(from.c_str()) == 0 ? DWORD(ERROR_SUCCESS) : ErrorFromErrno(errno);
}

DWORD Move(const std::string& from, const std::string& to, DWORD flags)
{
    const bool replace = flags & MOVEFILE_REPLACE_EXISTING;
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), replace ? 0 : RENAME_NOREPLACE) == 0)
        return ERROR_SUCCESS;
    if (errno == EXDEV && (flags & MOVEFILE_COPY_ALLOWED))
        return CopyAndRemove(from, to, replace);
    return errno == ENOENT ? DWORD(ERROR_PATH_NOT_FOUND) : ErrorFromErrno(errno);
}

}   // namespace

FILETIME ToFileTime(const timespec& time)
{
    constexpr int64_t kSecondsFrom1601 = 11644473600;
    const uint64_t ticks = uint64_t(time.tv_sec + kSecondsFrom1601) * 10'000'000 + uint64_t(time.tv_nsec) / 100;
    return {DWORD(ticks), DWORD(ticks >> 32)};
}

BOOL DeleteFileW(LPCWSTR pszPath)
{
    const std::string path = NativePath(pszPath);
    struct stat info;
    if (lstat(path.c_str(), &info) != 0)
        return Refuse(PathError(path, errno));
    if (const DWORD error = CheckReplaceable(info))
        return Refuse(error);
    return unlink(path.c_str()) == 0 ? TRUE : Refuse(PathError(path, errno));
}

BOOL MoveFileExW(LPCWSTR pszFrom, LPCWSTR pszTo, DWORD dwFlags)
{
    const std::string from = NativePath(pszFrom), to = NativePath(pszTo);
    if (dwFlags & ~(MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED))
        return Refuse(ERROR_INVALID_PARAMETER);
    struct stat source, target;
    if (lstat(from.c_str(), &source) != 0)
        return Refuse(PathError(from, errno));
    DWORD error = CheckRemovable(source);
    const bool same =
        lstat(to.c_str(), &target) == 0 && target.st_ino == source.st_ino && target.st_dev == source.st_dev;
    if (!error && !same && lstat(to.c_str(), &target) == 0)
        error = dwFlags & MOVEFILE_REPLACE_EXISTING ? CheckReplaceable(target) : ERROR_ALREADY_EXISTS;
    if (!error)
        error = Move(from, to, same ? dwFlags | MOVEFILE_REPLACE_EXISTING : dwFlags);
    return error ? Refuse(error) : TRUE;
}

DWORD GetFileAttributesW(LPCWSTR pszPath)
{
    const std::string path = NativePath(pszPath);
    struct stat info;
    if (stat(path.c_str(), &info) != 0)
        return Refuse(PathError(path, errno), INVALID_FILE_ATTRIBUTES);
    const DWORD kind = S_ISDIR(info.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    return kind | (IsReadOnly(info) ? FILE_ATTRIBUTE_READONLY : 0);
}

BOOL SetFileAttributesW(LPCWSTR pszPath, DWORD dwAttributes)
{
    const std::string path = NativePath(pszPath);
    struct stat info;
    if (stat(path.c_str(), &info) != 0)
        return Refuse(PathError(path, errno));
    const mode_t mode = dwAttributes & FILE_ATTRIBUTE_READONLY ? info.st_mode & ~mode_t(0222) : info.st_mode | 0200;
    return chmod(path.c_str(), mode & 07777) == 0 ? TRUE : Refuse(ErrorFromErrno(errno));
}

BOOL CreateDirectoryW(LPCWSTR pszPath, SECURITY_ATTRIBUTES*)
{
    const std::string path = NativePath(pszPath);
    if (mkdir(path.c_str(), 0777) == 0)
        return TRUE;
    return Refuse(errno == ENOENT ? DWORD(ERROR_PATH_NOT_FOUND) : ErrorFromErrno(errno));
}

BOOL RemoveDirectoryW(LPCWSTR pszPath)
{
    const std::string path = NativePath(pszPath);
    if (rmdir(path.c_str()) == 0)
        return TRUE;
    return Refuse(errno == ENOTDIR ? DWORD(ERROR_DIRECTORY) : PathError(path, errno));
}

DWORD GetTempPathW(DWORD cch, LPWSTR pszOut)
{
    const char* const folder = std::getenv("TMPDIR");
    WideString path = FromUtf8(folder && *folder ? folder : "/tmp");
    if (!path.ends_with(u'/'))
        path += u'/';
    if (!pszOut || cch <= path.size())
        return DWORD(path.size() + 1);
    std::memcpy(pszOut, path.c_str(), (path.size() + 1) * sizeof(WCHAR));
    return DWORD(path.size());
}

UINT GetTempFileNameW(LPCWSTR pszFolder, LPCWSTR pszPrefix, UINT nUnique, LPWSTR pszOut)
{
    constexpr UINT kNames = 0xFFFF;
    const std::string folder = NativePath(pszFolder), prefix = NativePath(pszPrefix).substr(0, 3);
    struct stat info;
    if (stat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode))
        return Refuse<UINT>(ERROR_DIRECTORY);
    const UINT first = nUnique ? nUnique & kNames : UINT(getpid()) & kNames;
    for (UINT i = 0; i < kNames; ++i) {
        const UINT number = (first + i) & kNames;
        std::array<char, 16> tail;
        std::snprintf(tail.data(), tail.size(), "%x.tmp", number);
        const std::string path = folder + (folder.ends_with('/') ? "" : "/") + prefix + tail.data();
        const WideString wide = FromUtf8(path);
        if (wide.size() >= size_t(MAX_PATH))
            return Refuse<UINT>(ERROR_FILENAME_EXCED_RANGE);
        const int made = nUnique ? -1 : open(path.c_str(), O_CREAT | O_EXCL | O_CLOEXEC | O_WRONLY, 0666);
        if (made >= 0)
            close(made);
        else if (!nUnique && (number == 0 || errno == EEXIST))
            continue;
        else if (!nUnique)
            return Refuse<UINT>(ErrorFromErrno(errno));
        std::memcpy(pszOut, wide.c_str(), (wide.size() + 1) * sizeof(WCHAR));
        return number;
    }
    return Refuse<UINT>(ERROR_FILE_EXISTS);
}

BOOL GetDiskFreeSpaceExW(LPCWSTR pszFolder, ULARGE_INTEGER* pFreeToCaller, ULARGE_INTEGER* pTotal,
                         ULARGE_INTEGER* pFree)
{
    const std::string path = pszFolder ? NativePath(pszFolder) : ".";
    struct statvfs info;
    if (statvfs(path.c_str(), &info) != 0)
        return Refuse(errno == ENOENT ? DWORD(ERROR_PATH_NOT_FOUND) : ErrorFromErrno(errno));
    if (pFreeToCaller)
        pFreeToCaller->QuadPart = uint64_t(info.f_bavail) * info.f_frsize;
    if (pTotal)
        pTotal->QuadPart = uint64_t(info.f_blocks) * info.f_frsize;
    if (pFree)
        pFree->QuadPart = uint64_t(info.f_bfree) * info.f_frsize;
    return TRUE;
}
