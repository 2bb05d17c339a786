#include "platform/native/resource_image.h"

#include <winuser.h>

#include <cstring>

namespace {

constexpr size_t kAlign = 4;
constexpr WORD kNumberMark = 0xFFFF;   // a number follows in the place of a text

// Reads the fields of one header. What runs over the end turns it bad for good.
class FieldReader {
public:
    explicit FieldReader(std::span<const BYTE> header) : bytes(header) {}

    template <class T>
    T Read()
    {
        T value = {};
        if (bytes.size() - at < sizeof(T)) {
            good = false;
            return value;
        }
        std::memcpy(&value, bytes.data() + at, sizeof(T));
        at += sizeof(T);
        return value;
    }
    ResourceId ReadId()
    {
        ResourceId id;
        WORD unit = Read<WORD>();
        if (unit == kNumberMark) {
            id.number = Read<WORD>();
            return id;
        }
        for (; good && unit; unit = Read<WORD>())
            id.text += WCHAR(unit);
        id.text = FoldCase(id.text);
        return id;
    }
    void Align() { at = std::min((at + kAlign - 1) / kAlign * kAlign, bytes.size()); }
    bool Good() const { return good; }

private:
    std::span<const BYTE> bytes;
    size_t at = 0;
    bool good = true;
};

struct EntrySizes {
    DWORD data, header;
};

bool ParseHeader(std::span<const BYTE> header, ResourceEntry& entry)
{
    FieldReader reader(header);
    reader.Read<EntrySizes>();
    entry.type = reader.ReadId();
    entry.name = reader.ReadId();
    reader.Align();
    reader.Read<DWORD>();   // version of the data
    reader.Read<WORD>();    // memory flags
    entry.language = reader.Read<WORD>();
    return reader.Good();
}

// A file begins with an entry of no data and of type and name 0, which tells it from other formats.
bool IsSignature(const ResourceEntry& entry)
{
    return entry.data.empty() && entry.type == ResourceId() && entry.name == ResourceId();
}

}   // namespace

std::optional<ResourceImage> ResourceImage::Parse(std::span<const BYTE> bytes)
{
    ResourceImage image;
    bool first = true;
    while (!bytes.empty()) {
        EntrySizes sizes;
        if (bytes.size() < sizeof sizes)
            return std::nullopt;
        std::memcpy(&sizes, bytes.data(), sizeof sizes);
        if (sizes.header > bytes.size() || sizes.data > bytes.size() - sizes.header)
            return std::nullopt;
        ResourceEntry entry;
        if (!ParseHeader(bytes.first(sizes.header), entry))
            return std::nullopt;
        entry.data = bytes.subspan(sizes.header, sizes.data);
        if (first != IsSignature(entry))
            return std::nullopt;
        if (!first)
            image.entries.push_back(std::move(entry));
        first = false;
        const size_t whole = (size_t(sizes.header) + sizes.data + kAlign - 1) / kAlign * kAlign;
        bytes = bytes.subspan(std::min(whole, bytes.size()));
    }
    if (first)
        return std::nullopt;
    return image;
}

ResourceId MakeResourceId(LPCWSTR psz)
{
    ResourceId id;
    if (IS_INTRESOURCE(psz)) {
        id.number = WORD(reinterpret_cast<UINT_PTR>(psz));
        return id;
    }
    const WideView text(psz);
    if (!text.starts_with(u'#')) {
        id.text = FoldCase(text);
        return id;
    }
    for (const WCHAR c : text.substr(1))
        if (c >= '0' && c <= '9')
            id.number = WORD(id.number * 10 + (c - '0'));
    return id;
}
