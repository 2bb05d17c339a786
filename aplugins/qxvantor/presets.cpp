#include "aplugins/qxvantor/presets.h"

#include "kernel/lang.h"

#include <cassert>

namespace {

struct Preset {
    UINT nNameId;
    QxVantorParams record;
};

constexpr QxVantorParams Record(double stretchPercent, double pitchSemitones, double auxSemitones = 0.0)
{
    QxVantorParams record = {};
    record.stretchPercent = stretchPercent;
    record.pitchSemitones = pitchSemitones;
    record.auxSemitones = auxSemitones;
    record.formantPercent = 100.0;
    record.contentPitch = 7;
    return record;
}

constexpr Preset kPresets[kPresetCount] = {
    {2077, Record(100.0, 0.0)},  {2077, Record(100.0, 0.0)},  {2078, Record(200.0, 0.0)},
    {2079, Record(50.0, 0.0)},   {2080, Record(100.0, 12.0)}, {2081, Record(100.0, -12.0, -12.0)},
    {2082, Record(200.0, 12.0)}, {2083, Record(50.0, -12.0)},
};

}   // namespace

const QxVantorParams& PresetRecord(DWORD index)
{
    assert(index < kPresetCount);
    return kPresets[index].record;
}

HRESULT PresetName(DWORD index, WCHAR* pszName, DWORD cchName)
{
    if (index >= kPresetCount)
        return E_INVALIDARG;
    if (!pszName)
        return E_POINTER;
    if (cchName == 0)
        return E_INVALIDARG;
    QxLoadString(KernelLanguage(), kPresets[index].nNameId, pszName, cchName);
    return S_OK;
}
