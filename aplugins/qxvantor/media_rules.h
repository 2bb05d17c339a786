// Which formats the filter takes, which it gives for them, and in which form it keeps them.
#pragma once

#include "platform/media/media_type.h"

#include <windows.h>

#include <dshow.h>
#include <mmreg.h>

// S_OK for what the input pin takes: uncompressed 32-bit float audio of 1 to 32 channels, plain or extensible. Else
// E_INVALIDARG. The sample rate is not looked at.
HRESULT CheckInputFormat(const AM_MEDIA_TYPE& type);
// S_OK when both are audio of one tag, channel count (1 to 48), width and rate. Else E_INVALIDARG.
HRESULT CheckSameFormat(const AM_MEDIA_TYPE& in, const AM_MEDIA_TYPE& out);
// False outside of what the engine runs at, 8000 to 384000 Hz. The type has passed CheckInputFormat.
bool IsRateSupported(const AM_MEDIA_TYPE& type);
// The type that is given for an input: its own, with nothing behind the format record that counts. E_FAIL for a channel
// count of 0 or above 32, E_OUTOFMEMORY; *pOut is then as it was.
HRESULT MakeOutputType(const AM_MEDIA_TYPE& in, CMediaType* pOut);
// The record without what follows it: an extensible format becomes IEEE float. The format block holds 16 bytes or more.
WAVEFORMATEX PlainFormat(const AM_MEDIA_TYPE& type);
