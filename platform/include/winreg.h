// The registry: keys with typed values, one store for the user and one for the machine. Names ignore case, and '\'
// parts them. The calls give a code and leave the thread's error alone.
#pragma once

#include <winnt.h>

inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(uintptr_t(0x80000001));
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(uintptr_t(0x80000002));

inline constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

// ERROR_FILE_NOT_FOUND when the key does not exist. What the handle may do later is what sam asks for.
LSTATUS RegOpenKeyExW(HKEY hKey, LPCWSTR pszSubKey, DWORD dwOptions, REGSAM sam, HKEY* phResult);
LSTATUS RegCreateKeyExW(HKEY hKey, LPCWSTR pszSubKey, DWORD dwReserved, LPWSTR pszClass, DWORD dwOptions, REGSAM sam,
                        SECURITY_ATTRIBUTES* pSecurity, HKEY* phResult, DWORD* pdwDisposition);
LSTATUS RegCloseKey(HKEY hKey);
// *pcbData: room in, size out. Without a buffer the size alone comes back; too small a one is ERROR_MORE_DATA with the
// size needed. A name of null or "" is the default value.
LSTATUS RegQueryValueExW(HKEY hKey, LPCWSTR pszName, DWORD* pReserved, DWORD* pdwType, BYTE* pData, DWORD* pcbData);
LSTATUS RegSetValueExW(HKEY hKey, LPCWSTR pszName, DWORD dwReserved, DWORD dwType, const BYTE* pData, DWORD cbData);
LSTATUS RegDeleteValueW(HKEY hKey, LPCWSTR pszName);
LSTATUS RegDeleteKeyW(HKEY hKey, LPCWSTR pszSubKey);    // ERROR_ACCESS_DENIED while the key has keys of its own
LSTATUS RegDeleteTreeW(HKEY hKey, LPCWSTR pszSubKey);   // null: what is in the key, which itself stays
// Keys come in the order of their names, values as they were first set; *pcch: room in with the terminator, length out without it.
LSTATUS RegEnumKeyExW(HKEY hKey, DWORD dwIndex, LPWSTR pszName, DWORD* pcch, DWORD* pReserved, LPWSTR pszClass,
                      DWORD* pcchClass, FILETIME* pLastWrite);
LSTATUS RegEnumValueW(HKEY hKey, DWORD dwIndex, LPWSTR pszName, DWORD* pcch, DWORD* pReserved, DWORD* pdwType,
                      BYTE* pData, DWORD* pcbData);
LSTATUS RegQueryInfoKeyW(HKEY hKey, LPWSTR pszClass, DWORD* pcchClass, DWORD* pReserved, DWORD* pcSubKeys,
                         DWORD* pcchMaxSubKey, DWORD* pcchMaxClass, DWORD* pcValues, DWORD* pcchMaxName,
                         DWORD* pcbMaxData, DWORD* pcbSecurity, FILETIME* pLastWrite);
LSTATUS RegFlushKey(HKEY hKey);
