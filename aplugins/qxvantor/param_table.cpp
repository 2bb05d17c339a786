#include "aplugins/qxvantor/param_table.h"

#include "aplugins/qxvantor/vantor_params.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr MP_CAPS kAllCurves = MP_CURVE_JUMP | MP_CURVE_LINEAR | MP_CURVE_SQUARE | MP_CURVE_INVSQUARE;
constexpr MP_CAPS kJumps = MP_CURVE_JUMP;
constexpr auto kDouble = FieldStorage::kDouble;
constexpr auto kInteger = FieldStorage::kInteger;
#define FIELD(name) offsetof(QxVantorParams, name)

// One row per parameter: type, curves, range and neutral value, range of the field, storage, place, texts.
constexpr ParamDescription kTable[] = {
    {MPT_FLOAT, kAllCurves, 0.1f, 10, 1, 10, 1000, kDouble, FIELD(stretchPercent), 7030, 0, 0},
    {MPT_FLOAT, kAllCurves, -24, 24, 0, -24, 24, kDouble, FIELD(pitchSemitones), 7031, 7046, 0},
    {MPT_ENUM, kJumps, 3, 9, 7, 3, 9, kInteger, FIELD(contentPitch), 7032, 7047, 7056},
    {MPT_FLOAT, kAllCurves, 0, 100, 100, 0, 100, kDouble, FIELD(formantPercent), 7033, 7048, 0},
    {MPT_ENUM, kJumps, 0, 5, 0, 0, 5, kInteger, FIELD(mode), 7034, 0, 7055},
    {MPT_BOOL, kJumps, 0, 1, 1, 0, 1, kInteger, FIELD(syncPitch), 7036, 0, 0},
    {MPT_BOOL, kJumps, 0, 1, 0, 0, 1, kInteger, FIELD(bypass), 7037, 0, 0},
};
#undef FIELD
static_assert(std::size(kTable) == kVantorParams);

template <class T>
T Read(const void* pRecord, size_t offset)
{
    T value;
    std::memcpy(&value, static_cast<const std::byte*>(pRecord) + offset, sizeof value);
    return value;
}

template <class T>
void Write(void* pRecord, size_t offset, T value)
{
    std::memcpy(static_cast<std::byte*>(pRecord) + offset, &value, sizeof value);
}

double ReadField(const ParamDescription& d, const void* pRecord)
{
    switch (d.storage) {
    case FieldStorage::kFloat:
        return Read<float>(pRecord, d.offset);
    case FieldStorage::kDouble:
        return Read<double>(pRecord, d.offset);
    default:
        return Read<int32_t>(pRecord, d.offset);
    }
}

}   // namespace

float ParamFromField(const ParamDescription& d, const void* pRecord)
{
    const auto scale = float((double(d.maximum) - d.minimum) / (double(d.recordMaximum) - d.recordMinimum));
    return std::clamp(float(scale * ReadField(d, pRecord)), d.minimum, d.maximum);
}

void FieldFromParam(const ParamDescription& d, float value, void* pRecord)
{
    const auto scale = float((double(d.recordMaximum) - d.recordMinimum) / (double(d.maximum) - d.minimum));
    const double field = double(scale) * value;
    switch (d.storage) {
    case FieldStorage::kFloat:
        return Write(pRecord, d.offset, float(field));
    case FieldStorage::kDouble:
        return Write(pRecord, d.offset, field);
    default:
        return Write(pRecord, d.offset, int32_t(field > 0.0 ? field + 0.5 : field - 0.5));
    }
}

std::span<const ParamDescription, kVantorParams> VantorParamTable()
{
    return kTable;
}
