"""Dates, times, decimals, GUIDs, versions, object values, by-reference parameters and regular
expressions crossing generated bindings through real managed calls, with the exact texts of the
refusals and the tick arithmetic checked against what the managed side reports."""

import array
import datetime as dt
import decimal
import re
import uuid

import pytest

from binding_support import load_bindtest

bt = load_bindtest()
M = bt.Moments
V = bt.Variants
B = bt.ByRef
P = bt.Patterns

UTC = dt.timezone.utc
LAST = dt.datetime(9999, 12, 31, 23, 59, 59, 999999)
LAST_TICKS = 3155378975999999990
TICKS_PER_HOUR = 36_000_000_000
MAX_MICROSECONDS = 922337203685477580


def raised(call, *args):
    with pytest.raises((TypeError, ValueError, OverflowError)) as info:
        call(*args)
    return type(info.value).__name__, str(info.value)


class TestDateTime:
    def test_naive_values_arrive_unspecified_and_aware_ones_as_utc(self):
        assert M.ticks(dt.datetime(2001, 1, 1)) == "631139040000000000|Unspecified"
        plus_two = dt.datetime(2001, 1, 1, 2, tzinfo=dt.timezone(dt.timedelta(hours=2)))
        assert M.ticks(plus_two) == "631139040000000000|Utc"

    def test_the_last_microsecond_of_year_9999_and_one_hour_beyond_it(self):
        assert M.ticks(LAST) == f"{LAST_TICKS}|Unspecified"
        ahead = LAST.replace(tzinfo=dt.timezone(dt.timedelta(hours=1)))
        assert M.ticks(ahead) == f"{LAST_TICKS - TICKS_PER_HOUR}|Utc"
        behind = LAST.replace(tzinfo=dt.timezone(dt.timedelta(hours=-1)))
        assert raised(M.date_time, behind) == ("OverflowError", "value too large or too small for .Net DateTime")

    def test_kinds_come_back_naive_utc_or_with_a_fixed_offset(self):
        assert M.date_time_from_ticks(LAST_TICKS, 0) == LAST
        assert M.date_time_from_ticks(LAST_TICKS, 1) == LAST.replace(tzinfo=UTC)
        local = M.date_time_from_ticks(0, 2)
        assert local.tzinfo is not None and local.replace(tzinfo=None) == dt.datetime(1, 1, 1)

    def test_round_trips_keep_microseconds_and_awareness(self):
        for value in (dt.datetime(1, 1, 1), dt.datetime(2024, 2, 29, 12, 30, 45, 123456), LAST.replace(tzinfo=UTC)):
            assert M.date_time(value) == value
            assert (M.date_time(value).tzinfo is None) == (value.tzinfo is None)

    def test_a_date_is_its_midnight_and_other_types_are_refused(self):
        assert M.ticks(dt.date(2000, 1, 1)) == "630822816000000000|Unspecified"
        assert raised(M.date_time, "2000-01-01") == ("TypeError", "can't build DateTime from 'str'")
        assert raised(M.date_time, None) == ("TypeError", "can't build DateTime from 'NoneType'")

    def test_times_of_day_carry_no_date_and_wrap_around_midnight_by_their_offset(self):
        assert M.ticks(dt.time(1, 2)) == "0|Unspecified"  # a naive time gives no ticks at all
        plus_two = dt.time(1, 2, tzinfo=dt.timezone(dt.timedelta(hours=2)))
        assert M.ticks(plus_two) == f"{23 * TICKS_PER_HOUR + 2 * 600_000_000}|Utc"
        minus_two = dt.time(23, tzinfo=dt.timezone(dt.timedelta(hours=-2)))
        assert M.ticks(minus_two) == f"{TICKS_PER_HOUR}|Utc"
        assert raised(M.date_time_offset, dt.time(1)) == ("ValueError", "The tzinfo property of a given time should not be None")

    def test_offsets_need_an_aware_value_and_keep_wall_clock_and_offset(self):
        value = dt.datetime(2020, 5, 6, 7, 8, 9, 10, tzinfo=dt.timezone(dt.timedelta(hours=-5, minutes=-30)))
        assert M.date_time_offset(value) == value
        assert M.date_time_offset(value).utcoffset() == dt.timedelta(hours=-5, minutes=-30)
        assert M.offset_ticks(value) == f"{M.ticks(value.replace(tzinfo=None)).split('|')[0]}|{-(5 * 60 + 30) * 600_000_000}"
        assert raised(M.date_time_offset, dt.datetime(2020, 1, 1)) == (
            "ValueError", "The tzinfo property of a given datetime should not be None")
        assert raised(M.date_time_offset, LAST.replace(tzinfo=dt.timezone(dt.timedelta(hours=-1))))[0] == "OverflowError"


class TestTimeSpan:
    def test_the_limits_convert_and_one_microsecond_more_does_not(self):
        assert M.span_ticks(dt.timedelta(microseconds=MAX_MICROSECONDS)) == MAX_MICROSECONDS * 10
        assert M.span_ticks(dt.timedelta(microseconds=-MAX_MICROSECONDS)) == -MAX_MICROSECONDS * 10
        for beyond in (MAX_MICROSECONDS + 1, -MAX_MICROSECONDS - 1):
            assert raised(M.time_span, dt.timedelta(microseconds=beyond)) == (
                "OverflowError", "value too large or too small for .Net TimeSpan")

    def test_sub_microsecond_ticks_are_dropped_towards_zero(self):
        assert M.from_ticks(15) == dt.timedelta(microseconds=1)
        assert M.from_ticks(-15) == dt.timedelta(microseconds=-1)
        assert M.from_ticks(9) == dt.timedelta(0)

    def test_negative_days_carry_their_sign_into_the_ticks(self):
        assert M.span_ticks(dt.timedelta(days=-1, microseconds=3)) == -864_000_000_000 + 30
        assert M.time_span(dt.timedelta(days=-3, seconds=5)) == dt.timedelta(days=-3, seconds=5)
        assert raised(M.time_span, 5) == ("TypeError", "can't build TimeSpan from 'int'")


class TestDecimal:
    @pytest.mark.parametrize("text", ["0", "12.50", "-0.0001", "79228162514264337593543950335",
                                      "-7.9228162514264337593543950335", "0.0000000000000000000000000001"])
    def test_values_round_trip_with_their_scale(self, text):
        back = M.decimal(decimal.Decimal(text))
        assert back == decimal.Decimal(text)
        assert back.as_tuple().exponent == decimal.Decimal(text).as_tuple().exponent  # the scale survives
        assert M.decimal_text(back) == text.lstrip("-").join(["-" if text.startswith("-") else "", ""])
        assert str(M.parse_decimal("12.50")) == "12.50"

    def test_too_many_places_round_and_too_large_or_not_a_number_fail(self):
        assert M.decimal(decimal.Decimal("1.23456789012345678901234567890123")) == decimal.Decimal(
            "1.2345678901234567890123456789")
        assert raised(M.decimal, decimal.Decimal("79228162514264337593543950336")) == (
            "OverflowError", "value too large for .Net 'Decimal'")
        for nan in ("NaN", "Infinity", "-Infinity"):
            assert raised(M.decimal, decimal.Decimal(nan)) == ("ValueError", "value is not a number")
        assert raised(M.decimal, 1.5) == ("TypeError", "can't build Decimal from 'float'")

    def test_a_decimal_tuple_is_taken_directly(self):
        assert M.decimal(decimal.Decimal("-3.25").as_tuple()) == decimal.Decimal("-3.25")


class TestGuidAndVersion:
    def test_uuids_round_trip_and_match_the_managed_text(self):
        for value in (uuid.uuid4(), uuid.UUID(int=0), uuid.UUID("00112233-4455-6677-8899-aabbccddeeff")):
            assert M.guid(value) == value and M.guid_text(value) == str(value)

    def test_versions_of_two_to_four_parts_and_none(self):
        assert [M.version(v) for v in ((1, 2), (1, 2, 3), (1, 2, 3, 4), None)] == [(1, 2), (1, 2, 3), (1, 2, 3, 4), None]
        assert M.version_text((10, 0, 7)) == "10.0.7"

    @pytest.mark.parametrize("value,expected", [
        ((1,), ("ValueError", "a version number tuple must contains at least 2 and at most 4 elements (1 given)")),
        ((1, 2, 3, 4, 5), ("ValueError", "a version number tuple must contains at least 2 and at most 4 elements (5 given)")),
        ((1, -2), ("ValueError", "an element of a version number tuple must be greater or equal zero, not -2")),
        ((1, "2"), ("ValueError", "an element of a version number tuple must be integer, not str")),
        ([1, 2], ("TypeError", "a tuple or None is required, not 'list'")),
    ])
    def test_malformed_versions(self, value, expected):
        assert raised(M.version, value) == expected


class TestNullablesPropertiesAndStatics:
    def test_none_is_no_value_both_ways(self):
        assert M.maybe_date_time(None) is None and M.maybe_int32(None) is None and M.maybe_time_span(None) is None
        assert M.maybe_date_time(LAST) == LAST and M.maybe_int32(-7) == -7
        assert M.maybe_decimal(decimal.Decimal("0.5")) == decimal.Decimal("0.5")
        assert raised(M.maybe_int32, "x") == ("TypeError", "integer argument expected, got 'str'")

    def test_properties_of_every_kind_read_and_write(self):
        s = bt.Stamped()
        assert s.created == dt.datetime(2024, 2, 29, 13, 14, 15, 123456, tzinfo=UTC)
        assert s.seen.utcoffset() == dt.timedelta(hours=-5)
        assert (s.duration, str(s.amount), s.release, s.printed) == (dt.timedelta(minutes=90), "12.50", (1, 2, 3), None)
        assert s.id == uuid.UUID("00112233-4455-6677-8899-aabbccddeeff")
        s.printed = dt.datetime(2001, 2, 3)
        s.amount = decimal.Decimal("-1.5")
        s.release = (4, 5, 6, 7)
        assert (s.printed, s.amount, s.release) == (dt.datetime(2001, 2, 3), decimal.Decimal("-1.5"), (4, 5, 6, 7))
        s.printed = None
        assert s.printed is None
        with pytest.raises(TypeError, match="can't build Decimal from 'str'"):
            s.amount = "1"

    def test_static_values_come_back_as_python_values(self):
        assert bt.Stamped.epoch == dt.datetime(1970, 1, 1, tzinfo=UTC)
        assert bt.Stamped.rate == decimal.Decimal("0.25")
        assert bt.Stamped.shared == 3
        marker = bt.Stamped.marker
        assert str(marker.get_type()) == "Quorix.BindTest.Node"
        bt.Stamped.set_shared(dt.timedelta(seconds=5))
        assert bt.Stamped.shared == dt.timedelta(seconds=5)


class TestVariants:
    @pytest.mark.parametrize("value,described", [
        (True, "Boolean:True"),
        (1, "Int32:1"),
        (1.0, "Double:1"),
        (1 << 40, "Int64:1099511627776"),
        ((1 << 64) - 1, "UInt64:18446744073709551615"),
        ("x", "String:x"),
        (b"ab", "Byte[]:61-62"),
        (bytearray(b"\x01"), "Byte[]:01"),
        (decimal.Decimal("1.50"), "Decimal:1.50"),
        (decimal.Decimal("2.5").as_tuple(), "Decimal:2.5"),
        (dt.datetime(2020, 1, 2, 3, 4, 5), "DateTime:01/02/2020 03:04:05"),
        (dt.datetime(2020, 1, 2, 3, tzinfo=dt.timezone(dt.timedelta(hours=1))), "DateTime:01/02/2020 02:00:00"),
        (dt.date(2020, 1, 2), "DateTime:01/02/2020 00:00:00"),
        (dt.time(1, 2, 3), "TimeSpan:01:02:03"),
        (dt.timedelta(days=1, seconds=1), "TimeSpan:1.00:00:01"),
        (uuid.UUID(int=1), "Guid:00000000-0000-0000-0000-000000000001"),
        ([1, "a", [2.5]], "List`1[Int32:1,String:a,List`1[Double:2.5]]"),
        ((None, True), "Object[][null,Boolean:True]"),
        (None, "null"),
    ])
    def test_each_python_kind_becomes_its_managed_value(self, value, described):
        assert V.describe(value) == described

    def test_wrapped_objects_pass_as_themselves(self):
        node = bt.Node("n")
        assert V.describe(node).startswith("Node:")
        assert V.describe(bt.Point(1, 2)) == "Point:(1, 2)"

    def test_an_array_is_not_bytes_and_unknown_objects_are_refused(self):
        assert raised(V.describe, array.array("B", b"ab")) == ("TypeError", "unknown variant type")
        assert raised(V.describe, object()) == ("TypeError", "unknown variant type")
        # an error inside a list item is the item's own, not a managed one
        assert raised(V.describe, [1, decimal.Decimal("NaN")]) == ("ValueError", "value is not a number")

    def test_results_come_back_as_python_values_or_wrappers(self):
        for value in (True, 7, 2.5, "s", decimal.Decimal("1.25"), dt.datetime(2020, 1, 1), dt.timedelta(3),
                      uuid.UUID(int=5), None):
            back = V.echo(value)
            assert back == value and type(back) is type(value)
        assert V.echo(b"x") == bytearray(b"x")
        assert str(V.echo(V.make_point(1, 2))) == "(1, 2)"
        node = V.make_node("n")
        assert V.echo(node) == node


class TestByReference:
    def test_ref_values_go_in_from_item_0_and_come_back_into_it(self):
        values = [21, "keep"]
        B.twice(values)
        assert values == [42, "keep"]
        when = [dt.datetime(2020, 1, 1)]
        B.later(when, dt.timedelta(hours=1))
        assert when == [dt.datetime(2020, 1, 1, 1)]
        nodes = [bt.Node("a")]
        B.rename(nodes, "b")
        assert nodes[0].name == "b"

    def test_out_lists_given_empty_or_with_items(self):
        out = []
        assert B.try_parse("42", out) is True and out == [42]
        out = ["x", "y"]
        assert B.try_parse("nope", out) is False and out == [0, "y"]
        head, tail = [], []
        B.split("a b c", head, tail)
        assert (head, tail) == (["a"], ["b c"])
        colors, boxed, nothing = [], [], []
        B.pick(colors)
        B.box(decimal.Decimal("2"), boxed)
        B.no_decimal(nothing)
        assert (colors, boxed, nothing) == ([bt.Color.BLUE], [decimal.Decimal("2")], [None])

    def test_only_exact_lists_are_taken(self):
        class Items(list):
            pass

        assert raised(B.twice, Items([1])) == ("TypeError", "argument should be list contains default value, not 'Items'")
        assert raised(B.twice, (1,)) == ("TypeError", "argument should be list contains default value, not 'tuple'")
        assert raised(B.twice, []) == ("TypeError", "argument should be list contains default value, not 'list'")
        assert raised(B.try_parse, "1", Items()) == ("TypeError", "argument should be empty list, not 'Items'")
        assert raised(B.try_parse, "1", None) == ("TypeError", "argument should be empty list, not 'NoneType'")

    def test_a_refused_in_value_leaves_the_list_alone(self):
        values = ["21"]
        assert raised(B.twice, values) == ("TypeError", "integer argument expected, got 'str'")
        assert values == ["21"]


class TestRegex:
    def test_patterns_and_strings_compile_with_their_flags(self):
        assert P.matches(re.compile(r"[a-c]+", re.IGNORECASE), "xAbCx") == "AbC"
        assert P.matches(r"\d+", "a1b22") == "1|22"
        assert P.options(re.compile("a", re.I | re.M | re.S | re.X)) == (
            "IgnoreCase, Multiline, Singleline, IgnorePatternWhitespace, CultureInvariant")
        assert P.matches(re.compile("^b", re.M), "a\nb") == "b"
        assert P.matches(re.compile("a.b", re.S), "a\nb") == "a\nb"
        assert P.matches(re.compile(r"a  b  # spaced", re.X), "ab") == "ab"

    def test_python_spellings_are_rewritten(self):
        pattern = re.compile(r"(?P<word>\w)(?P=word)\Z")
        assert P.pattern(pattern) == r"(?<word>\w)\k<word>\z"
        assert P.group_value(pattern, "xaa", "word") == "a"
        # \Z is the very end in Python: no match before a final newline
        assert P.matches(r"a\Z", "a\n") == ""
        assert P.matches("a{,2}", "aaa") == "aa|a|"
        assert P.pattern(r"[(?P<]\Z") == r"[(?P<]\z"
        assert P.replace(re.compile(r"(?P<n>\d)"), "a1", "<${n}>") == "a<1>"

    @pytest.mark.parametrize("pattern,what", [
        (re.compile("a", re.ASCII), "flag ASCII"),
        (re.compile(b"a"), None),
        (re.compile(r"a++"), "possessive quantifier"),
        (re.compile(r"\U0001F600"), "escape \\U"),
        (re.compile(r"\N{BULLET}"), "escape \\N"),
    ])
    def test_what_dotnet_cannot_honour_is_refused_by_name(self, pattern, what):
        if what is None:
            assert raised(P.pattern, pattern) == ("TypeError", "a bytes pattern cannot become a .NET Regex")
        else:
            assert raised(P.pattern, pattern) == ("ValueError", f"the regular expression {what} has no .NET equivalent")
        assert raised(P.pattern, 5) == ("TypeError", "can't build Regex from 'int'")
