// Access rights, languages and the interlocked operations.
#pragma once

#include <windef.h>

inline constexpr DWORD DELETE = 0x00010000;
inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;

inline constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
inline constexpr REGSAM KEY_SET_VALUE = 0x0002;
inline constexpr REGSAM KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr REGSAM KEY_NOTIFY = 0x0010;
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_WRITE = 0x20006;
inline constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;

// Types of registry values. Text is stored with its terminator, as the caller counts it.
inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_QWORD = 11;

inline constexpr WORD LANG_NEUTRAL = 0x00;
inline constexpr WORD LANG_ENGLISH = 0x09;
inline constexpr WORD SUBLANG_NEUTRAL = 0x00;
inline constexpr WORD SUBLANG_DEFAULT = 0x01;
inline constexpr WORD SUBLANG_SYS_DEFAULT = 0x02;
inline constexpr DWORD SORT_DEFAULT = 0;

constexpr WORD PRIMARYLANGID(DWORD language)
{
    return WORD(language & 0x3FF);
}
constexpr WORD SUBLANGID(DWORD language)
{
    return WORD((language & 0xFFFF) >> 10);
}
constexpr LANGID MAKELANGID(WORD primary, WORD sub)
{
    return LANGID(sub << 10 | primary);
}
constexpr LANGID LANGIDFROMLCID(LCID lcid)
{
    return LANGID(lcid & 0xFFFF);
}
constexpr LCID MAKELCID(LANGID language, DWORD sort)
{
    return sort << 16 | language;
}

inline constexpr LCID LOCALE_USER_DEFAULT = 0x0400;
inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x0800;
inline constexpr LCID LOCALE_INVARIANT = 0x007F;

// All of them full barriers. Increment, Decrement give the new value, the others the old one.
LONG InterlockedIncrement(volatile LONG* pValue);
LONG InterlockedDecrement(volatile LONG* pValue);
LONG InterlockedExchange(volatile LONG* pTarget, LONG nValue);
LONG InterlockedExchangeAdd(volatile LONG* pTarget, LONG nValue);
LONG InterlockedCompareExchange(volatile LONG* pTarget, LONG nValue, LONG nComparand);
PVOID InterlockedExchangePointer(PVOID volatile* ppTarget, PVOID pValue);
PVOID InterlockedCompareExchangePointer(PVOID volatile* ppTarget, PVOID pValue, PVOID pComparand);
