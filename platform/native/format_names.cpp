#include "platform/format_names.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

namespace {

// Registered format tags (RFC 2361, and the platform's header of multimedia formats), by the names that they go by.
struct TagName {
    WORD wTag;
    std::string_view name;
};
constexpr TagName kTagNames[] = {
    {0x0002, "Microsoft ADPCM"},
    {0x0005, "IBM CVSD"},
    {0x0006, "CCITT A-Law"},
    {0x0007, "CCITT u-Law"},
    {0x0010, "OKI ADPCM"},
    {0x0011, "IMA ADPCM"},
    {0x0014, "G.723 ADPCM"},
    {0x0022, "DSP Group TrueSpeech"},
    {0x0031, "GSM 6.10"},
    {0x0040, "G.721 ADPCM"},
    {0x0041, "G.728 CELP"},
    {0x0042, "Microsoft G.723.1"},
    {0x0050, "MPEG"},
    {0x0055, "MPEG Layer-3"},
    {0x0064, "G.726 ADPCM"},
    {0x0092, "Dolby AC-3 over S/PDIF"},
    {0x00FF, "AAC"},
    {0x0160, "Windows Media Audio V1"},
    {0x0161, "Windows Media Audio V2"},
    {0x0162, "Windows Media Audio Professional"},
    {0x0163, "Windows Media Audio Lossless"},
    {0x1600, "MPEG ADTS AAC"},
    {0x1610, "HE-AAC"},
    {0x2000, "Dolby AC-3"},
    {0x2001, "DTS"},
    {0xF1AC, "FLAC"},
};

const TagName* FindTag(WORD tag)
{
    const auto found = std::ranges::find(kTagNames, tag, &TagName::wTag);
    return found == std::end(kTagNames) ? nullptr : found;
}

void CopyCut(std::string_view text, WCHAR* pszOut, DWORD cchOut)
{
    *std::copy_n(text.begin(), std::min<size_t>(text.size(), cchOut - 1), pszOut) = 0;
}

std::string InKilohertz(DWORD rate)
{
    std::string digits = std::to_string(rate % 1000);
    digits.insert(0, 3 - digits.size(), '0');
    return std::to_string(rate / 1000) + '.' + digits + " kHz";
}

std::string Channels(WORD channels)
{
    return channels == 1 ? "Mono" : channels == 2 ? "Stereo" : std::to_string(channels) + " Channels";
}

}   // namespace

HRESULT GetFormatTagName(WORD wTag, WCHAR* pszOut, DWORD cchOut)
{
    const TagName* const known = FindTag(wTag);
    if (!known)
        return E_FAIL;
    CopyCut(known->name, pszOut, cchOut);
    return S_OK;
}

HRESULT GetFormatAttributes(const WAVEFORMATEX& format, DWORD, WCHAR* pszOut, DWORD cchOut)
{
    if (!FindTag(format.wFormatTag))
        return E_FAIL;
    const std::string bits = format.wBitsPerSample ? std::to_string(format.wBitsPerSample) + " Bit, " : std::string();
    CopyCut(InKilohertz(format.nSamplesPerSec) + ", " + bits + Channels(format.nChannels), pszOut, cchOut);
    return S_OK;
}
