// Wide texts in the platform's own width, in both builds.
#pragma once

#include <windows.h>

#include <array>
#include <string>
#include <vector>

using Wide = std::basic_string<WCHAR>;

inline Wide FromAscii(const std::string& text)
{
    return Wide(text.begin(), text.end());
}

// For messages of tests: what is not ASCII as its number.
inline std::string ToAscii(const Wide& text)
{
    std::string out;
    for (const WCHAR c : text)
        out += c < 0x80 ? std::string(1, char(c)) : "<" + std::to_string(unsigned(c)) + ">";
    return out;
}

// A folder of its own under the temporary one, empty at first and removed at the end.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::array<WCHAR, MAX_PATH> temp, name;
        GetTempPathW(MAX_PATH, temp.data());
        GetTempFileNameW(temp.data(), TEXT("qxs"), 0, name.data());
        path = name.data();
        DeleteFileW(path.c_str());
        CreateDirectoryW(path.c_str(), nullptr);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        for (const Wide& name : Names(TEXT("*"))) {
            SetFileAttributesW(File(name).c_str(), FILE_ATTRIBUTE_NORMAL);
            if (!DeleteFileW(File(name).c_str()))
                RemoveDirectoryW(File(name).c_str());
        }
        RemoveDirectoryW(path.c_str());
    }

    Wide File(const Wide& name) const { return path + TEXT("/") + name; }

    // Sorted by the system; "." and ".." left out.
    std::vector<Wide> Names(const Wide& pattern) const
    {
        std::vector<Wide> names;
        WIN32_FIND_DATAW found;
        const HANDLE search = FindFirstFileW(File(pattern).c_str(), &found);
        if (search == INVALID_HANDLE_VALUE)
            return names;
        do {
            if (const Wide name = found.cFileName; name != TEXT(".") && name != TEXT(".."))
                names.push_back(name);
        } while (FindNextFileW(search, &found));
        FindClose(search);
        return names;
    }

private:
    Wide path;
};
