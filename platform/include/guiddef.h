// Globally unique identifiers.
#pragma once

#include <windef.h>

struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
    bool operator==(const GUID&) const = default;
};
static_assert(sizeof(GUID) == 16);

using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

inline constexpr GUID GUID_NULL = {};

constexpr bool IsEqualGUID(REFGUID a, REFGUID b)
{
    return a == b;
}
constexpr bool IsEqualIID(REFIID a, REFIID b)
{
    return a == b;
}
constexpr bool IsEqualCLSID(REFCLSID a, REFCLSID b)
{
    return a == b;
}
