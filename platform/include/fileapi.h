// Files and folders. A path takes '/' and '\' alike.
#pragma once

#include <handleapi.h>

inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD FILE_SHARE_DELETE = 4;

inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD TRUNCATE_EXISTING = 5;

inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x01;
inline constexpr DWORD FILE_ATTRIBUTE_HIDDEN = 0x02;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x20;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;
inline constexpr DWORD FILE_FLAG_SEQUENTIAL_SCAN = 0x08000000;
inline constexpr DWORD FILE_FLAG_RANDOM_ACCESS = 0x10000000;
inline constexpr DWORD FILE_FLAG_DELETE_ON_CLOSE = 0x04000000;

inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;

inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;

inline constexpr DWORD MOVEFILE_REPLACE_EXISTING = 1;
inline constexpr DWORD MOVEFILE_COPY_ALLOWED = 2;

struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime, ftLastAccessTime, ftLastWriteTime;
    DWORD nFileSizeHigh, nFileSizeLow;
    DWORD dwReserved0, dwReserved1;
    WCHAR cFileName[MAX_PATH];
    WCHAR cAlternateFileName[14];
};

// INVALID_HANDLE_VALUE on failure. What is asked for must agree with the sharing of every open handle of this process
// on the file, and theirs with the new access, else ERROR_SHARING_VIOLATION. CREATE_ALWAYS and OPEN_ALWAYS leave
// ERROR_ALREADY_EXISTS behind when the file was there, and 0 when it is new. pSecurity and hTemplate are null.
HANDLE CreateFileW(LPCWSTR pszPath, DWORD dwAccess, DWORD dwShare, SECURITY_ATTRIBUTES* pSecurity, DWORD dwDisposition,
                   DWORD dwFlags, HANDLE hTemplate);
// At the end of the file: success with 0 bytes. The count is cleared first. pOverlapped is null.
BOOL ReadFile(HANDLE hFile, LPVOID p, DWORD cb, DWORD* pcbRead, void* pOverlapped);
BOOL WriteFile(HANDLE hFile, LPCVOID p, DWORD cb, DWORD* pcbWritten, void* pOverlapped);
BOOL FlushFileBuffers(HANDLE hFile);
// Moves the file pointer by a signed 64-bit distance (*pHigh the high half, in and out; null: 32 bits, sign-extended)
// and gives the new low half. INVALID_SET_FILE_POINTER is also a legal low half: then GetLastError() tells the two
// apart. A place before the start is ERROR_NEGATIVE_SEEK and moves nothing; one behind the end is allowed.
DWORD SetFilePointer(HANDLE hFile, LONG nLow, LONG* pHigh, DWORD dwFrom);
BOOL SetFilePointerEx(HANDLE hFile, LARGE_INTEGER distance, LARGE_INTEGER* pNewPosition, DWORD dwFrom);
BOOL SetEndOfFile(HANDLE hFile);   // cuts or extends to the file pointer
DWORD GetFileSize(HANDLE hFile, DWORD* pHigh);
BOOL GetFileSizeEx(HANDLE hFile, LARGE_INTEGER* pSize);
BOOL GetFileTime(HANDLE hFile, FILETIME* pCreation, FILETIME* pLastAccess, FILETIME* pLastWrite);

BOOL DeleteFileW(LPCWSTR pszPath);   // an open handle that does not share deletion is a sharing violation
BOOL MoveFileExW(LPCWSTR pszFrom, LPCWSTR pszTo, DWORD dwFlags);
DWORD GetFileAttributesW(LPCWSTR pszPath);
BOOL SetFileAttributesW(LPCWSTR pszPath, DWORD dwAttributes);   // read-only alone is kept
BOOL CreateDirectoryW(LPCWSTR pszPath, SECURITY_ATTRIBUTES* pSecurity);
BOOL RemoveDirectoryW(LPCWSTR pszPath);
// The folder of a search pattern holds no wildcard; its last part may hold '*' and '?', which ignore case.
HANDLE FindFirstFileW(LPCWSTR pszPattern, WIN32_FIND_DATAW* pFound);
BOOL FindNextFileW(HANDLE hFind, WIN32_FIND_DATAW* pFound);   // ERROR_NO_MORE_FILES at the end
BOOL FindClose(HANDLE hFind);
DWORD GetTempPathW(DWORD cch, LPWSTR pszOut);   // ends in a separator; the size needed when cch is too small
UINT GetTempFileNameW(LPCWSTR pszFolder, LPCWSTR pszPrefix, UINT nUnique, LPWSTR pszOut);
BOOL GetDiskFreeSpaceExW(LPCWSTR pszFolder, ULARGE_INTEGER* pFreeToCaller, ULARGE_INTEGER* pTotal,
                         ULARGE_INTEGER* pFree);
