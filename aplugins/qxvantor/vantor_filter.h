// The object that a host's media graph sees: one input and one output of 32-bit float audio. Each input sample goes through
// the stream driver into as many output samples as it gives; audio is never copied in between.
//
// Time stamps count the output from the input's at the last discontinuity; the engine's latency is a delay of the audio
// within the stamped stream. Output buffers hold ten times the input's, as much as the largest stretch makes of one.
#pragma once

#include "aplugins/qxvantor/output_clock.h"
#include "aplugins/qxvantor/static_preset.h"
#include "aplugins/qxvantor/translation_info.h"
#include "aplugins/qxvantor/vantor_transform.h"
#include "platform/com_ptr.h"
#include "platform/media/transform_filter.h"

#include <ocidl.h>

class CQxVantor final : public CTransformFilter,
                        public CQxVantorTransform,
                        public ISpecifyPropertyPages,
                        public IPersistStream,
                        public IStaticFilterPreset,
                        public IQxTranslationInfo {
public:
    // An object with one reference; null and E_OUTOFMEMORY in *phr when there is no memory.
    static CUnknown* CreateInstance(IUnknown* pOuter, HRESULT* phr);

    DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(REFIID riid, void** ppObject) override;
    const AMOVIESETUP_FILTER* GetSetupData() override;
    CBasePin* GetPin(int n) override;   // 0 input, 1 output, else null

    // [control] What the pins ask.
    HRESULT CheckInputType(const CMediaType* pType) override;
    HRESULT CheckTransform(const CMediaType* pIn, const CMediaType* pOut) override;
    HRESULT DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pProperties) override;
    HRESULT GetMediaType(int position, CMediaType* pType) override;
    HRESULT SetMediaType(PIN_DIRECTION direction, const CMediaType* pType) override;
    HRESULT CompleteConnect(PIN_DIRECTION direction, IPin* pReceivePin) override;
    HRESULT BreakConnect(PIN_DIRECTION direction) override;
    HRESULT StartStreaming() override;
    HRESULT StopStreaming() override;
    // The input pin's answer, which also minds a connected output and its peer. A rate that the engine does not run at
    // gives VFW_E_TYPE_NOT_ACCEPTED.
    HRESULT CheckInputPinType(const CMediaType* pType);

    // [streaming]
    HRESULT Transform(IMediaSample* pIn, IMediaSample* pOut) override;   // E_INVALIDARG: all work is in Receive
    HRESULT Receive(IMediaSample* pSample) override;
    HRESULT EndOfStream() override;

    // ISpecifyPropertyPages
    HRESULT STDMETHODCALLTYPE GetPages(CAUUID* pPages) override;

    // IPersistStream. [any] A load that fails leaves all parameters as they were; one that succeeds leaves the filter
    // dirty, and so does a save that is not told to clear the mark.
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClassId) override;
    HRESULT STDMETHODCALLTYPE IsDirty() override;
    HRESULT STDMETHODCALLTYPE Load(IStream* pStream) override;
    HRESULT STDMETHODCALLTYPE Save(IStream* pStream, BOOL bClearDirty) override;
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* pcbSize) override;

    // IStaticFilterPreset. [any]
    HRESULT STDMETHODCALLTYPE GetPresetCount(DWORD* pcPresets) override;
    HRESULT STDMETHODCALLTYPE GetPresetName(DWORD iPreset, WCHAR* pszName, DWORD cchName) override;
    HRESULT STDMETHODCALLTYPE SetPreset(DWORD iPreset) override;

    // IQxTranslationInfo. [control]
    HRESULT STDMETHODCALLTYPE SetLanguage(DWORD lcid) override;

private:
    using Sample = ComPtr<IMediaSample>;

    explicit CQxVantor(IUnknown* pOuter);
    ~CQxVantor() override = default;

    Block BeginSample(IMediaSample* pSample);
    HRESULT GetOutputBuffer(Sample* pOut);
    HRESULT TellFormat(IMediaSample* pOut);
    HRESULT TransformSample(Block block, const BYTE* pData, uint32_t frames, Sample& out);
    HRESULT StampAndDeliver(IMediaSample* pOut, uint32_t frames);
    HRESULT DeliverTail(IMediaSample* pOut, uint32_t frames);
    HRESULT Deliver(IMediaSample* pOut, uint32_t frames);

    OutputClock clock;
    bool discontinuityPending = false;   // the next delivered sample carries the mark
    bool syncPending = false;
    WAVEFORMATEX inputFormat = {}, outputFormat = {};   // as streaming started
};
