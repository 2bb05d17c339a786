#include "engine/psola/pitch_marks.h"

#include "dsp/status.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <type_traits>

static_assert(std::is_trivially_copyable_v<PitchMark>);   // the records move as plain memory

CPitchMarks::~CPitchMarks()
{
    std::free(marks);
}

void CPitchMarks::Clear() noexcept
{
    std::fill_n(marks, capacity, PitchMark{});
    count = 0;
}

void CPitchMarks::KeepLast(int32_t n) noexcept
{
    std::copy(marks + (count - n), marks + count, marks);
    count = n;
}

int32_t CPitchMarks::Allocate(int32_t n) noexcept
{
    if (owned)
        return kNotAvailable;
    auto* room = static_cast<PitchMark*>(std::calloc(size_t(std::max(n, 1)), sizeof(PitchMark)));
    if (!room)
        return kOutOfMemory;
    marks = room;
    capacity = n;
    owned = 1;
    return kSuccess;
}

int32_t CPitchMarks::GetMarkArray(PitchMark** ppMarks) noexcept
{
    *ppMarks = marks;
    return count;
}

int32_t CPitchMarks::SetMarkArray(const PitchMark* source, int32_t n) noexcept
{
    if (!owned && capacity != 0 && capacity != n)
        return kInvalidArgument;
    auto* room = static_cast<PitchMark*>(std::malloc(size_t(std::max(n, 1)) * sizeof(PitchMark)));
    if (!room)
        return kOutOfMemory;
    std::copy_n(source, n, room);
    std::free(marks);
    marks = room;
    capacity = count = n;
    owned = 1;
    return kSuccess;
}

int32_t CPitchMarks::AppendMark(int32_t position, float harmonicity, float power, float transient,
                                float frequencyChange, float rawPeriod) noexcept
{
    if (count >= capacity) {
        auto* room = static_cast<PitchMark*>(std::realloc(marks, (size_t(count) + 1) * sizeof(PitchMark)));
        if (!room)
            return kOutOfMemory;
        marks = room;
        capacity = count + 1;
        owned = 1;
    }
    marks[count++] = {position, power, transient, harmonicity, frequencyChange, rawPeriod};
    return kSuccess;
}

int32_t CPitchMarks::AppendPlainMark(int32_t position, float harmonicity, float power, float transient,
                                     float frequencyChange) noexcept
{
    return AppendMark(position, harmonicity, power, transient, frequencyChange, 0.0f);
}

void CPitchMarks::RemoveLast() noexcept
{
    count = std::max(count - 1, 0);
}

int32_t CPitchMarks::GetPosition(int32_t i) const noexcept
{
    return Has(i) ? marks[i].position : -1;
}

int32_t CPitchMarks::GetPeriod(int32_t i) const noexcept
{
    return Has(i) && Has(i + 1) ? marks[i + 1].position - marks[i].position : -1;
}

int32_t CPitchMarks::GetRawPeriod(int32_t i) const noexcept
{
    return Has(i) ? int32_t(marks[i].rawPeriod) : -1;
}

float CPitchMarks::GetTransient(int32_t i) const noexcept
{
    return Has(i) ? marks[i].transient : -1.0f;
}

float CPitchMarks::GetPower(int32_t i) const noexcept
{
    return Has(i) ? marks[i].power : -1.0f;
}

float CPitchMarks::GetHarmonicity(int32_t i) const noexcept
{
    return Has(i) ? marks[i].harmonicity : -1.0f;
}

float CPitchMarks::GetFrequencyChange(int32_t i) const noexcept
{
    return Has(i) ? marks[i].frequencyChange : -1.0f;
}

int32_t CPitchMarks::FindNearest(int32_t start, int32_t target) const noexcept
{
    if (start < 0 || start >= count - 1)
        return -1;
    int32_t distance = std::abs(marks[start].position - target);
    for (int32_t j = start + 1; j < count; ++j) {
        const int32_t next = std::abs(marks[j].position - target);
        if (next >= distance)
            return j - 1;
        distance = next;
    }
    return count - 1;
}

int32_t CPitchMarks::NextAfter(int32_t* pIndex, int32_t minDistance) const noexcept
{
    const int32_t start = *pIndex;
    if (!Has(start))
        return -1;
    for (int32_t j = start; j < count; ++j)
        if (const int32_t distance = marks[j].position - marks[start].position; distance > minDistance) {
            *pIndex = j;
            return distance;
        }
    return -1;
}

int32_t CreatePitchMarks(CPitchMarks** ppMarks)
{
    *ppMarks = new (std::nothrow) CPitchMarks;
    return kSuccess;
}

int32_t DestroyPitchMarks(CPitchMarks* pMarks)
{
    delete pMarks;
    return kSuccess;
}
