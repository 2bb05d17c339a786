// One SQLite file. The first error sticks: after it every statement does nothing, and the one who began the work looks
// at the code once, at its end.
#pragma once

#include "platform/native/wide_text.h"

#include <sqlite3.h>

#include <memory>
#include <span>
#include <string>
#include <utility>

class SqliteDatabase {
public:
    explicit SqliteDatabase(const std::string& path);

    void Execute(const char* sql);
    bool Failed() const { return code != SQLITE_OK; }
    int Code() const { return code; }
    // For a rollback: clears the error and gives it; Restore puts it back.
    int TakeError() { return std::exchange(code, SQLITE_OK); }
    void RestoreError(int taken) { code = taken; }
    int64_t LastRow() const { return sqlite3_last_insert_rowid(handle.get()); }
    int Changes() const { return sqlite3_changes(handle.get()); }

private:
    friend class SqliteStatement;
    struct Close {
        void operator()(sqlite3* p) const { sqlite3_close(p); }
    };
    void Note(int result);

    std::unique_ptr<sqlite3, Close> handle;
    int code = SQLITE_OK;
};

// One statement with its parameters bound in order; texts and bytes must outlive it.
class SqliteStatement {
public:
    template <class... Values>
    SqliteStatement(SqliteDatabase& database, const char* sql, const Values&... values) : db(database)
    {
        Prepare(sql);
        (Bind(values), ...);
    }

    bool Next();   // true on a row; false at the end or on an error
    void Run() { Next(); }
    int64_t Integer(int column) const { return sqlite3_column_int64(statement.get(), column); }
    WideString Text(int column) const;
    std::span<const BYTE> Bytes(int column) const;   // until the next row

private:
    struct Finalize {
        void operator()(sqlite3_stmt* p) const { sqlite3_finalize(p); }
    };
    void Prepare(const char* sql);
    void Bind(int64_t value);
    void Bind(const WideString& value);
    void Bind(std::span<const BYTE> value);

    SqliteDatabase& db;
    std::unique_ptr<sqlite3_stmt, Finalize> statement;
    int bound = 0;
};
