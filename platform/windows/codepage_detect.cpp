#include "platform/codepage_detect.h"

#include "platform/com_ptr.h"

#include <mlang.h>

#include <algorithm>
#include <vector>

namespace {

// The interface's published id, which the MinGW libraries leave out.
constexpr IID kMultiLanguage2 = {0xDCCFC164, 0x2B38, 0x11D2, {0xB7, 0xEC, 0x00, 0xC0, 0x4F, 0x8F, 0x5D, 0x9A}};

}   // namespace

int DetectCodePages(const char* pText, DWORD cb, CodePageCandidate* pCandidates, int count)
{
    if (!pText || cb == 0 || count <= 0)
        return 0;
    ComPtr<IMultiLanguage2> languages;
    if (FAILED(CoCreateInstance(CLSID_CMultiLanguage, nullptr, CLSCTX_INPROC_SERVER, kMultiLanguage2,
                                reinterpret_cast<void**>(languages.Out()))))
        return 0;
    std::vector<DetectEncodingInfo> found(static_cast<size_t>(count));
    INT size = INT(cb), scores = count;
    if (languages->DetectInputCodepage(MLDETECTCP_NONE, 0, const_cast<char*>(pText), &size, found.data(), &scores) !=
        S_OK)
        return 0;
    scores = std::clamp(scores, 0, count);
    for (int i = 0; i < scores; ++i)
        pCandidates[i] = {found[size_t(i)].nCodePage, found[size_t(i)].nDocPercent, found[size_t(i)].nConfidence};
    return scores;
}
