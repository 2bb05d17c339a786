// Descriptions of automated parameters, and the crossing between a parameter's value and its field of a record.
#pragma once

#include "platform/media/media_params.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

// How a field of the record is stored. 0 and 1 are both 32-bit integers.
enum class FieldStorage { kInteger = 0, kIndex = 1, kFloat = 2, kDouble = 3 };

struct ParamDescription {
    MP_TYPE mpType;
    MP_CAPS curves;
    float minimum, maximum, neutral;        // of the parameter, as hosts see it
    int32_t recordMinimum, recordMaximum;   // of the field
    FieldStorage storage;
    size_t offset;   // of the field in the record, bytes
    UINT idLabel;    // string ids; 0 for none
    UINT idUnit;
    UINT idEnumeration;   // items parted by commas
};

// A field's value as the parameter's, clamped to its range. One that is no number stays so.
float ParamFromField(const ParamDescription& description, const void* pRecord);
// A parameter's value put into its field; integers round to the nearest, halves away from 0.
void FieldFromParam(const ParamDescription& description, float value, void* pRecord);

// The seven automated parameters of the filter over QxVantorParams, in the order of their indices.
enum VantorParam : DWORD {
    kParamStretch,
    kParamPitch,
    kParamContent,
    kParamFormant,
    kParamMode,
    kParamSyncPitch,
    kParamBypass,
    kVantorParams
};
std::span<const ParamDescription, kVantorParams> VantorParamTable();
