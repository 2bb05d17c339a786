#include "aplugins/qxvantor/vantor_input_pin.h"

#include "aplugins/qxvantor/vantor_filter.h"

CQxVantorInputPin::CQxVantorInputPin(CQxVantor* theFilter)
    : CTransformInputPin(theFilter, TEXT("Input")), vantor(theFilter)
{
}

HRESULT CQxVantorInputPin::CheckMediaType(const CMediaType* pType)
{
    return vantor->CheckInputPinType(pType);
}
