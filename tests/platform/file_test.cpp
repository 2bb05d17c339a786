#include "platform/handle.h"
#include "tests/platform/wide.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

Handle Open(const Wide& path, DWORD access, DWORD share, DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL)
{
    return Handle(CreateFileW(path.c_str(), access, share, nullptr, disposition, flags, nullptr));
}

void Put(const Wide& path, const std::string& content)
{
    const Handle file = Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS);
    DWORD written = 0;
    ASSERT_TRUE(WriteFile(file.Get(), content.data(), DWORD(content.size()), &written, nullptr));
    ASSERT_EQ(written, content.size());
}

std::string Get(const Wide& path)
{
    const Handle file = Open(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
    std::array<char, 256> out;
    DWORD read = 0;
    ReadFile(file.Get(), out.data(), DWORD(out.size()), &read, nullptr);
    return std::string(out.data(), read);
}

TEST(File, OpensByDisposition)
{
    const TemporaryFolder folder;
    const Wide path = folder.File(TEXT("a.bin"));
    const struct {
        DWORD disposition;
        bool there;
        DWORD error;   // 0: opens
        size_t left;   // bytes of the four that were there
    } kCases[] = {
        {CREATE_NEW, false, 0, 0},
        {CREATE_NEW, true, ERROR_FILE_EXISTS, 4},
        {CREATE_ALWAYS, false, 0, 0},
        {CREATE_ALWAYS, true, 0, 0},
        {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, 0},
        {OPEN_EXISTING, true, 0, 4},
        {OPEN_ALWAYS, false, 0, 0},
        {OPEN_ALWAYS, true, 0, 4},
        {TRUNCATE_EXISTING, false, ERROR_FILE_NOT_FOUND, 0},
        {TRUNCATE_EXISTING, true, 0, 0},
    };
    for (const auto& c : kCases) {
        DeleteFileW(path.c_str());
        if (c.there)
            Put(path, "four");
        const Handle file = Open(path, kReadWrite, kShareAll, c.disposition);
        const DWORD error = GetLastError();
        EXPECT_EQ(bool(file), c.error == 0) << c.disposition << c.there;
        const bool tells = c.disposition == CREATE_ALWAYS || c.disposition == OPEN_ALWAYS;
        if (c.error || tells) {
            EXPECT_EQ(error, c.error   ? c.error
                             : c.there ? DWORD(ERROR_ALREADY_EXISTS)
                                       : 0u)
                << c.disposition << c.there;
        }
        if (file) {
            EXPECT_EQ(GetFileSize(file.Get(), nullptr), c.left) << c.disposition << c.there;
        }
    }
}

TEST(File, RefusesWhatCannotBeOpened)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(Open(folder.File(TEXT("no/such")), GENERIC_READ, 0, OPEN_EXISTING));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_PATH_NOT_FOUND));
    EXPECT_FALSE(Open(folder.File(TEXT(".")), GENERIC_READ, 0, OPEN_EXISTING));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
    const Wide path = folder.File(TEXT("a"));
    Put(path, "x");
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(DeleteFileW(path.c_str()));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
    EXPECT_EQ(Get(path), "x");
    const Handle closed = Open(path, GENERIC_READ, 0, OPEN_EXISTING);
    BYTE byte;
    DWORD done = 9;
    EXPECT_FALSE(WriteFile(closed.Get(), "y", 1, &done, nullptr));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
    EXPECT_EQ(done, 0u);
    EXPECT_FALSE(ReadFile(HANDLE(UINT_PTR(0x7FFFFFF0)), &byte, 1, &done, nullptr));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
}

TEST(File, HoldsToItsSharing)
{
    const TemporaryFolder folder;
    const Wide path = folder.File(TEXT("a"));
    Put(path, "x");
    const struct {
        DWORD access, share, otherAccess, otherShare;
        bool opens;
    } kCases[] = {
        {GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, true},
        {GENERIC_READ, FILE_SHARE_READ, GENERIC_WRITE, kShareAll, false},
        {GENERIC_WRITE, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, false},
        {GENERIC_WRITE, FILE_SHARE_READ, GENERIC_READ, kShareAll, true},
        {GENERIC_READ, 0, GENERIC_READ, kShareAll, false},
        {kReadWrite, kShareAll, kReadWrite, kShareAll, true},
        {GENERIC_READ, 0, 0, 0, true},
    };
    for (const auto& c : kCases) {
        const Handle first = Open(path, c.access, c.share, OPEN_EXISTING);
        ASSERT_TRUE(first);
        const Handle second = Open(path, c.otherAccess, c.otherShare, OPEN_EXISTING);
        EXPECT_EQ(bool(second), c.opens) << c.access << ' ' << c.share << ' ' << c.otherAccess;
        if (!second) {
            EXPECT_EQ(GetLastError(), DWORD(ERROR_SHARING_VIOLATION));
        }
    }
    const Handle reader = Open(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_FALSE(DeleteFileW(path.c_str()));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_SHARING_VIOLATION));
    EXPECT_FALSE(MoveFileExW(path.c_str(), folder.File(TEXT("b")).c_str(), 0));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_SHARING_VIOLATION));
}

TEST(File, PointerMovesBySignedDistances)
{
    const TemporaryFolder folder;
    const Handle file = Open(folder.File(TEXT("a")), kReadWrite, 0, CREATE_NEW);
    DWORD done = 0;
    ASSERT_TRUE(WriteFile(file.Get(), "0123456789", 10, &done, nullptr));
    EXPECT_EQ(SetFilePointer(file.Get(), -3, nullptr, FILE_CURRENT), 7u);
    EXPECT_EQ(SetFilePointer(file.Get(), -10, nullptr, FILE_END), 0u);
    EXPECT_EQ(SetFilePointer(file.Get(), -1, nullptr, FILE_BEGIN), DWORD(INVALID_SET_FILE_POINTER));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_NEGATIVE_SEEK));
    LONG high = 1;
    EXPECT_EQ(SetFilePointer(file.Get(), 5, &high, FILE_BEGIN), 5u);
    EXPECT_EQ(high, 1);
    high = 0;
    SetLastError(99);
    EXPECT_EQ(SetFilePointer(file.Get(), LONG(0xFFFFFFFF), &high, FILE_BEGIN), 0xFFFFFFFFu);
    EXPECT_EQ(GetLastError(), DWORD(NO_ERROR));
    EXPECT_EQ(high, 0);
    LARGE_INTEGER move, now;
    move.QuadPart = 4;
    ASSERT_TRUE(SetFilePointerEx(file.Get(), move, &now, FILE_BEGIN));
    EXPECT_EQ(now.QuadPart, 4);
    ASSERT_TRUE(SetEndOfFile(file.Get()));
    ASSERT_TRUE(FlushFileBuffers(file.Get()));
    EXPECT_EQ(GetFileSize(file.Get(), nullptr), 4u);
    std::array<char, 8> rest;
    EXPECT_TRUE(ReadFile(file.Get(), rest.data(), 8, &done, nullptr));   // at the end: success with nothing
    EXPECT_EQ(done, 0u);
    move.QuadPart = int64_t(1) << 32;   // extending leaves a hole of zeros
    ASSERT_TRUE(SetFilePointerEx(file.Get(), move, nullptr, FILE_BEGIN));
    ASSERT_TRUE(SetEndOfFile(file.Get()));
    ASSERT_TRUE(GetFileSizeEx(file.Get(), &now));
    EXPECT_EQ(now.QuadPart, move.QuadPart);
    DWORD sizeHigh = 0;
    EXPECT_EQ(GetFileSize(file.Get(), &sizeHigh), 0u);
    EXPECT_EQ(sizeHigh, 1u);
}

TEST(File, MovesAndReplacesOnlyWhenTold)
{
    const TemporaryFolder folder;
    const Wide a = folder.File(TEXT("a")), b = folder.File(TEXT("b"));
    Put(a, "A");
    Put(b, "B");
    EXPECT_FALSE(MoveFileExW(a.c_str(), b.c_str(), 0));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(Get(b), "B");
    EXPECT_TRUE(MoveFileExW(a.c_str(), b.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED));
    EXPECT_EQ(Get(b), "A");
    EXPECT_EQ(GetFileAttributesW(a.c_str()), DWORD(INVALID_FILE_ATTRIBUTES));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_NOT_FOUND));
    EXPECT_FALSE(MoveFileExW(a.c_str(), b.c_str(), 0));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_NOT_FOUND));
}

TEST(File, GoesWithItsHandleWhenTold)
{
    const TemporaryFolder folder;
    {
        const Handle file = Open(folder.File(TEXT("a")), kReadWrite, 0, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE);
        ASSERT_TRUE(file);
        EXPECT_EQ(folder.Names(TEXT("*")).size(), 1u);
        FILETIME written = {};
        EXPECT_TRUE(GetFileTime(file.Get(), nullptr, nullptr, &written));
        EXPECT_GT(written.dwHighDateTime, 0x01D00000u);   // later than 2014
    }
    EXPECT_TRUE(folder.Names(TEXT("*")).empty());
    const HANDLE closed =
        CreateFileW(folder.File(TEXT("b")).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    EXPECT_TRUE(CloseHandle(closed));
    EXPECT_FALSE(CloseHandle(closed));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
}

TEST(Folder, IsMadeOnceAndRemovedEmpty)
{
    const TemporaryFolder folder;
    const Wide sub = folder.File(TEXT("sub"));
    EXPECT_TRUE(CreateDirectoryW(sub.c_str(), nullptr));
    EXPECT_FALSE(CreateDirectoryW(sub.c_str(), nullptr));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ALREADY_EXISTS));
    EXPECT_FALSE(CreateDirectoryW(folder.File(TEXT("no/sub")).c_str(), nullptr));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_PATH_NOT_FOUND));
    EXPECT_TRUE(GetFileAttributesW(sub.c_str()) & FILE_ATTRIBUTE_DIRECTORY);
    Put(sub + TEXT("\\in"), "x");   // both separators are good
    EXPECT_FALSE(RemoveDirectoryW(sub.c_str()));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_DIR_NOT_EMPTY));
    EXPECT_FALSE(DeleteFileW(sub.c_str()));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
    EXPECT_TRUE(DeleteFileW((sub + TEXT("/in")).c_str()));
    EXPECT_TRUE(RemoveDirectoryW(sub.c_str()));
    ULARGE_INTEGER free = {}, total = {};
    EXPECT_TRUE(GetDiskFreeSpaceExW(folder.File(TEXT("")).c_str(), &free, &total, nullptr));
    EXPECT_LE(free.QuadPart, total.QuadPart);
    EXPECT_GT(total.QuadPart, 0u);
}

TEST(Folder, IsSearchedByPattern)
{
    const TemporaryFolder folder;
    for (const WCHAR* name : {TEXT("one.wav"), TEXT("Two.WAV"), TEXT("three.txt"), TEXT("four")})
        Put(folder.File(name), "12345");
    const struct {
        const WCHAR* pattern;
        size_t count;
    } kCases[] = {{TEXT("*"), 4},       {TEXT("*.*"), 4},     {TEXT("*.wav"), 2}, {TEXT("t*"), 2},
                  {TEXT("???.wav"), 2}, {TEXT("one.wav"), 1}, {TEXT("x*"), 0}};
    for (const auto& c : kCases)
        EXPECT_EQ(folder.Names(c.pattern).size(), c.count) << ToAscii(c.pattern);
    WIN32_FIND_DATAW found;
    EXPECT_EQ(FindFirstFileW(folder.File(TEXT("x*")).c_str(), &found), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(FindFirstFileW(folder.File(TEXT("no/*")).c_str(), &found), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_PATH_NOT_FOUND));
    const HANDLE search = FindFirstFileW(folder.File(TEXT("four")).c_str(), &found);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    EXPECT_EQ(found.nFileSizeLow, 5u);
    EXPECT_FALSE(FindNextFileW(search, &found));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_NO_MORE_FILES));
    EXPECT_TRUE(FindClose(search));
}

}   // namespace
