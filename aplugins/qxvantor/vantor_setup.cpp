#include "aplugins/qxvantor/vantor_setup.h"

#include <dshow.h>

#include <iterator>

namespace {

constexpr DWORD kMerit = 0x200000;   // never chosen by itself when a graph is built

WCHAR inputName[] = TEXT("Input"), outputName[] = TEXT("Output");
const REGPINTYPES kAudio = {&MEDIATYPE_Audio, &MEDIASUBTYPE_NULL};
const REGFILTERPINS kPins[] = {
    {inputName, FALSE, FALSE, FALSE, FALSE, nullptr, outputName, 1, &kAudio},
    {outputName, FALSE, TRUE, FALSE, FALSE, nullptr, inputName, 1, &kAudio},
};

}   // namespace

const AMOVIESETUP_FILTER kVantorSetup = {&CLSID_QxVantor, TEXT("NOVAR tensio Timestretch"), kMerit,
                                         UINT(std::size(kPins)), kPins};
