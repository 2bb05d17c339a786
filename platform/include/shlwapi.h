// File streams.
#pragma once

#include <objidl.h>

// A stream on a file. dwMode: STGM_READ, STGM_WRITE or STGM_READWRITE with a sharing flag. With STGM_CREATE the file is
// made or emptied; else bCreate says whether it must be new (made now) or must be there. dwAttributes count for a new
// file. pReserved is null.
HRESULT SHCreateStreamOnFileEx(LPCWSTR pszFile, DWORD dwMode, DWORD dwAttributes, BOOL bCreate, IStream* pReserved,
                               IStream** ppStream);
