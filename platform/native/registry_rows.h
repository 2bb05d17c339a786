// Keys and values in the store's tables. The root of a store is key 0 and has no row. What goes wrong with the file
// sticks to the database.
#pragma once

#include "platform/native/sqlite_database.h"

#include <winreg.h>

#include <optional>
#include <vector>

inline constexpr int64_t kRootKey = 0;

struct RegistryValue {
    WideString name;
    DWORD type;
    std::vector<BYTE> data;
};

bool KeyExists(SqliteDatabase& db, int64_t key);
std::optional<int64_t> FindKey(SqliteDatabase& db, int64_t from, WideView path);
// The key at the path with all that lead to it; *pCreated when its last part is new.
int64_t CreateKey(SqliteDatabase& db, int64_t from, WideView path, bool* pCreated);
bool HasSubKeys(SqliteDatabase& db, int64_t key);
void DeleteKeyAndValues(SqliteDatabase& db, int64_t key);
void DeleteContents(SqliteDatabase& db, int64_t key);   // its values, and all keys under it

std::optional<RegistryValue> FindValue(SqliteDatabase& db, int64_t key, WideView name);
void PutValue(SqliteDatabase& db, int64_t key, const RegistryValue& value);
bool DeleteValue(SqliteDatabase& db, int64_t key, WideView name);
