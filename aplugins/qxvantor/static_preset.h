// The host's interface to the presets that a plug-in brings along.
#pragma once

#include <windows.h>

#include <unknwn.h>

inline constexpr IID IID_IStaticFilterPreset = {
    0xB3D40C71, 0x5E2A, 0x4F19, {0x8C, 0x36, 0x97, 0x1F, 0xE0, 0x42, 0xAD, 0x58}};

class IStaticFilterPreset : public IUnknown {
public:
    virtual HRESULT STDMETHODCALLTYPE GetPresetCount(DWORD* pcPresets) = 0;
    // The name in the user's language, cut to cchName - 1 characters. E_INVALIDARG for a bad index.
    virtual HRESULT STDMETHODCALLTYPE GetPresetName(DWORD iPreset, WCHAR* pszName, DWORD cchName) = 0;
    // Replaces the whole set of parameters. E_INVALIDARG for a bad index, nothing then changes.
    virtual HRESULT STDMETHODCALLTYPE SetPreset(DWORD iPreset) = 0;

protected:
    ~IStaticFilterPreset() = default;
};
