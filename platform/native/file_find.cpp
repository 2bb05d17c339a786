// Searching a folder.
#include "platform/native/file_time.h"
#include "platform/native/handle_table.h"
#include "platform/native/path.h"
#include "platform/native/refusal.h"
#include "platform/native/wide_text.h"

#include <fileapi.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>
#include <vector>

namespace {

class FileSearch : public HandleObject {
public:
    std::string folder;
    std::vector<WideString> names;   // in order; those from next on are still to come
    size_t next = 0;
};

// '*' stands for any text and '?' for one character. Both sides are folded.
bool Matches(WideView pattern, WideView name)
{
    size_t star = WideView::npos, resume = 0, p = 0;
    for (size_t n = 0; n < name.size();) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (star != WideView::npos) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u'*', p) == WideView::npos;
}

struct CloseDirectory {
    void operator()(DIR* p) const { closedir(p); }
};

bool ListNames(const std::string& folder, const WideString& pattern, std::vector<WideString>& names)
{
    const std::unique_ptr<DIR, CloseDirectory> directory(opendir(folder.c_str()));
    if (!directory)
        return false;
    const WideString folded = pattern == u"*.*" ? u"*" : FoldCase(pattern);
    while (const dirent* const entry = readdir(directory.get()))
        if (WideString name = FromUtf8(entry->d_name); Matches(folded, FoldCase(name)))
            names.push_back(std::move(name));
    std::ranges::sort(names, {}, [](const WideString& name) { return FoldCase(name); });
    return true;
}

bool Describe(const FileSearch& search, const WideString& name, WIN32_FIND_DATAW& found)
{
    struct stat info;
    if (name.size() >= size_t(MAX_PATH) || stat((search.folder + "/" + ToUtf8(name)).c_str(), &info) != 0)
        return false;   // gone meanwhile, or a link to nothing
    found = {};
    found.dwFileAttributes = (S_ISDIR(info.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE) |
                             (info.st_mode & 0222 ? 0 : FILE_ATTRIBUTE_READONLY);
    found.ftCreationTime = ToFileTime(info.st_ctim);
    found.ftLastAccessTime = ToFileTime(info.st_atim);
    found.ftLastWriteTime = ToFileTime(info.st_mtim);
    const uint64_t size = S_ISDIR(info.st_mode) ? 0 : uint64_t(info.st_size);
    found.nFileSizeHigh = DWORD(size >> 32);
    found.nFileSizeLow = DWORD(size);
    std::memcpy(found.cFileName, name.c_str(), (name.size() + 1) * sizeof(WCHAR));
    return true;
}

bool TakeNext(FileSearch& search, WIN32_FIND_DATAW& found)
{
    while (search.next < search.names.size())
        if (Describe(search, search.names[search.next++], found))
            return true;
    return false;
}

}   // namespace

HANDLE FindFirstFileW(LPCWSTR pszPattern, WIN32_FIND_DATAW* pFound)
{
    const std::string path = NativePath(pszPattern);
    if (path.empty() || !pFound)
        return Refuse(ERROR_PATH_NOT_FOUND, INVALID_HANDLE_VALUE);
    const size_t split = path.find_last_of('/');
    const auto search = std::make_shared<FileSearch>();
    search->folder = split == std::string::npos ? "." : split == 0 ? "/" : path.substr(0, split);
    const std::string last = split == std::string::npos ? path : path.substr(split + 1);
    if (!ListNames(search->folder, FromUtf8(last), search->names))
        return Refuse(errno == ENOENT ? DWORD(ERROR_PATH_NOT_FOUND) : ErrorFromErrno(errno), INVALID_HANDLE_VALUE);
    if (!TakeNext(*search, *pFound))
        return Refuse(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
    return OpenHandle(search);
}

BOOL FindNextFileW(HANDLE hFind, WIN32_FIND_DATAW* pFound)
{
    const auto search = ObjectOf<FileSearch>(hFind);
    if (!search || !pFound)
        return Refuse(search ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
    return TakeNext(*search, *pFound) ? TRUE : Refuse(ERROR_NO_MORE_FILES);
}

BOOL FindClose(HANDLE hFind)
{
    return ObjectOf<FileSearch>(hFind) && CloseHandleEntry(hFind) ? TRUE : Refuse(ERROR_INVALID_HANDLE);
}
