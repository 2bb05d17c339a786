#include "aplugins/qxvantor/persistence.h"

#include "aplugins/qxvantor/prop2.h"

#include <cmath>

namespace {

struct Header {
    DWORD cbBlock;
    GUID format;
};
static_assert(sizeof(Header) == 20 && sizeof(Header) + sizeof(QxVantorParams) == kPersistedSize);

bool IsKnown(const Header& header)
{
    return header.cbBlock == kPersistedSize && (header.format == IID_IQxVantorProp2 || header.format == kFormerFormat);
}

HRESULT ReadRecord(IStream* pStream, QxVantorParams& record)
{
    ULONG cbRead = 0;
    const HRESULT hr = pStream->Read(&record, sizeof record, &cbRead);
    if (SUCCEEDED(hr) && cbRead < offsetof(QxVantorParams, pitchSemitones))
        record.stretchPercent = 0.0;   // half a number is none
    return hr;
}

void FactorsToPercentAndSemitones(QxVantorParams& record)
{
    record.stretchPercent *= 100.0;
    record.pitchSemitones = std::log2(record.pitchSemitones) * 12.0;   // a factor of 0 ends far below the range
}

// A stretch of 0 was never saved: the block ends early. What is no number would pass every clamp.
bool IsUsable(const QxVantorParams& record)
{
    return record.stretchPercent != 0.0 && !std::isnan(record.stretchPercent) && !std::isnan(record.pitchSemitones) &&
           !std::isnan(record.formantPercent);
}

}   // namespace

HRESULT SaveParams(IStream* pStream, const QxVantorParams& params)
{
    if (!pStream)
        return E_POINTER;
    const Header header = {kPersistedSize, IID_IQxVantorProp2};
    if (const HRESULT hr = pStream->Write(&header, sizeof header, nullptr); FAILED(hr))
        return hr;
    const HRESULT hr = pStream->Write(&params, sizeof params, nullptr);
    return FAILED(hr) ? hr : S_OK;
}

LoadedParams LoadParams(IStream* pStream)
{
    Header header = {};
    if (const HRESULT hr = pStream ? pStream->Read(&header, sizeof header, nullptr) : E_POINTER; FAILED(hr))
        return {hr, false, {}};
    if (!IsKnown(header))
        return {E_FAIL, false, {}};
    QxVantorParams record = {};
    const HRESULT hr = ReadRecord(pStream, record);
    if (header.format == kFormerFormat)
        FactorsToPercentAndSemitones(record);
    if (!IsUsable(record))
        return {E_FAIL, false, {}};
    return {hr, true, record};
}
