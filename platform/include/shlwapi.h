// File streams.
#pragma once

#include <objidl.h>

// A stream on a file. dwMode: STGM_READ, STGM_WRITE or STGM_READWRITE with a sharing flag; with STGM_CREATE an existing
// file is emptied. Without it a missing file is made only when bCreate is set. dwAttributes count for a new file.
// pReserved is null.
HRESULT SHCreateStreamOnFileEx(LPCWSTR pszFile, DWORD dwMode, DWORD dwAttributes, BOOL bCreate, IStream* pReserved,
                               IStream** ppStream);
