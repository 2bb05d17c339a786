// The filter without its pins: all parameters under one roof, and the way of a block through the stream driver.
//
// Threads: one lock guards the plain fields, the marks of change and the listeners; it is taken before the lock of
// CQxPlugInParams, and neither is held while the driver runs or a host's callback is called. The driver belongs to the
// thread that streams; the filter's receive lock keeps start and stop of streaming away from it.
#pragma once

#include "aplugins/qxvantor/change_listeners.h"
#include "aplugins/qxvantor/plugin_params.h"
#include "aplugins/qxvantor/prop2.h"
#include "aplugins/qxvantor/vtn.h"

#include <memory>
#include <mutex>
#include <optional>

class CQxVantorTransform : public IQxVantorProp2, public CQxPlugInParams {
public:
    // IQxVantorProp2. [any]
    HRESULT STDMETHODCALLTYPE GetParameters(QxVantorParams* pParams) override;
    HRESULT STDMETHODCALLTYPE SetParameters(const QxVantorParams* pParams) override;
    HRESULT STDMETHODCALLTYPE GetWaveFormat(WAVEFORMATEX* pFormat, DWORD iPin) override;
    HRESULT STDMETHODCALLTYPE RegisterNotify(HWND hwnd, DWORD dwId) override;

#define QX_AUTOMATED(Name, Type, field, iParam)                                                                        \
    HRESULT STDMETHODCALLTYPE Get##Name(Type* pValue) override                                                         \
    {                                                                                                                  \
        return GetAutomated(iParam, &QxVantorParams::field, pValue);                                                   \
    }                                                                                                                  \
    HRESULT STDMETHODCALLTYPE Set##Name(Type value) override                                                           \
    {                                                                                                                  \
        return SetAutomated(iParam, &QxVantorParams::field, value);                                                    \
    }                                                                                                                  \
    HRESULT STDMETHODCALLTYPE BeginEdit##Name() override                                                               \
    {                                                                                                                  \
        return BeginAutomatedEdit(iParam);                                                                             \
    }                                                                                                                  \
    HRESULT STDMETHODCALLTYPE EndEdit##Name() override                                                                 \
    {                                                                                                                  \
        return EndAutomatedEdit(iParam);                                                                               \
    }                                                                                                                  \
    HRESULT STDMETHODCALLTYPE IsFree##Name() override                                                                  \
    {                                                                                                                  \
        return IsFree(iParam);                                                                                         \
    }
    QX_AUTOMATED(StretchPercent, double, stretchPercent, kParamStretch)
    QX_AUTOMATED(PitchSemitones, double, pitchSemitones, kParamPitch)
    QX_AUTOMATED(ContentPitch, int32_t, contentPitch, kParamContent)
    QX_AUTOMATED(FormantPercent, double, formantPercent, kParamFormant)
    QX_AUTOMATED(Mode, int32_t, mode, kParamMode)
    QX_AUTOMATED(SyncPitch, int32_t, syncPitch, kParamSyncPitch)
    QX_AUTOMATED(Bypass, int32_t, bypass, kParamBypass)
#undef QX_AUTOMATED

#define QX_PLAIN(Name, Type, field)                                                                                    \
    HRESULT STDMETHODCALLTYPE Get##Name(Type* pValue) override                                                         \
    {                                                                                                                  \
        return GetPlain(&QxVantorParams::field, pValue);                                                               \
    }                                                                                                                  \
    HRESULT STDMETHODCALLTYPE Set##Name(Type value) override                                                           \
    {                                                                                                                  \
        return SetPlain(&QxVantorParams::field, value);                                                                \
    }                                                                                                                  \
    HRESULT STDMETHODCALLTYPE BeginEdit##Name() override                                                               \
    {                                                                                                                  \
        return S_FALSE;                                                                                                \
    }                                                                                                                  \
    HRESULT STDMETHODCALLTYPE EndEdit##Name() override                                                                 \
    {                                                                                                                  \
        return S_FALSE;                                                                                                \
    }                                                                                                                  \
    HRESULT STDMETHODCALLTYPE IsFree##Name() override                                                                  \
    {                                                                                                                  \
        return S_FALSE;                                                                                                \
    }
    QX_PLAIN(AuxSemitones, double, auxSemitones)
    QX_PLAIN(AuxFlag, int32_t, auxFlag)
    QX_PLAIN(SourceFrames, double, sourceFrames)
    QX_PLAIN(TempoFallback, int32_t, tempoFallback)
    QX_PLAIN(Tempo, int32_t, tempo)
    QX_PLAIN(ReservedA, int32_t, reservedA)
    QX_PLAIN(SourceRate, int32_t, sourceRate)
#undef QX_PLAIN

    // [any] As CQxPlugInParams, and a change reaches the driver and the listeners.
    HRESULT STDMETHODCALLTYPE SetParam(DWORD iParam, MP_DATA value) override;

protected:
    enum class Block { kFirst = 0, kNext = 1, kEndOfStream = 2 };

    ~CQxVantorTransform() = default;
    HRESULT Construct(const QxVantorParams& initial);   // E_OUTOFMEMORY: the object is of no use

    // [control] The plain format of pin 0 or 1; none while it is not connected.
    void StoreFormat(DWORD iPin, const std::optional<WAVEFORMATEX>& format);
    std::optional<WAVEFORMATEX> Format(DWORD iPin);
    // [control] Makes and ends the driver. E_OUTOFMEMORY; VFW_E_UNSUPPORTED_AUDIO when no engine takes the format.
    HRESULT StartDriver();
    void StopDriver();
    // [streaming] Takes parameters to the driver where they changed, then a block of frames through it. The counts as in
    // CVtn::ProcessBlock; gives its result.
    int32_t TransformBlock(Block block, const float* in, uint32_t* pInFrames, float* out,
                           uint32_t* pOutFrames) noexcept;

    void Notify(WORD wChange);
    bool IsPersistDirty();
    void SetPersistDirty(bool dirty);

private:
    template <class T>
    HRESULT GetAutomated(DWORD iParam, T QxVantorParams::*field, T* pValue);
    template <class T>
    HRESULT SetAutomated(DWORD iParam, T QxVantorParams::*field, T value);
    template <class T>
    HRESULT GetPlain(T QxVantorParams::*field, T* pValue);
    template <class T>
    HRESULT SetPlain(T QxVantorParams::*field, T value);
    HRESULT BeginAutomatedEdit(DWORD iParam);
    HRESULT EndAutomatedEdit(DWORD iParam);
    void MarkChanged();
    bool FetchRecord(QxVantorParams* pParams);
    void ApplyRecord(QxVantorParams& record, bool fromStart);

    CriticalSection paramLock;
    bool paramsDirty = true;   // a parameter changed since the streaming thread last looked
    bool persistDirty = false;
    QxVantorParams plain = {};   // the seven fields that no curve drives; the others are with CQxPlugInParams
    ChangeListeners listeners;
    std::optional<WAVEFORMATEX> formats[2];
    bool paramsApplied = false;   // the driver has taken a record since it was made
    std::unique_ptr<CVtn> driver;
};

template <class T>
HRESULT CQxVantorTransform::GetAutomated(DWORD iParam, T QxVantorParams::*field, T* pValue)
{
    if (!pValue)
        return E_POINTER;
    QxVantorParams record = {};
    GetField(&record, iParam);
    *pValue = record.*field;
    return S_OK;
}

template <class T>
HRESULT CQxVantorTransform::SetAutomated(DWORD iParam, T QxVantorParams::*field, T value)
{
    QxVantorParams record = {};
    record.*field = value;
    if (const bool same = SetField(&record, iParam); !same)
        MarkChanged();
    return S_OK;
}

template <class T>
HRESULT CQxVantorTransform::GetPlain(T QxVantorParams::*field, T* pValue)
{
    if (!pValue)
        return E_POINTER;
    const std::scoped_lock guard(paramLock);
    *pValue = plain.*field;
    return S_OK;
}

template <class T>
HRESULT CQxVantorTransform::SetPlain(T QxVantorParams::*field, T value)
{
    const std::scoped_lock guard(paramLock);
    plain.*field = value;
    return S_OK;
}
