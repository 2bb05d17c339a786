// The block in which a host keeps the filter's settings, at the position of a stream:
//   0    4   size of the block, kPersistedSize
//   4   16   mark of the format
//   20  88   QxVantorParams
// Blocks with the former mark are read too: there stretch and pitch are factors (1.0 leaves them, pitch 2.0 is an octave
// up). Blocks are written with the current mark, IID_IQxVantorProp2. Numbers are as the machine has them, low byte first.
// [any] No state.
#pragma once

#include "aplugins/qxvantor/vantor_params.h"

#include <windows.h>

#include <objidl.h>

inline constexpr ULONG kPersistedSize = 108;
inline constexpr GUID kFormerFormat = {0x9C5A27E3, 0x18D6, 0x4B02, {0x95, 0xFE, 0x41, 0xB8, 0x6C, 0x03, 0xD7, 0x2A}};

// The first failure of a write is the result; the stream then ends within the block.
HRESULT SaveParams(IStream* pStream, const QxVantorParams& params);

struct LoadedParams {
    HRESULT hr;
    bool tellListeners;      // the record was reached: listeners look at the parameters again, also when reading failed
    QxVantorParams record;   // to be put in force when hr is a success, and only then; not clamped
};
// E_FAIL: another size or mark, no stretch, or a driven value that is no number. A failed read ends with its result. For a
// stream, fewer bytes are a success: what a block lacks behind the stretch reads as 0.
LoadedParams LoadParams(IStream* pStream);
