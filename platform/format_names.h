// What the system calls compressed audio formats.
#pragma once

#include <windows.h>

#include <mmreg.h>

// The name of a format tag ("IMA ADPCM"), and the attributes of a format ("44.100 kHz, 4 Bit, Stereo"), each cut to
// cchOut - 1 characters; cchOut is at least 1. cbFormat: bytes of the header that count. A failure, and nothing written,
// for what the system does not know.
HRESULT GetFormatTagName(WORD wTag, WCHAR* pszOut, DWORD cchOut);
HRESULT GetFormatAttributes(const WAVEFORMATEX& format, DWORD cbFormat, WCHAR* pszOut, DWORD cchOut);
