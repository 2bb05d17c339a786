// Copies between the library's record and the platform's headers. Nothing is written behind cbDest, which is at least 18.
// [any] No state.
#pragma once

#include "audio/wave_format.h"

#include <array>

// When a header becomes an extensible one; in any case only with room for 40 bytes. A number that is none of these counts
// as QXWFXDEST_WHEN_NEEDED, and in the allocating copies as QXWFXDEST_PLAIN.
enum QXWAVEFORMAT_COPY_DEST : uint32_t {
    QXWFXDEST_AS_RECORD = 0,      // the record was made from one, or its mask is not the default
    QXWFXDEST_WHEN_NEEDED = 1,    // there is a mask, and more than two channels or a mask that is not the default
    QXWFXDEST_PLAIN = 2,          // never; the mask is dropped
    QXWFXDEST_MULTICHANNEL = 3,   // more than two channels; give 40 bytes
    QXWFXDEST_EXTENSIBLE = 4,     // always; give 40 bytes
};

// destSize 0 stands for 32. Extra bytes that do not all fit are left out. The policy is without effect.
void QxAudio_GeneralCopyQxWaveFormat(_qxwaveformat* pDest, DWORD destSize, const _qxwaveformat* pSource,
                                     QXWAVEFORMAT_COPY_DEST ePolicy);
// Extra bytes are cut to the room. A linear record whose mask says more than a plain header is made extensible by any
// policy but QXWFXDEST_PLAIN, and so is a compressed one when its extra bytes all fit.
void QxAudio_GeneralCopyWfx(WAVEFORMATEX* pDest, DWORD cbDest, const _qxwaveformat* pRecord,
                            QXWAVEFORMAT_COPY_DEST ePolicy);
// By way of a record with room for 94 extra bytes.
void QxAudio_CopyWfx(WAVEFORMATEX* pDest, DWORD cbDest, const WAVEFORMATEX* pSource, QXWAVEFORMAT_COPY_DEST ePolicy);
void QxAudio_CopyWfExt(WAVEFORMATEXTENSIBLE* pDest, const WAVEFORMATEX* pSource, QXWAVEFORMAT_COPY_DEST ePolicy);

// A locked block of the platform's movable heap, which the caller unlocks and frees; null for null and without memory. A
// header is taken over byte for byte where the policy leaves it as it is.
WAVEFORMATEX* QxAudio_AllocAndCopyWfx(const _qxwaveformat& record, QXWAVEFORMAT_COPY_DEST ePolicy);
WAVEFORMATEX* QxAudio_AllocAndCopyWfx(const _qxwaveformat* pRecord, QXWAVEFORMAT_COPY_DEST ePolicy);
WAVEFORMATEX* QxAudio_AllocAndCopyWfx(const WAVEFORMATEX* pSource, QXWAVEFORMAT_COPY_DEST ePolicy);

// A header with room behind it.
class _qxwaveformat_wfxplus {
public:
    void Init(const WAVEFORMATEX& format, QXWAVEFORMAT_COPY_DEST ePolicy);
    WAVEFORMATEX* Get() { return reinterpret_cast<WAVEFORMATEX*>(buffer.data()); }
    const WAVEFORMATEX& Format() const { return reinterpret_cast<const WAVEFORMATEX&>(buffer); }

private:
    alignas(4) std::array<BYTE, 136> buffer = {};
};

// The plain header of a record, without extra bytes.
class _qxwaveformat_wfxcopyhelper {
public:
    explicit _qxwaveformat_wfxcopyhelper(const _qxwaveformat& record);
    const WAVEFORMATEX& Format() const { return format; }

private:
    WAVEFORMATEX format;
};
static_assert(sizeof(_qxwaveformat_wfxcopyhelper) == 18);

// The extensible header of a record that was made from one or has a mask of its own; otherwise the plain one with up to 22
// extra bytes.
class _qxwaveformat_wfxecopyhelper {
public:
    explicit _qxwaveformat_wfxecopyhelper(const _qxwaveformat& record);
    const WAVEFORMATEX& Format() const { return format.Format; }

private:
    WAVEFORMATEXTENSIBLE format = {};
};
static_assert(sizeof(_qxwaveformat_wfxecopyhelper) == 40);
