// A plug-in's automated parameters: their values, the curves that drive them against the stream's clock, and the
// platform's three interfaces to them. Driven by a table of descriptions; knows nothing of audio.
//
// Threads: one recursive lock guards everything. [streaming] operations hold it briefly and never allocate; the host's
// callback runs with it released, so that a callback can call back. Who holds a lock of his own takes that one first.
#pragma once

#include "aplugins/qxvantor/param_envelope.h"
#include "aplugins/qxvantor/param_table.h"
#include "aplugins/qxvantor/ui_callback.h"
#include "platform/com_ptr.h"
#include "platform/critical_section.h"

#include <span>
#include <vector>

// The time format of curves: ticks of 100 ns.
inline constexpr GUID kTimeReference = {0x93AD712B, 0xDAA0, 0x4FFE, {0xBC, 0x81, 0xB0, 0xCE, 0x50, 0x0F, 0xCD, 0xD9}};
inline constexpr DWORD kAllParams = 0xFFFFFFFF;   // in place of an index

class CQxPlugInParams : public IMediaParamInfo, public IMediaParams, public IMediaParamsSetUICallback {
public:
    // The table outlives the object. E_OUTOFMEMORY: the object is then of no use.
    HRESULT Initialize(std::span<const ParamDescription> descriptions);

    // IMediaParamInfo. [any] A bad index gives E_INVALIDARG, a null pointer E_POINTER.
    HRESULT STDMETHODCALLTYPE GetParamCount(DWORD* pdwParams) override;
    HRESULT STDMETHODCALLTYPE GetParamInfo(DWORD iParam, MP_PARAMINFO* pInfo) override;
    HRESULT STDMETHODCALLTYPE GetParamText(DWORD iParam, WCHAR** ppszText) override;
    HRESULT STDMETHODCALLTYPE GetNumTimeFormats(DWORD* pdwFormats) override;
    HRESULT STDMETHODCALLTYPE GetSupportedTimeFormat(DWORD iFormat, GUID* pFormat) override;
    HRESULT STDMETHODCALLTYPE GetCurrentTimeFormat(GUID* pFormat, MP_TIMEDATA* pData) override;

    // IMediaParams. [any] SetParam gives S_FALSE when nothing changed: the value was in force already, or a curve drives
    // the parameter, which has priority. Out of range is E_INVALIDARG.
    HRESULT STDMETHODCALLTYPE GetParam(DWORD iParam, MP_DATA* pValue) override;
    HRESULT STDMETHODCALLTYPE SetParam(DWORD iParam, MP_DATA value) override;
    HRESULT STDMETHODCALLTYPE AddEnvelope(DWORD iParam, DWORD cSegments, MP_ENVELOPE_SEGMENT* pSegments) override;
    HRESULT STDMETHODCALLTYPE FlushEnvelope(DWORD iParam, REFERENCE_TIME rtStart, REFERENCE_TIME rtEnd) override;
    HRESULT STDMETHODCALLTYPE SetTimeFormat(GUID format, MP_TIMEDATA data) override;

    // IMediaParamsSetUICallback.
    HRESULT STDMETHODCALLTYPE SetUICallback(IMediaParamsUICallback* pCallback) override;

protected:
    ~CQxPlugInParams() = default;

    // [control] Streaming starts, at this many frames a second; it ends. Curves stay until they are flushed.
    void SetRate(double sampleRate);
    void EndStreaming();
    // [streaming] The times of the input sample at hand; curves are evaluated from its start on.
    void SetSampleTimes(REFERENCE_TIME rtStart, REFERENCE_TIME rtStop);
    // [streaming] Evaluates the curves at the clock and moves it on by the frames, at most to the next end of a segment and
    // by 20 ms as long as there are curves. *pChanged becomes true when a value moved. Gives the frames that it moved by.
    int32_t AdvanceTime(int32_t frames, bool* pChanged, double rate) noexcept;

    // A parameter into its field of the record, and back. SetField gives true when the value stayed the same.
    void GetField(void* pRecord, DWORD iParam);
    bool SetField(const void* pRecord, DWORD iParam);
    void GetAll(void* pRecord);
    void SetAll(const void* pRecord);
    // A hand is on the parameter from BeginEdit to EndEdit: curves do not apply meanwhile.
    void BeginEdit(DWORD iParam);
    void EndEdit(DWORD iParam);
    // False while streaming runs and a curve drives the parameter.
    bool IsFree(DWORD iParam);

private:
    ComPtr<IMediaParamsUICallback> Callback();
    REFERENCE_TIME EvaluateAll(REFERENCE_TIME step, bool* pChanged, double rate) noexcept;
    bool RestAll() noexcept;

    CriticalSection lock;
    std::span<const ParamDescription> table;
    std::vector<ParamEnvelope> params;
    ComPtr<IMediaParamsUICallback> uiCallback;
    bool streaming = false;
    REFERENCE_TIME rtStart = 0, rtStop = 0;   // of the current input sample
    REFERENCE_TIME clock = 0;                 // where curves are evaluated
    double framesPerTick = 0.0, ticksPerFrame = 0.0;
};
