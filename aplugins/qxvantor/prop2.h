// The filter's private interface: hosts and the property page read and write every field of its record through it.
#pragma once

#include "aplugins/qxvantor/vantor_params.h"

#include <windows.h>

#include <mmreg.h>
#include <unknwn.h>

// Also the mark of the persisted block.
inline constexpr IID IID_IQxVantorProp2 = {
    0x6E1B0F52, 0x93A4, 0x4C7D, {0xA1, 0x5E, 0x2D, 0x70, 0xC4, 0x8B, 0x19, 0xF6}};

// What a listener hears in the high word of wParam.
enum QxVantorChange : WORD {
    kChangedInputOrValue = 0,   // the input's media type, or a value that came through IMediaParams
    kChangedOutput = 1,         // the output's media type
    kChangedAll = 100,          // the whole set of parameters: a load, a preset, the construction
};

// The five operations of a field, in their order in the table. IsFree gives 1 (S_FALSE), or 0 while streaming runs and a
// curve drives the field, so that a value set by hand would not stay. For a field that no curve can drive only Get and Set
// do anything; the others give S_FALSE.
#define QX_FIELD_OPERATIONS(Name, Type)                                                                                \
    virtual HRESULT STDMETHODCALLTYPE Get##Name(Type* pValue) = 0;                                                     \
    virtual HRESULT STDMETHODCALLTYPE Set##Name(Type value) = 0;                                                       \
    virtual HRESULT STDMETHODCALLTYPE BeginEdit##Name() = 0;                                                           \
    virtual HRESULT STDMETHODCALLTYPE EndEdit##Name() = 0;                                                             \
    virtual HRESULT STDMETHODCALLTYPE IsFree##Name() = 0;

// All operations may be called from any thread, while streaming runs.
class IQxVantorProp2 : public IUnknown {
public:
    virtual HRESULT STDMETHODCALLTYPE GetParameters(QxVantorParams* pParams) = 0;
    // Automated values are clamped to their ranges, the other fields are stored as they are.
    virtual HRESULT STDMETHODCALLTYPE SetParameters(const QxVantorParams* pParams) = 0;
    // The 18 bytes of the plain format of pin 0 (input) or 1 (output). VFW_E_NOT_CONNECTED.
    virtual HRESULT STDMETHODCALLTYPE GetWaveFormat(WAVEFORMATEX* pFormat, DWORD iPin) = 0;
    // Changes are posted to the window as WM_COMMAND with id in the low word of wParam and a QxVantorChange in the high one;
    // id 0 ends that. E_OUTOFMEMORY when two other windows listen already.
    virtual HRESULT STDMETHODCALLTYPE RegisterNotify(HWND hwnd, DWORD dwId) = 0;

    // Driven by curves; set values are clamped to the range of the record.
    QX_FIELD_OPERATIONS(StretchPercent, double)
    QX_FIELD_OPERATIONS(PitchSemitones, double)
    QX_FIELD_OPERATIONS(ContentPitch, int32_t)
    QX_FIELD_OPERATIONS(FormantPercent, double)
    QX_FIELD_OPERATIONS(Mode, int32_t)
    QX_FIELD_OPERATIONS(SyncPitch, int32_t)
    QX_FIELD_OPERATIONS(Bypass, int32_t)
    // Carried along as they are.
    QX_FIELD_OPERATIONS(AuxSemitones, double)
    QX_FIELD_OPERATIONS(AuxFlag, int32_t)
    QX_FIELD_OPERATIONS(SourceFrames, double)
    QX_FIELD_OPERATIONS(TempoFallback, int32_t)
    QX_FIELD_OPERATIONS(Tempo, int32_t)
    QX_FIELD_OPERATIONS(ReservedA, int32_t)
    QX_FIELD_OPERATIONS(SourceRate, int32_t)

protected:
    ~IQxVantorProp2() = default;
};

#undef QX_FIELD_OPERATIONS
