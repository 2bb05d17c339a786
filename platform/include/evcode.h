// Codes of the events that filters send to their graph.
#pragma once

#include <windef.h>

inline constexpr LONG EC_COMPLETE = 0x01;     // HRESULT, the renderer or null
inline constexpr LONG EC_USERABORT = 0x02;    // nothing
inline constexpr LONG EC_ERRORABORT = 0x03;   // HRESULT
