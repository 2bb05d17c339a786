#include "tests/platform/wide.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

// A key of the test's own, removed with all it holds.
class Registry : public testing::Test {
protected:
    Registry()
    {
        path = TEXT("Software\\qxvantor-seam\\") + FromAscii(std::to_string(GetCurrentProcessId()));
        RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &root, nullptr);
    }
    ~Registry() override
    {
        RegCloseKey(root);
        RegDeleteTreeW(HKEY_CURRENT_USER, path.c_str());
    }

    HKEY Create(const WCHAR* name, REGSAM sam = KEY_ALL_ACCESS, DWORD* disposition = nullptr)
    {
        HKEY key = nullptr;
        EXPECT_EQ(RegCreateKeyExW(root, name, 0, nullptr, 0, sam, nullptr, &key, disposition), ERROR_SUCCESS);
        return key;
    }
    LSTATUS Open(const WCHAR* name)
    {
        HKEY key = nullptr;
        const LSTATUS status = RegOpenKeyExW(root, name, 0, KEY_READ, &key);
        if (status == ERROR_SUCCESS)
            RegCloseKey(key);
        return status;
    }
    static LSTATUS Set(HKEY key, const WCHAR* name, DWORD value)
    {
        return RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
    }

    Wide path;
    HKEY root = nullptr;
};

TEST_F(Registry, KeepsTypedValues)
{
    const Wide text = TEXT("some text");
    const BYTE bytes[] = {0, 1, 2, 254, 255};
    EXPECT_EQ(Set(root, TEXT("number"), 0xDEADBEEF), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(root, TEXT("text"), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                             DWORD((text.size() + 1) * sizeof(WCHAR))),
              ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(root, TEXT("bytes"), 0, REG_BINARY, bytes, sizeof bytes), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(root, nullptr, 0, REG_BINARY, bytes, 0), ERROR_SUCCESS);   // the default value, empty
    DWORD type = 0, number = 0, size = sizeof number;
    EXPECT_EQ(RegQueryValueExW(root, TEXT("NUMBER"), nullptr, &type, reinterpret_cast<BYTE*>(&number), &size), 0);
    EXPECT_EQ(type, DWORD(REG_DWORD));
    EXPECT_EQ(number, 0xDEADBEEF);
    std::array<BYTE, 64> out;
    size = DWORD(out.size());
    EXPECT_EQ(RegQueryValueExW(root, TEXT("text"), nullptr, &type, out.data(), &size), 0);
    EXPECT_EQ(size, (text.size() + 1) * sizeof(WCHAR));
    EXPECT_EQ(std::memcmp(out.data(), text.c_str(), size), 0);
    size = 2;
    EXPECT_EQ(RegQueryValueExW(root, TEXT("bytes"), nullptr, &type, out.data(), &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, sizeof bytes);
    EXPECT_EQ(RegQueryValueExW(root, TEXT("bytes"), nullptr, nullptr, nullptr, &size), 0);
    EXPECT_EQ(size, sizeof bytes);
    size = 64;
    EXPECT_EQ(RegQueryValueExW(root, TEXT(""), nullptr, &type, out.data(), &size), 0);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(RegQueryValueExW(root, TEXT("nothing"), nullptr, nullptr, nullptr, nullptr), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Set(root, TEXT("text"), 3), ERROR_SUCCESS);   // another type takes its place
    EXPECT_EQ(RegQueryValueExW(root, TEXT("text"), nullptr, &type, nullptr, nullptr), 0);
    EXPECT_EQ(type, DWORD(REG_DWORD));
    EXPECT_EQ(RegDeleteValueW(root, TEXT("text")), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueW(root, TEXT("text")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegFlushKey(root), ERROR_SUCCESS);
}

TEST_F(Registry, MakesThePathToAKey)
{
    DWORD disposition = 0;
    RegCloseKey(Create(TEXT("a\\b\\c"), KEY_READ, &disposition));
    EXPECT_EQ(disposition, DWORD(REG_CREATED_NEW_KEY));
    RegCloseKey(Create(TEXT("A\\B\\C"), KEY_READ, &disposition));   // case does not count
    EXPECT_EQ(disposition, DWORD(REG_OPENED_EXISTING_KEY));
    EXPECT_EQ(Open(TEXT("a\\b")), ERROR_SUCCESS);
    EXPECT_EQ(Open(TEXT("a\\x")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteKeyW(root, TEXT("a")), ERROR_ACCESS_DENIED);   // it has keys of its own
    EXPECT_EQ(RegDeleteKeyW(root, TEXT("a\\b\\c")), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyW(root, TEXT("a\\b\\c")), ERROR_FILE_NOT_FOUND);
}

TEST_F(Registry, HoldsAHandleToItsRights)
{
    const HKEY reader = Create(TEXT("k"), KEY_READ), writer = Create(TEXT("k"), KEY_WRITE);
    EXPECT_EQ(Set(reader, TEXT("v"), 1), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Set(writer, TEXT("v"), 1), ERROR_SUCCESS);
    EXPECT_EQ(RegQueryValueExW(writer, TEXT("v"), nullptr, nullptr, nullptr, nullptr), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegQueryValueExW(reader, TEXT("v"), nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyW(root, TEXT("k")), ERROR_SUCCESS);
    EXPECT_EQ(RegQueryValueExW(reader, TEXT("v"), nullptr, nullptr, nullptr, nullptr), ERROR_KEY_DELETED);
    EXPECT_EQ(RegCloseKey(reader), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(writer), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), ERROR_SUCCESS);
}

TEST_F(Registry, ListsKeysAndValues)
{
    for (const WCHAR* name : {TEXT("beta"), TEXT("Alpha"), TEXT("gamma")})
        RegCloseKey(Create(name));
    Set(root, TEXT("one"), 1);
    Set(root, TEXT("seven"), 7);
    DWORD keys = 0, longestKey = 0, values = 0, longestName = 0, largest = 0;
    EXPECT_EQ(RegQueryInfoKeyW(root, nullptr, nullptr, nullptr, &keys, &longestKey, nullptr, &values, &longestName,
                               &largest, nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(keys, 3u);
    EXPECT_EQ(longestKey, 5u);
    EXPECT_EQ(values, 2u);
    EXPECT_EQ(longestName, 5u);
    EXPECT_EQ(largest, 4u);
    std::string names;
    std::array<WCHAR, 16> name;
    for (DWORD i = 0, size = 16; RegEnumKeyExW(root, i, name.data(), &size, nullptr, nullptr, nullptr, nullptr) == 0;
         ++i, size = 16) {
        EXPECT_EQ(size, Wide(name.data()).size());
        names += ToAscii(name.data()) + ' ';
    }
    EXPECT_EQ(names, "Alpha beta gamma ");
    DWORD size = 5;
    EXPECT_EQ(RegEnumKeyExW(root, 0, name.data(), &size, nullptr, nullptr, nullptr, nullptr), ERROR_MORE_DATA);
    size = 16;
    EXPECT_EQ(RegEnumKeyExW(root, 3, name.data(), &size, nullptr, nullptr, nullptr, nullptr), ERROR_NO_MORE_ITEMS);
    DWORD sum = 0;
    for (DWORD i = 0; i < 2; ++i) {
        DWORD value = 0, type = 0, valueSize = sizeof value;
        size = 16;
        EXPECT_EQ(
            RegEnumValueW(root, i, name.data(), &size, nullptr, &type, reinterpret_cast<BYTE*>(&value), &valueSize),
            ERROR_SUCCESS);
        sum += value;
    }
    EXPECT_EQ(sum, 8u);
    EXPECT_EQ(RegEnumValueW(root, 2, name.data(), &size, nullptr, nullptr, nullptr, nullptr), ERROR_NO_MORE_ITEMS);
}

TEST_F(Registry, DeletesATreeWhole)
{
    for (const WCHAR* name : {TEXT("t\\a\\b\\c"), TEXT("t\\a\\d"), TEXT("t\\e"), TEXT("u")}) {
        const HKEY key = Create(name);
        Set(key, TEXT("v"), 1);
        RegCloseKey(key);
    }
    EXPECT_EQ(RegDeleteTreeW(root, TEXT("t")), ERROR_SUCCESS);
    EXPECT_EQ(Open(TEXT("t")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open(TEXT("u")), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteTreeW(root, TEXT("t")), ERROR_FILE_NOT_FOUND);
    const HKEY u = Create(TEXT("u"));
    EXPECT_EQ(RegDeleteTreeW(u, nullptr), ERROR_SUCCESS);   // empties the key, which stays
    EXPECT_EQ(RegQueryValueExW(u, TEXT("v"), nullptr, nullptr, nullptr, nullptr), ERROR_FILE_NOT_FOUND);
    RegCloseKey(u);
    EXPECT_EQ(Open(TEXT("u")), ERROR_SUCCESS);
}

TEST_F(Registry, KeepsTheMachineApart)
{
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key), ERROR_FILE_NOT_FOUND);
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(Set(key, TEXT("v"), 1), ERROR_SUCCESS);
    EXPECT_EQ(RegQueryValueExW(root, TEXT("v"), nullptr, nullptr, nullptr, nullptr), ERROR_FILE_NOT_FOUND);
    RegCloseKey(key);
    EXPECT_EQ(RegDeleteTreeW(HKEY_LOCAL_MACHINE, path.c_str()), ERROR_SUCCESS);
}

}   // namespace
