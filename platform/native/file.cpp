// Open files.
#include "platform/native/file_sharing.h"
#include "platform/native/file_time.h"
#include "platform/native/handle_table.h"
#include "platform/native/path.h"
#include "platform/native/refusal.h"

#include <fileapi.h>
#include <winnt.h>

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace {

class File : public HandleObject {
public:
    File(int descriptor_, FileIdentity identity_, FileUse use_)
        : descriptor(descriptor_), identity(identity_), use(use_)
    {
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() override
    {
        if (!deletePath.empty())
            unlink(deletePath.c_str());
        close(descriptor);
        EndFileUse(identity, use);
    }

    const int descriptor;
    const FileIdentity identity;
    const FileUse use;
    std::string deletePath;   // set for a file that goes with its handle
};

int OpenFlags(DWORD access)
{
    if (access & GENERIC_WRITE)
        return access & GENERIC_READ ? O_RDWR : O_WRONLY;
    return O_RDONLY;
}

bool IsReadOnly(const struct stat& info)
{
    return (info.st_mode & 0222) == 0;
}

struct Opened {
    int descriptor = -1;
    bool existed = false;
    DWORD error = ERROR_SUCCESS;
};

// Opens without touching the content: what an open destroys waits until the sharing rule has agreed. An existing file
// and a new one are told apart by the exclusive flag, so two openers never both think that they made it.
Opened OpenOrCreate(const std::string& path, DWORD access, DWORD disposition, DWORD attributes)
{
    const bool mayCreate = disposition == CREATE_NEW || disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
    const int flags = OpenFlags(access | (disposition == CREATE_ALWAYS ? GENERIC_WRITE : 0)) | O_CLOEXEC;
    if (mayCreate) {
        const mode_t mode = attributes & FILE_ATTRIBUTE_READONLY ? 0444 : 0666;
        if (const int made = open(path.c_str(), flags | O_CREAT | O_EXCL, mode); made >= 0)
            return {made, false, ERROR_SUCCESS};
        if (errno != EEXIST)
            return {-1, false, PathError(path, errno)};
        if (disposition == CREATE_NEW)
            return {-1, true, ERROR_FILE_EXISTS};
    }
    const int found = open(path.c_str(), flags | O_NONBLOCK);
    return {found, true, found >= 0 ? ERROR_SUCCESS : PathError(path, errno)};
}

DWORD CheckOpened(const Opened& opened, const struct stat& info, DWORD access)
{
    if (S_ISDIR(info.st_mode))
        return ERROR_ACCESS_DENIED;
    // The superuser could write; the platform's read-only attribute holds for everyone.
    return opened.existed && (access & GENERIC_WRITE) && IsReadOnly(info) ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

bool IsDisposition(DWORD disposition, DWORD access)
{
    if (disposition == TRUNCATE_EXISTING)
        return access & GENERIC_WRITE;
    return disposition >= CREATE_NEW && disposition <= OPEN_ALWAYS;
}

bool Empties(const Opened& opened, DWORD disposition)
{
    return opened.existed && (disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING);
}

std::shared_ptr<File> FileFor(HANDLE hFile, DWORD access)
{
    auto file = ObjectOf<File>(hFile);
    if (!file)
        return Refuse<std::shared_ptr<File>>(ERROR_INVALID_HANDLE);
    if ((file->use.access & access) != access)
        return Refuse<std::shared_ptr<File>>(ERROR_ACCESS_DENIED);
    return file;
}

// Reads or writes until all is done, the end is reached or an error comes.
template <class Buffer, class Transfer>
BOOL TransferAll(Transfer transfer, int descriptor, Buffer* p, DWORD cb, DWORD* pcbDone)
{
    DWORD done = 0;
    ssize_t step = 1;
    while (done < cb && step > 0) {
        step = transfer(descriptor, p + done, cb - done);
        if (step < 0 && errno == EINTR)
            step = 1;
        else if (step > 0)
            done += DWORD(step);
    }
    if (pcbDone)
        *pcbDone = done;
    return step >= 0 ? TRUE : Refuse(ErrorFromErrno(errno));
}

int Whence(DWORD from)
{
    return from == FILE_BEGIN ? SEEK_SET : from == FILE_CURRENT ? SEEK_CUR : SEEK_END;
}

// The new position, or -1 with the thread's error set.
int64_t MovePointer(HANDLE hFile, int64_t distance, DWORD from)
{
    const auto file = FileFor(hFile, 0);
    if (!file)
        return -1;
    if (from > FILE_END)
        return Refuse<int64_t>(ERROR_INVALID_PARAMETER, -1);
    const int64_t position = lseek(file->descriptor, distance, Whence(from));
    return position >= 0 ? position : Refuse<int64_t>(ERROR_NEGATIVE_SEEK, -1);
}

}   // namespace

HANDLE CreateFileW(LPCWSTR pszPath, DWORD dwAccess, DWORD dwShare, SECURITY_ATTRIBUTES*, DWORD dwDisposition,
                   DWORD dwFlags, HANDLE)
{
    const std::string path = NativePath(pszPath);
    if (!IsDisposition(dwDisposition, dwAccess))
        return Refuse(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
    const Opened opened = OpenOrCreate(path, dwAccess, dwDisposition, dwFlags);
    if (opened.descriptor < 0)
        return Refuse(opened.error, INVALID_HANDLE_VALUE);
    struct stat info = {};
    fstat(opened.descriptor, &info);
    const FileIdentity identity = {info.st_dev, info.st_ino};
    const DWORD deletes = dwFlags & FILE_FLAG_DELETE_ON_CLOSE ? DELETE : 0;
    const FileUse use = {(dwAccess & (GENERIC_READ | GENERIC_WRITE | DELETE)) | deletes, dwShare};
    const DWORD neededAccess = dwAccess | (dwDisposition == CREATE_ALWAYS ? GENERIC_WRITE : 0);
    DWORD error = CheckOpened(opened, info, neededAccess);
    if (error == ERROR_SUCCESS && !BeginFileUse(identity, use))
        error = ERROR_SHARING_VIOLATION;
    if (error != ERROR_SUCCESS) {
        close(opened.descriptor);
        return Refuse(error, INVALID_HANDLE_VALUE);
    }
    const auto file = std::make_shared<File>(opened.descriptor, identity, use);
    if (Empties(opened, dwDisposition) && ftruncate(opened.descriptor, 0) != 0)
        return Refuse(ErrorFromErrno(errno), INVALID_HANDLE_VALUE);
    if (deletes)
        file->deletePath = path;
    const bool tells = dwDisposition == CREATE_ALWAYS || dwDisposition == OPEN_ALWAYS;
    SetLastError(tells && opened.existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return OpenHandle(file);
}

BOOL CloseHandle(HANDLE hObject)
{
    return CloseHandleEntry(hObject) ? TRUE : Refuse(ERROR_INVALID_HANDLE);
}

BOOL ReadFile(HANDLE hFile, LPVOID p, DWORD cb, DWORD* pcbRead, void*)
{
    if (pcbRead)
        *pcbRead = 0;
    const auto file = FileFor(hFile, GENERIC_READ);
    return file && TransferAll(read, file->descriptor, static_cast<BYTE*>(p), cb, pcbRead);
}

BOOL WriteFile(HANDLE hFile, LPCVOID p, DWORD cb, DWORD* pcbWritten, void*)
{
    if (pcbWritten)
        *pcbWritten = 0;
    const auto file = FileFor(hFile, GENERIC_WRITE);
    return file && TransferAll(write, file->descriptor, static_cast<const BYTE*>(p), cb, pcbWritten);
}

BOOL FlushFileBuffers(HANDLE hFile)
{
    const auto file = FileFor(hFile, GENERIC_WRITE);
    if (!file)
        return FALSE;
    return fsync(file->descriptor) == 0 ? TRUE : Refuse(ErrorFromErrno(errno));
}

DWORD SetFilePointer(HANDLE hFile, LONG nLow, LONG* pHigh, DWORD dwFrom)
{
    const int64_t distance = pHigh ? int64_t(uint64_t(uint32_t(*pHigh)) << 32 | DWORD(nLow)) : int64_t(nLow);
    const int64_t before = MovePointer(hFile, 0, FILE_CURRENT);
    const int64_t position = before < 0 ? before : MovePointer(hFile, distance, dwFrom);
    if (position < 0)
        return INVALID_SET_FILE_POINTER;
    if (!pHigh && position > int64_t(UINT32_MAX)) {   // the result would not fit, so nothing moves
        MovePointer(hFile, before, FILE_BEGIN);
        return Refuse<DWORD>(ERROR_INVALID_PARAMETER, INVALID_SET_FILE_POINTER);
    }
    if (pHigh)
        *pHigh = LONG(position >> 32);
    if (DWORD(position) == INVALID_SET_FILE_POINTER)
        SetLastError(NO_ERROR);
    return DWORD(position);
}

BOOL SetFilePointerEx(HANDLE hFile, LARGE_INTEGER distance, LARGE_INTEGER* pNewPosition, DWORD dwFrom)
{
    const int64_t position = MovePointer(hFile, distance.QuadPart, dwFrom);
    if (position < 0)
        return FALSE;
    if (pNewPosition)
        pNewPosition->QuadPart = position;
    return TRUE;
}

BOOL SetEndOfFile(HANDLE hFile)
{
    const auto file = FileFor(hFile, GENERIC_WRITE);
    if (!file)
        return FALSE;
    const off_t position = lseek(file->descriptor, 0, SEEK_CUR);
    return position >= 0 && ftruncate(file->descriptor, position) == 0 ? TRUE : Refuse(ErrorFromErrno(errno));
}

BOOL GetFileSizeEx(HANDLE hFile, LARGE_INTEGER* pSize)
{
    const auto file = FileFor(hFile, 0);
    struct stat info;
    if (!file || !pSize)
        return Refuse(file ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
    if (fstat(file->descriptor, &info) != 0)
        return Refuse(ErrorFromErrno(errno));
    pSize->QuadPart = info.st_size;
    return TRUE;
}

DWORD GetFileSize(HANDLE hFile, DWORD* pHigh)
{
    LARGE_INTEGER size;
    if (!GetFileSizeEx(hFile, &size))
        return INVALID_FILE_SIZE;
    if (pHigh)
        *pHigh = DWORD(size.QuadPart >> 32);
    if (DWORD(size.QuadPart) == INVALID_FILE_SIZE)
        SetLastError(NO_ERROR);
    return DWORD(size.QuadPart);
}

BOOL GetFileTime(HANDLE hFile, FILETIME* pCreation, FILETIME* pLastAccess, FILETIME* pLastWrite)
{
    const auto file = FileFor(hFile, 0);
    struct stat info;
    if (!file)
        return FALSE;
    if (fstat(file->descriptor, &info) != 0)
        return Refuse(ErrorFromErrno(errno));
    if (pCreation)
        *pCreation = ToFileTime(info.st_ctim);   // the nearest that the system below keeps
    if (pLastAccess)
        *pLastAccess = ToFileTime(info.st_atim);
    if (pLastWrite)
        *pLastWrite = ToFileTime(info.st_mtim);
    return TRUE;
}
