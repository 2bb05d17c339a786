#include "platform/native/sqlite_database.h"

namespace {
constexpr int kBusyMilliseconds = 20'000;   // how long another process may keep the file
}

SqliteDatabase::SqliteDatabase(const std::string& path)
{
    sqlite3* opened = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    Note(sqlite3_open_v2(path.c_str(), &opened, flags, nullptr));
    handle.reset(opened);
    if (opened)
        sqlite3_busy_timeout(opened, kBusyMilliseconds);
}

void SqliteDatabase::Execute(const char* sql)
{
    if (!Failed())
        Note(sqlite3_exec(handle.get(), sql, nullptr, nullptr, nullptr));
}

void SqliteDatabase::Note(int result)
{
    if (!Failed() && result != SQLITE_ROW && result != SQLITE_DONE)
        code = result & 0xFF;   // the primary code
}

bool SqliteStatement::Next()
{
    if (db.Failed())
        return false;
    const int result = sqlite3_step(statement.get());
    db.Note(result);
    return result == SQLITE_ROW;
}

WideString SqliteStatement::Text(int column) const
{
    const void* const text = sqlite3_column_text16(statement.get(), column);
    const int bytes = sqlite3_column_bytes16(statement.get(), column);
    return text ? WideString(static_cast<const WCHAR*>(text), size_t(bytes) / sizeof(WCHAR)) : WideString();
}

std::span<const BYTE> SqliteStatement::Bytes(int column) const
{
    const void* const bytes = sqlite3_column_blob(statement.get(), column);
    return {static_cast<const BYTE*>(bytes), size_t(sqlite3_column_bytes(statement.get(), column))};
}

void SqliteStatement::Prepare(const char* sql)
{
    if (db.Failed())
        return;
    sqlite3_stmt* prepared = nullptr;
    db.Note(sqlite3_prepare_v2(db.handle.get(), sql, -1, &prepared, nullptr));
    statement.reset(prepared);
}

void SqliteStatement::Bind(int64_t value)
{
    if (!db.Failed())
        db.Note(sqlite3_bind_int64(statement.get(), ++bound, value));
}

void SqliteStatement::Bind(const WideString& value)
{
    if (!db.Failed())
        db.Note(sqlite3_bind_text16(statement.get(), ++bound, value.data(), int(value.size() * sizeof(WCHAR)),
                                    SQLITE_STATIC));
}

void SqliteStatement::Bind(std::span<const BYTE> value)
{
    if (!db.Failed())
        db.Note(sqlite3_bind_blob64(statement.get(), ++bound,
                                    value.empty() ? "" : static_cast<const void*>(value.data()), value.size(),
                                    SQLITE_STATIC));
}
