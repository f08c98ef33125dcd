"""Values crossing generated bindings in both directions through real managed calls: every
scalar width at its limits, characters, strings and paths, byte buffers, enumerations and
bound objects, with the exact text of every refusal."""

import array
import pathlib

import pytest

from binding_support import load_bindtest

bt = load_bindtest()
Echo = bt.Echo


def refusal(call, *args):
    with pytest.raises((TypeError, OverflowError, BufferError)) as info:
        call(*args)
    return type(info.value).__name__, str(info.value)


SIGNED = [
    (Echo.s_byte, -(1 << 7), (1 << 7) - 1, "INT8"),
    (Echo.int16, -(1 << 15), (1 << 15) - 1, "INT16"),
    (Echo.int32, -(1 << 31), (1 << 31) - 1, "INT32"),
]
UNSIGNED = [
    (Echo.byte, (1 << 8) - 1, "UINT8"),
    (Echo.u_int16, (1 << 16) - 1, "UINT16"),
    (Echo.u_int32, (1 << 32) - 1, "UINT32"),
]


class TestIntegers:
    @pytest.mark.parametrize("echo,low,high,name", SIGNED)
    def test_signed_limits_cross_and_one_beyond_is_refused(self, echo, low, high, name):
        assert (echo(low), echo(high), echo(0)) == (low, high, 0)
        assert refusal(echo, high + 1) == ("OverflowError", f"value '{high + 1}' is out of the {name} range")
        assert refusal(echo, low - 1) == ("OverflowError", f"value '{low - 1}' is out of the {name} range")

    @pytest.mark.parametrize("echo,high,name", UNSIGNED)
    def test_unsigned_limits_cross_and_negatives_keep_the_interpreters_error(self, echo, high, name):
        assert (echo(0), echo(high)) == (0, high)
        assert refusal(echo, high + 1) == ("OverflowError", f"value '{high + 1}' is out of the {name} range")
        kind, _ = refusal(echo, -1)
        assert kind == "OverflowError"

    def test_sixty_four_bits_both_ways(self):
        assert Echo.int64(-(1 << 63)) == -(1 << 63)
        assert Echo.int64((1 << 63) - 1) == (1 << 63) - 1
        assert Echo.u_int64((1 << 64) - 1) == (1 << 64) - 1
        assert refusal(Echo.int64, 1 << 63)[0] == "OverflowError"
        assert refusal(Echo.u_int64, 1 << 64)[0] == "OverflowError"

    @pytest.mark.parametrize("value,type_name", [(True, "bool"), (1.0, "float"), ("1", "str"), (None, "NoneType")])
    def test_non_integers_are_named_in_the_refusal(self, value, type_name):
        assert refusal(Echo.int32, value) == ("TypeError", f"integer argument expected, got '{type_name}'")

    def test_enumeration_members_are_not_taken_for_integers(self):
        assert refusal(Echo.int32, bt.Color.DEEP_PURPLE) == ("TypeError", "integer argument expected, got 'Color'")


class TestOtherScalars:
    def test_bool_takes_only_bools(self):
        assert Echo.bool(True) is True and Echo.bool(False) is False
        assert refusal(Echo.bool, 1) == ("TypeError", "can't build bool from 'int'")

    def test_floats_round_to_single_precision_and_integers_widen(self):
        assert Echo.single(0.1) == pytest.approx(0.1, rel=1e-7) and Echo.single(0.1) != 0.1
        assert Echo.double(0.1) == 0.1
        assert Echo.double(3) == 3.0 and isinstance(Echo.double(3), float)
        assert Echo.single(1e300) == float("inf")
        assert refusal(Echo.double, "x") == ("TypeError", "numeric argument expected, got 'str'")

    def test_char_is_one_utf16_unit(self):
        assert Echo.char("é") == "é"
        assert Echo.char("\uffff") == "\uffff"
        for bad in ("ab", "", "\U0001F600"):
            assert refusal(Echo.char, bad) == ("TypeError", "string must contain one UTF-16 code unit")
        assert refusal(Echo.char, 65) == ("TypeError", "can't build Char from 'int'")


class TestStringsAndBuffers:
    @pytest.mark.parametrize("text", ["", "ascii", "latin-1 é", "ucs-2 \u20ac\u4e2d", "ucs-4 \U0001F600 mixed"])
    def test_every_storage_width_round_trips(self, text):
        assert Echo.string(text) == text

    def test_astral_characters_are_two_managed_units(self):
        assert Echo.utf16_length("\U0001F600") == 2
        assert Echo.utf16_length("a\u20ac") == 2

    def test_none_is_a_null_string_and_other_objects_are_refused(self):
        assert Echo.string(None) is None
        assert refusal(Echo.string, 1) == ("TypeError", "can't build String from 'int'")

    def test_only_file_and_folder_parameters_take_path_likes(self):
        assert Echo.file_name(pathlib.PurePosixPath("/tmp/out.docx")) == "/tmp/out.docx"
        assert Echo.join_path(pathlib.PurePosixPath("a"), pathlib.PurePosixPath("b")) == "a|b"
        assert refusal(Echo.string, pathlib.PurePosixPath("/a")) == ("TypeError", "can't build String from 'PurePosixPath'")

    @pytest.mark.parametrize("source", [b"abc", bytearray(b"abc"), memoryview(b"abc"), array.array("B", b"abc")])
    def test_any_contiguous_buffer_comes_back_as_a_bytearray_copy(self, source):
        result = Echo.bytes(source)
        assert type(result) is bytearray and result == b"abc"

    def test_null_and_non_buffer_and_strided_inputs(self):
        assert Echo.bytes(None) is None
        assert refusal(Echo.bytes, "abc") == ("TypeError", "can't build byte[] from 'str'")
        assert refusal(Echo.bytes, memoryview(b"abcd")[::2]) == ("BufferError", "buffer is not contiguous")

    def test_a_buffer_is_released_after_the_call(self):
        data = bytearray(b"xyz")
        Echo.bytes(data)
        data.extend(b"!")  # fails with BufferError while a view is still exported
        assert data == b"xyz!"
        whole = memoryview(data)
        strided = whole[::2]
        refusal(Echo.bytes, strided)  # acquired, then refused: still given back
        strided.release()
        whole.release()
        data.extend(b"?")
        assert data == b"xyz!?"


class TestEnumerationsAndObjects:
    def test_members_cross_and_come_back_as_members(self):
        assert Echo.color(bt.Color.DEEP_PURPLE) is bt.Color.DEEP_PURPLE
        combined = bt.Styles.BOLD | bt.Styles.UNDERLINE
        assert Echo.styles(combined) == combined and isinstance(Echo.styles(combined), bt.Styles)

    def test_plain_ints_are_refused_even_with_a_members_value(self):
        assert refusal(Echo.color, 2) == ("TypeError", "can't build Color value from 'int'")
        assert refusal(Echo.color, bt.Styles.BOLD) == ("TypeError", "can't build Color value from 'Styles'")

    def test_enumeration_classes(self):
        import enum

        assert issubclass(bt.Color, enum.IntEnum) and not issubclass(bt.Color, enum.IntFlag)
        assert issubclass(bt.Styles, enum.IntFlag)
        assert bt.Color.__name__ == "Color"
        assert [(m.name, m.value) for m in bt.Color] == [("RED", 0), ("GREEN", 1), ("BLUE", 2), ("DEEP_PURPLE", 300)]
        assert bt.Color(300) is bt.Color.DEEP_PURPLE

    def test_objects_come_back_as_new_wrappers_of_the_same_object(self):
        node = bt.Node("n")
        back = Echo.node(node)
        assert back is not node and back == node and hash(back) == hash(node)
        assert back.name == "n"
        assert Echo.node(None) is None

    def test_wrong_objects_are_refused_by_class_name(self):
        assert refusal(Echo.node, 1) == ("TypeError", "can't build Node value from 'int'")
        assert refusal(Echo.point, bt.Node()) == ("TypeError", "can't build Point value from 'qrx_bindtest.Node'")
        assert refusal(Echo.shape, bt.Node()) == ("TypeError", "can't build IShape value from 'qrx_bindtest.Node'")

    def test_an_implementation_passes_for_its_interface(self):
        # the result comes back as the object's own bound class, not as the interface
        shape = Echo.shape(bt.Square(3.0))
        assert type(shape) is bt.Square
        assert shape.area() == 9.0 and shape.name == "square"

    def test_structures_are_copied_across(self):
        p = bt.Point(1, 2)
        q = Echo.point(p)
        q.offset(10, 10)
        assert (p.x, p.y, q.x, q.y) == (1, 2, 11, 12)
        assert bt.Point.add(p, q) == bt.Point(12, 14)
        assert str(p) == "(1, 2)"

    def test_many_kinds_in_one_call(self):
        text = Echo.describe(True, -1, 2, -3, 4, -5, 6, -7, 8, "c", 0.5, 0.25, None, bt.Color.BLUE, bt.Styles.ITALIC)
        assert text == "True,-1,2,-3,4,-5,6,-7,8,c,0.5,0.25,null,2,2"
