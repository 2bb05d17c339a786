// The registry calls.
#include "platform/native/file_time.h"
#include "platform/native/handle_table.h"
#include "platform/native/registry_rows.h"
#include "platform/native/registry_store.h"

#include <winerror.h>
#include <winreg.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t kMaxKeyName = 255, kMaxValueName = 16383;   // characters

class OpenKey : public HandleObject {
public:
    OpenKey(RegistryStore& store_, int64_t id_, REGSAM access_) : store(store_), id(id_), access(access_) {}
    RegistryStore& store;
    const int64_t id;
    const REGSAM access;
};

RegistryStore& UserStore()
{
    static RegistryStore* const store = new RegistryStore("registry.sqlite");
    return *store;
}

RegistryStore& MachineStore()
{
    static RegistryStore* const store = new RegistryStore("registry-machine.sqlite");
    return *store;
}

std::shared_ptr<OpenKey> KeyOf(HKEY hKey)
{
    if (hKey == HKEY_CURRENT_USER)
        return std::make_shared<OpenKey>(UserStore(), kRootKey, KEY_ALL_ACCESS);
    if (hKey == HKEY_LOCAL_MACHINE)
        return std::make_shared<OpenKey>(MachineStore(), kRootKey, KEY_ALL_ACCESS);
    return ObjectOf<OpenKey>(hKey);
}

using KeyWork = std::function<LSTATUS(SqliteDatabase&, const OpenKey&)>;

// The work on an open key that allows it and is still there.
LSTATUS OnKey(HKEY hKey, REGSAM needed, bool writes, const KeyWork& work)
{
    const auto key = KeyOf(hKey);
    if (!key)
        return ERROR_INVALID_HANDLE;
    if ((key->access & needed) != needed)
        return ERROR_ACCESS_DENIED;
    const auto checked = [&](SqliteDatabase& db) {
        return KeyExists(db, key->id) ? work(db, *key) : LSTATUS(ERROR_KEY_DELETED);
    };
    return writes ? key->store.Write(checked) : key->store.Read(checked);
}

WideString Name(LPCWSTR psz)
{
    return psz ? WideString(psz) : WideString();
}

bool IsPath(WideView path)
{
    while (!path.empty()) {
        const size_t end = std::min(path.find(u'\\'), path.size());
        if (end > kMaxKeyName)
            return false;
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return true;
}

HKEY Hand(const OpenKey& parent, int64_t id, REGSAM sam)
{
    return static_cast<HKEY>(OpenHandle(std::make_shared<OpenKey>(parent.store, id, sam)));
}

// A name into the caller's buffer with its terminator; *pcch becomes the length.
LSTATUS GiveName(const WideString& name, LPWSTR psz, DWORD* pcch)
{
    if (name.size() >= *pcch)
        return ERROR_MORE_DATA;
    std::memcpy(psz, name.c_str(), (name.size() + 1) * sizeof(WCHAR));
    *pcch = DWORD(name.size());
    return ERROR_SUCCESS;
}

LSTATUS GiveData(const RegistryValue& value, DWORD* pdwType, BYTE* pData, DWORD* pcbData)
{
    if (pdwType)
        *pdwType = value.type;
    if (!pcbData)
        return ERROR_SUCCESS;
    const DWORD room = *pcbData;
    *pcbData = DWORD(value.data.size());
    if (!pData)
        return ERROR_SUCCESS;
    if (value.data.size() > room)
        return ERROR_MORE_DATA;
    std::copy(value.data.begin(), value.data.end(), pData);
    return ERROR_SUCCESS;
}

FILETIME WrittenTime(int64_t seconds)
{
    return ToFileTime({time_t(seconds), 0});
}

}   // namespace

LSTATUS RegOpenKeyExW(HKEY hKey, LPCWSTR pszSubKey, DWORD, REGSAM sam, HKEY* phResult)
{
    if (!phResult)
        return ERROR_INVALID_PARAMETER;
    const WideString path = Name(pszSubKey);
    if (!IsPath(path))
        return ERROR_FILE_NOT_FOUND;
    return OnKey(hKey, 0, false, [&](SqliteDatabase& db, const OpenKey& parent) -> LSTATUS {
        const auto found = FindKey(db, parent.id, path);
        if (!found)
            return ERROR_FILE_NOT_FOUND;
        *phResult = Hand(parent, *found, sam);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegCreateKeyExW(HKEY hKey, LPCWSTR pszSubKey, DWORD dwReserved, LPWSTR, DWORD dwOptions, REGSAM sam,
                        SECURITY_ATTRIBUTES*, HKEY* phResult, DWORD* pdwDisposition)
{
    const WideString path = Name(pszSubKey);
    if (!pszSubKey || !phResult || dwReserved || dwOptions != REG_OPTION_NON_VOLATILE || !IsPath(path))
        return ERROR_INVALID_PARAMETER;
    int64_t id = 0;
    bool created = false;
    const auto parent = KeyOf(hKey);
    const LSTATUS status = OnKey(hKey, 0, true, [&](SqliteDatabase& db, const OpenKey& key) -> LSTATUS {
        id = CreateKey(db, key.id, path, &created);
        return ERROR_SUCCESS;
    });
    if (status != ERROR_SUCCESS)
        return status;
    *phResult = Hand(*parent, id, sam);   // only now: what was written is there
    if (pdwDisposition)
        *pdwDisposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return ERROR_SUCCESS;
}

LSTATUS RegCloseKey(HKEY hKey)
{
    if (hKey == HKEY_CURRENT_USER || hKey == HKEY_LOCAL_MACHINE)
        return ERROR_SUCCESS;
    return ObjectOf<OpenKey>(hKey) && CloseHandleEntry(hKey) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LSTATUS RegQueryValueExW(HKEY hKey, LPCWSTR pszName, DWORD* pReserved, DWORD* pdwType, BYTE* pData, DWORD* pcbData)
{
    if (pReserved || (pData && !pcbData))
        return ERROR_INVALID_PARAMETER;
    const WideString name = Name(pszName);
    return OnKey(hKey, KEY_QUERY_VALUE, false, [&](SqliteDatabase& db, const OpenKey& key) -> LSTATUS {
        const auto value = FindValue(db, key.id, name);
        return value ? GiveData(*value, pdwType, pData, pcbData) : LSTATUS(ERROR_FILE_NOT_FOUND);
    });
}

LSTATUS RegSetValueExW(HKEY hKey, LPCWSTR pszName, DWORD dwReserved, DWORD dwType, const BYTE* pData, DWORD cbData)
{
    RegistryValue value = {Name(pszName), dwType, {}};
    if (dwReserved || (!pData && cbData) || value.name.size() > kMaxValueName)
        return ERROR_INVALID_PARAMETER;
    value.data.assign(pData, pData + cbData);
    return OnKey(hKey, KEY_SET_VALUE, true, [&](SqliteDatabase& db, const OpenKey& key) -> LSTATUS {
        PutValue(db, key.id, value);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegDeleteValueW(HKEY hKey, LPCWSTR pszName)
{
    const WideString name = Name(pszName);
    return OnKey(hKey, KEY_SET_VALUE, true, [&](SqliteDatabase& db, const OpenKey& key) -> LSTATUS {
        return DeleteValue(db, key.id, name) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
    });
}

LSTATUS RegDeleteKeyW(HKEY hKey, LPCWSTR pszSubKey)
{
    if (!pszSubKey)
        return ERROR_INVALID_PARAMETER;
    const WideString path = Name(pszSubKey);
    return OnKey(hKey, 0, true, [&](SqliteDatabase& db, const OpenKey& parent) -> LSTATUS {
        const auto found = FindKey(db, parent.id, path);
        if (!found)
            return ERROR_FILE_NOT_FOUND;
        if (*found == kRootKey || HasSubKeys(db, *found))
            return ERROR_ACCESS_DENIED;
        DeleteKeyAndValues(db, *found);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegDeleteTreeW(HKEY hKey, LPCWSTR pszSubKey)
{
    const WideString path = Name(pszSubKey);
    const REGSAM needed = path.empty() ? KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE | KEY_SET_VALUE : 0;
    return OnKey(hKey, needed, true, [&](SqliteDatabase& db, const OpenKey& parent) -> LSTATUS {
        const auto found = FindKey(db, parent.id, path);
        if (!found)
            return ERROR_FILE_NOT_FOUND;
        DeleteContents(db, *found);
        if (!path.empty() && *found != kRootKey)
            DeleteKeyAndValues(db, *found);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegEnumKeyExW(HKEY hKey, DWORD dwIndex, LPWSTR pszName, DWORD* pcch, DWORD* pReserved, LPWSTR pszClass,
                      DWORD* pcchClass, FILETIME* pLastWrite)
{
    if (!pszName || !pcch || pReserved || pszClass || pcchClass)
        return ERROR_INVALID_PARAMETER;   // keys have no class here
    return OnKey(hKey, KEY_ENUMERATE_SUB_KEYS, false, [&](SqliteDatabase& db, const OpenKey& key) -> LSTATUS {
        SqliteStatement row(db, "SELECT name, written FROM keys WHERE parent = ? ORDER BY folded LIMIT 1 OFFSET ?",
                            key.id, int64_t(dwIndex));
        if (!row.Next())
            return ERROR_NO_MORE_ITEMS;
        if (pLastWrite)
            *pLastWrite = WrittenTime(row.Integer(1));
        return GiveName(row.Text(0), pszName, pcch);
    });
}

LSTATUS RegEnumValueW(HKEY hKey, DWORD dwIndex, LPWSTR pszName, DWORD* pcch, DWORD* pReserved, DWORD* pdwType,
                      BYTE* pData, DWORD* pcbData)
{
    if (!pszName || !pcch || pReserved || (pData && !pcbData))
        return ERROR_INVALID_PARAMETER;
    return OnKey(hKey, KEY_QUERY_VALUE, false, [&](SqliteDatabase& db, const OpenKey& key) -> LSTATUS {
        SqliteStatement row(db, "SELECT name, type, data FROM \"values\" WHERE key = ? ORDER BY id LIMIT 1 OFFSET ?",
                            key.id, int64_t(dwIndex));
        if (!row.Next())
            return ERROR_NO_MORE_ITEMS;
        const auto data = row.Bytes(2);
        const RegistryValue value = {row.Text(0), DWORD(row.Integer(1)), {data.begin(), data.end()}};
        if (const LSTATUS status = GiveData(value, pdwType, pData, pcbData))
            return status;
        return GiveName(value.name, pszName, pcch);
    });
}

LSTATUS RegQueryInfoKeyW(HKEY hKey, LPWSTR pszClass, DWORD* pcchClass, DWORD* pReserved, DWORD* pcSubKeys,
                         DWORD* pcchMaxSubKey, DWORD* pcchMaxClass, DWORD* pcValues, DWORD* pcchMaxName,
                         DWORD* pcbMaxData, DWORD* pcbSecurity, FILETIME* pLastWrite)
{
    if (pszClass || pcchClass || pReserved || pcchMaxClass || pcbSecurity)
        return ERROR_INVALID_PARAMETER;   // keys have neither class nor security here
    return OnKey(hKey, KEY_QUERY_VALUE, false, [&](SqliteDatabase& db, const OpenKey& key) -> LSTATUS {
        SqliteStatement keys(db, "SELECT count(*), ifnull(max(length(name)), 0) FROM keys WHERE parent = ?", key.id);
        SqliteStatement values(db,
                               "SELECT count(*), ifnull(max(length(name)), 0), ifnull(max(length(data)), 0) "
                               "FROM \"values\" WHERE key = ?",
                               key.id);
        SqliteStatement own(db, "SELECT written FROM keys WHERE id = ?", key.id);
        keys.Run();
        values.Run();
        const int64_t written = own.Next() ? own.Integer(0) : 0;
        const auto give = [](DWORD* pOut, int64_t value) {
            if (pOut)
                *pOut = DWORD(value);
        };
        give(pcSubKeys, keys.Integer(0));
        give(pcchMaxSubKey, keys.Integer(1));
        give(pcValues, values.Integer(0));
        give(pcchMaxName, values.Integer(1));
        give(pcbMaxData, values.Integer(2));
        if (pLastWrite)
            *pLastWrite = WrittenTime(written);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegFlushKey(HKEY hKey)
{
    return KeyOf(hKey) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;   // every change is in the file when its call returns
}
