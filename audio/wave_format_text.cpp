#include "audio/wave_format_text.h"

#include "audio/wave_format_copy.h"
#include "audio/wave_header.h"
#include "kernel/lang.h"
#include "kernel/lang/texts.h"
#include "kernel/print.h"
#include "platform/format_names.h"

#include <array>

namespace {

constexpr size_t kLongestName = 128;   // characters, as the platform limits them

// The destination, or a place for what nobody reads.
class TextDestination {
public:
    TextDestination(WCHAR* pszOut, int32_t cchOut)
        : unused(), text(pszOut && cchOut > 0 ? pszOut : unused.data()),
          room(pszOut && cchOut > 0 ? DWORD(cchOut) : DWORD(unused.size()))
    {
    }
    WCHAR* Text() { return text; }
    DWORD Room() const { return room; }
    void Put(QXLANGSTRING entry) { QxLoadString(KernelLanguage(), entry, text, room); }

private:
    std::array<WCHAR, kLongestName> unused;
    WCHAR* const text;
    const DWORD room;
};

struct KnownTag {
    WORD wTag;
    const QXLANGENTRY* pText;
};
const KnownTag kKnownTags[] = {
    {WAVE_FORMAT_PCM, &qxtext_Wave_Pcm},        {WAVE_FORMAT_IEEE_FLOAT, &qxtext_Wave_PcmFloat},
    {kTagUnpacked, &qxtext_Wave_PcmUnpacked},   {kTagSigned, &qxtext_Wave_PcmSigned},
    {kTagBigEndian, &qxtext_Wave_PcmBigEndian},
};

HRESULT OrUnknown(HRESULT hr, TextDestination& out)
{
    if (SUCCEEDED(hr))
        return S_OK;
    out.Put(qxtext_Wave_Unknown);
    return E_FAIL;
}

// Layouts that have a name: a front of three, two at the back or the sides, and the low frequencies.
constexpr struct {
    WORD nChannels;
    DWORD dwMask;
    QXLANGENTRY* pText;
} kLayouts[] = {
    {6, 63, &qxtext_Wave_Surround51},
    {6, 1551, &qxtext_Wave_Surround51},
    {8, 255, &qxtext_Wave_Surround71},
    {8, 1599, &qxtext_Wave_Surround71},
};

bool HasExtension(const WAVEFORMATEX& format)
{
    return IsExtensible(format) && format.cbSize >= kExtensionBytes;
}

void ChannelWord(const WAVEFORMATEX& format, WCHAR* pszOut, DWORD cchOut)
{
    const HQXLANG lang = KernelLanguage();
    if (format.nChannels == 1 || format.nChannels == 2) {
        QxLoadString(lang, format.nChannels == 1 ? qxtext_Wave_Mono : qxtext_Wave_Stereo, pszOut, cchOut);
        return;
    }
    for (const auto& layout : kLayouts)
        if (HasExtension(format) && layout.nChannels == format.nChannels &&
            layout.dwMask == Extended(format).dwChannelMask) {
            QxLoadString(lang, *layout.pText, pszOut, cchOut);
            return;
        }
    QxCchPrintF(pszOut, cchOut, nullptr, QxGetString(lang, qxtext_Wave_Channels), int(format.nChannels));
}

// The sub-format is looked at where its speakers are.
bool IsFloat(const WAVEFORMATEX& format)
{
    WORD tag = format.wFormatTag;
    if (HasExtension(format) && (format.nChannels == 6 || format.nChannels == 8))
        QxAudio_GetFormatTagExtensible(&Extended(format), &tag);
    return tag == WAVE_FORMAT_IEEE_FLOAT;
}

DWORD HeaderBytes(const WAVEFORMATEX& format)
{
    const bool bare = format.wFormatTag == WAVE_FORMAT_PCM || format.wFormatTag == WAVE_FORMAT_IEEE_FLOAT;
    return bare ? DWORD(offsetof(WAVEFORMATEX, cbSize)) : kPlainBytes + format.cbSize;
}

}   // namespace

HRESULT QxAudio_GetTagText(WORD wTag, WCHAR* pszOut, int32_t cchOut)
{
    TextDestination out(pszOut, cchOut);
    for (const KnownTag& known : kKnownTags)
        if (known.wTag == wTag) {
            out.Put(*known.pText);
            return S_OK;
        }
    return OrUnknown(GetFormatTagName(wTag, out.Text(), out.Room()), out);
}

HRESULT QxAudio_GetAttribsText(const WAVEFORMATEX* pFormat, WCHAR* pszOut, int32_t cchOut)
{
    TextDestination out(pszOut, cchOut);
    if (QxAudio_IsCompressed(pFormat))
        return OrUnknown(GetFormatAttributes(*pFormat, HeaderBytes(*pFormat), out.Text(), out.Room()), out);
    std::array<WCHAR, kLongestName> channels;
    ChannelWord(*pFormat, channels.data(), DWORD(channels.size()));
    const WCHAR* const form =
        QxGetString(KernelLanguage(), IsFloat(*pFormat) ? qxtext_Wave_AttributesFloat : qxtext_Wave_Attributes);
    QxCchPrintF(out.Text(), out.Room(), nullptr, form, int(pFormat->nSamplesPerSec), int(pFormat->wBitsPerSample),
                channels.data());
    return S_OK;
}

HRESULT QxAudio_GetAttribsText(const _qxwaveformat* pRecord, WCHAR* pszOut, int32_t cchOut)
{
    alignas(4) std::array<BYTE, 80> header = {};
    auto* const format = reinterpret_cast<WAVEFORMATEX*>(header.data());
    QxAudio_GeneralCopyWfx(format, DWORD(header.size()), pRecord, QXWFXDEST_WHEN_NEEDED);
    return QxAudio_GetAttribsText(format, pszOut, cchOut);
}
