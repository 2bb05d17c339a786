#include "aplugins/qxvantor/vantor_transform.h"

#include <dshow.h>

#include <algorithm>
#include <new>
#include <utility>

namespace {

constexpr int32_t kBlockFrames = 2048;   // sets the driver's margins and the pace of its ramps

}   // namespace

HRESULT CQxVantorTransform::Construct(const QxVantorParams& initial)
{
    if (const HRESULT hr = Initialize(VantorParamTable()); FAILED(hr))
        return hr;
    SetParameters(&initial);
    Notify(kChangedAll);
    return S_OK;
}

// ---- parameters -------------------------------------------------------------------------------------------------------

HRESULT CQxVantorTransform::GetParameters(QxVantorParams* pParams)
{
    if (!pParams)
        return E_POINTER;
    const std::scoped_lock guard(paramLock);
    *pParams = plain;
    GetAll(pParams);
    return S_OK;
}

HRESULT CQxVantorTransform::SetParameters(const QxVantorParams* pParams)
{
    if (!pParams)
        return E_POINTER;
    SetAll(pParams);
    const std::scoped_lock guard(paramLock);
    plain = *pParams;
    plain.reserved0 = plain.reserved1 = plain.reserved2 = 0;
    MarkChanged();
    return S_OK;
}

HRESULT CQxVantorTransform::SetParam(DWORD iParam, MP_DATA value)
{
    const HRESULT hr = CQxPlugInParams::SetParam(iParam, value);
    if (hr == S_OK) {
        MarkChanged();
        Notify(kChangedInputOrValue);
    }
    return hr;
}

HRESULT CQxVantorTransform::BeginAutomatedEdit(DWORD iParam)
{
    BeginEdit(iParam);
    return S_OK;
}

HRESULT CQxVantorTransform::EndAutomatedEdit(DWORD iParam)
{
    EndEdit(iParam);
    const std::scoped_lock guard(paramLock);
    paramsDirty = true;
    return S_OK;
}

void CQxVantorTransform::MarkChanged()
{
    const std::scoped_lock guard(paramLock);
    paramsDirty = persistDirty = true;
}

bool CQxVantorTransform::IsPersistDirty()
{
    const std::scoped_lock guard(paramLock);
    return persistDirty;
}

void CQxVantorTransform::SetPersistDirty(bool dirty)
{
    const std::scoped_lock guard(paramLock);
    persistDirty = dirty;
}

// ---- listeners and formats --------------------------------------------------------------------------------------------

HRESULT CQxVantorTransform::RegisterNotify(HWND hwnd, DWORD dwId)
{
    const std::scoped_lock guard(paramLock);
    return listeners.Register(hwnd, dwId);
}

void CQxVantorTransform::Notify(WORD wChange)
{
    const std::scoped_lock guard(paramLock);
    listeners.Post(wChange);
}

HRESULT CQxVantorTransform::GetWaveFormat(WAVEFORMATEX* pFormat, DWORD iPin)
{
    if (!pFormat)
        return E_POINTER;
    const auto format = iPin < std::size(formats) ? Format(iPin) : std::nullopt;
    if (!format)
        return VFW_E_NOT_CONNECTED;
    *pFormat = *format;
    return S_OK;
}

void CQxVantorTransform::StoreFormat(DWORD iPin, const std::optional<WAVEFORMATEX>& format)
{
    const std::scoped_lock guard(paramLock);
    formats[iPin] = format;
}

std::optional<WAVEFORMATEX> CQxVantorTransform::Format(DWORD iPin)
{
    const std::scoped_lock guard(paramLock);
    return formats[iPin];
}

// ---- streaming --------------------------------------------------------------------------------------------------------

HRESULT CQxVantorTransform::StartDriver()
{
    const auto in = Format(0), out = Format(1);
    if (!in || !out)
        return VFW_E_NOT_CONNECTED;
    SetRate(in->nSamplesPerSec);
    driver.reset();
    paramsApplied = false;
    QxVantorParams record;
    FetchRecord(&record);
    driver.reset(new (std::nothrow) CVtn(std::min(in->nChannels, out->nChannels), float(in->nSamplesPerSec),
                                         kBlockFrames, &CreateInstance, record.mode));
    if (!driver) {
        StopDriver();
        return E_OUTOFMEMORY;
    }
    driver->SetParams(&record, true);   // new as it is, it needs no Reset
    driver->UpdateRatios(false);
    paramsApplied = true;
    if (!driver->HasEngine()) {
        StopDriver();
        return VFW_E_UNSUPPORTED_AUDIO;
    }
    return S_OK;
}

void CQxVantorTransform::StopDriver()
{
    EndStreaming();
    driver.reset();
}

// The whole record, and whether it changed since the last call.
bool CQxVantorTransform::FetchRecord(QxVantorParams* pParams)
{
    const std::scoped_lock guard(paramLock);
    GetParameters(pParams);
    return std::exchange(paramsDirty, false);
}

void CQxVantorTransform::ApplyRecord(QxVantorParams& record, bool fromStart)
{
    if (fromStart)
        driver->Reset();
    driver->SetParams(&record, fromStart);
    driver->UpdateRatios(false);
    paramsApplied = true;
}

int32_t CQxVantorTransform::TransformBlock(Block block, const float* in, uint32_t* pInFrames, float* out,
                                           uint32_t* pOutFrames) noexcept
{
    uint32_t none = 0;
    uint32_t* const pTaken = pInFrames ? pInFrames : &none;
    bool curveMoved = false;
    AdvanceTime(int32_t(*pTaken), &curveMoved, 1.0);
    QxVantorParams record;
    const bool dirty = FetchRecord(&record);
    const bool first = block == Block::kFirst;
    if (first || dirty || curveMoved || !paramsApplied)
        ApplyRecord(record, first);
    uint32_t noRoom = 0;
    return driver->ProcessBlock(block == Block::kEndOfStream, in, pTaken, out, pOutFrames ? pOutFrames : &noRoom);
}
