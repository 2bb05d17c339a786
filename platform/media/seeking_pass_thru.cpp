#include "platform/media/seeking_pass_thru.h"

ComPtr<IMediaSeeking> CSeekingPassThru::Upstream() const
{
    ComPtr<IEnumPins> pins;
    ComPtr<IPin> input, feeding;
    if (FAILED(filter->EnumPins(pins.Out())) || pins->Next(1, input.Out(), nullptr) != S_OK ||
        FAILED(input->ConnectedTo(feeding.Out())))
        return {};
    return Query<IMediaSeeking>(feeding.Get(), IID_IMediaSeeking);
}

template <class... Parameters, class... Arguments>
HRESULT CSeekingPassThru::Ask(HRESULT (STDMETHODCALLTYPE IMediaSeeking::*operation)(Parameters...),
                              Arguments... arguments) const
{
    const auto upstream = Upstream();
    return upstream ? (upstream.Get()->*operation)(arguments...) : E_NOTIMPL;
}

HRESULT CSeekingPassThru::GetCapabilities(DWORD* pdwCapabilities)
{
    return Ask(&IMediaSeeking::GetCapabilities, pdwCapabilities);
}

HRESULT CSeekingPassThru::CheckCapabilities(DWORD* pdwCapabilities)
{
    return Ask(&IMediaSeeking::CheckCapabilities, pdwCapabilities);
}

HRESULT CSeekingPassThru::IsFormatSupported(const GUID* pFormat)
{
    return Ask(&IMediaSeeking::IsFormatSupported, pFormat);
}

HRESULT CSeekingPassThru::QueryPreferredFormat(GUID* pFormat)
{
    return Ask(&IMediaSeeking::QueryPreferredFormat, pFormat);
}

HRESULT CSeekingPassThru::GetTimeFormat(GUID* pFormat)
{
    return Ask(&IMediaSeeking::GetTimeFormat, pFormat);
}

HRESULT CSeekingPassThru::IsUsingTimeFormat(const GUID* pFormat)
{
    return Ask(&IMediaSeeking::IsUsingTimeFormat, pFormat);
}

HRESULT CSeekingPassThru::SetTimeFormat(const GUID* pFormat)
{
    return Ask(&IMediaSeeking::SetTimeFormat, pFormat);
}

HRESULT CSeekingPassThru::GetDuration(LONGLONG* pDuration)
{
    return Ask(&IMediaSeeking::GetDuration, pDuration);
}

HRESULT CSeekingPassThru::GetStopPosition(LONGLONG* pStop)
{
    return Ask(&IMediaSeeking::GetStopPosition, pStop);
}

HRESULT CSeekingPassThru::GetCurrentPosition(LONGLONG* pCurrent)
{
    return Ask(&IMediaSeeking::GetCurrentPosition, pCurrent);
}

HRESULT CSeekingPassThru::ConvertTimeFormat(LONGLONG* pTarget, const GUID* pTargetFormat, LONGLONG source,
                                            const GUID* pSourceFormat)
{
    return Ask(&IMediaSeeking::ConvertTimeFormat, pTarget, pTargetFormat, source, pSourceFormat);
}

HRESULT CSeekingPassThru::SetPositions(LONGLONG* pCurrent, DWORD dwCurrentFlags, LONGLONG* pStop, DWORD dwStopFlags)
{
    return Ask(&IMediaSeeking::SetPositions, pCurrent, dwCurrentFlags, pStop, dwStopFlags);
}

HRESULT CSeekingPassThru::GetPositions(LONGLONG* pCurrent, LONGLONG* pStop)
{
    return Ask(&IMediaSeeking::GetPositions, pCurrent, pStop);
}

HRESULT CSeekingPassThru::GetAvailable(LONGLONG* pEarliest, LONGLONG* pLatest)
{
    return Ask(&IMediaSeeking::GetAvailable, pEarliest, pLatest);
}

HRESULT CSeekingPassThru::SetRate(double dRate)
{
    return Ask(&IMediaSeeking::SetRate, dRate);
}

HRESULT CSeekingPassThru::GetRate(double* pdRate)
{
    return Ask(&IMediaSeeking::GetRate, pdRate);
}

HRESULT CSeekingPassThru::GetPreroll(LONGLONG* pPreroll)
{
    return Ask(&IMediaSeeking::GetPreroll, pPreroll);
}
