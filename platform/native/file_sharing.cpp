#include "platform/native/file_sharing.h"

#include <fileapi.h>
#include <winnt.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <vector>

namespace {

struct SharingTable {
    std::mutex lock;
    std::map<FileIdentity, std::vector<FileUse>> uses;
};

SharingTable& Table()
{
    static SharingTable* const table = new SharingTable;
    return *table;
}

DWORD SharingThatAccessNeeds(DWORD access)
{
    return (access & GENERIC_READ ? FILE_SHARE_READ : 0) | (access & GENERIC_WRITE ? FILE_SHARE_WRITE : 0) |
           (access & DELETE ? FILE_SHARE_DELETE : 0);
}

// A handle that neither reads, writes nor deletes disturbs nobody.
bool Agree(FileUse a, FileUse b)
{
    if (a.access == 0 || b.access == 0)
        return true;
    return (SharingThatAccessNeeds(a.access) & ~b.share) == 0 && (SharingThatAccessNeeds(b.access) & ~a.share) == 0;
}

bool AgreesWithAll(const SharingTable& table, FileIdentity file, FileUse use)
{
    const auto found = table.uses.find(file);
    return found == table.uses.end() ||
           std::ranges::all_of(found->second, [use](FileUse other) { return Agree(use, other); });
}

}   // namespace

bool BeginFileUse(FileIdentity file, FileUse use)
{
    SharingTable& table = Table();
    const std::lock_guard guard(table.lock);
    if (!AgreesWithAll(table, file, use))
        return false;
    table.uses[file].push_back(use);
    return true;
}

void EndFileUse(FileIdentity file, FileUse use)
{
    SharingTable& table = Table();
    const std::lock_guard guard(table.lock);
    auto& uses = table.uses[file];
    const auto same = [use](FileUse other) { return other.access == use.access && other.share == use.share; };
    if (const auto found = std::ranges::find_if(uses, same); found != uses.end())
        uses.erase(found);
    if (uses.empty())
        table.uses.erase(file);
}

bool AllowsFileUse(FileIdentity file, FileUse use)
{
    SharingTable& table = Table();
    const std::lock_guard guard(table.lock);
    return AgreesWithAll(table, file, use);
}
