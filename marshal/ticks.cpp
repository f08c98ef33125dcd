#include "marshal/ticks.h"

namespace {

constexpr int kDaysTo365[13] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
constexpr int kDaysTo366[13] = {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366};

constexpr int kDaysPer400Years = 146'097;
constexpr int kDaysPer100Years = 36'524;
constexpr int kDaysPer4Years = 1'461;
constexpr int kDaysPerYear = 365;

bool
is_leap_year(uint32_t year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

}  // namespace

bool
py_to_clr_date_to_ticks_non_kind(const PyDateTimeConvInfo& info, int64_t* ticks)
{
    if (info.year < 1 || info.year > 9999 || info.month < 1 || info.month > 12)
        return false;
    const int* days_to = is_leap_year(info.year) ? kDaysTo366 : kDaysTo365;
    int month_length = days_to[info.month] - days_to[info.month - 1];
    if (info.day < 1 || info.day > static_cast<uint32_t>(month_length))
        return false;
    int64_t y = info.year - 1;
    int64_t days = y * 365 + y / 4 - y / 100 + y / 400 + days_to[info.month - 1] + info.day - 1;
    int64_t second = info.second == 60 ? 59 : info.second;
    int64_t value = days * kTicksPerDay + info.hour * kTicksPerHour + info.minute * kTicksPerMinute +
                    second * kTicksPerSecond + int64_t(info.microsecond) * kTicksPerMicrosecond;
    if (value < 0 || value >= kDateTimeTicksEnd)
        return false;
    *ticks = value;
    return true;
}

void
clr_to_py_date_assign_from_ticks(uint64_t value, PyDateTimeConvInfo* info)
{
    info->kind = static_cast<uint32_t>(value >> kDateTimeKindShift);
    int64_t t = static_cast<int64_t>(value & kDateTimeTicksMask);
    int64_t day_number = t / kTicksPerDay;

    int64_t n = day_number;
    int64_t cycles = n / kDaysPer400Years;
    n -= cycles * kDaysPer400Years;
    int64_t centuries = n / kDaysPer100Years;
    if (centuries == 4)
        centuries = 3;  // the last day of a 400-year cycle belongs to its fourth century
    n -= centuries * kDaysPer100Years;
    int64_t quads = n / kDaysPer4Years;
    n -= quads * kDaysPer4Years;
    int64_t years = n / kDaysPerYear;
    if (years == 4)
        years = 3;  // the last day of a leap year
    n -= years * kDaysPerYear;

    info->year = static_cast<uint32_t>(cycles * 400 + centuries * 100 + quads * 4 + years + 1);
    bool leap = years == 3 && (quads != 24 || centuries == 3);
    const int* days_to = leap ? kDaysTo366 : kDaysTo365;
    int month = static_cast<int>(n >> 5) + 1;
    while (n >= days_to[month])
        ++month;
    info->month = month;
    info->day = static_cast<uint32_t>(n - days_to[month - 1] + 1);

    info->hour = static_cast<uint32_t>(t / kTicksPerHour - 24 * day_number);
    info->minute = static_cast<uint32_t>((t / kTicksPerMinute) % 60);
    info->second = static_cast<uint32_t>((t / kTicksPerSecond) % 60);
    info->microsecond = static_cast<uint32_t>((t / kTicksPerMicrosecond) % 1'000'000);
}
