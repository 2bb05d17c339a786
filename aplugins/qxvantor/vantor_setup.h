// The identity of the plug-in's classes, and what the filter tells of itself when it is registered.
#pragma once

#include "platform/media/setup_data.h"

#include <windows.h>

inline constexpr CLSID CLSID_QxVantor = {0x3B0F7D5E, 0x6A21, 0x4E8B, {0x9C, 0x47, 0x15, 0xD2, 0xAE, 0x80, 0x63, 0x1F}};
inline constexpr CLSID CLSID_QxVantorPropPage = {
    0xA94C2E17, 0x08D3, 0x45F6, {0xB2, 0x7A, 0x60, 0x3E, 0xC1, 0x9D, 0x54, 0x8B}};

inline constexpr WCHAR kVantorClassName[] = TEXT("tensio Timestretch");
extern const AMOVIESETUP_FILTER kVantorSetup;
