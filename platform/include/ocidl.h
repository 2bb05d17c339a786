// What tells the property pages of an object.
#pragma once

#include <unknwn.h>

struct CAUUID {
    ULONG cElems;
    GUID* pElems;   // from CoTaskMemAlloc, the caller frees it
};

class ISpecifyPropertyPages : public IUnknown {
public:
    virtual HRESULT GetPages(CAUUID* pPages) = 0;

protected:
    ~ISpecifyPropertyPages() = default;
};

inline constexpr IID IID_ISpecifyPropertyPages = {
    0xB196B28B, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
