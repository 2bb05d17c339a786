// Internal statuses of the QxPerf functions, before QxPerfMapStatus turns them into result codes.
#pragma once

constexpr int kPerfSuccess = 0;
constexpr int kPerfOtherMaker = 20;   // a remark, not a failure
constexpr int kPerfBadLength = -6;
constexpr int kPerfNullPointer = -8;
constexpr int kPerfNoMemory = -9;
constexpr int kPerfBadOrder = -15;
constexpr int kPerfBadFlag = -16;
constexpr int kPerfWrongSpec = -17;   // of another kind of transform, or freed
