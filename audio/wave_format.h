// The library's own record of an audio format. It is of variable length: 32 bytes, and for a compressed format the bytes
// that describe it further. Whoever initialises one says how many bytes it may take.
// [any] No state beside the record.
#pragma once

#include "audio/sample_type.h"

#include <windows.h>

#include <mmreg.h>

#include <cstddef>
#include <span>

inline constexpr DWORD QXWF_COMPRESSED = 8;   // eSampleType is QXSAMPLE_NONE; tag, bits and extra bytes tell the format
inline constexpr DWORD QXWF_EXTENSIBLE = 16;   // made from a WAVEFORMATEXTENSIBLE

#pragma pack(push, 2)
struct _qxwaveformat {
    DWORD cbRecord;   // 32 plus cbExtra; 32 also when the record has no room for extra bytes
    QXSAMPLETYPE eSampleType;
    DWORD nSamplesPerSec;
    WORD nChannels;
    WORD nBlockAlign;      // bytes of a frame
    DWORD dwChannelMask;   // 0: the default of the channels
    DWORD dwFlags;         // QXWF_
    WORD wFormatTag;       // this and the next: with QXWF_COMPRESSED
    WORD wBitsPerSample;
    DWORD nAvgBytesPerSec;
    WORD cbExtra;   // this and the next: with a cbRecord of at least 34
    BYTE abExtra[1024];

    // size: bytes that the record may take, at least 32.
    void Init(DWORD nRate, QXSAMPLETYPE eType, WORD nChannelCount, DWORD dwMask, DWORD size);
    // The header may be a PCM one with a wrong block align, or an extensible one without a sub-format: then the bits tell
    // the type, 32 of them a float. It is left as it is. Extra bytes are cut to the room.
    void Init(DWORD size, const WAVEFORMATEX& format);
    void InitAsWfx(WORD wTag, DWORD nRate, WORD nBits, WORD nChannelCount, DWORD dwMask, DWORD size);

    WORD UpdateBlockAlign();   // after a change of type or channels; gives nBlockAlign
    WORD FormatTag() const;
    WORD BitsPerSample() const;
    WORD BytesPerSample() const;
    bool IsCompressed() const;
    std::span<const BYTE> Extra() const;
    DWORD EffectiveMask() const;
    bool IsMaskDefault() const;

    // The same audio: the block align does not count, nor does whether a default mask is written out.
    bool operator==(const _qxwaveformat& other) const;
    // Of a compressed format the header's own tag counts, so that a record never equals an extensible header.
    bool operator==(const WAVEFORMATEX& format) const;

    // cbRecord holds the capacity until the extra bytes are in place; then this settles it.
    void Clear(DWORD size);
    DWORD ExtraCapacity() const;
    void Settle();

private:
    void TakeCompressed(const WAVEFORMATEX& format);
    bool SameSpeakers(DWORD mask) const;
};
#pragma pack(pop)

inline constexpr DWORD kRecordBytes = 32;   // of the fields that every record has
inline constexpr DWORD kExtraOffset = 34;
inline constexpr DWORD kLargestExtra = 1024;
static_assert(sizeof(_qxwaveformat) == kExtraOffset + kLargestExtra);
static_assert(offsetof(_qxwaveformat, nSamplesPerSec) == 8 && offsetof(_qxwaveformat, nBlockAlign) == 14);
static_assert(offsetof(_qxwaveformat, dwFlags) == 20 && offsetof(_qxwaveformat, wBitsPerSample) == 26);
static_assert(offsetof(_qxwaveformat, cbExtra) == kRecordBytes && offsetof(_qxwaveformat, abExtra) == kExtraOffset);
