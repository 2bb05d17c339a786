// Result codes of the library beside the platform's own: failures from 0x8004E000 upward, successes with a remark from
// 0x0004E000 upward. What the user reads for each stands in the language table under Error_<code>.
#pragma once

#include <windows.h>

inline constexpr HRESULT QX_S_ALREADY_OPEN = 0x0004E001;
inline constexpr HRESULT QX_E_FILE_OPEN = HRESULT(0x8004E007);
inline constexpr HRESULT QX_E_FILE_WRITE = HRESULT(0x8004E009);
inline constexpr HRESULT QX_E_NOT_FOUND = HRESULT(0x8004E00A);
inline constexpr HRESULT QX_E_BUFFER_TOO_SMALL = HRESULT(0x8004E03C);
inline constexpr HRESULT QX_E_CODEPAGE_UNSURE = HRESULT(0x8004E1FD);
// The platform's ERROR_INSUFFICIENT_BUFFER as a result: a text was cut where the destination ends.
inline constexpr HRESULT QX_E_TEXT_CUT = HRESULT(0x8007007A);
