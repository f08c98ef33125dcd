"""Python classes behind managed interfaces, on the binding fixture: the interface types and
their subclasses, every shape of reverse call (arguments and results of each kind, out values,
properties), errors crossing both ways, twins coming back as themselves, and lifetimes."""

import ctypes
import datetime
import gc
import io
import os
import sys
import threading
import weakref

import pytest

from binding_support import load_bindtest
from conftest import runtime_dir

bt = load_bindtest()


def error_of(call, *args, **kwargs):
    with pytest.raises(Exception) as info:
        call(*args, **kwargs)
    return info.value


class Probe(bt.IProbe):
    def __init__(self):
        self._label = "start"
        self.calls = 0

    def describe(self, text, count, big, ratio, flag, color):
        return f"{text}|{count}|{big}|{ratio}|{flag}|{color.name}"

    def pick(self, first, second):
        self.calls += 1
        assert type(first) is bt.Node and type(second) is bt.Node
        return bt.Color.BLUE if first.name < second.name else bt.Color.GREEN

    def echo(self, text):
        return text

    def try_find(self, key, found):
        values = {"n": 42, "s": "text", "f": 1.5, "node": bt.Node("held")}
        if key not in values:
            return False
        found[0] = values[key]
        return True

    def try_name(self, id, name):
        name[0] = None if id == 0 else f"#{id}"
        return id >= 0

    def make_node(self, name):
        return bt.Node(name) if name else None

    def wrap(self, shape):
        return shape

    def measure(self, stream):
        return len(stream.read())

    def move(self, point):
        point.offset(1, 2)
        return point

    def nothing(self):
        self.calls += 1

    def stamp(self, when, amount, id):
        return f"{when.isoformat()} {amount} {id}"

    def bytes(self, count):
        return None if count < 0 else (b"x" * count if count % 2 else bytearray(count))

    @property
    def label(self):
        return self._label

    @label.setter
    def label(self, value):
        self._label = value


class Tri(bt.IShape):
    def area(self):
        return 1.5

    @property
    def name(self):
        return "tri"


class TestInterfaceTypes:
    def test_the_interface_type_itself_refuses_instantiation(self):
        e = error_of(bt.IProbe)
        assert type(e) is TypeError
        assert str(e) == ("Can't directly instantiate the 'qrx_bindtest.IProbe' abstract class. "
                          "'qrx_bindtest.IProbe' must be subclassed.")

    def test_subclasses_run_their_init_chain_and_have_dict_and_weakrefs(self):
        class Base(bt.IShape):
            def __init__(self, side):
                self.side = side

        class Derived(Base):
            def __init__(self):
                super().__init__(3)
                self.extra = True

        d = Derived()
        assert d.side == 3 and d.extra and weakref.ref(d)() is d
        assert bt.IShape.__dictoffset__ == 16 and bt.IShape.__weakrefoffset__ == 24

    def test_subclass_instances_compare_and_hash_like_plain_objects(self):
        a, b = Tri(), Tri()
        assert a != b and a == a and hash(a) == object.__hash__(a)
        assert repr(a).startswith("<") and "Tri object at" in repr(a)
        assert len({a, b, a}) == 2

    def test_dict_assignment_is_refused_on_an_exact_instance_only(self):
        bare = bt.IShape.__new__(bt.IShape)
        e = error_of(setattr, bare, "__dict__", {})
        assert type(e) is AttributeError and str(e) == "the __dict__ attribute is read-only"
        t = Tri()
        t.__dict__ = {"x": 1}
        assert t.x == 1

    def test_an_unbound_exact_instance_refuses_every_forwarded_operation(self):
        bare = bt.IShape.__new__(bt.IShape)
        text = "the method cannot be invoked on an object that is not bound to the clr object"
        for op in (hash, str, lambda o: o == 1):
            e = error_of(op, bare)
            assert type(e) is NotImplementedError and str(e) == text
        e = error_of(bare.area)
        assert type(e) is NotImplementedError
        assert str(e) == "the method cannot be invoked on an object that is not bound to clr object"

    def test_a_missing_override_names_the_method(self):
        class Half(bt.IShape):
            def area(self):
                return 2.0

        e = error_of(bt.Shapes.name_of, Half())
        assert type(e) is RuntimeError and str(e).startswith("Proxy error(Quorix.WrpGen.Interop.PythonException): ")
        assert str(e).rstrip().endswith("NotImplementedError: 'name' abstract method should be implemented in subclasses")
        assert bt.Shapes.area_of(Half()) == 2.0

    def test_managed_implementations_forward_through_the_interface_type(self):
        caller = bt.ProbeCaller(Probe())
        shape = caller.wrap(bt.Square(2.0))
        assert type(shape) is bt.Square and shape.area() == 4.0
        bt.Shapes.keep(bt.Square(3.0))
        kept = bt.Shapes.kept()
        assert kept.area() == 9.0 and kept.name == "square"

    def test_interface_types_are_heap_types_named_after_their_module(self):
        heap_type = 1 << 9
        assert bt.IShape.__flags__ & heap_type and bt.IProbe.__flags__ & heap_type
        assert (bt.IShape.__module__, bt.IShape.__qualname__) == ("qrx_bindtest", "IShape")
        new = bt.IShape.__new__
        # every instance holds its type, exact or a subclass, and gives it back when it goes
        for cls, make in ((bt.IShape, lambda: new(bt.IShape)), (Tri, Tri)):
            refs = sys.getrefcount(cls)
            made = [make() for _ in range(10)]
            assert sys.getrefcount(cls) == refs + 10
            del made
            assert sys.getrefcount(cls) == refs

    def test_get_type_tells_the_managed_type_an_object_stands_for(self):
        circle = bt.Shapes.circle(1.0)
        assert type(circle) is bt.IShape and circle.name == "circle"
        assert circle.get_type().full_name == "Quorix.BindTest.Circle"
        # a Python implementation is known to managed code as the interface
        assert Tri().get_type().full_name == "Quorix.BindTest.IShape"
        assert Tri().get_type() == bt.IShape._type_of()
        e = error_of(bt.IShape.__new__(bt.IShape).get_type)
        assert type(e) is NotImplementedError
        assert str(e) == "the method cannot be invoked on an object that is not bound to the clr object"

    def test_the_casting_block_on_interface_types(self):
        circle = bt.Shapes.circle(2.0)
        assert bt.IShape._is_assignable(bt.Square(1.0)) and not bt.IShape._is_assignable(bt.Node())
        assert type(bt.IShape._cast_as(bt.Square(1.0))) is bt.IShape
        assert bt.IShape._cast_as(bt.Node()) is None
        assert bt.Square._cast_as(circle) is None
        assert bt.IShape._type_of().name == "IShape"

    def test_type_probes_and_the_binding_object(self):
        assert bt.IShape._qrxsc2p_asserttp() is Ellipsis
        assert Tri._qrxsc2p_asserttp() is False
        bound = bt.IShape._qrxsc2p_gettpextrabind()
        assert type(bound).__name__ == "SafeTargetHandle"


class TestReverseCalls:
    def setup_method(self):
        self.probe = Probe()
        self.caller = bt.ProbeCaller(self.probe)

    def test_scalars_strings_and_enumerations_as_arguments(self):
        assert self.caller.describe("héllo 😀", 3) == f"héllo 😀|3|{1 << 40}|0.25|True|DEEP_PURPLE"

    def test_wrapper_arguments_and_an_enumeration_result(self):
        assert self.caller.pick(bt.Node("a"), bt.Node("b")) == bt.Color.BLUE
        assert self.caller.pick_many(10) == 10 * int(bt.Color.BLUE)

    def test_dates_decimals_and_guids_as_arguments(self):
        assert self.caller.stamp() == "2026-01-02T03:04:05 12.50 00112233-4455-6677-8899-aabbccddeeff"

    def test_bytes_and_bytearray_results_and_none(self):
        assert self.caller.bytes(3) == b"xxx" and self.caller.bytes(4) == b"\x00" * 4
        assert self.caller.bytes_length(-1) == -1

        class NotBytes(Probe):
            def bytes(self, count):
                return "text"

        e = error_of(bt.ProbeCaller(NotBytes()).bytes, 1)
        assert type(e) is RuntimeError and str(e).rstrip().endswith("TypeError: can't build Byte[] from 'str'")

    def test_strings_and_none_round_trip(self):
        assert self.caller.echo(None) is None
        assert self.caller.echo("") == ""
        assert self.caller.echo("x" * 10000) == "x" * 10000

    def test_out_values_of_object_and_string(self):
        assert self.caller.find("n") == "Int32:42"
        assert self.caller.find("s") == "String:text"
        assert self.caller.find("node").startswith("Node:")
        assert self.caller.find("q") == "missing"
        assert [self.caller.name(i) for i in (0, 5, -1)] == ["<null>", "#5", "none"]

    def test_wrapper_results_and_none(self):
        assert self.caller.make_node("zz") == "zz"
        assert self.caller.make_node("") == "<null>"

    def test_streams_and_structures(self):
        assert self.caller.measure(b"abcdef") == 6
        moved = self.caller.move(bt.Point(1, 1))
        assert (moved.x, moved.y) == (2, 3)

    def test_properties_read_and_write_the_python_object(self):
        assert self.caller.label == "start"
        self.caller.label = "new"
        assert self.probe._label == "new"

    def test_a_python_implementation_comes_back_as_itself(self):
        t = Tri()
        assert self.caller.wrap(t) is t
        assert self.caller.probe is self.probe
        assert self.caller.wrap_area(t) == 1.5
        other = bt.ProbeCaller(self.probe)
        assert other.same_probe(self.caller)  # one twin per Python object

    def test_a_result_of_the_wrong_type_is_refused(self):
        class Wrong(Probe):
            def pick(self, first, second):
                return 7

        e = error_of(bt.ProbeCaller(Wrong()).pick, bt.Node(), bt.Node())
        assert type(e) is RuntimeError and "TypeError" in str(e)

    def test_a_python_exception_reaches_the_outer_caller_with_its_traceback(self):
        class Failing(Probe):
            def echo(self, text):
                raise ValueError(f"bad {text}")

        e = error_of(bt.ProbeCaller(Failing()).echo, "input")
        assert type(e) is RuntimeError
        text = str(e)
        assert text.startswith("Proxy error(Quorix.WrpGen.Interop.PythonException): Traceback")
        assert text.rstrip().endswith("ValueError: bad input")
        assert "in echo" in text

    def test_callbacks_may_reenter_the_library(self):
        class Reentrant(Probe):
            def pick(self, first, second):
                inner = bt.ProbeCaller(Probe())
                return inner.pick(second, first)

        assert bt.ProbeCaller(Reentrant()).pick(bt.Node("a"), bt.Node("b")) == bt.Color.GREEN

    def test_callbacks_arrive_on_other_threads(self):
        seen = []

        class Recording(Probe):
            def pick(self, first, second):
                seen.append(threading.get_ident())
                return bt.Color.BLUE

        assert bt.ProbeCaller(Recording()).pick_on_other_thread() == bt.Color.BLUE
        assert seen and seen[0] != threading.get_ident()

    def test_none_and_wrong_objects_are_refused_where_the_interface_is_expected(self):
        e = error_of(bt.ProbeCaller, object())
        assert type(e) is TypeError and str(e) == "can't build IProbe value from 'object'"
        e = error_of(bt.Shapes.area_of, Probe())
        assert type(e) is TypeError and "IShape" in str(e)


class Kinds(bt.IKinds):
    def __init__(self):
        self.opened = []

    def half(self, value):
        return None if value is None else value // 2

    def later(self, when, by):
        return None if when is None else when + by

    def flip(self, flag):
        return None if flag is None else not flag

    def twice(self, span):
        return span * 2

    def bump(self, counter, text):
        counter[0] += 1
        text[0] = None if text[0] == "drop" else (text[0] or "") + "!"

    def open(self, name):
        if name == "none":
            return None
        stream = io.BytesIO(name.encode() * 2)
        self.opened.append(stream)
        return stream

    def keep(self, value):
        # a marker stands for an object a forward call could not pass (any Python object)
        return self.__dict__.pop("give", value) if value == "give" else value

    def words(self, text):
        return text.split() if text != "tuple" else ("a", "tuple")

    def numbers(self, count):
        return range(count)

    def nodes(self, count):
        return None if count < 0 else [bt.Node(str(i)) for i in range(count)]

    def take_mixed(self, first, text, third, fourth):
        # a managed object typed as object arrives as the generic wrapper, cast to its class
        self.mixed = (first.name, text, bt.Node._cast_as(third).name, fourth.name)


class TestMoreShapes:
    def setup_method(self):
        self.kinds = Kinds()
        self.caller = bt.KindsCaller(self.kinds)

    def test_nullable_values_both_ways(self):
        assert [self.caller.half(v) for v in (9, None, -4)] == ["4", "none", "-2"]
        assert [self.caller.flip(v) for v in (True, False, None)] == ["False", "True", "none"]
        when = datetime.datetime(2026, 3, 4, 5, 6, 7)
        assert self.caller.later(when, 90) == when + datetime.timedelta(minutes=90)
        assert self.caller.later(None, 5) is None
        assert self.caller.twice(datetime.timedelta(seconds=1.5)) == datetime.timedelta(seconds=3)

    def test_a_wrong_nullable_result_is_refused_with_the_converters_text(self):
        class Wrong(Kinds):
            def half(self, value):
                return "half"

        e = error_of(bt.KindsCaller(Wrong()).half, 2)
        assert type(e) is RuntimeError and "TypeError" in str(e).splitlines()[-1]

    def test_ref_values_go_in_as_a_list_and_come_back_from_its_first_item(self):
        assert self.caller.bump(1, "a") == "2:a!"
        assert self.caller.bump(-1, None) == "0:!"
        assert self.caller.bump(5, "drop") == "6:<null>"

        class Seen(Kinds):
            def bump(self, counter, text):
                self.args = (type(counter), counter[:], type(text), text[:])

        seen = Seen()
        assert bt.KindsCaller(seen).bump(3, "x") == "3:x"
        assert seen.args == (list, [3], list, ["x"])

    def test_a_stream_from_python_is_read_and_closed_by_managed_code(self):
        assert self.caller.read_all("ab") == "abab"
        (stream,) = self.kinds.opened
        assert stream.closed                      # managed code disposed it: the file is closed
        assert self.caller.read_all("none") == "<none>"

    @pytest.mark.parametrize("other_thread", [False, True])
    def test_a_stream_managed_code_keeps_stays_usable_after_the_call(self, other_thread):
        self.caller.hold("x")
        (stream,) = self.kinds.opened
        self.kinds.opened.clear()
        self.caller.write_held("-tail", other_thread)
        assert stream.getvalue() == b"-tail" and not stream.closed
        self.caller.release(True)
        assert stream.closed

    def test_a_kept_stream_that_managed_code_only_drops_is_released_not_closed(self):
        self.caller.hold("y")
        stream = self.kinds.opened.pop()
        ref = weakref.ref(stream)
        del stream
        gc.collect()
        assert ref() is not None                  # managed code still holds it
        self.caller.release(False)
        _settle()
        assert ref() is None

    def test_sequences_from_python_become_the_declared_managed_sequence(self):
        assert self.caller.words("to be or") == "String[]:to|be|or"
        assert self.caller.words("tuple") == "String[]:a|tuple"
        assert self.caller.sum_numbers(101) == 5050          # any sequence, a range here
        assert self.caller.node_names(3) == "0,1,2" and self.caller.node_names(-1) == "<null>"

    def test_a_sequence_result_that_does_not_fit_is_refused_with_its_item(self):
        class Wrong(Kinds):
            def words(self, text):
                return ["ok", 3] if text == "item" else text

        caller = bt.KindsCaller(Wrong())
        e = error_of(caller.words, "plain text")
        assert type(e) is RuntimeError and str(e).rstrip().endswith("TypeError: can't build an array from 'str'")
        e = error_of(caller.words, "item")
        assert type(e) is RuntimeError and "item 1: Int32 is not String" in str(e)

    def test_python_objects_where_any_object_is_expected_come_back_as_themselves(self):
        class Thing:
            pass

        thing = self.kinds.give = Thing()
        assert self.caller.keep("give") == "PyObjectRef"
        assert self.caller.kept() is thing
        ref = weakref.ref(thing)
        del thing
        gc.collect()
        assert ref() is not None                  # held by managed code
        self.caller.forget()
        _settle()
        assert ref() is None

    def test_values_managed_code_has_types_for_cross_as_those_types(self):
        assert self.caller.keep(7) == "Int32" and self.caller.kept() == 7
        assert self.caller.keep("s") == "String"
        assert self.caller.keep(None) == "null" and self.caller.kept() is None
        node = bt.Node("n")
        assert self.caller.keep(node) == "Node" and bt.Node._cast_as(self.caller.kept()).name == "n"
        tri = self.kinds.give = Tri()             # a Python implementation holds no other twin here
        assert self.caller.keep("give") == "PyObjectRef" and self.caller.kept() is tri
        self.kinds.give = b"\x00\x01"
        assert self.caller.keep("give") == "Byte[]" and self.caller.kept() == b"\x00\x01"

    def test_a_failing_argument_releases_the_later_object_handles_once(self):
        self.caller.take_mixed("t")
        assert self.kinds.mixed == ("1", "t", "3", "4")
        _settle()
        outstanding = _allocated() - _freed()
        for _ in range(10):
            e = error_of(self.caller.take_mixed_broken)
            assert type(e) is RuntimeError and "LookupError" in str(e).splitlines()[-1]
        _settle()
        assert _allocated() - _freed() == outstanding

    def test_many_calls_of_the_new_shapes_leak_nothing(self):
        class Thing:
            pass

        for _ in range(100):
            self.kinds.give = Thing()
            self.caller.keep("give")
            self.caller.bump(1, "a")
        _settle()
        twins, outstanding, before = _live_twins(), _allocated() - _freed(), sys_refs()
        for i in range(20_000):
            self.kinds.give = Thing()
            self.caller.keep("give")
            self.caller.bump(i, "a")
            self.caller.half(i)
            self.caller.later(None, 1)
            if i % 100 == 0:
                self.caller.read_all("z")
        self.caller.forget()
        self.kinds.opened.clear()
        _settle()
        assert _allocated() - _freed() == outstanding
        assert _live_twins() == twins
        assert sys_refs() - before < 50


_wrap = ctypes.CDLL(str(runtime_dir() / "libquorix.embed.coreclrwrap.so"), mode=os.RTLD_NOLOAD | os.RTLD_NOW)
_wrap.coreclr_wrap_create_delegate.argtypes = [ctypes.c_char_p] * 3 + [ctypes.POINTER(ctypes.c_void_p)]


def _counter(cls, name):
    address = ctypes.c_void_p()
    assert _wrap.coreclr_wrap_create_delegate(b"WrpInterop.Quorix.BindTest", cls, name, ctypes.byref(address)) == 0
    return ctypes.PYFUNCTYPE(ctypes.c_int64)(address.value)


_allocated = _counter(b"Quorix.WrpGen.Interop.ExchangeHost", b"AllocatedHandleCount")
_freed = _counter(b"Quorix.WrpGen.Interop.ExchangeHost", b"FreedHandleCount")
_live_twins = _counter(b"Quorix.WrpGen.Interop.PyTwin", b"LiveCount")


def _settle():
    """Managed and Python garbage collected, and the references twins handed back released."""
    for _ in range(3):
        gc.collect()
        bt.Shapes.collect_garbage()
        sum(range(1000))  # lets the interpreter run the pending releases


class TestLifetime:
    def test_a_dropped_python_object_lives_while_managed_code_holds_it(self):
        dropped = []

        class Counted(Tri):
            def __del__(self):
                dropped.append(True)

        bt.Shapes.keep(Counted())
        _settle()
        assert not dropped and bt.Shapes.kept_area() == 1.5
        assert type(bt.Shapes.kept()) is Counted
        bt.Shapes.keep(None)
        _settle()
        assert dropped == [True]

    def test_many_callbacks_leak_neither_references_nor_handles(self):
        probe = Probe()
        caller = bt.ProbeCaller(probe)
        caller.pick_many(100)
        _settle()
        twins = _live_twins()
        outstanding = _allocated() - _freed()
        before = sys_refs()
        caller.pick_many(100_000)
        for _ in range(1000):
            caller.pick(bt.Node("a"), bt.Node("b"))
            caller.find("n")
            caller.echo("text")
        _settle()
        assert probe.calls == 100 + 100_000 + 1000
        assert _allocated() - _freed() == outstanding
        assert _live_twins() == twins
        assert sys_refs() - before < 50

    def test_a_failing_argument_releases_the_later_handles_once(self):
        taken = []

        class Taking(Probe):
            def take(self, first, text, third, fourth):
                taken.append((first.name, text, third.name, fourth.name))

        caller = bt.ProbeCaller(Taking())
        caller.take("2")
        assert taken == [("1", "2", "3", "4")]
        _settle()
        outstanding = _allocated() - _freed()
        for _ in range(10):
            e = error_of(caller.take_broken_text)
            # the string conversion refuses malformed UTF-16 through its error handler's lookup
            assert type(e) is RuntimeError and str(e).rstrip().endswith("LookupError: unknown error handler name ''")
        _settle()
        # four handles a call: the first wrapper's freed with it, the third and fourth freed unconverted
        assert _allocated() - _freed() == outstanding
        assert len(taken) == 1

    def test_twins_go_when_both_sides_dropped_them(self):
        _settle()
        twins = _live_twins()
        for _ in range(50):
            bt.Shapes.area_of(Tri())
        _settle()
        assert _live_twins() == twins


def sys_refs():
    """Objects the collector tracks (the reference total where the interpreter keeps one)."""
    return sys.gettotalrefcount() if hasattr(sys, "gettotalrefcount") else len(gc.get_objects())
