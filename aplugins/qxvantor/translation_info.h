// How a host tells a plug-in the language of its texts.
#pragma once

#include <windows.h>

#include <unknwn.h>

inline constexpr IID IID_IQxTranslationInfo = {
    0x2F86D1A4, 0xC07B, 0x4E35, {0xB9, 0x61, 0x0D, 0x53, 0x7A, 0xE8, 0x24, 0xCC}};

class IQxTranslationInfo : public IUnknown {
public:
    virtual HRESULT STDMETHODCALLTYPE SetLanguage(DWORD lcid) = 0;   // E_FAIL when the tables do not follow

protected:
    ~IQxTranslationInfo() = default;
};
