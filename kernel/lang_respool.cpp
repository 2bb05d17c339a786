// The walk through a compiled resource file. Each entry: its data size and header size, type, name, padding to 4 bytes,
// data version, memory flags, language, version, characteristics, and the data; entries begin on boundaries of 4 bytes.
// Nothing in the image is trusted: every read stays inside it.

#include "kernel/lang_resource.h"
#include "kernel/wide_view.h"

#include <cstring>
#include <optional>
#include <span>

namespace {

using Bytes = std::span<const BYTE>;

constexpr size_t kSmallestPool = 32, kSmallestEntry = 13;   // bytes
constexpr WORD kNumberMark = 0xFFFF;

template <typename T>
std::optional<T> ReadAt(Bytes bytes, size_t at)
{
    if (at > bytes.size() || bytes.size() - at < sizeof(T))
        return std::nullopt;
    T value;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}

constexpr size_t Align4(size_t at)
{
    return (at + 3) & ~size_t(3);
}

// A type or name: a number, or the units of a text in the image.
struct ResourceId {
    std::optional<WORD> number;
    Bytes text;   // two bytes a unit, without the terminator
};

std::optional<ResourceId> ReadId(Bytes header, size_t& at)
{
    auto unit = ReadAt<WORD>(header, at);
    if (unit == kNumberMark) {
        const auto number = ReadAt<WORD>(header, at + 2);
        at += 4;
        return number ? std::optional(ResourceId{number, {}}) : std::nullopt;
    }
    const size_t begin = at;
    for (; unit && *unit != 0; unit = ReadAt<WORD>(header, at))
        at += 2;
    if (!unit)
        return std::nullopt;
    at += 2;
    return ResourceId{std::nullopt, header.subspan(begin, at - 2 - begin)};
}

constexpr WORD FoldCase(WORD unit)
{
    return unit >= 'a' && unit <= 'z' ? WORD(unit - 'a' + 'A') : unit;
}

// As the platform's own search does, without regard to the case of plain letters.
bool Matches(const ResourceId& id, const WCHAR* wanted)
{
    const auto value = reinterpret_cast<UINT_PTR>(wanted);
    if (value <= 0xFFFF)
        return id.number == WORD(value);
    const WideView text = wanted;
    if (id.number || id.text.size() != text.size() * 2)
        return false;
    for (size_t i = 0; i < text.size(); ++i)
        if (FoldCase(*ReadAt<WORD>(id.text, i * 2)) != FoldCase(WORD(text[i])))
            return false;
    return true;
}

struct Entry {
    size_t size;   // of the whole entry, to where the next one begins
    ResourceId type, name;
    DWORD language;   // conditioned
    Bytes data;
};

std::optional<Entry> ReadEntry(Bytes image, size_t at)
{
    const Bytes rest = image.subspan(at);
    const auto dataSize = ReadAt<DWORD>(rest, 0), headerSize = ReadAt<DWORD>(rest, 4);
    if (!dataSize || !headerSize)
        return std::nullopt;
    const uint64_t total = uint64_t(*dataSize) + *headerSize;
    if (total < kSmallestEntry || total > rest.size())
        return std::nullopt;
    const Bytes header = rest.first(*headerSize);
    size_t field = 8;
    const auto type = ReadId(header, field);
    const auto name = type ? ReadId(header, field) : std::nullopt;
    const auto language = name ? ReadAt<WORD>(header, Align4(field) + 6) : std::nullopt;
    if (!language)
        return std::nullopt;
    return Entry{Align4(size_t(total)), *type, *name, QxLang_GetConditionedLCID(*language),
                 rest.subspan(*headerSize, *dataSize)};
}

const void* Hand(const std::optional<Entry>& entry, DWORD* pcb, DWORD* pLcid)
{
    if (pcb)
        *pcb = entry ? DWORD(entry->data.size()) : 0;
    if (pLcid)
        *pLcid = entry ? entry->language : 0;
    return entry ? entry->data.data() : nullptr;
}

}   // namespace

const void* QxFindResourceInResPool(const _QXRESPOOL* pPool, DWORD* pcb, const WCHAR* pszName, const WCHAR* pszType,
                                    DWORD lcid, DWORD* pLcid)
{
    std::optional<Entry> best;
    if (!pPool || !pPool->pData || pPool->cbData < kSmallestPool)
        return Hand(best, pcb, pLcid);
    const DWORD kernel = QxLang_GetLCID(KernelLanguage());
    const DWORD kernelLanguage = kernel ? QxLang_GetConditionedLCID(kernel) : 0;
    const DWORD wanted = lcid ? QxLang_GetConditionedLCID(lcid) : kernelLanguage;
    const Bytes image(pPool->pData, pPool->cbData);
    size_t at = 0;
    while (at < image.size()) {
        const auto entry = ReadEntry(image, at);
        if (!entry)
            break;
        at += entry->size;
        if (!Matches(entry->type, pszType) || !Matches(entry->name, pszName))
            continue;
        if (wanted == 0 || entry->language == wanted)
            return Hand(entry, pcb, pLcid);
        if (!best || (entry->language == kernelLanguage && best->language != kernelLanguage))
            best = entry;
    }
    return Hand(best, pcb, pLcid);
}

const void* QxFindDialogTemplateInResPool(const _QXRESPOOL* pPool, DWORD* pcb, const WCHAR* pszName, DWORD lcid,
                                          DWORD* pLcid)
{
    constexpr WORD kDialog = 5;
    return QxFindResourceInResPool(pPool, pcb, pszName, MAKEINTRESOURCEW(kDialog), lcid, pLcid);
}
