// What the platform's headers say: classification, repair, and filling them in. A header with the tag 0xFFFE is a
// WAVEFORMATEXTENSIBLE and has its 40 bytes, whatever cbSize says; any other has 18, and cbSize bytes behind them.
// Pointers are not null unless said otherwise. [any] No state.
#pragma once

#include "audio/sample_type.h"

#include <windows.h>

#include <mmreg.h>

inline constexpr DWORD kPlainBytes = sizeof(WAVEFORMATEX);
inline constexpr DWORD kExtensibleBytes = sizeof(WAVEFORMATEXTENSIBLE);
inline constexpr WORD kExtensionBytes = WORD(kExtensibleBytes - kPlainBytes);   // cbSize without further bytes

inline bool IsExtensible(const WAVEFORMATEX& format)
{
    return format.wFormatTag == WAVE_FORMAT_EXTENSIBLE;
}
inline const WAVEFORMATEXTENSIBLE& Extended(const WAVEFORMATEX& format)   // of a header with the tag 0xFFFE
{
    return reinterpret_cast<const WAVEFORMATEXTENSIBLE&>(format);
}
DWORD DefaultChannelMask(DWORD channels);   // the first speakers, one a channel

QXSAMPLETYPE QxAudio_GetSampleType(const WAVEFORMATEX* pFormat);
// The tag, or the one that an extensible header's sub-format carries; 0 when that carries none, and for null.
WORD QxAudio_GetWaveFormatTag(const WAVEFORMATEX* pFormat);
// True for the public sub-formats PCM (*pTag 1) and IEEE float (3) of a complete extensible header.
bool QxAudio_GetFormatTagExtensible(const WAVEFORMATEXTENSIBLE* pFormat, WORD* pTag);
// Also what claims to be linear is compressed when its frames are not of the size that its samples have together.
bool QxAudio_IsCompressed(const WAVEFORMATEX* pFormat);
bool QxAudio_IsCompressedExtensible(const WAVEFORMATEXTENSIBLE* pFormat);
// Tag, channels, rate and bits are the same.
bool QxAudio_IsEqualFormat(const WAVEFORMATEX* pA, const WAVEFORMATEX* pB);
// Mends a PCM header: 20 bits become 24, and a frame has the size of its samples. 1 when something was changed. The
// bytes per second stay.
int32_t QxAudio_FixBadWfx(WAVEFORMATEX* pFormat);

// A plain header, 18 bytes.
void QxAudio_InitWfx(WAVEFORMATEX* pFormat, DWORD nRate, QXSAMPLETYPE eType, WORD nChannels);
// Extensible when the mask says more than a plain header does and cbDest has room for 40 bytes, otherwise plain. A mask
// with more speakers than channels gives the default one.
void QxAudio_InitWfxFlex(WAVEFORMATEX* pFormat, WORD wTag, DWORD nRate, WORD nBits, WORD nChannels, DWORD dwMask,
                         DWORD cbDest);
// Always extensible, 40 bytes; mask 0 gives the default one.
void InitExtensible(WAVEFORMATEXTENSIBLE* pFormat, WORD wTag, DWORD nRate, WORD nBits, WORD nChannels, DWORD dwMask);
// Sets tag, mask, valid bits and cbSize of a header whose other fields stand.
void MakeExtensible(WAVEFORMATEXTENSIBLE* pFormat, WORD wSubFormatTag, DWORD dwMask);

// At most the 40 bytes; what a shorter header lacks stays as it was.
void QxAudio_CopyWfxToWfExt(const WAVEFORMATEX* pFormat, WAVEFORMATEXTENSIBLE* pDest);
// Plain headers as they are, the public sub-formats as their plain header; of others the destination stays untouched.
void QxAudio_CopyWfExtToWfx(const WAVEFORMATEXTENSIBLE* pFormat, WAVEFORMATEX* pDest);
