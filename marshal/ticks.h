// Calendar arithmetic of managed DateTime ticks (100 ns since 0001-01-01, proleptic
// Gregorian). No Python here: the datetime conversions build on it.
#pragma once

#include <cstdint>

constexpr int64_t kTicksPerMicrosecond = 10;
constexpr int64_t kTicksPerSecond = 10'000'000;
constexpr int64_t kTicksPerMinute = 600'000'000;
constexpr int64_t kTicksPerHour = 36'000'000'000;
constexpr int64_t kTicksPerDay = 864'000'000'000;
// First tick of year 10000: valid DateTime ticks lie below it.
constexpr int64_t kDateTimeTicksEnd = 3'155'378'976'000'000'000;
// Bits 62-63 of a DateTime record carry the kind.
constexpr uint64_t kDateTimeKindShift = 62;
constexpr uint64_t kDateTimeTicksMask = (uint64_t(1) << kDateTimeKindShift) - 1;

enum DateTimeKind : uint32_t {
    DateTimeKind_Unspecified = 0,
    DateTimeKind_Utc = 1,
    DateTimeKind_Local = 2,
};

// A DateTime broken down into its calendar fields.
struct PyDateTimeConvInfo {
    uint32_t kind;
    uint32_t year;
    uint32_t month;
    uint32_t day;
    uint32_t hour;
    uint32_t minute;
    uint32_t second;
    uint32_t microsecond;
};

// true with *ticks when the date is valid and the ticks fall below kDateTimeTicksEnd; the
// kind is not applied. A second of 60 counts as 59: leap seconds fold onto the last second.
bool py_to_clr_date_to_ticks_non_kind(const PyDateTimeConvInfo& info, int64_t* ticks);
// Breaks a DateTime record (kind in the two top bits) into fields; ticks below a microsecond
// are dropped.
void clr_to_py_date_assign_from_ticks(uint64_t value, PyDateTimeConvInfo* info);
