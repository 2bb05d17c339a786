// What a filter's class tells of itself for its registration.
#pragma once

#include <windows.h>

#include <dshow.h>

struct AMOVIESETUP_FILTER {
    const CLSID* clsID;
    const WCHAR* strName;
    DWORD dwMerit;
    UINT nPins;
    const REGFILTERPINS* lpPin;
};
