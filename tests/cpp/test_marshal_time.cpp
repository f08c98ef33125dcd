// Dates, times and time spans against managed ticks. Expected ticks are computed by Python's
// own datetime arithmetic, independently of the calendar code under test.
#include <string>

#include "marshal/conv_time.h"
#include "marshal/ticks.h"
#include "tests/cpp/embedded_python.h"

namespace {

constexpr uint64_t kKindMask = uint64_t(3) << 62;

class MarshalTime : public PyTest {
protected:
    void SetUp() override {
        ns_ = py_namespace();
        ASSERT_TRUE(py_exec(ns_.get(),
                            "import random\n"
                            "from datetime import datetime, date, time, timedelta, timezone\n"
                            "EPOCH = datetime(1, 1, 1)\n"
                            "def ticks(d):\n"
                            "    return ((d.replace(tzinfo=None) - EPOCH) // timedelta(microseconds=1)) * 10\n"
                            "plus1 = timezone(timedelta(hours=1))\n"
                            "minus1 = timezone(timedelta(hours=-1))\n"
                            "class Odd(datetime):\n"
                            "    def utcoffset(self): return 5\n"));
    }
    PyShRef value(const char* expr) { return py_eval(ns_.get(), expr); }
    std::string failure() {
        PyShRef exc = take_error();
        return describe(exc.get());
    }
    int64_t py_ticks(PyObject* dt) {
        PyDict_SetItemString(ns_.get(), "_d", dt);
        PyShRef t = value("ticks(_d)");
        return t ? PyLong_AsLongLong(t.get()) : -1;
    }
    PyShRef ns_;
};

TEST_F(MarshalTime, CalendarArithmeticAgreesWithPythonOverTheWholeRange) {
    PyShRef dates = value("[datetime(1, 1, 1), datetime(9999, 12, 31, 23, 59, 59, 999999),"
                          " datetime(2000, 2, 29, 12), datetime(1900, 3, 1), datetime(2004, 12, 31),"
                          " datetime(400, 12, 31, 1, 2, 3, 4), datetime(1600, 12, 31)] +"
                          " [EPOCH + timedelta(microseconds=r.randrange(315537897600000000))"
                          "  for r in [random.Random(11)] for _ in range(2000)]");
    ASSERT_TRUE(dates);
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(dates.get()); ++i) {
        PyObject* dt = PyList_GET_ITEM(dates.get(), i);
        PyDateTimeArg arg{};
        ASSERT_EQ(fn_conv_py_datetime_to_clr_datetime(dt, &arg), 1) << py_str(dt);
        int64_t expected = py_ticks(dt);
        ASSERT_EQ(static_cast<int64_t>(arg.ticks_and_kind), expected) << py_str(dt);

        // Back again, with sub-microsecond ticks that must be dropped.
        PyDateTimeArg back{arg.ticks_and_kind + 7, 0};
        PyShRef again(fn_conv_clr_datetime_to_py_datetime(&back));
        ASSERT_TRUE(again) << py_str(dt);
        EXPECT_EQ(PyObject_RichCompareBool(again.get(), dt, Py_EQ), 1) << py_str(dt) << " vs " << py_str(again.get());
    }
}

TEST_F(MarshalTime, BrokenDownDatesAreValidated) {
    int64_t ticks = 0;
    EXPECT_FALSE(py_to_clr_date_to_ticks_non_kind({0, 1900, 2, 29, 0, 0, 0, 0}, &ticks));
    EXPECT_TRUE(py_to_clr_date_to_ticks_non_kind({0, 2000, 2, 29, 0, 0, 0, 0}, &ticks));
    EXPECT_FALSE(py_to_clr_date_to_ticks_non_kind({0, 2001, 13, 1, 0, 0, 0, 0}, &ticks));
    EXPECT_FALSE(py_to_clr_date_to_ticks_non_kind({0, 2001, 4, 31, 0, 0, 0, 0}, &ticks));
    EXPECT_FALSE(py_to_clr_date_to_ticks_non_kind({0, 0, 1, 1, 0, 0, 0, 0}, &ticks));
    EXPECT_FALSE(py_to_clr_date_to_ticks_non_kind({0, 10000, 1, 1, 0, 0, 0, 0}, &ticks));
    // A leap second folds onto the 59th second.
    int64_t leap = 0, last = 0;
    ASSERT_TRUE(py_to_clr_date_to_ticks_non_kind({0, 2016, 12, 31, 23, 59, 60, 0}, &leap));
    ASSERT_TRUE(py_to_clr_date_to_ticks_non_kind({0, 2016, 12, 31, 23, 59, 59, 0}, &last));
    EXPECT_EQ(leap, last);

    PyDateTimeConvInfo info{};
    clr_to_py_date_assign_from_ticks((uint64_t(2) << 62) | uint64_t(kDateTimeTicksEnd - 1), &info);
    EXPECT_EQ(info.kind, 2u);
    EXPECT_EQ(info.year, 9999u);
    EXPECT_EQ(info.month, 12u);
    EXPECT_EQ(info.day, 31u);
    EXPECT_EQ(info.microsecond, 999999u);
}

TEST_F(MarshalTime, DateTimeLimitsAndKinds) {
    PyShRef last = value("datetime(9999, 12, 31, 23, 59, 59, 999999)");
    PyDateTimeArg arg{};
    ASSERT_EQ(fn_conv_py_datetime_to_clr_datetime(last.get(), &arg), 1);
    EXPECT_EQ(arg.ticks_and_kind, 3155378975999999990ull);

    PyShRef west = value("datetime(9999, 12, 31, 23, 59, 59, 999999, tzinfo=minus1)");
    EXPECT_EQ(fn_conv_py_datetime_to_clr_datetime(west.get(), &arg), 0);
    EXPECT_EQ(failure(), "OverflowError: value too large or too small for .Net DateTime");

    PyShRef east = value("datetime(2020, 5, 6, 7, 8, 9, tzinfo=plus1)");
    ASSERT_EQ(fn_conv_py_datetime_to_clr_datetime(east.get(), &arg), 1);
    EXPECT_EQ(arg.ticks_and_kind & kKindMask, uint64_t(1) << 62);
    PyShRef utc_wall = value("datetime(2020, 5, 6, 6, 8, 9)");
    EXPECT_EQ(static_cast<int64_t>(arg.ticks_and_kind & ~kKindMask), py_ticks(utc_wall.get()));

    PyShRef first_east = value("datetime(1, 1, 1, tzinfo=plus1)");
    EXPECT_EQ(fn_conv_py_datetime_to_clr_datetime(first_east.get(), &arg), 0);
    EXPECT_EQ(failure(), "OverflowError: value too large or too small for .Net DateTime");

    PyShRef day = value("date(2024, 2, 29)");
    ASSERT_EQ(fn_conv_py_datetime_to_clr_datetime(day.get(), &arg), 1);
    PyShRef midnight = value("datetime(2024, 2, 29)");
    EXPECT_EQ(static_cast<int64_t>(arg.ticks_and_kind), py_ticks(midnight.get()));

    PyShRef number = value("5");
    EXPECT_EQ(fn_conv_py_datetime_to_clr_datetime(number.get(), &arg), 0);
    EXPECT_EQ(failure(), "TypeError: can't build DateTime from 'int'");

    PyShRef odd = value("Odd(2020, 1, 1, tzinfo=plus1)");
    EXPECT_EQ(fn_conv_py_datetime_to_clr_datetime(odd.get(), &arg), 0);
    EXPECT_EQ(failure(), "TypeError: instance utcoffset() return wrong value");
}

TEST_F(MarshalTime, TimesOfDay) {
    PyDateTimeArg arg{12345, 678};
    PyShRef naive = value("time(10, 0)");
    ASSERT_EQ(fn_conv_py_datetime_to_clr_datetime(naive.get(), &arg), 1);
    EXPECT_EQ(arg.ticks_and_kind, 12345u);  // the caller's value stays

    PyShRef aware = value("time(0, 30, tzinfo=plus1)");
    ASSERT_EQ(fn_conv_py_datetime_to_clr_datetime(aware.get(), &arg), 1);
    EXPECT_EQ(arg.ticks_and_kind, (uint64_t(1) << 62) | uint64_t(23 * kTicksPerHour + 30 * kTicksPerMinute));

    ASSERT_EQ(fn_read_py_vers_time(naive.get(), &arg), 1);
    EXPECT_EQ(arg.ticks_and_kind, uint64_t(10 * kTicksPerHour));
    EXPECT_EQ(fn_read_py_vers_time(aware.get(), &arg), 2);
}

TEST_F(MarshalTime, DateTimeOffsetsNeedAnOffset) {
    PyDateTimeArg arg{};
    PyShRef naive = value("datetime(2020, 1, 1)");
    EXPECT_EQ(fn_conv_py_datetime_to_clr_datetimeoffset(naive.get(), &arg), 0);
    EXPECT_EQ(failure(), "ValueError: The tzinfo property of a given datetime should not be None");
    PyShRef naive_time = value("time(1)");
    EXPECT_EQ(fn_conv_py_datetime_to_clr_datetimeoffset(naive_time.get(), &arg), 0);
    EXPECT_EQ(failure(), "ValueError: The tzinfo property of a given time should not be None");
    PyShRef day = value("date(2020, 1, 1)");
    EXPECT_EQ(fn_conv_py_datetime_to_clr_datetimeoffset(day.get(), &arg), 0);
    EXPECT_EQ(failure(), "TypeError: can't build DateTime from 'datetime.date'");

    PyShRef aware = value("datetime(2020, 1, 1, 12, tzinfo=minus1)");
    ASSERT_EQ(fn_conv_py_datetime_to_clr_datetimeoffset(aware.get(), &arg), 1);
    EXPECT_EQ(static_cast<int64_t>(arg.ticks_and_kind), py_ticks(aware.get()));  // wall clock, kind 0
    EXPECT_EQ(arg.offset, -kTicksPerHour);

    PyShRef back(fn_conv_clr_datetimeoffset_to_py_datetime(&arg));
    ASSERT_TRUE(back);
    EXPECT_EQ(PyObject_RichCompareBool(back.get(), aware.get(), Py_EQ), 1);
    PyShRef offset(PyObject_CallMethod(back.get(), "utcoffset", nullptr));
    EXPECT_EQ(py_str(offset.get()), "-1 day, 23:00:00");
}

TEST_F(MarshalTime, ManagedKindsComeBackWithTheirZones) {
    PyShRef wall = value("datetime(2021, 6, 1, 8, 15)");
    uint64_t ticks = static_cast<uint64_t>(py_ticks(wall.get()));

    PyDateTimeArg unspecified{ticks, 0};
    PyShRef naive(fn_write_py_date_time(&unspecified));
    EXPECT_EQ(py_str(naive.get()), "2021-06-01 08:15:00");

    PyDateTimeArg utc{ticks | (uint64_t(1) << 62), 0};
    PyShRef in_utc(fn_write_py_date_time(&utc));
    EXPECT_EQ(py_str(in_utc.get()), "2021-06-01 08:15:00+00:00");

    PyDateTimeArg local{ticks | (uint64_t(2) << 62), 2 * kTicksPerHour};
    PyShRef in_local(fn_write_py_date_time(&local));
    EXPECT_EQ(py_str(in_local.get()), "2021-06-01 08:15:00+02:00");

    PyDateTimeArg offset{ticks, -(5 * kTicksPerHour + 30 * kTicksPerMinute)};
    PyShRef with_offset(fn_write_py_date_time_offset(&offset));
    EXPECT_EQ(py_str(with_offset.get()), "2021-06-01 08:15:00-05:30");
}

TEST_F(MarshalTime, ElementReadersTellNaiveFromAware) {
    PyDateTimeArg arg{};
    PyShRef naive = value("datetime(2020, 1, 1)");
    PyShRef aware = value("datetime(2020, 1, 1, tzinfo=plus1)");
    PyShRef day = value("date(2020, 1, 1)");
    EXPECT_EQ(fn_read_py_vers_datetime(naive.get(), &arg), 1);
    EXPECT_EQ(fn_read_py_vers_datetime(aware.get(), &arg), 2);
    EXPECT_EQ(arg.offset, kTicksPerHour);
    EXPECT_EQ(fn_read_py_vers_date(day.get(), &arg), 1);
    EXPECT_EQ(static_cast<int64_t>(arg.ticks_and_kind), py_ticks(naive.get()));
    EXPECT_EQ(fn_read_py_vers_datetime(day.get(), &arg), 0);
    EXPECT_EQ(failure(), "TypeError: can't build DateTime from 'datetime.date'");
}

TEST_F(MarshalTime, TimeSpanLimits) {
    int64_t ticks = 0;
    PyShRef top = value("timedelta(microseconds=922337203685477580)");
    ASSERT_EQ(fn_conv_py_datetimedelta_to_clr_timespan(top.get(), &ticks), 1);
    EXPECT_EQ(ticks, 9223372036854775800);
    PyShRef bottom = value("-timedelta(microseconds=922337203685477580)");
    ASSERT_EQ(fn_read_py_datetimedelta(bottom.get(), &ticks), 1);
    EXPECT_EQ(ticks, -9223372036854775800);
    for (const char* beyond : {"timedelta(microseconds=922337203685477581)", "-timedelta(microseconds=922337203685477581)",
                               "timedelta.max", "timedelta.min"}) {
        PyShRef obj = value(beyond);
        EXPECT_EQ(fn_conv_py_datetimedelta_to_clr_timespan(obj.get(), &ticks), 0) << beyond;
        EXPECT_EQ(failure(), "OverflowError: value too large or too small for .Net TimeSpan") << beyond;
    }
    PyShRef mixed = value("timedelta(days=-1, seconds=1, microseconds=5)");
    ASSERT_EQ(fn_conv_py_datetimedelta_to_clr_timespan(mixed.get(), &ticks), 1);
    EXPECT_EQ(ticks, (-86399 * int64_t(1000000) + 5) * 10);
    PyShRef number = value("1.5");
    EXPECT_EQ(fn_conv_py_datetimedelta_to_clr_timespan(number.get(), &ticks), 0);
    EXPECT_EQ(failure(), "TypeError: can't build TimeSpan from 'float'");
}

TEST_F(MarshalTime, TimeSpansComeBackTruncatedToMicroseconds) {
    const struct {
        int64_t ticks;
        const char* expected;
    } cases[] = {
        {15, "timedelta(microseconds=1)"},
        {-15, "timedelta(microseconds=-1)"},
        {kTicksPerDay + 10, "timedelta(days=1, microseconds=1)"},
        {INT64_MIN, "timedelta(microseconds=-922337203685477580)"},
        {INT64_MAX, "timedelta(microseconds=922337203685477580)"},
    };
    for (const auto& c : cases) {
        PyShRef got(fn_write_py_datetimedelta(c.ticks));
        PyShRef expected = value(c.expected);
        ASSERT_TRUE(got);
        EXPECT_EQ(PyObject_RichCompareBool(got.get(), expected.get(), Py_EQ), 1)
            << c.ticks << " gave " << py_str(got.get());
    }
}

TEST_F(MarshalTime, TimeZonesWithAndWithoutNames) {
    const char16_t name[] = u"CET";
    PyShRef named(fn_write_py_timezone(name, 3, kTicksPerHour));
    ASSERT_TRUE(named);
    EXPECT_EQ(py_str(named.get()), "CET");
    PyShRef anonymous(fn_write_py_timezone(nullptr, -1, -kTicksPerHour));
    ASSERT_TRUE(anonymous);
    EXPECT_EQ(py_str(anonymous.get()), "UTC-01:00");
    PyShRef too_far(fn_write_py_timezone(nullptr, -1, kTicksPerDay));
    EXPECT_EQ(too_far.get(), nullptr);
    EXPECT_EQ(PyErr_ExceptionMatches(PyExc_ValueError), 1);
    PyErr_Clear();
}

}  // namespace
