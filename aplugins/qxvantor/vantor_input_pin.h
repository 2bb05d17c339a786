// The filter's input: takes a type only when what is connected downstream takes what becomes of it.
#pragma once

#include "platform/media/transform_pins.h"

class CQxVantor;

class CQxVantorInputPin final : public CTransformInputPin {
public:
    explicit CQxVantorInputPin(CQxVantor* theFilter);

    HRESULT CheckMediaType(const CMediaType* pType) override;

private:
    CQxVantor* vantor;
};
