// A compiled resource file (.RES) in memory, and the resources of a module found in it.
#pragma once

#include "platform/native/wide_text.h"

#include <optional>
#include <span>
#include <vector>

// A type or a name: a number, or a text in upper case.
struct ResourceId {
    WORD number = 0;
    WideString text;   // empty for a number
    bool operator==(const ResourceId&) const = default;
};

struct ResourceEntry {
    ResourceId type, name;
    LANGID language;
    std::span<const BYTE> data;
};

class ResourceImage {
public:
    ResourceImage() = default;
    // Nothing when an entry is cut short, overlaps the end or is no entry at all. The bytes must outlive the image.
    static std::optional<ResourceImage> Parse(std::span<const BYTE> bytes);

    std::vector<ResourceEntry> entries;   // in the order of the file
};

ResourceId MakeResourceId(LPCWSTR psz);   // a number, a text, or a text "#123" for a number
