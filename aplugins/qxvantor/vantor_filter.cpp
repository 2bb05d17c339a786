#include "aplugins/qxvantor/vantor_filter.h"

#include "aplugins/qxvantor/media_rules.h"
#include "aplugins/qxvantor/persistence.h"
#include "aplugins/qxvantor/presets.h"
#include "aplugins/qxvantor/vantor_input_pin.h"
#include "aplugins/qxvantor/vantor_setup.h"
#include "kernel/lang.h"

#include <objbase.h>

#include <algorithm>
#include <limits>
#include <mutex>
#include <new>
#include <utility>

namespace {

constexpr LONG kBufferFactor = 10;   // the largest stretch
constexpr LONG kLeastBuffer = 512;   // bytes, of the output

LONG TenTimes(LONG cb)
{
    return LONG(std::min<int64_t>(int64_t(cb) * kBufferFactor, std::numeric_limits<LONG>::max()));
}

}   // namespace

CUnknown* CQxVantor::CreateInstance(IUnknown* pOuter, HRESULT* phr)
{
    const auto filter = new (std::nothrow) CQxVantor(pOuter);
    *phr = filter ? filter->Construct(PresetRecord(kDefaultPreset)) : E_OUTOFMEMORY;
    if (filter && FAILED(*phr)) {
        filter->NonDelegatingRelease();
        return nullptr;
    }
    return filter;
}

CQxVantor::CQxVantor(IUnknown* pOuter) : CTransformFilter(pOuter, CLSID_QxVantor) {}

HRESULT CQxVantor::NonDelegatingQueryInterface(REFIID riid, void** ppObject)
{
    if (riid == IID_IQxVantorProp2)
        return GetInterface<IQxVantorProp2>(this, ppObject);
    if (riid == IID_IMediaParams)
        return GetInterface<IMediaParams>(this, ppObject);
    if (riid == IID_IMediaParamInfo)
        return GetInterface<IMediaParamInfo>(this, ppObject);
    if (riid == IID_IMediaParamsSetUICallback)
        return GetInterface<IMediaParamsSetUICallback>(this, ppObject);
    if (riid == IID_ISpecifyPropertyPages)
        return GetInterface<ISpecifyPropertyPages>(this, ppObject);
    if (riid == IID_IPersistStream)
        return GetInterface<IPersistStream>(this, ppObject);
    if (riid == IID_IStaticFilterPreset)
        return GetInterface<IStaticFilterPreset>(this, ppObject);
    if (riid == IID_IQxTranslationInfo)
        return GetInterface<IQxTranslationInfo>(this, ppObject);
    return CTransformFilter::NonDelegatingQueryInterface(riid, ppObject);
}

const AMOVIESETUP_FILTER* CQxVantor::GetSetupData()
{
    return &kVantorSetup;
}

CBasePin* CQxVantor::GetPin(int n)
{
    const std::scoped_lock guard(filterLock);
    if (!input)
        input.reset(new (std::nothrow) CQxVantorInputPin(this));
    if (!output)
        output.reset(new (std::nothrow) CTransformOutputPin(this, TEXT("Output")));
    if (!input || !output)
        return nullptr;
    return n == 0 ? static_cast<CBasePin*>(input.get()) : n == 1 ? output.get() : nullptr;
}

HRESULT CQxVantor::GetPages(CAUUID* pPages)
{
    if (!pPages)
        return E_POINTER;
    pPages->cElems = 0;
    pPages->pElems = static_cast<GUID*>(CoTaskMemAlloc(sizeof(GUID)));
    if (!pPages->pElems)
        return E_OUTOFMEMORY;
    *pPages->pElems = CLSID_QxVantorPropPage;
    pPages->cElems = 1;
    return S_OK;
}

// ---- settings and presets ---------------------------------------------------------------------------------------------

HRESULT CQxVantor::GetClassID(CLSID* pClassId)
{
    return CTransformFilter::GetClassID(pClassId);
}

HRESULT CQxVantor::IsDirty()
{
    return IsPersistDirty() ? S_OK : S_FALSE;
}

HRESULT CQxVantor::Load(IStream* pStream)
{
    const LoadedParams loaded = LoadParams(pStream);
    if (SUCCEEDED(loaded.hr))
        SetParameters(&loaded.record);
    if (loaded.tellListeners)
        Notify(kChangedAll);
    return loaded.hr;
}

HRESULT CQxVantor::Save(IStream* pStream, BOOL bClearDirty)
{
    QxVantorParams record = {};
    GetParameters(&record);
    if (const HRESULT hr = SaveParams(pStream, record); FAILED(hr))
        return hr;
    SetPersistDirty(!bClearDirty);
    return S_OK;
}

HRESULT CQxVantor::GetSizeMax(ULARGE_INTEGER* pcbSize)
{
    if (!pcbSize)
        return E_POINTER;
    pcbSize->QuadPart = kPersistedSize;
    return S_OK;
}

HRESULT CQxVantor::GetPresetCount(DWORD* pcPresets)
{
    if (!pcPresets)
        return E_POINTER;
    *pcPresets = kPresetCount;
    return S_OK;
}

HRESULT CQxVantor::GetPresetName(DWORD iPreset, WCHAR* pszName, DWORD cchName)
{
    return PresetName(iPreset, pszName, cchName);
}

HRESULT CQxVantor::SetPreset(DWORD iPreset)
{
    if (iPreset >= kPresetCount)
        return E_INVALIDARG;
    if (const HRESULT hr = SetParameters(&PresetRecord(iPreset)); FAILED(hr))
        return hr;
    Notify(kChangedAll);
    return S_OK;
}

HRESULT CQxVantor::SetLanguage(DWORD lcid)
{
    return QxLang_UpdateKernelLCID(KernelLanguage(), lcid, !QxLang_IsLCIDEnglish(lcid)) ? S_OK : E_FAIL;
}

// ---- connection -------------------------------------------------------------------------------------------------------

HRESULT CQxVantor::CheckInputType(const CMediaType* pType)
{
    return CheckInputFormat(*pType);
}

HRESULT CQxVantor::CheckTransform(const CMediaType* pIn, const CMediaType* pOut)
{
    return CheckSameFormat(*pIn, *pOut);
}

HRESULT CQxVantor::CheckInputPinType(const CMediaType* pType)
{
    if (const HRESULT hr = CheckInputType(pType); FAILED(hr))
        return hr;
    if (!IsRateSupported(*pType))
        return VFW_E_TYPE_NOT_ACCEPTED;
    if (!output || !output->IsConnected())
        return S_OK;
    if (const HRESULT hr = CheckTransform(pType, &output->CurrentMediaType()); FAILED(hr))
        return hr;
    CMediaType given;
    if (const HRESULT hr = MakeOutputType(*pType, &given); FAILED(hr))
        return hr;
    return output->GetConnected()->QueryAccept(&given) == S_OK ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT CQxVantor::GetMediaType(int position, CMediaType* pType)
{
    if (!input || !input->IsConnected())
        return E_UNEXPECTED;
    if (position < 0)
        return E_INVALIDARG;
    if (position > 0)
        return VFW_S_NO_MORE_ITEMS;
    return MakeOutputType(input->CurrentMediaType(), pType);
}

HRESULT CQxVantor::SetMediaType(PIN_DIRECTION direction, const CMediaType* pType)
{
    StoreFormat(DWORD(direction), PlainFormat(*pType));
    Notify(direction == PINDIR_INPUT ? kChangedInputOrValue : kChangedOutput);
    return S_OK;
}

// An output that was connected before the input, and whose type no longer fits, is connected anew.
HRESULT CQxVantor::CompleteConnect(PIN_DIRECTION direction, IPin*)
{
    if (direction != PINDIR_INPUT || !output || !output->IsConnected())
        return S_OK;
    if (SUCCEEDED(CheckTransform(&input->CurrentMediaType(), &output->CurrentMediaType())))
        return S_OK;
    return ReconnectPin(output.get());
}

HRESULT CQxVantor::BreakConnect(PIN_DIRECTION direction)
{
    StoreFormat(DWORD(direction), std::nullopt);
    return S_OK;
}

HRESULT CQxVantor::DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pProperties)
{
    ComPtr<IMemAllocator> incoming;
    if (input->IsConnected() && SUCCEEDED(input->GetAllocator(incoming.Out())))
        incoming->GetProperties(pProperties);
    pProperties->cBuffers = std::max<LONG>(pProperties->cBuffers, 1);
    pProperties->cbBuffer = TenTimes(pProperties->cbBuffer);
    ALLOCATOR_PROPERTIES granted;
    if (const HRESULT hr = pAllocator->SetProperties(pProperties, &granted); FAILED(hr))
        return hr;
    *pProperties = granted;
    return granted.cbBuffer < kLeastBuffer ? E_FAIL : S_OK;
}

// ---- streaming --------------------------------------------------------------------------------------------------------

HRESULT CQxVantor::StartStreaming()
{
    if (const HRESULT hr = StartDriver(); FAILED(hr))
        return hr;
    inputFormat = *Format(0);
    outputFormat = *Format(1);
    clock = {};
    discontinuityPending = syncPending = false;
    return S_OK;
}

HRESULT CQxVantor::StopStreaming()
{
    StopDriver();
    return S_OK;
}

HRESULT CQxVantor::Transform(IMediaSample*, IMediaSample*)
{
    return E_INVALIDARG;
}

HRESULT CQxVantor::Receive(IMediaSample* pSample)
{
    REFERENCE_TIME start, stop;
    if (SUCCEEDED(pSample->GetTime(&start, &stop)))   // without stamps the curves' clock runs on by counted frames
        SetSampleTimes(start, stop);
    Sample out;
    if (const HRESULT hr = GetOutputBuffer(&out); FAILED(hr))
        return hr;
    const Block block = BeginSample(pSample);
    BYTE* data = nullptr;
    if (const HRESULT hr = pSample->GetPointer(&data); FAILED(hr))
        return hr;
    const LONG cb = std::max<LONG>(pSample->GetActualDataLength(), 0);
    if (inputFormat.nChannels != outputFormat.nChannels)
        if (const HRESULT hr = TellFormat(out.Get()); FAILED(hr))
            return hr;
    return TransformSample(block, data, uint32_t(cb) / inputFormat.nBlockAlign, out);
}

CQxVantor::Block CQxVantor::BeginSample(IMediaSample* pSample)
{
    if (pSample->IsSyncPoint() == S_OK)
        syncPending = true;
    if (pSample->IsDiscontinuity() != S_OK)
        return Block::kNext;
    discontinuityPending = true;
    pSample->GetTime(&clock.rtOutStart, &clock.rtOutEnd);
    pSample->GetMediaTime(&clock.mtOutStart, &clock.mtOutEnd);
    return Block::kFirst;
}

// The frames of one input sample through the driver, into as many buffers as it takes. A buffer without frames serves the
// next pass.
HRESULT CQxVantor::TransformSample(Block block, const BYTE* pData, uint32_t frames, Sample& out)
{
    for (;;) {
        BYTE* room = nullptr;
        if (const HRESULT hr = out->GetPointer(&room); FAILED(hr))
            return hr;
        uint32_t taken = frames, given = uint32_t(out->GetSize()) / outputFormat.nBlockAlign;
        TransformBlock(std::exchange(block, Block::kNext), reinterpret_cast<const float*>(pData), &taken,
                       reinterpret_cast<float*>(room), &given);
        if (given != 0)
            if (const HRESULT hr = StampAndDeliver(out.Get(), given); hr != S_OK)
                return hr;
        frames -= taken;
        pData += size_t(taken) * inputFormat.nBlockAlign;
        if (frames == 0)
            return S_OK;
        if (taken == 0 && given == 0)   // the driver has lost its engine: nothing will ever come
            return VFW_E_RUNTIME_ERROR;
        if (given != 0)
            if (const HRESULT hr = GetOutputBuffer(&out); FAILED(hr))
                return hr;
    }
}

HRESULT CQxVantor::EndOfStream()
{
    if (!output || !output->IsConnected())
        return S_OK;
    for (;;) {
        Sample out;
        BYTE* room = nullptr;
        if (const HRESULT hr = GetOutputBuffer(&out); FAILED(hr))
            return hr;
        if (const HRESULT hr = out->GetPointer(&room); FAILED(hr))
            return hr;
        uint32_t given = uint32_t(out->GetSize()) / outputFormat.nBlockAlign;
        const bool drained =
            TransformBlock(Block::kEndOfStream, nullptr, nullptr, reinterpret_cast<float*>(room), &given) == 1;
        const HRESULT delivered = given != 0 ? DeliverTail(out.Get(), given) : S_OK;
        if (!drained && delivered == S_OK)
            continue;
        out = {};
        const HRESULT hr = output->DeliverEndOfStream();
        return FAILED(delivered) ? delivered : hr;
    }
}

// ---- output samples ---------------------------------------------------------------------------------------------------

HRESULT CQxVantor::GetOutputBuffer(Sample* pOut)
{
    *pOut = {};   // the former one is free first: there may be no other
    return output->GetDeliveryBuffer(pOut->Out(), nullptr, nullptr, 0);
}

HRESULT CQxVantor::TellFormat(IMediaSample* pOut)
{
    CMediaType type;
    if (const HRESULT hr = GetMediaType(0, &type); FAILED(hr))
        return hr;
    return pOut->SetMediaType(&type);
}

HRESULT CQxVantor::StampAndDeliver(IMediaSample* pOut, uint32_t frames)
{
    clock.Stamp(frames, outputFormat.nSamplesPerSec, discontinuityPending);
    pOut->SetDiscontinuity(std::exchange(discontinuityPending, false));
    pOut->SetSyncPoint(std::exchange(syncPending, false));
    pOut->SetTime(&clock.rtOutStart, &clock.rtOutEnd);
    pOut->SetMediaTime(&clock.mtOutStart, &clock.mtOutEnd);
    return Deliver(pOut, frames);
}

// What the engine still holds at the end of the stream carries no time stamp and no mark.
HRESULT CQxVantor::DeliverTail(IMediaSample* pOut, uint32_t frames)
{
    pOut->SetDiscontinuity(FALSE);
    pOut->SetSyncPoint(FALSE);
    pOut->SetTime(nullptr, nullptr);
    pOut->SetMediaTime(nullptr, nullptr);
    return Deliver(pOut, frames);
}

HRESULT CQxVantor::Deliver(IMediaSample* pOut, uint32_t frames)
{
    if (const HRESULT hr = pOut->SetActualDataLength(LONG(frames * outputFormat.nBlockAlign)); FAILED(hr))
        return hr;
    return output->Deliver(pOut);
}
