#include "audio/wave_format_copy.h"

#include "audio/wave_header.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr DWORD kTemporaryRecord = 128;

bool IsExtensibleAsRecord(const _qxwaveformat& record)
{
    return (record.dwFlags & QXWF_EXTENSIBLE) != 0 || !record.IsMaskDefault();
}

bool WishesExtensible(const _qxwaveformat& record, QXWAVEFORMAT_COPY_DEST policy)
{
    switch (policy) {
    case QXWFXDEST_AS_RECORD:
        return IsExtensibleAsRecord(record);
    case QXWFXDEST_PLAIN:
        return false;
    case QXWFXDEST_MULTICHANNEL:
        return record.nChannels > 2;
    case QXWFXDEST_EXTENSIBLE:
        return true;
    case QXWFXDEST_WHEN_NEEDED:
    default:
        return record.dwChannelMask != 0 && (record.nChannels > 2 || !record.IsMaskDefault());
    }
}

void AppendExtra(WAVEFORMATEX* pDest, DWORD cbDest, std::span<const BYTE> extra)
{
    const DWORD used = kPlainBytes + pDest->cbSize;
    const auto count = std::min<size_t>(extra.size(), cbDest - std::min(used, cbDest));
    std::copy_n(extra.begin(), count, reinterpret_cast<BYTE*>(pDest) + used);
    pDest->cbSize = WORD(pDest->cbSize + count);
}

void CopyCompressed(WAVEFORMATEX* pDest, DWORD cbDest, const _qxwaveformat& record, QXWAVEFORMAT_COPY_DEST policy)
{
    *pDest = {record.wFormatTag,
              record.nChannels,
              record.nSamplesPerSec,
              record.nAvgBytesPerSec,
              record.nBlockAlign,
              record.wBitsPerSample,
              0};
    const bool extensible = WishesExtensible(record, policy) && cbDest >= kExtensibleBytes;
    const bool keepsMask =
        policy != QXWFXDEST_PLAIN && !record.IsMaskDefault() && cbDest >= kExtensibleBytes + record.Extra().size();
    if (extensible || keepsMask)
        MakeExtensible(reinterpret_cast<WAVEFORMATEXTENSIBLE*>(pDest), record.wFormatTag, record.dwChannelMask);
    AppendExtra(pDest, cbDest, record.Extra());
}

void CopyLinear(WAVEFORMATEX* pDest, DWORD cbDest, const _qxwaveformat& record, QXWAVEFORMAT_COPY_DEST policy)
{
    const WORD tag = record.FormatTag(), bits = record.BitsPerSample();
    const DWORD mask = policy == QXWFXDEST_PLAIN ? 0 : record.dwChannelMask;
    if (WishesExtensible(record, policy) && cbDest >= kExtensibleBytes)
        InitExtensible(reinterpret_cast<WAVEFORMATEXTENSIBLE*>(pDest), tag, record.nSamplesPerSec, bits,
                       record.nChannels, mask);
    else
        QxAudio_InitWfxFlex(pDest, tag, record.nSamplesPerSec, bits, record.nChannels, mask, cbDest);
}

// What an allocating copy makes room for.
bool AllocatesExtensible(const _qxwaveformat& record, QXWAVEFORMAT_COPY_DEST policy)
{
    switch (policy) {
    case QXWFXDEST_AS_RECORD:
    case QXWFXDEST_MULTICHANNEL:
    case QXWFXDEST_EXTENSIBLE:
        return WishesExtensible(record, policy);
    case QXWFXDEST_WHEN_NEEDED:
        return !record.IsMaskDefault();
    case QXWFXDEST_PLAIN:
    default:
        return false;
    }
}

bool LeavesAsItIs(const WAVEFORMATEX& format, QXWAVEFORMAT_COPY_DEST policy)
{
    switch (policy) {
    case QXWFXDEST_AS_RECORD:
        return true;
    case QXWFXDEST_EXTENSIBLE:
        return IsExtensible(format);
    case QXWFXDEST_WHEN_NEEDED:
    case QXWFXDEST_PLAIN:
        return !IsExtensible(format);
    default:
        return false;
    }
}

WAVEFORMATEX* Allocate(size_t cb)
{
    const HGLOBAL block = GlobalAlloc(GHND, cb);
    return block ? static_cast<WAVEFORMATEX*>(GlobalLock(block)) : nullptr;
}

QXWAVEFORMAT_COPY_DEST Settled(bool extensible)
{
    return extensible ? QXWFXDEST_EXTENSIBLE : QXWFXDEST_PLAIN;
}

}   // namespace

void QxAudio_GeneralCopyQxWaveFormat(_qxwaveformat* pDest, DWORD destSize, const _qxwaveformat* pSource,
                                     QXWAVEFORMAT_COPY_DEST)
{
    const std::span<const BYTE> extra = pSource->Extra();
    pDest->Clear(destSize);
    const DWORD capacity = pDest->cbRecord;
    std::memcpy(static_cast<void*>(pDest), pSource, kRecordBytes);
    pDest->cbRecord = capacity;
    if (!extra.empty() && extra.size() <= pDest->ExtraCapacity()) {
        pDest->cbExtra = WORD(extra.size());
        std::ranges::copy(extra, pDest->abExtra);
    }
    pDest->Settle();
}

void QxAudio_GeneralCopyWfx(WAVEFORMATEX* pDest, DWORD cbDest, const _qxwaveformat* pRecord,
                            QXWAVEFORMAT_COPY_DEST ePolicy)
{
    if (pRecord->IsCompressed())
        CopyCompressed(pDest, cbDest, *pRecord, ePolicy);
    else
        CopyLinear(pDest, cbDest, *pRecord, ePolicy);
}

void QxAudio_CopyWfx(WAVEFORMATEX* pDest, DWORD cbDest, const WAVEFORMATEX* pSource, QXWAVEFORMAT_COPY_DEST ePolicy)
{
    _qxwaveformat record;
    record.Init(kTemporaryRecord, *pSource);
    QxAudio_GeneralCopyWfx(pDest, cbDest, &record, ePolicy);
}

void QxAudio_CopyWfExt(WAVEFORMATEXTENSIBLE* pDest, const WAVEFORMATEX* pSource, QXWAVEFORMAT_COPY_DEST ePolicy)
{
    QxAudio_CopyWfx(&pDest->Format, kExtensibleBytes, pSource, ePolicy);
}

// The form is settled here, so that room for extra bytes is never taken for room to extend the header.
WAVEFORMATEX* QxAudio_AllocAndCopyWfx(const _qxwaveformat& record, QXWAVEFORMAT_COPY_DEST ePolicy)
{
    const bool extensible = AllocatesExtensible(record, ePolicy);
    const size_t cb = (extensible ? kExtensibleBytes : kPlainBytes) + record.Extra().size();
    WAVEFORMATEX* const dest = Allocate(cb);
    if (dest)
        QxAudio_GeneralCopyWfx(dest, DWORD(cb), &record, Settled(extensible));
    return dest;
}

WAVEFORMATEX* QxAudio_AllocAndCopyWfx(const _qxwaveformat* pRecord, QXWAVEFORMAT_COPY_DEST ePolicy)
{
    return pRecord ? QxAudio_AllocAndCopyWfx(*pRecord, ePolicy) : nullptr;
}

WAVEFORMATEX* QxAudio_AllocAndCopyWfx(const WAVEFORMATEX* pSource, QXWAVEFORMAT_COPY_DEST ePolicy)
{
    if (!pSource)
        return nullptr;
    if (!LeavesAsItIs(*pSource, ePolicy)) {
        _qxwaveformat record;
        record.Init(kTemporaryRecord, *pSource);
        return QxAudio_AllocAndCopyWfx(record, ePolicy);
    }
    const size_t cb = kPlainBytes + pSource->cbSize;
    WAVEFORMATEX* const dest = Allocate(cb);
    if (dest)
        std::memcpy(static_cast<void*>(dest), pSource, cb);
    return dest;
}

void _qxwaveformat_wfxplus::Init(const WAVEFORMATEX& format, QXWAVEFORMAT_COPY_DEST ePolicy)
{
    QxAudio_CopyWfx(Get(), DWORD(buffer.size()), &format, ePolicy);
}

_qxwaveformat_wfxcopyhelper::_qxwaveformat_wfxcopyhelper(const _qxwaveformat& record)
{
    QxAudio_GeneralCopyWfx(&format, sizeof format, &record, QXWFXDEST_PLAIN);
}

_qxwaveformat_wfxecopyhelper::_qxwaveformat_wfxecopyhelper(const _qxwaveformat& record)
{
    QxAudio_GeneralCopyWfx(&format.Format, sizeof format, &record, Settled(IsExtensibleAsRecord(record)));
}
