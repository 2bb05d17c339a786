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

}   // namespace

HRESULT GetFormatTagName(WORD wTag, WCHAR* pszOut, DWORD cchOut)
{
    ACMFORMATTAGDETAILSW details = {};
    details.cbStruct = sizeof details;
    details.dwFormatTag = wTag;
    if (acmFormatTagDetailsW(nullptr, &details, ACM_FORMATTAGDETAILSF_FORMATTAG) != MMSYSERR_NOERROR)
        return E_FAIL;
    CopyCut(details.szFormatTag, pszOut, cchOut);
    return S_OK;
}

HRESULT GetFormatAttributes(const WAVEFORMATEX& format, DWORD cbFormat, WCHAR* pszOut, DWORD cchOut)
{
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
