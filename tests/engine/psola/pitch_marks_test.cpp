#include "engine/psola/pitch_marks.h"

#include "dsp/status.h"

#include <gtest/gtest.h>

namespace {

void AppendAt(CPitchMarks& marks, std::initializer_list<int32_t> positions)
{
    for (const int32_t position : positions)
        ASSERT_EQ(marks.AppendMark(position, 1.0f, 2.0f, 3.0f, 4.0f, 5.5f), kSuccess);
}

TEST(PitchMarks, AnEmptyListHasNothingToTell)
{
    CPitchMarks marks;
    marks.RemoveLast();
    marks.Clear();
    EXPECT_EQ(marks.GetNumMarks(), 0);
    EXPECT_EQ(marks.GetLastPosition(), -1);
    EXPECT_EQ(marks.GetPosition(0), -1);
    EXPECT_EQ(marks.GetRawPeriod(0), -1);
    EXPECT_EQ(marks.GetPower(0), -1.0f);
    EXPECT_EQ(marks.GetHarmonicity(-1), -1.0f);
    EXPECT_EQ(marks.FindNearest(0, 10), -1);
    int32_t index = 0;
    EXPECT_EQ(marks.NextAfter(&index, 0), -1);
}

TEST(PitchMarks, FieldsComeBackUnderTheirOwnNames)
{
    CPitchMarks marks;
    AppendAt(marks, {100});
    marks.AppendPlainMark(130, 6.0f, 7.0f, 0.5f, 9.0f);
    EXPECT_EQ(marks.GetHarmonicity(0), 1.0f);
    EXPECT_EQ(marks.GetPower(0), 2.0f);
    EXPECT_EQ(marks.GetTransient(0), 3.0f);
    EXPECT_EQ(marks.GetFrequencyChange(0), 4.0f);
    EXPECT_EQ(marks.GetRawPeriod(0), 5);
    EXPECT_EQ(marks.GetPeriod(0), 30);
    EXPECT_EQ(marks.GetPeriod(1), -1);
    EXPECT_EQ(marks.GetRawPeriod(1), 0);
    EXPECT_EQ(marks.GetLastPosition(), 130);
}

TEST(PitchMarks, RoomIsMadeOnceAndOutlivesTheMarks)
{
    CPitchMarks marks;
    ASSERT_EQ(marks.Allocate(3), kSuccess);
    EXPECT_EQ(marks.Allocate(9), kNotAvailable);
    AppendAt(marks, {1, 2, 3});
    PitchMark *before = nullptr, *after = nullptr;
    marks.GetMarkArray(&before);
    marks.KeepLast(2);
    EXPECT_EQ(marks.GetPosition(0), 2);
    EXPECT_EQ(marks.GetPosition(1), 3);
    marks.KeepLast(0);
    AppendAt(marks, {7, 8, 9});
    marks.GetMarkArray(&after);
    EXPECT_EQ(before, after);
    AppendAt(marks, {10});   // grows
    EXPECT_EQ(marks.GetNumMarks(), 4);
    EXPECT_EQ(marks.GetPosition(0), 7);
}

TEST(PitchMarks, TakesAWholeArray)
{
    const PitchMark source[] = {{10, 0, 0, 0, 0, 0}, {20, 0, 0, 0, 0, 0}};
    CPitchMarks marks;
    ASSERT_EQ(marks.SetMarkArray(source, 2), kSuccess);
    EXPECT_EQ(marks.GetPosition(1), 20);
    EXPECT_EQ(marks.SetMarkArray(source, 1), kSuccess);   // it owns its room, so any number will do
    EXPECT_EQ(marks.GetNumMarks(), 1);
}

TEST(PitchMarks, FindsTheNearestAheadAndTheEarlierOfTwo)
{
    CPitchMarks marks;
    AppendAt(marks, {100, 200, 400, 401});
    static constexpr struct {
        int32_t start, target, index;
    } kCases[] = {{0, 140, 0}, {0, 160, 1}, {0, 150, 0},  {0, -5, 0},   {0, 999, 3},
                  {1, 0, 1},   {2, 399, 2}, {3, 401, -1}, {4, 401, -1}, {-1, 0, -1}};
    for (const auto& c : kCases)
        EXPECT_EQ(marks.FindNearest(c.start, c.target), c.index) << c.start << ' ' << c.target;
}

TEST(PitchMarks, FindsTheNextBeyondADistance)
{
    CPitchMarks marks;
    AppendAt(marks, {100, 200, 400, 401});
    static constexpr struct {
        int32_t start, distance, gives, index;
    } kCases[] = {{0, 0, 100, 1}, {0, 100, 300, 2}, {2, 0, 1, 3}, {0, 301, -1, 0}, {3, 0, -1, 3}, {4, 0, -1, 4}};
    for (const auto& c : kCases) {
        int32_t index = c.start;
        EXPECT_EQ(marks.NextAfter(&index, c.distance), c.gives) << c.start << ' ' << c.distance;
        EXPECT_EQ(index, c.index) << c.start << ' ' << c.distance;
    }
}

}   // namespace
