#include "platform/native/registry_rows.h"

#include <ctime>

namespace {

// The parts of a path that are not empty, in order.
std::vector<WideString> Parts(WideView path)
{
    std::vector<WideString> parts;
    while (!path.empty()) {
        const size_t end = std::min(path.find(u'\\'), path.size());
        if (end > 0)
            parts.emplace_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return parts;
}

std::optional<int64_t> Child(SqliteDatabase& db, int64_t parent, const WideString& name)
{
    const WideString folded = FoldCase(name);
    SqliteStatement find(db, "SELECT id FROM keys WHERE parent = ? AND folded = ?", parent, folded);
    if (!find.Next())
        return std::nullopt;
    return find.Integer(0);
}

int64_t Now()
{
    return int64_t(std::time(nullptr));
}

}   // namespace

bool KeyExists(SqliteDatabase& db, int64_t key)
{
    SqliteStatement find(db, "SELECT 1 FROM keys WHERE id = ?", key);
    return key == kRootKey || find.Next();
}

std::optional<int64_t> FindKey(SqliteDatabase& db, int64_t from, WideView path)
{
    std::optional<int64_t> key = from;
    for (const WideString& part : Parts(path)) {
        key = Child(db, *key, part);
        if (!key)
            break;
    }
    return key;
}

int64_t CreateKey(SqliteDatabase& db, int64_t from, WideView path, bool* pCreated)
{
    *pCreated = false;
    int64_t key = from;
    for (const WideString& part : Parts(path)) {
        const auto found = Child(db, key, part);
        *pCreated = !found;
        if (found) {
            key = *found;
            continue;
        }
        const WideString folded = FoldCase(part);
        SqliteStatement(db, "INSERT INTO keys(parent, folded, name, written) VALUES(?, ?, ?, ?)", key, folded, part,
                        Now())
            .Run();
        key = db.LastRow();
    }
    return key;
}

bool HasSubKeys(SqliteDatabase& db, int64_t key)
{
    return SqliteStatement(db, "SELECT 1 FROM keys WHERE parent = ? LIMIT 1", key).Next();
}

void DeleteKeyAndValues(SqliteDatabase& db, int64_t key)
{
    SqliteStatement(db, "DELETE FROM \"values\" WHERE key = ?", key).Run();
    SqliteStatement(db, "DELETE FROM keys WHERE id = ?", key).Run();
}

// The whole tree at once: however deep it is, the walk does not recurse here.
void DeleteContents(SqliteDatabase& db, int64_t key)
{
    constexpr const char* kTree = "WITH RECURSIVE tree(id) AS (SELECT id FROM keys WHERE parent = ?1 "
                                  "UNION ALL SELECT keys.id FROM keys JOIN tree ON keys.parent = tree.id) ";
    const std::string values = std::string(kTree) + "DELETE FROM \"values\" WHERE key = ?1 OR key IN tree";
    const std::string keys = std::string(kTree) + "DELETE FROM keys WHERE id IN tree";
    SqliteStatement(db, values.c_str(), key).Run();
    SqliteStatement(db, keys.c_str(), key).Run();
}

std::optional<RegistryValue> FindValue(SqliteDatabase& db, int64_t key, WideView name)
{
    const WideString folded = FoldCase(name);
    SqliteStatement find(db, "SELECT name, type, data FROM \"values\" WHERE key = ? AND folded = ?", key, folded);
    if (!find.Next())
        return std::nullopt;
    const auto data = find.Bytes(2);
    return RegistryValue{find.Text(0), DWORD(find.Integer(1)), {data.begin(), data.end()}};
}

void PutValue(SqliteDatabase& db, int64_t key, const RegistryValue& value)
{
    const WideString folded = FoldCase(value.name);
    SqliteStatement(db,
                    "INSERT INTO \"values\"(key, folded, name, type, data) VALUES(?, ?, ?, ?, ?) "
                    "ON CONFLICT(key, folded) DO UPDATE SET type = excluded.type, data = excluded.data",
                    key, folded, value.name, int64_t(value.type), std::span<const BYTE>(value.data))
        .Run();
    SqliteStatement(db, "UPDATE keys SET written = ? WHERE id = ?", Now(), key).Run();
}

bool DeleteValue(SqliteDatabase& db, int64_t key, WideView name)
{
    const WideString folded = FoldCase(name);
    SqliteStatement(db, "DELETE FROM \"values\" WHERE key = ? AND folded = ?", key, folded).Run();
    return db.Changes() > 0;
}
