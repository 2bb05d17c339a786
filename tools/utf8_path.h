// Paths from and to the UTF-8 that the tools keep names in, whatever the system's own text is.
#pragma once

#include <filesystem>
#include <string>

inline std::filesystem::path Utf8Path(const std::string& name)
{
    return std::u8string(name.begin(), name.end());
}

inline std::string Utf8Name(const std::filesystem::path& path)
{
    const std::u8string name = path.u8string();
    return {name.begin(), name.end()};
}
