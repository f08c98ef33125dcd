"""Calls through generated bindings: constructors, overload dispatch with its list-valued
error, properties and static attributes, managed exceptions from every kind of member,
types whose binding is broken, and release of the managed objects behind wrappers."""

import ctypes
import gc
import io
import os

import pytest

from binding_support import load_bindtest
from conftest import runtime_dir

bt = load_bindtest()


def error_of(call, *args, **kwargs):
    with pytest.raises(Exception) as info:
        call(*args, **kwargs)
    return info.value


class TestConstructors:
    def test_overloaded_constructors_pick_by_arguments(self):
        assert bt.Node().name == "node"
        assert bt.Node("named").name == "named"
        assert bt.Node(name="kw").name == "kw"

    def test_no_matching_constructor_lists_every_candidate(self):
        e = error_of(bt.Node, 1)
        assert type(e) is TypeError
        assert e.args == (["function takes at most 0 arguments (1 given)", "can't build String from 'int'"],)

    def test_single_constructor_keeps_the_parsers_own_error(self):
        e = error_of(bt.Square)
        assert type(e) is TypeError and e.args == ("function missing required argument 'side' (pos 1)",)

    def test_types_without_public_constructors_refuse(self):
        for cls in (bt.Sealed, bt.Settings, bt.Echo):
            e = error_of(cls)
            assert type(e) is TypeError and str(e) == "type has no available constructor"
        assert bt.Sealed.make(4).id == 4

    def test_managed_exception_in_a_constructor(self):
        e = error_of(bt.Thrower, True)
        assert type(e) is RuntimeError and str(e) == "Proxy error(System.ArgumentException): constructor refused"
        assert bt.Thrower(False) is not None


class TestOverloads:
    @pytest.mark.parametrize(
        "args,picked",
        [
            ((1,), "int"),
            (("x",), "string"),
            ((None,), "string"),
            ((bt.Color.RED,), "color"),
            ((bt.Node(),), "node"),
            ((io.BytesIO(b""),), "stream"),
            ((1, 2), "int,int"),
        ],
    )
    def test_first_candidate_that_converts_wins(self, args, picked):
        assert bt.Overloads.pick(*args) == picked

    def test_keywords_select_by_parameter_names(self):
        assert bt.Overloads.pick(a=1, b=2) == "int,int"
        assert bt.Overloads.pick(stream=io.BytesIO()) == "stream"
        assert bt.Overloads.pick(value="v") == "string"

    def test_no_candidate_gives_one_message_per_candidate_in_order(self):
        e = error_of(bt.Overloads.pick, 1.5)
        assert type(e) is TypeError and len(e.args) == 1
        assert e.args[0] == [
            "integer argument expected, got 'float'",
            "can't build String from 'float'",
            "can't build Color value from 'float'",
            "can't build Node value from 'float'",
            "can't build Stream from 'float'",
            "integer argument expected, got 'float'",
        ]

    def test_too_many_arguments_for_every_instance_candidate(self):
        e = error_of(bt.Overloads().describe, 1, 2)
        assert e.args == (["function takes at most 0 arguments (2 given)", "function takes at most 1 argument (2 given)"],)
        assert bt.Overloads().describe() == "instance"
        assert bt.Overloads().describe("p") == "p:instance"

    def test_managed_exception_in_candidate_000_is_reported_as_such(self):
        e = error_of(bt.Thrower.run, 1)
        assert type(e) is RuntimeError
        assert str(e) == "Proxy error(System.FormatException): first overload failed on 1"
        assert bt.Thrower.run("s") == "second:s"

    def test_single_signature_methods(self):
        assert bt.Echo.int32(value=7) == 7
        e = error_of(bt.Echo.int32, valu=1)
        assert type(e) is TypeError and "value" in str(e)
        e = error_of(bt.Thrower.fail, "boom")
        assert type(e) is RuntimeError and str(e) == "Proxy error(System.ApplicationException): boom"


class TestProperties:
    @pytest.mark.parametrize(
        "name,default,new",
        [
            ("flag", True, False),
            ("i8", -8, -128),
            ("u8", 8, 255),
            ("i16", -16, -32768),
            ("u16", 16, 65535),
            ("i32", -32, -(1 << 31)),
            ("u32", 32, (1 << 32) - 1),
            ("i64", -64, -(1 << 63)),
            ("u64", 64, (1 << 64) - 1),
            ("letter", "q", "\u20ac"),
            ("f32", 1.5, -0.5),
            ("f64", 2.25, 1e300),
            ("text", "text", "\U0001F600"),
            ("data", bytearray(b"\x01\x02\x03"), bytearray(b"")),
            ("tint", bt.Color.GREEN, bt.Color.DEEP_PURPLE),
            ("style", bt.Styles.BOLD | bt.Styles.UNDERLINE, bt.Styles.ITALIC),
        ],
    )
    def test_every_kind_reads_and_writes(self, name, default, new):
        s = bt.Scalars()
        assert getattr(s, name) == default
        setattr(s, name, new)
        assert getattr(s, name) == new
        assert type(getattr(s, name)) is type(new)

    def test_null_string_and_array_properties(self):
        s = bt.Scalars()
        s.text = None
        s.data = None
        assert s.text is None and s.data is None

    def test_wrong_values_are_refused_and_leave_the_value(self):
        s = bt.Scalars()
        e = error_of(setattr, s, "u8", 256)
        assert type(e) is OverflowError and str(e) == "value '256' is out of the UINT8 range"
        e = error_of(setattr, s, "tint", 1)
        assert type(e) is TypeError and str(e) == "can't build Color value from 'int'"
        assert s.u8 == 8 and s.tint is bt.Color.GREEN

    def test_deletion_is_refused_by_name(self):
        s = bt.Scalars()
        e = error_of(delattr, s, "f64")
        assert type(e) is AttributeError and str(e) == "'Scalars' object does not support deletion of 'f64' property"

    def test_read_only_property(self):
        parent = bt.Node("p")
        child = parent.add(bt.Node("c"))
        assert child.parent == parent and parent.child_count == 1
        assert type(error_of(setattr, child, "parent", None)) is AttributeError

    def test_object_results_and_none(self):
        parent = bt.Node("p")
        parent.add(bt.Node("c"))
        assert parent.child_at(0).name == "c"
        assert parent.child_at(5) is None
        assert bt.Node().parent is None

    def test_managed_exceptions_in_getter_and_setter(self):
        t = bt.Thrower()
        e = error_of(getattr, t, "broken")
        assert type(e) is RuntimeError and str(e) == "Proxy error(System.InvalidOperationException): getter failed"
        e = error_of(setattr, t, "broken", 5)
        assert type(e) is RuntimeError and str(e) == "Proxy error(System.NotSupportedException): setter failed: 5"


class TestStaticAttributes:
    def test_constants_of_every_kind(self):
        S = bt.Settings
        assert (S.MAX_DEPTH, S.SEPARATOR, S.VERSION, S.BIG, S.RATIO, S.ENABLED) == (8, ";", "1.0", 1 << 40, 0.75, True)
        assert S.FAVOURITE is bt.Color.BLUE
        assert isinstance(S.ROOT, bt.Node) and S.ROOT.name == "root"
        assert S.ORIGIN == bt.Point(0, 0)
        assert S.blob is None

    def test_settable_attributes_change_through_their_setters(self):
        S = bt.Settings
        before = S.COUNTER
        assert S.set_counter(before + 3) is None
        assert S.COUNTER == before + 3
        S.set_label(None)
        assert S.label is None
        S.set_label("again")
        assert S.label == "again"
        S.set_default_style(bt.Styles.BOLD)
        assert S.default_style is bt.Styles.BOLD
        e = error_of(S.set_default_style, 1)
        assert type(e) is TypeError and str(e) == "can't build Styles value from 'int'"

    def test_through_an_instance_and_never_replaced_through_the_class(self):
        bare = bt.Settings.__new__(bt.Settings)  # no managed object behind it: none is needed
        assert bare.MAX_DEPTH == 8 and bare.FAVOURITE is bt.Color.BLUE
        e = error_of(setattr, bt.Settings, "MAX_DEPTH", 3)
        assert type(e) is TypeError
        assert bt.Settings.MAX_DEPTH == 8


class TestBrokenBindings:
    MISSING = (
        "While initializing the host for the 'WrpNs_Quorix.WrpNs_BindTest.WrpCs_Orphan_F1F83C38 "
        "(Assembly=WrpInterop.Quorix.BindTest)' type, an error occurred - Method 'ctor_000_Orphan' not found (error="
    )

    def test_a_type_without_its_stub_class_is_unusable(self):
        for _ in range(2):  # the state is kept: the second use fails the same way
            e = error_of(bt.Orphan)
            assert type(e) is TypeError and str(e).startswith(self.MISSING) and e.__cause__ is None

    def test_a_derived_type_reports_its_base_under_the_chained_notice(self):
        e = error_of(bt.OrphanChild)
        assert type(e) is TypeError and str(e) == "one or more refereced type is not initialized"
        assert type(e.__cause__) is TypeError and str(e.__cause__).startswith(self.MISSING)
        assert issubclass(bt.OrphanChild, bt.Orphan)


class TestWrappers:
    def test_equality_hash_and_text_go_to_managed_code(self):
        p = bt.Point(3, 4)
        assert p == bt.Point(3, 4) and p != bt.Point(4, 3)
        assert hash(p) == hash(bt.Point(3, 4))
        assert str(p) == "(3, 4)"
        assert (p == object()) is False and (p != object()) is True
        assert type(error_of(lambda: p < p)) is TypeError

    def test_type_query_and_marker(self):
        node = bt.Node()
        assert node.get_type() is not None
        assert bt.Node._qrxsc2p_asserttp() is True
        assert bt.Node.__dict__["_qrxsc2p_handle"] is Ellipsis

    def test_stream_arguments_and_results(self):
        assert bt.Streams.read_all(io.BytesIO(b"xyz")) == b"xyz"
        assert bt.Streams.is_null(None) is True
        managed = bt.Streams.from_bytes(b"ab")
        assert type(managed).__name__ == "_StreamWrapper" and managed.read() == b"ab"
        e = error_of(bt.Streams.read_all, io.StringIO("x"))
        assert type(e) is TypeError and str(e) == "can't build Stream from '_io.StringIO'"


_wrap = ctypes.CDLL(str(runtime_dir() / "libquorix.embed.coreclrwrap.so"), mode=os.RTLD_NOLOAD | os.RTLD_NOW)
_wrap.coreclr_wrap_create_delegate.argtypes = [ctypes.c_char_p] * 3 + [ctypes.POINTER(ctypes.c_void_p)]


def _freed_count():
    address = ctypes.c_void_p()
    status = _wrap.coreclr_wrap_create_delegate(
        b"WrpInterop.Quorix.BindTest", b"Quorix.WrpGen.Interop.ExchangeHost", b"FreedHandleCount", ctypes.byref(address)
    )
    assert status == 0
    return ctypes.PYFUNCTYPE(ctypes.c_int64)(address.value)()


class TestLifetime:
    def test_every_wrapper_frees_its_handle_once(self):
        gc.collect()
        before = _freed_count()
        made = [bt.Node(str(i)) for i in range(20)]
        results = [bt.Echo.node(n) for n in made]  # a second handle per object
        del made, results
        gc.collect()
        assert _freed_count() - before == 40

    def test_failed_calls_free_nothing_twice_and_leak_nothing(self):
        gc.collect()
        before = _freed_count()
        for _ in range(10):
            error_of(bt.Thrower, True)
            error_of(bt.Overloads.pick, 1.5)
        node = bt.Node()
        node.__init__("again")  # the first object's handle is freed when the second replaces it
        assert node.name == "again"
        del node
        gc.collect()
        assert _freed_count() - before == 2

    def test_managed_objects_are_collected_after_their_wrappers(self):
        probes = [bt.LifeProbe() for _ in range(5)]
        del probes
        gc.collect()
        assert bt.LifeProbe.collect() >= 5
