#include "aplugins/qxvantor/plugin_params.h"

#include "kernel/lang.h"

#include <objbase.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <string_view>

namespace {

constexpr double kTicksPerSecond = 1e7;
constexpr REFERENCE_TIME kMaxStep = 200000;   // 20 ms: curves are looked at no less often
constexpr DWORD kMaxTextChars = 256;          // of an enumeration's items

using WideView = std::basic_string_view<WCHAR>;

struct Text {
    WCHAR chars[kMaxTextChars] = {};
    explicit Text(UINT id)
    {
        if (id != 0)
            QxLoadString(KernelLanguage(), id, chars, kMaxTextChars);
    }
    WideView View() const { return chars; }
};

// The items of an enumeration, each closed by a zero in the place of its comma.
std::basic_string<WCHAR> ClosedItems(WideView text)
{
    if (text.empty())
        return {};
    std::basic_string<WCHAR> items(text);
    std::ranges::replace(items, WCHAR(','), WCHAR(0));
    return items + WCHAR(0);
}

}   // namespace

HRESULT CQxPlugInParams::Initialize(std::span<const ParamDescription> descriptions)
{
    try {
        params = std::vector<ParamEnvelope>(descriptions.size());
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    for (size_t i = 0; i < params.size(); ++i)
        if (const HRESULT hr = params[i].Create(descriptions[i].neutral); FAILED(hr))
            return hr;
    table = descriptions;
    return S_OK;
}

// ---- IMediaParamInfo --------------------------------------------------------------------------------------------------

HRESULT CQxPlugInParams::GetParamCount(DWORD* pdwParams)
{
    if (!pdwParams)
        return E_POINTER;
    *pdwParams = DWORD(table.size());
    return S_OK;
}

HRESULT CQxPlugInParams::GetParamInfo(DWORD iParam, MP_PARAMINFO* pInfo)
{
    if (iParam >= table.size())
        return E_INVALIDARG;
    if (!pInfo)
        return E_POINTER;
    const ParamDescription& d = table[iParam];
    *pInfo = {d.mpType, d.curves, d.minimum, d.maximum, d.neutral, {}, {}};
    if (d.idUnit != 0)
        QxLoadString(KernelLanguage(), d.idUnit, pInfo->szUnitText, DWORD(std::size(pInfo->szUnitText)));
    QxLoadString(KernelLanguage(), d.idLabel, pInfo->szLabel, DWORD(std::size(pInfo->szLabel)));
    return S_OK;
}

HRESULT CQxPlugInParams::GetParamText(DWORD iParam, WCHAR** ppszText)
{
    if (iParam >= table.size())
        return E_INVALIDARG;
    if (!ppszText)
        return E_POINTER;
    *ppszText = nullptr;
    const ParamDescription& d = table[iParam];
    const Text label(d.idLabel), unit(d.idUnit), enumeration(d.idEnumeration);
    std::basic_string<WCHAR> text;
    try {
        text.append(label.View()).append(1, WCHAR(0)).append(unit.View()).append(1, WCHAR(0));
        text.append(ClosedItems(enumeration.View())).append(1, WCHAR(0));
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    *ppszText = static_cast<WCHAR*>(CoTaskMemAlloc(text.size() * sizeof(WCHAR)));
    if (!*ppszText)
        return E_OUTOFMEMORY;
    std::ranges::copy(text, *ppszText);
    return S_OK;
}

HRESULT CQxPlugInParams::GetNumTimeFormats(DWORD* pdwFormats)
{
    if (!pdwFormats)
        return E_POINTER;
    *pdwFormats = 1;
    return S_OK;
}

HRESULT CQxPlugInParams::GetSupportedTimeFormat(DWORD iFormat, GUID* pFormat)
{
    if (iFormat != 0)
        return E_INVALIDARG;
    if (!pFormat)
        return E_POINTER;
    *pFormat = kTimeReference;
    return S_OK;
}

HRESULT CQxPlugInParams::GetCurrentTimeFormat(GUID* pFormat, MP_TIMEDATA* pData)
{
    if (!pFormat || !pData)
        return E_POINTER;
    *pFormat = kTimeReference;
    *pData = 0;
    return S_OK;
}

// ---- IMediaParams -----------------------------------------------------------------------------------------------------

HRESULT CQxPlugInParams::GetParam(DWORD iParam, MP_DATA* pValue)
{
    if (iParam >= table.size())
        return E_INVALIDARG;
    if (!pValue)
        return E_POINTER;
    const std::scoped_lock guard(lock);
    *pValue = params[iParam].value;
    return S_OK;
}

HRESULT CQxPlugInParams::SetParam(DWORD iParam, MP_DATA value)
{
    if (iParam >= table.size())
        return E_INVALIDARG;
    const std::scoped_lock guard(lock);
    ParamEnvelope& param = params[iParam];
    if (streaming && param.active)
        return S_FALSE;
    if (!(value >= table[iParam].minimum && value <= table[iParam].maximum))   // also what is no number
        return E_INVALIDARG;
    if (value == param.value)
        return S_FALSE;
    param.value = value;
    return S_OK;
}

HRESULT CQxPlugInParams::AddEnvelope(DWORD iParam, DWORD cSegments, MP_ENVELOPE_SEGMENT* pSegments)
{
    if (!pSegments)
        return E_POINTER;
    if (iParam >= table.size() || cSegments == 0)
        return E_INVALIDARG;
    const std::scoped_lock guard(lock);
    return params[iParam].Add({pSegments, cSegments});
}

HRESULT CQxPlugInParams::FlushEnvelope(DWORD iParam, REFERENCE_TIME start, REFERENCE_TIME end)
{
    if (iParam >= table.size() && iParam != kAllParams)
        return E_INVALIDARG;
    const std::scoped_lock guard(lock);
    if (iParam != kAllParams)
        return params[iParam].Flush(start, end);
    for (ParamEnvelope& param : params)
        if (const HRESULT hr = param.Flush(start, end); FAILED(hr))
            return hr;
    return S_OK;
}

HRESULT CQxPlugInParams::SetTimeFormat(GUID format, MP_TIMEDATA)
{
    return IsEqualGUID(format, kTimeReference) ? S_OK : E_FAIL;
}

HRESULT CQxPlugInParams::SetUICallback(IMediaParamsUICallback* pCallback)
{
    if (pCallback)
        pCallback->AddRef();
    ComPtr<IMediaParamsUICallback> held(pCallback);
    const std::scoped_lock guard(lock);
    std::swap(uiCallback, held);   // the old one is released behind the lock
    return S_OK;
}

// ---- the stream -------------------------------------------------------------------------------------------------------

void CQxPlugInParams::SetRate(double sampleRate)
{
    const std::scoped_lock guard(lock);
    framesPerTick = sampleRate / kTicksPerSecond;
    ticksPerFrame = kTicksPerSecond / sampleRate;
    streaming = true;
}

void CQxPlugInParams::EndStreaming()
{
    const std::scoped_lock guard(lock);
    streaming = false;
    for (ParamEnvelope& param : params)
        param.active = false;
}

void CQxPlugInParams::SetSampleTimes(REFERENCE_TIME start, REFERENCE_TIME stop)
{
    const std::scoped_lock guard(lock);
    rtStart = start;
    rtStop = stop;
    clock = start;
}

int32_t CQxPlugInParams::AdvanceTime(int32_t frames, bool* pChanged, double rate) noexcept
{
    const std::scoped_lock guard(lock);
    auto step = REFERENCE_TIME(frames * ticksPerFrame + 0.5);
    if (std::ranges::none_of(params, &ParamEnvelope::HasSegments)) {
        *pChanged |= RestAll();
        clock += step;
        return frames;
    }
    step = std::min(EvaluateAll(step, pChanged, rate), kMaxStep);
    step = std::max(step, REFERENCE_TIME(ticksPerFrame + 0.5));   // one frame at least
    clock += step;
    return int32_t(double(step) * framesPerTick + 0.5);
}

bool CQxPlugInParams::RestAll() noexcept
{
    bool moved = false;
    for (ParamEnvelope& param : params) {
        param.active = false;
        moved |= param.Rest();
    }
    return moved;
}

// Gives the step, cut where the first of the segments at hand ends.
REFERENCE_TIME CQxPlugInParams::EvaluateAll(REFERENCE_TIME step, bool* pChanged, double rate) noexcept
{
    for (ParamEnvelope& param : params) {
        const auto result = param.Evaluate(clock, rate);
        if (result.inside)
            step = std::min(step, result.remaining);
        *pChanged |= result.changed;
    }
    return step;
}

// ---- records and edits ------------------------------------------------------------------------------------------------

ComPtr<IMediaParamsUICallback> CQxPlugInParams::Callback()
{
    const std::scoped_lock guard(lock);
    return uiCallback;
}

void CQxPlugInParams::GetField(void* pRecord, DWORD iParam)
{
    const std::scoped_lock guard(lock);
    FieldFromParam(table[iParam], params[iParam].value, pRecord);
}

bool CQxPlugInParams::SetField(const void* pRecord, DWORD iParam)
{
    const float value = ParamFromField(table[iParam], pRecord);
    bool editing;
    {
        const std::scoped_lock guard(lock);
        ParamEnvelope& param = params[iParam];
        if (value == param.value || value != value)   // what is no number changes nothing
            return true;
        param.value = value;
        editing = param.editing;
    }
    if (const auto callback = Callback()) {
        if (!editing)
            callback->ParamsBeginCapture(&iParam, 1);
        callback->ParamsChanged(&iParam, 1, &value);
        if (!editing)
            callback->ParamsEndCapture(&iParam, 1);
    }
    return false;
}

void CQxPlugInParams::GetAll(void* pRecord)
{
    const std::scoped_lock guard(lock);
    for (DWORD i = 0; i < table.size(); ++i)
        GetField(pRecord, i);
}

void CQxPlugInParams::SetAll(const void* pRecord)
{
    for (DWORD i = 0; i < table.size(); ++i)
        BeginEdit(i);
    for (DWORD i = 0; i < table.size(); ++i)
        SetField(pRecord, i);
    for (DWORD i = 0; i < table.size(); ++i)
        EndEdit(i);
}

void CQxPlugInParams::BeginEdit(DWORD iParam)
{
    {
        const std::scoped_lock guard(lock);
        if (params[iParam].editing)
            return;
        params[iParam].editing = true;
    }
    if (const auto callback = Callback())
        callback->ParamsBeginCapture(&iParam, 1);
}

void CQxPlugInParams::EndEdit(DWORD iParam)
{
    {
        const std::scoped_lock guard(lock);
        if (!params[iParam].editing)
            return;
        params[iParam].editing = false;
        params[iParam].editEnded = true;
    }
    if (const auto callback = Callback())
        callback->ParamsEndCapture(&iParam, 1);
}

bool CQxPlugInParams::IsFree(DWORD iParam)
{
    const std::scoped_lock guard(lock);
    return !(streaming && params[iParam].active);
}
