// The file behind one root of the registry. It stands in the folder that QX_REGISTRY names, else in "qxvantor" under
// the user's configuration folder. Several processes may use it at once: each piece of work is one transaction.
//
// A damaged file is found when it is opened, or at the work that meets the damage. That work ends with
// ERROR_REGISTRY_CORRUPT, the file gets another name beside it, and the next work starts a new one.
#pragma once

#include "platform/native/sqlite_database.h"

#include <winreg.h>

#include <functional>
#include <mutex>
#include <sys/stat.h>

class RegistryStore {
public:
    explicit RegistryStore(const char* fileName) : name(fileName) {}

    using Work = std::function<LSTATUS(SqliteDatabase&)>;
    // The result of the work, or the code of what the file refused. Work that fails leaves nothing behind.
    LSTATUS Read(const Work& work) { return Run("BEGIN", work); }
    LSTATUS Write(const Work& work) { return Run("BEGIN IMMEDIATE", work); }

private:
    LSTATUS Run(const char* begin, const Work& work);
    LSTATUS Open(const std::string& path);
    LSTATUS Transact(const char* begin, const Work& work);
    LSTATUS Finish(LSTATUS status);
    bool IsCurrent(const std::string& path) const;
    void SetAside();

    const std::string name;
    std::mutex lock;
    std::unique_ptr<SqliteDatabase> database;
    std::string openPath;
    struct stat openFile = {};
    int openProcess = 0;
};
