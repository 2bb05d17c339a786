#include "platform/native/registry_store.h"

#include <winerror.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <unistd.h>

namespace {

constexpr const char* kSchema = R"(
    CREATE TABLE IF NOT EXISTS keys(
        id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL, folded TEXT NOT NULL, name TEXT NOT NULL,
        written INTEGER NOT NULL, UNIQUE(parent, folded));
    CREATE TABLE IF NOT EXISTS "values"(
        id INTEGER PRIMARY KEY, key INTEGER NOT NULL, folded TEXT NOT NULL, name TEXT NOT NULL, type INTEGER NOT NULL,
        data BLOB NOT NULL, UNIQUE(key, folded));
    PRAGMA user_version = 1;)";

std::filesystem::path Folder()
{
    const auto variable = [](const char* name) {
        const char* const value = std::getenv(name);
        return std::filesystem::path(value ? value : "");
    };
    if (const auto given = variable("QX_REGISTRY"); !given.empty())
        return given;
    const auto config = variable("XDG_CONFIG_HOME");
    return (config.is_absolute() ? config : variable("HOME") / ".config") / "qxvantor";
}

LSTATUS StatusOf(int code)
{
    switch (code) {
    case SQLITE_OK:
        return ERROR_SUCCESS;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return ERROR_REGISTRY_CORRUPT;
    case SQLITE_NOMEM:
        return ERROR_OUTOFMEMORY;
    case SQLITE_FULL:
        return ERROR_DISK_FULL;
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
    case SQLITE_CANTOPEN:
        return ERROR_ACCESS_DENIED;
    default:
        return ERROR_REGISTRY_IO_FAILED;
    }
}

bool IsWhole(SqliteDatabase& database)
{
    SqliteStatement check(database, "PRAGMA quick_check(1)");
    return check.Next() && check.Text(0) == u"ok";
}

int64_t SchemaVersion(SqliteDatabase& database)
{
    SqliteStatement version(database, "PRAGMA user_version");
    return version.Next() ? version.Integer(0) : 0;
}

LSTATUS MakeTables(SqliteDatabase& database)
{
    database.Execute(kSchema);
    return ERROR_SUCCESS;
}

bool IsSameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}   // namespace

LSTATUS RegistryStore::Run(const char* begin, const Work& work)
{
    const std::lock_guard guard(lock);
    const std::string path = (Folder() / name).string();
    LSTATUS status = IsCurrent(path) ? ERROR_SUCCESS : Open(path);
    if (status == ERROR_SUCCESS)
        status = Transact(begin, work);
    if (status == ERROR_REGISTRY_CORRUPT)
        SetAside();
    return status;
}

// A connection does not cross a fork, and one on a file that has another name by now is of no use.
bool RegistryStore::IsCurrent(const std::string& path) const
{
    struct stat now;
    return database && path == openPath && getpid() == openProcess && stat(path.c_str(), &now) == 0 &&
           IsSameFile(now, openFile);
}

LSTATUS RegistryStore::Open(const std::string& path)
{
    if (database && getpid() != openProcess)
        database.release();   // the parent's: closing it here would drop the parent's locks
    database.reset();
    std::error_code code;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), code);
    database = std::make_unique<SqliteDatabase>(path);
    openPath = path;
    openProcess = getpid();
    if (database->Failed())
        return Finish(ERROR_REGISTRY_IO_FAILED);
    // The change is on the disk when its call returns; a journal that stays saves the folder's entry each time.
    database->Execute("PRAGMA journal_mode = TRUNCATE; PRAGMA synchronous = NORMAL");
    SchemaVersion(*database);   // the file comes into being with the first look at it
    if (stat(path.c_str(), &openFile) != 0)
        return Finish(ERROR_ACCESS_DENIED);
    if (SchemaVersion(*database) == 0)
        if (const LSTATUS status = Transact("BEGIN IMMEDIATE", MakeTables))
            return status;
    const bool whole = IsWhole(*database);
    return whole || database->Failed() ? Finish(ERROR_SUCCESS) : ERROR_REGISTRY_CORRUPT;
}

// Work that was begun ends here: the connection is good for the next, or goes.
LSTATUS RegistryStore::Finish(LSTATUS status)
{
    if (!database->Failed())
        return status;
    status = StatusOf(database->Code());
    if (status != ERROR_REGISTRY_CORRUPT)
        database.reset();
    return status;
}

LSTATUS RegistryStore::Transact(const char* begin, const Work& work)
{
    database->Execute(begin);
    if (database->Failed())
        return Finish(ERROR_REGISTRY_IO_FAILED);
    const LSTATUS status = work(*database);
    if (status == ERROR_SUCCESS)
        database->Execute("COMMIT");
    if (status != ERROR_SUCCESS || database->Failed()) {
        const int code = database->TakeError();
        database->Execute("ROLLBACK");
        database->RestoreError(code);
    }
    return Finish(status);
}

// Two processes may meet the same damage: under the folder's lock, only the file that was opened gets another name.
void RegistryStore::SetAside()
{
    database.reset();
    const int lockFile = open((openPath + ".lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    if (lockFile >= 0)
        flock(lockFile, LOCK_EX);
    struct stat now;
    if (stat(openPath.c_str(), &now) == 0 && IsSameFile(now, openFile)) {
        const std::string aside =
            openPath + ".damaged-" + std::to_string(std::time(nullptr)) + "-" + std::to_string(getpid());
        std::rename(openPath.c_str(), aside.c_str());
        std::rename((openPath + "-journal").c_str(), (aside + "-journal").c_str());
    }
    if (lockFile >= 0)
        close(lockFile);
}
