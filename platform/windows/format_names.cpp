#include "platform/format_names.h"

#include <mmsystem.h>

#include <msacm.h>

#include <algorithm>
#include <cwchar>

namespace {

void CopyCut(const WCHAR* pszText, WCHAR* pszOut, DWORD cchOut)
{
    const size_t length = std::min<size_t>(std::wcslen(pszText), cchOut - 1);
    *std::copy_n(pszText, length, pszOut) = 0;
}

bool FindTag(DWORD tag, ACMFORMATTAGDETAILSW& details)
{
    details = {};
    details.cbStruct = sizeof details;
    details.dwFormatTag = tag;
    return acmFormatTagDetailsW(nullptr, &details, ACM_FORMATTAGDETAILSF_FORMATTAG) == MMSYSERR_NOERROR;
}

}   // namespace

HRESULT GetFormatTagName(WORD wTag, WCHAR* pszOut, DWORD cchOut)
{
    ACMFORMATTAGDETAILSW details;
    if (!FindTag(wTag, details))
        return E_FAIL;
    CopyCut(details.szFormatTag, pszOut, cchOut);
    return S_OK;
}

// Some systems describe also a header of no codec's, by its numbers.
HRESULT GetFormatAttributes(const WAVEFORMATEX& format, DWORD cbFormat, WCHAR* pszOut, DWORD cchOut)
{
    ACMFORMATTAGDETAILSW tag;
    if (!FindTag(format.wFormatTag, tag))
        return E_FAIL;
    ACMFORMATDETAILSW details = {};
    details.cbStruct = sizeof details;
    details.dwFormatTag = format.wFormatTag;
    details.pwfx = const_cast<WAVEFORMATEX*>(&format);
    details.cbwfx = cbFormat;
    if (acmFormatDetailsW(nullptr, &details, ACM_FORMATDETAILSF_FORMAT) != MMSYSERR_NOERROR)
        return E_FAIL;
    CopyCut(details.szFormat, pszOut, cchOut);
    return S_OK;
}
