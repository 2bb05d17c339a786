#include "tools/declared_size.h"

#include "tools/utf8_path.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <optional>
#include <span>
#include <string_view>

namespace {

using Bytes = std::span<const unsigned char>;

struct ChunkedKind {
    std::string_view magic;
    std::string_view audioId;     // first four bytes of the audio chunk's id
    uint64_t firstChunk;          // offset in the file
    uint64_t sizeAt, sizeBytes;   // of the size in a chunk's header
    uint64_t header;              // bytes of it
    bool sizeHasHeader, bigEndian;
    uint64_t alignment;
};
constexpr ChunkedKind kKinds[] = {
    {"RIFF", "data", 12, 4, 4, 8, false, false, 2},
    {"RF64", "data", 12, 4, 4, 8, false, false, 2},
    {"riff", "data", 40, 16, 8, 24, true, false, 8},
    {"FORM", "SSND", 12, 4, 4, 8, false, true, 2},
};

constexpr uint64_t kLongestHeader = 24;
constexpr uint64_t kStreamed = 0x7FFFF000;   // sizes from here up are what writers put that could not go back
constexpr int kMostChunks = 10000;

uint64_t LoadNumber(Bytes bytes, bool bigEndian)
{
    uint64_t number = 0;
    for (size_t i = 0; i < bytes.size(); ++i)
        number = number << 8 | bytes[bigEndian ? i : bytes.size() - 1 - i];
    return number;
}

class ChunkedFile {
public:
    explicit ChunkedFile(const std::string& path) : file(Utf8Path(path), std::ios::binary | std::ios::ate)
    {
        size = file ? uint64_t(file.tellg()) : 0;
        for (const ChunkedKind& each : kKinds)
            if (Has(0, each.magic))
                kind = each;
    }

    bool DeclaresMore()
    {
        if (!kind)
            return false;
        uint64_t at = kind->firstChunk;
        for (int i = 0; i < kMostChunks && Load(at, kind->header); ++i) {
            uint64_t body = LoadNumber(Loaded().subspan(kind->sizeAt, kind->sizeBytes), kind->bigEndian);
            if (kind->sizeHasHeader)
                body -= body < kind->header ? body : kind->header;
            if (Has(at, kind->audioId))
                return BodyIsCut(at + kind->header, body);
            at += kind->header + (body + kind->alignment - 1) / kind->alignment * kind->alignment;
        }
        return false;
    }

private:
    bool Load(uint64_t at, uint64_t count)
    {
        loaded = at <= size && size - at >= count ? size_t(count) : 0;
        file.clear();
        file.seekg(std::streamoff(at));
        return loaded == count && file.read(reinterpret_cast<char*>(buffer.data()), std::streamsize(count));
    }
    Bytes Loaded() const { return Bytes(buffer).first(loaded); }

    bool Has(uint64_t at, std::string_view id)
    {
        return Load(at, id.size()) && std::string_view(reinterpret_cast<const char*>(buffer.data()), 4) == id;
    }

    bool BodyIsCut(uint64_t at, uint64_t body)
    {
        if (kind->sizeBytes == 4 && body >= kStreamed) {
            if (kind->magic != "RF64" || !Load(28, 8))   // the true size of an RF64's audio stands in its first chunk
                return false;
            body = LoadNumber(Loaded(), false);
        }
        return body > size - at;
    }

    std::ifstream file;
    uint64_t size = 0;
    std::optional<ChunkedKind> kind;
    std::array<unsigned char, kLongestHeader> buffer{};
    size_t loaded = 0;
};

}   // namespace

bool DeclaresMoreThanItHolds(const std::string& path)
{
    return ChunkedFile(path).DeclaresMore();
}
