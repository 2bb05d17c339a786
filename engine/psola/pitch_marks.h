// The list of pitch marks: what PSOLA analysis writes and PSOLA synthesis reads. One mark ends one period of the input.
// It is a growing array of plain records, in ascending order of position, and holds no audio. Appending allocates once
// the room that Allocate made is used up, so owners allocate ahead and trim with KeepLast.
// Analysis and synthesis use it in the same processing call, on one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

struct PitchMark {
    int32_t position;        // input frame since the start of the stream
    float power;             // mean square of the period that ends here
    float transient;         // 0 to 1: how far the onset of this period stands out
    float harmonicity;       // of the tracker; 12 or 0 without one
    float frequencyChange;   // of the tracker; 0 without one
    float rawPeriod;         // frames, as the correlation found it; 0 in plain marks
};
static_assert(sizeof(PitchMark) == 24 && offsetof(PitchMark, rawPeriod) == 20);

class CPitchMarksIf {
public:
    virtual ~CPitchMarksIf() = default;
    // Empties the list and zeroes its room.
    virtual void Clear() noexcept = 0;
    // The newest n marks move to the start, n from 0 to GetNumMarks; the others are gone.
    virtual void KeepLast(int32_t n) noexcept = 0;
    // Makes room for n marks, once: kNotAvailable when there is room already, kOutOfMemory.
    virtual int32_t Allocate(int32_t n) noexcept = 0;
    // *ppMarks: the records, owned here, valid until the list grows; gives their number.
    virtual int32_t GetMarkArray(PitchMark** ppMarks) noexcept = 0;
    virtual int32_t GetNumMarks() const noexcept = 0;
    // Copies n marks in, in place of all there were. kInvalidArgument when a list that owns no room has been promised
    // another size; kOutOfMemory; both change nothing.
    virtual int32_t SetMarkArray(const PitchMark* source, int32_t n) noexcept = 0;
    // kOutOfMemory leaves the list as it was. The order of the arguments is not the record's.
    virtual int32_t AppendMark(int32_t position, float harmonicity, float power, float transient, float frequencyChange,
                               float rawPeriod) noexcept = 0;
    virtual int32_t AppendPlainMark(int32_t position, float harmonicity, float power, float transient,
                                    float frequencyChange) noexcept = 0;
    virtual void RemoveLast() noexcept = 0;
    // -1 (and -1.0 below) where there is no such mark.
    virtual int32_t GetLastPosition() const noexcept = 0;
    virtual int32_t GetPosition(int32_t i) const noexcept = 0;
    virtual int32_t GetPeriod(int32_t i) const noexcept = 0;      // distance to the next mark
    virtual int32_t GetRawPeriod(int32_t i) const noexcept = 0;   // truncated to whole frames
    virtual float GetTransient(int32_t i) const noexcept = 0;
    virtual float GetPower(int32_t i) const noexcept = 0;
    virtual float GetHarmonicity(int32_t i) const noexcept = 0;
    virtual float GetFrequencyChange(int32_t i) const noexcept = 0;
    // Index of the mark nearest to target, walking forward from start; the earlier of two equally near. -1 when no mark
    // stands behind start.
    virtual int32_t FindNearest(int32_t start, int32_t target) const noexcept = 0;
    // Moves *pIndex, 0 or more, to the first mark more than minDistance behind it and gives the distance; -1, and
    // *pIndex stays, when there is none.
    virtual int32_t NextAfter(int32_t* pIndex, int32_t minDistance) const noexcept = 0;
};

class CPitchMarks : public CPitchMarksIf {
public:
    CPitchMarks() = default;
    ~CPitchMarks() override;
    CPitchMarks(const CPitchMarks&) = delete;
    CPitchMarks& operator=(const CPitchMarks&) = delete;

    void Clear() noexcept override;
    void KeepLast(int32_t n) noexcept override;
    int32_t Allocate(int32_t n) noexcept override;
    int32_t GetMarkArray(PitchMark** ppMarks) noexcept override;
    int32_t GetNumMarks() const noexcept override { return count; }
    int32_t SetMarkArray(const PitchMark* source, int32_t n) noexcept override;
    int32_t AppendMark(int32_t position, float harmonicity, float power, float transient, float frequencyChange,
                       float rawPeriod) noexcept override;
    int32_t AppendPlainMark(int32_t position, float harmonicity, float power, float transient,
                            float frequencyChange) noexcept override;
    void RemoveLast() noexcept override;
    int32_t GetLastPosition() const noexcept override { return GetPosition(count - 1); }
    int32_t GetPosition(int32_t i) const noexcept override;
    int32_t GetPeriod(int32_t i) const noexcept override;
    int32_t GetRawPeriod(int32_t i) const noexcept override;
    float GetTransient(int32_t i) const noexcept override;
    float GetPower(int32_t i) const noexcept override;
    float GetHarmonicity(int32_t i) const noexcept override;
    float GetFrequencyChange(int32_t i) const noexcept override;
    int32_t FindNearest(int32_t start, int32_t target) const noexcept override;
    int32_t NextAfter(int32_t* pIndex, int32_t minDistance) const noexcept override;

private:
    bool Has(int32_t i) const noexcept { return i >= 0 && i < count; }

    int32_t capacity = 0;
    int32_t count = 0;
    PitchMark* marks = nullptr;
    int32_t owned = 0;   // 1 once the room is this object's
};

// Always 0; *ppMarks is null when memory is out. The caller owns the list through DestroyPitchMarks, which accepts null.
int32_t CreatePitchMarks(CPitchMarks** ppMarks);
int32_t DestroyPitchMarks(CPitchMarks* pMarks);

struct PitchMarksDestroy {
    void operator()(CPitchMarks* p) const { DestroyPitchMarks(p); }
};
using PitchMarksPtr = std::unique_ptr<CPitchMarks, PitchMarksDestroy>;
