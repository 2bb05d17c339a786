// The sharing rule of open files: each open states what it does and what it lets others do meanwhile, and a new one must
// agree with all that are open. Held over this process; the system below knows no such rule between processes.
#pragma once

#include <windef.h>

#include <compare>

#include <sys/stat.h>

struct FileUse {
    DWORD access;   // GENERIC_READ, GENERIC_WRITE, DELETE
    DWORD share;    // FILE_SHARE_*
};

struct FileIdentity {
    dev_t device;
    ino_t number;
    auto operator<=>(const FileIdentity&) const = default;
};

bool BeginFileUse(FileIdentity file, FileUse use);   // false on a conflict
void EndFileUse(FileIdentity file, FileUse use);
bool AllowsFileUse(FileIdentity file, FileUse use);   // asks without beginning
