// The presets that come with the plug-in. A preset is a full record: it also clears what is known of the source material.
#pragma once

#include "aplugins/qxvantor/vantor_params.h"

#include <windows.h>

inline constexpr DWORD kPresetCount = 8;
inline constexpr DWORD kDefaultPreset = 0;   // in force after construction; the user sees those from 1 on

// index below kPresetCount
const QxVantorParams& PresetRecord(DWORD index);
// The name in the language of the kernel's handle, cut to cchName - 1 characters. E_INVALIDARG for an index of no preset
// and for no room, E_POINTER without a destination.
HRESULT PresetName(DWORD index, WCHAR* pszName, DWORD cchName);
