// datetime, date, time, timedelta and timezone against managed DateTime, DateTimeOffset and
// TimeSpan. Every value crosses as 100-nanosecond ticks.
#pragma once

#include <Python.h>
#include <cstdint>

#include "marshal/records.h"

// timedelta (or subclass) to TimeSpan ticks; 1, or 0 with TypeError / OverflowError.
int fn_conv_py_datetimedelta_to_clr_timespan(PyObject* obj, int64_t* ticks);
int fn_read_py_datetimedelta(PyObject* obj, int64_t* ticks);
// New timedelta from TimeSpan ticks (sub-microsecond ticks dropped), or NULL.
PyObject* fn_conv_clr_timespan_to_py_datetimedelta(int64_t ticks);
PyObject* fn_write_py_datetimedelta(int64_t ticks);

// datetime, date or time to DateTime. Naive values are unspecified (kind 0); aware ones are
// UTC (kind 1) with `offset` holding their UTC offset. A naive time produces no ticks and
// leaves *out as the caller initialised it. 1, or 0 with an error.
int fn_conv_py_datetime_to_clr_datetime(PyObject* obj, PyDateTimeArg* out);
// An aware datetime or time to DateTimeOffset: wall-clock ticks (kind 0) and the offset.
// 1, or 0 with an error.
int fn_conv_py_datetime_to_clr_datetimeoffset(PyObject* obj, PyDateTimeArg* out);
// New datetime: naive for kind 0, UTC for kind 1, fixed offset from the record for kinds 2, 3.
PyObject* fn_conv_clr_datetime_to_py_datetime(const PyDateTimeArg* value);
// New aware datetime with the record's fixed offset.
PyObject* fn_conv_clr_datetimeoffset_to_py_datetime(const PyDateTimeArg* value);

// Element readers for values the managed side classified as datetime / date / time: the
// DateTime record as above (a naive time gives its time of day), and 1 for a naive value or
// 2 for an aware one; 0 with an error.
int fn_read_py_vers_datetime(PyObject* obj, PyDateTimeArg* out);
int fn_read_py_vers_date(PyObject* obj, PyDateTimeArg* out);
int fn_read_py_vers_time(PyObject* obj, PyDateTimeArg* out);

// Element writers: the same as fn_conv_clr_datetime(offset)_to_py_datetime.
PyObject* fn_write_py_date_time(const PyDateTimeArg* value);
PyObject* fn_write_py_date_time_offset(const PyDateTimeArg* value);
// New datetime.timezone(timedelta(offset_ticks), name); the name is absent for a negative
// length, else `name_length` UTF-16 units.
PyObject* fn_write_py_timezone(const char16_t* name, int32_t name_length, int64_t offset_ticks);
