// What the user reads of a format, in the language of the kernel's handle.
#pragma once

#include "audio/wave_format.h"

// "PCM", "MPEG Layer-3". 0, or 0x80004005 and "Unknown" for a tag that neither the library nor the system knows. A null
// destination or one without room is accepted: the result alone is given.
HRESULT QxAudio_GetTagText(WORD wTag, WCHAR* pszOut, int32_t cchOut);
// "44,100 Hz, 16 Bit, Stereo"; results and destination likewise. The speakers of an extensible header are named.
HRESULT QxAudio_GetAttribsText(const WAVEFORMATEX* pFormat, WCHAR* pszOut, int32_t cchOut);
HRESULT QxAudio_GetAttribsText(const _qxwaveformat* pRecord, WCHAR* pszOut, int32_t cchOut);
