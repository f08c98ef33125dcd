#include "marshal/conv_time.h"

#include "marshal/conv_errors.h"
#include "marshal/conv_text.h"
#include "marshal/datetime_api.h"
#include "marshal/ticks.h"
#include "module/ids.h"
#include "module/pysh_ref.h"

namespace {

// The signed 64-bit tick range in whole microseconds.
constexpr int64_t kTimeSpanMicrosecondsMax = INT64_MAX / kTicksPerMicrosecond;
constexpr uint64_t kKindUtc = uint64_t(DateTimeKind_Utc) << kDateTimeKindShift;

constexpr const char kMsgDateTimeRange[] = "value too large or too small for .Net DateTime";
constexpr const char kMsgCantBuildDateTime[] = "can't build DateTime from '%s'";

[[gnu::cold, gnu::noinline]] int
fail_datetime_range()
{
    return marshal_fail_text(PyExc_OverflowError, kMsgDateTimeRange);
}

// 1 with *ticks, or 0 with OverflowError; `obj` must be a timedelta.
int
delta_to_ticks(PyObject* obj, int64_t* ticks)
{
    // Days carry the sign; seconds and microseconds are non-negative. The sum is exact in
    // 128 bits whatever the day count.
    __int128 total = __int128(PyDateTime_DELTA_GET_DAYS(obj)) * 86'400'000'000 +
                     __int128(PyDateTime_DELTA_GET_SECONDS(obj)) * 1'000'000 +
                     PyDateTime_DELTA_GET_MICROSECONDS(obj);
    if (total > kTimeSpanMicrosecondsMax || total < -kTimeSpanMicrosecondsMax)
        return marshal_fail_text(PyExc_OverflowError, "value too large or too small for .Net TimeSpan");
    *ticks = static_cast<int64_t>(total) * kTicksPerMicrosecond;
    return 1;
}

// UTC offset of a datetime or time: 1 with *has_offset and *offset_ticks, or 0 with an error.
int
get_utc_offset(PyObject* obj, bool* has_offset, int64_t* offset_ticks)
{
    *has_offset = false;
    PyShRef tzinfo(PyObject_GetAttr(obj, PyWrpIdDateTime_Tzinfo));
    if (!tzinfo)
        return 0;
    if (tzinfo.get() == Py_None)
        return 1;
    PyShRef offset(PyObject_CallMethodNoArgs(obj, PyWrpIdDateTime_UtcOffset));
    if (!offset)
        return 0;
    if (offset.get() == Py_None)
        return 1;
    if (!PyDelta_Check(offset.get()))
        return marshal_fail_text(PyExc_TypeError, "instance utcoffset() return wrong value");
    if (!delta_to_ticks(offset.get(), offset_ticks)) {
        PyErr_Clear();
        return marshal_fail_text(PyExc_OverflowError, "value too large or too small utc offset");
    }
    *has_offset = true;
    return 1;
}

PyDateTimeConvInfo
fields_of_datetime(PyObject* obj)
{
    return PyDateTimeConvInfo{
        0,
        static_cast<uint32_t>(PyDateTime_GET_YEAR(obj)),
        static_cast<uint32_t>(PyDateTime_GET_MONTH(obj)),
        static_cast<uint32_t>(PyDateTime_GET_DAY(obj)),
        static_cast<uint32_t>(PyDateTime_DATE_GET_HOUR(obj)),
        static_cast<uint32_t>(PyDateTime_DATE_GET_MINUTE(obj)),
        static_cast<uint32_t>(PyDateTime_DATE_GET_SECOND(obj)),
        static_cast<uint32_t>(PyDateTime_DATE_GET_MICROSECOND(obj)),
    };
}

int64_t
time_of_day_ticks(PyObject* obj)
{
    return PyDateTime_TIME_GET_HOUR(obj) * kTicksPerHour + PyDateTime_TIME_GET_MINUTE(obj) * kTicksPerMinute +
           PyDateTime_TIME_GET_SECOND(obj) * kTicksPerSecond +
           int64_t(PyDateTime_TIME_GET_MICROSECOND(obj)) * kTicksPerMicrosecond;
}

// Wall-clock ticks of a datetime; 1, or 0 with OverflowError.
int
wall_ticks_of_datetime(PyObject* obj, int64_t* ticks)
{
    if (!py_to_clr_date_to_ticks_non_kind(fields_of_datetime(obj), ticks))
        return fail_datetime_range();
    return 1;
}

// A datetime as DateTime; 1 naive, 2 aware, 0 with an error.
int
datetime_to_record(PyObject* obj, PyDateTimeArg* out)
{
    int64_t wall;
    if (!wall_ticks_of_datetime(obj, &wall))
        return 0;
    bool aware;
    int64_t offset;
    if (!get_utc_offset(obj, &aware, &offset))
        return 0;
    if (!aware) {
        out->ticks_and_kind = static_cast<uint64_t>(wall);
        out->offset = 0;
        return 1;
    }
    int64_t utc = wall - offset;
    if (utc < 0 || utc >= kDateTimeTicksEnd)
        return fail_datetime_range();
    out->ticks_and_kind = static_cast<uint64_t>(utc) | kKindUtc;
    out->offset = offset;
    return 2;
}

// A date as midnight, unspecified; 1, or 0 with an error.
int
date_to_record(PyObject* obj, PyDateTimeArg* out)
{
    PyDateTimeConvInfo info{0,
                            static_cast<uint32_t>(PyDateTime_GET_YEAR(obj)),
                            static_cast<uint32_t>(PyDateTime_GET_MONTH(obj)),
                            static_cast<uint32_t>(PyDateTime_GET_DAY(obj)),
                            0, 0, 0, 0};
    int64_t ticks;
    if (!py_to_clr_date_to_ticks_non_kind(info, &ticks))
        return fail_datetime_range();
    out->ticks_and_kind = static_cast<uint64_t>(ticks);
    out->offset = 0;
    return 1;
}

// A time as its time of day; 1 naive (written only when `write_naive`), 2 aware (UTC time
// of day, wrapped into one day), 0 with an error.
int
time_to_record(PyObject* obj, PyDateTimeArg* out, bool write_naive)
{
    bool aware;
    int64_t offset;
    if (!get_utc_offset(obj, &aware, &offset))
        return 0;
    int64_t tod = time_of_day_ticks(obj);
    if (!aware) {
        if (write_naive) {
            out->ticks_and_kind = static_cast<uint64_t>(tod);
            out->offset = 0;
        }
        return 1;
    }
    int64_t utc = ((tod - offset) % kTicksPerDay + kTicksPerDay) % kTicksPerDay;
    out->ticks_and_kind = static_cast<uint64_t>(utc) | kKindUtc;
    out->offset = offset;
    return 2;
}

// New datetime of the broken-down fields in zone `tz` (borrowed; None for naive).
PyObject*
create_py_datetime_from_zone(const PyDateTimeConvInfo& info, PyObject* tz)
{
    return PyDateTimeAPI->DateTime_FromDateAndTime(
        static_cast<int>(info.year), static_cast<int>(info.month), static_cast<int>(info.day),
        static_cast<int>(info.hour), static_cast<int>(info.minute), static_cast<int>(info.second),
        static_cast<int>(info.microsecond), tz, PyDateTimeAPI->DateTimeType);
}

// New timezone of a fixed offset, named or not (`name` borrowed, may be NULL).
PyObject*
create_py_timezone(int64_t offset_ticks, PyObject* name)
{
    PyShRef delta(fn_conv_clr_timespan_to_py_datetimedelta(offset_ticks));
    if (!delta)
        return nullptr;
    return PyDateTimeAPI->TimeZone_FromTimeZone(delta.get(), name);
}

// New datetime of the broken-down fields with a fixed offset.
PyObject*
create_py_datetime_from_tz_ticks(const PyDateTimeConvInfo& info, int64_t offset_ticks)
{
    PyShRef tz(create_py_timezone(offset_ticks, nullptr));
    if (!tz)
        return nullptr;
    return create_py_datetime_from_zone(info, tz.get());
}

}  // namespace

int
fn_conv_py_datetimedelta_to_clr_timespan(PyObject* obj, int64_t* ticks)
{
    if (!marshal_datetime_api())
        return 0;
    if (!PyDelta_Check(obj))
        return marshal_fail_typename(PyExc_TypeError, "can't build TimeSpan from '%s'", obj);
    return delta_to_ticks(obj, ticks);
}

int
fn_read_py_datetimedelta(PyObject* obj, int64_t* ticks)
{
    return fn_conv_py_datetimedelta_to_clr_timespan(obj, ticks);
}

PyObject*
fn_conv_clr_timespan_to_py_datetimedelta(int64_t ticks)
{
    if (!marshal_datetime_api())
        return nullptr;
    // Truncating division throughout; the constructor normalises mixed signs.
    int days = static_cast<int>(ticks / kTicksPerDay);
    int seconds = static_cast<int>((ticks / kTicksPerSecond) % 86'400);
    int microseconds = static_cast<int>((ticks / kTicksPerMicrosecond) % 1'000'000);
    return PyDateTimeAPI->Delta_FromDelta(days, seconds, microseconds, 1, PyDateTimeAPI->DeltaType);
}

PyObject*
fn_write_py_datetimedelta(int64_t ticks)
{
    return fn_conv_clr_timespan_to_py_datetimedelta(ticks);
}

int
fn_conv_py_datetime_to_clr_datetime(PyObject* obj, PyDateTimeArg* out)
{
    if (!marshal_datetime_api())
        return 0;
    if (PyDateTime_Check(obj))
        return datetime_to_record(obj, out) != 0;
    if (PyDate_Check(obj))
        return date_to_record(obj, out);
    if (PyTime_Check(obj))
        return time_to_record(obj, out, false) != 0;
    return marshal_fail_typename(PyExc_TypeError, kMsgCantBuildDateTime, obj);
}

int
fn_conv_py_datetime_to_clr_datetimeoffset(PyObject* obj, PyDateTimeArg* out)
{
    if (!marshal_datetime_api())
        return 0;
    bool aware;
    int64_t offset;
    if (PyDateTime_Check(obj)) {
        int64_t wall;
        if (!get_utc_offset(obj, &aware, &offset))
            return 0;
        if (!aware)
            return marshal_fail_text(PyExc_ValueError, "The tzinfo property of a given datetime should not be None");
        if (!wall_ticks_of_datetime(obj, &wall))
            return 0;
        int64_t utc = wall - offset;
        if (utc < 0 || utc >= kDateTimeTicksEnd)
            return fail_datetime_range();
        out->ticks_and_kind = static_cast<uint64_t>(wall);
        out->offset = offset;
        return 1;
    }
    if (PyTime_Check(obj)) {
        if (!get_utc_offset(obj, &aware, &offset))
            return 0;
        if (!aware)
            return marshal_fail_text(PyExc_ValueError, "The tzinfo property of a given time should not be None");
        out->ticks_and_kind = static_cast<uint64_t>(time_of_day_ticks(obj));
        out->offset = offset;
        return 1;
    }
    return marshal_fail_typename(PyExc_TypeError, kMsgCantBuildDateTime, obj);
}

PyObject*
fn_conv_clr_datetime_to_py_datetime(const PyDateTimeArg* value)
{
    if (!marshal_datetime_api())
        return nullptr;
    PyDateTimeConvInfo info;
    clr_to_py_date_assign_from_ticks(value->ticks_and_kind, &info);
    switch (info.kind) {
    case DateTimeKind_Unspecified:
        return create_py_datetime_from_zone(info, Py_None);
    case DateTimeKind_Utc:
        return create_py_datetime_from_zone(info, PyDateTimeAPI->TimeZone_UTC);
    default:
        return create_py_datetime_from_tz_ticks(info, value->offset);
    }
}

PyObject*
fn_conv_clr_datetimeoffset_to_py_datetime(const PyDateTimeArg* value)
{
    if (!marshal_datetime_api())
        return nullptr;
    PyDateTimeConvInfo info;
    clr_to_py_date_assign_from_ticks(value->ticks_and_kind, &info);
    return create_py_datetime_from_tz_ticks(info, value->offset);
}

int
fn_read_py_vers_datetime(PyObject* obj, PyDateTimeArg* out)
{
    if (!marshal_datetime_api())
        return 0;
    if (!PyDateTime_Check(obj))
        return marshal_fail_typename(PyExc_TypeError, kMsgCantBuildDateTime, obj);
    return datetime_to_record(obj, out);
}

int
fn_read_py_vers_date(PyObject* obj, PyDateTimeArg* out)
{
    if (!marshal_datetime_api())
        return 0;
    // A datetime is a date too; its time of day is not thrown away.
    if (PyDateTime_Check(obj))
        return datetime_to_record(obj, out);
    if (!PyDate_Check(obj))
        return marshal_fail_typename(PyExc_TypeError, kMsgCantBuildDateTime, obj);
    return date_to_record(obj, out);
}

int
fn_read_py_vers_time(PyObject* obj, PyDateTimeArg* out)
{
    if (!marshal_datetime_api())
        return 0;
    if (!PyTime_Check(obj))
        return marshal_fail_typename(PyExc_TypeError, kMsgCantBuildDateTime, obj);
    return time_to_record(obj, out, true);
}

PyObject*
fn_write_py_date_time(const PyDateTimeArg* value)
{
    return fn_conv_clr_datetime_to_py_datetime(value);
}

PyObject*
fn_write_py_date_time_offset(const PyDateTimeArg* value)
{
    return fn_conv_clr_datetimeoffset_to_py_datetime(value);
}

PyObject*
fn_write_py_timezone(const char16_t* name, int32_t name_length, int64_t offset_ticks)
{
    if (!marshal_datetime_api())
        return nullptr;
    PyShRef text;
    if (name_length >= 0) {
        text.reset(fn_conv_clr_string_to_py_string_value(name, name_length));
        if (!text)
            return nullptr;
    }
    return create_py_timezone(offset_ticks, text.get());
}
