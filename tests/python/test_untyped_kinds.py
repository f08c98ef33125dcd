"""Managed values typed as collections, enumerators and disposables without an element type:
the wrappers of quorix.folio._wrpgen._interop, their sequence rules and texts, and the handles
they leave behind."""

import ctypes
import gc
import os
import sys
import tracemalloc

import pytest

from binding_support import load_bindtest
from conftest import runtime_dir

bt = load_bindtest()
U = bt.Untyped
interop = sys.modules["quorix.folio._wrpgen._interop"]


def error_of(call, *args, **kwargs):
    with pytest.raises(Exception) as info:
        call(*args, **kwargs)
    return type(info.value), str(info.value)


def as_array(values):
    """An untyped array wrapper over a managed object[] (the fixture hands it out as an IList)."""
    lst = U.fixed()
    arr = interop._ArrayWrapper._cast_as(lst)
    assert type(arr).__name__ == "_ArrayWrapper"
    arr[:] = values
    return arr


class TestTypes:
    def test_the_eleven_built_in_types_are_registered_in_order(self):
        names = [n for n in vars(interop) if n.startswith("_") and isinstance(getattr(interop, n), type)]
        # the eleven come first; later kinds (the str dictionary) follow them
        assert names[:11] == ["_IDisposableWrapper", "_IterWrapper", "_IterableWrapper", "_IColWrapper", "_IListWrapper",
                         "_RoColBaseWrapper", "_ColBaseWrapper", "_ArrayWrapper", "_ArrListWrapper", "_ShlBufferView",
                         "_StreamWrapper"]
        for name in names[:9]:
            t = getattr(interop, name)
            assert t.__module__ == "quorix.folio._wrpgen._interop" and vars(t)["_qrxsc2p_handle"] is Ellipsis

    def test_each_managed_kind_comes_back_as_its_wrapper(self):
        kinds = {
            U.numbers(2): "_ArrListWrapper", U.list(2): "_IListWrapper", U.queue(2): "_IColWrapper",
            U.letters("ab"): "_IterableWrapper", U.counter(2): "_IterWrapper", U.tracker(): "_IDisposableWrapper",
            U.names("a"): "_ColBaseWrapper", U.frozen(2): "_RoColBaseWrapper",
        }
        assert [type(k).__name__ for k in kinds] == list(kinds.values())

    def test_methods_come_in_the_order_of_each_kinds_table(self):
        def methods(t):
            return [n for n, v in vars(t).items()
                    if type(v).__name__ in ("method_descriptor", "classmethod_descriptor", "staticmethod")]
        casts = ["get_type", "_type_of", "_cast_to", "_is_assignable", "_reinterpret_obj", "_cast_as", "_cast_from",
                 "_qrxsc2p_asserttp"]
        assert methods(interop._ArrayWrapper) == ["index", "count", "sort", "reverse", "copy", "contains"] + casts
        assert methods(interop._ArrListWrapper)[:3] == ["extend", "append", "insert"]
        assert methods(interop._IColWrapper) == ["count", "copy", "contains"] + casts
        assert methods(interop._IDisposableWrapper) == [
            "__enter__", "__exit__", "get_type", "_type_of", "_cast_to", "_cast_from", "_is_assignable",
            "_reinterpret_obj", "_cast_as", "_qrxsc2p_asserttp"]

    def test_wrappers_cannot_be_made_or_subclassed_from_python(self):
        for t in (interop._IListWrapper, interop._IterWrapper, interop._IDisposableWrapper):
            assert error_of(t) == (TypeError, "type has no available constructor")
            with pytest.raises(TypeError):
                type("Sub", (t,), {})
        empty = interop._IListWrapper.__new__(interop._IListWrapper)
        assert error_of(len, empty)[0] is TypeError


class TestReading:
    def test_length_items_negative_indexes_and_slices(self):
        lst = U.mixed()
        assert len(lst) == lst.length == 4
        assert [lst[0], lst[1], lst[2], lst[3]] == [1, "two", 3.5, None]
        assert (lst[-1], lst[-4]) == (None, 1)
        assert lst[1:3] == ["two", 3.5] and type(lst[1:3]) is list
        assert lst[::-2] == [None, "two"] and lst[5:9] == [] and lst[3:1] == []

    def test_index_and_key_errors_carry_their_texts(self):
        lst = U.numbers(3)
        assert error_of(lambda: lst[3]) == (IndexError, "list index out of range")
        assert error_of(lambda: lst[-4]) == (IndexError, "list index out of range")
        assert error_of(lambda: U.numbers(0)[-1]) == (IndexError, "list index out of range")
        assert error_of(lambda: lst[2**31]) == (OverflowError, "the index (2147483648) is out of the INT32 range")
        assert error_of(lambda: lst["a"]) == (TypeError, "list indices must be integers or slices, not str")

    def test_membership_count_and_index(self):
        lst = U.mixed()
        lst.append(1)
        assert 1 in lst and "two" in lst and None in lst and 7 not in lst
        assert lst.contains("two") is True and lst.count(1) == 2 and lst.count(8) == 0
        assert (lst.index(1), lst.index(1, 1), lst.index(1, -1), lst.index("two", 0, 2)) == (0, 4, 4, 1)
        assert error_of(lst.index, "two", 2) == (ValueError, "value is not in list")
        assert error_of(lst.index, 1, 2**31) == (OverflowError, "the index (2147483648) is out of the INT32 range")

    def test_concatenation_and_repetition_give_python_lists(self):
        lst = U.numbers(3)
        assert lst + [9] == [0, 1, 2, 9] and lst + (8,) == [0, 1, 2, 8]
        assert lst + range(2) == [0, 1, 2, 0, 1] and lst + (x for x in "a") == [0, 1, 2, "a"]
        assert lst + U.numbers(1) == [0, 1, 2, 0]
        assert error_of(lambda: lst + 5) == (ValueError, "argument must be iterable or sequence")
        assert lst * 2 == [0, 1, 2, 0, 1, 2] and lst * 0 == [] and lst * -3 == []
        copy = lst.copy()
        assert copy == [0, 1, 2] and type(copy) is list
        copy.append(3)
        assert len(lst) == 3

    def test_collections_without_positions_read_through_their_iterator(self):
        q = U.queue(3)
        assert len(q) == 3 and list(q) == [0, 1, 2] and 2 in q and 5 not in q
        assert q + [7] == [0, 1, 2, 7] and q * 2 == [0, 1, 2, 0, 1, 2] and q.copy() == [0, 1, 2]
        assert q.count(1) == 1 and q.contains(0) is True
        assert error_of(lambda: q[0])[0] is TypeError
        frozen = U.frozen(2)
        assert list(frozen) == [0, 1] and frozen + frozen == [0, 1, 0, 1] and len(frozen) == 2


class TestWriting:
    def test_item_and_slice_assignment_keep_the_length(self):
        lst = U.numbers(5)
        lst[0] = "zero"
        lst[-1] = None
        lst[1:3] = ("a", "b")
        lst[::4] = [7, 8]
        assert list(lst) == [7, "a", "b", 3, 8]
        lst[1:1] = []
        lst[1:3] = U.numbers(2)  # a managed list is stored whole
        assert list(lst) == [7, 0, 1, 3, 8]
        assert error_of(lst.__setitem__, slice(0, 2), [1, 2, 3]) == (
            ValueError, "attempt to assign sequence of size 3 to extended slice of size 2")
        assert error_of(lst.__setitem__, slice(0, 2), 5) == (TypeError, "must assign iterable to extended slice")
        assert error_of(lst.__setitem__, 9, 1) == (IndexError, "list index out of range")
        assert error_of(lst.__setitem__, 0, object()) == (TypeError, "unknown variant type")

    def test_deleting_items_and_slices(self):
        lst = U.numbers(8)
        del lst[0]
        del lst[-1]
        assert list(lst) == [1, 2, 3, 4, 5, 6]
        del lst[::2]
        assert list(lst) == [2, 4, 6]
        del lst[5:9]
        del lst[-2:]
        assert list(lst) == [2]
        assert error_of(lst.__delitem__, 3) == (IndexError, "list index out of range")

    def test_growing_and_shrinking(self):
        lst = U.list(2)
        assert lst.append("x") is None and lst.insert(0, -1) is None
        lst.insert(-1, "before last")
        lst.insert(99, "end")
        assert list(lst) == [-1, 0, 1, "before last", "x", "end"]
        lst.remove("x")
        assert error_of(lst.remove, "x") == (ValueError, "list.remove(x): x not in list")
        assert lst.pop() == "end" and lst.pop(0) == -1 and lst.pop(-1) == "before last"
        assert error_of(lst.pop, 9) == (IndexError, "pop index out of range")
        assert error_of(lst.pop, 1, 2) == (TypeError, "pop() takes at most 1 argument (2 given)")
        lst.clear()
        assert len(lst) == 0 and error_of(lst.pop) == (IndexError, "pop from empty list")

    def test_extend_and_in_place_operators(self):
        lst = U.numbers(2)
        lst.extend([2, 3])
        lst.extend((4,))
        lst.extend(x for x in (5,))
        lst.extend(range(6, 7))
        lst.extend(U.numbers(1))
        assert list(lst) == [0, 1, 2, 3, 4, 5, 6, 0]
        lst.extend(lst)  # itself: the items as they were
        assert len(lst) == 16
        assert error_of(lst.extend, 3) == (ValueError, "argument must be iterable or sequence")
        same = lst
        lst = U.numbers(2)
        before = lst
        lst += [5]
        assert lst is before and list(lst) == [0, 1, 5]
        lst *= 2
        assert lst is before and list(lst) == [0, 1, 5, 0, 1, 5]
        lst *= 0
        assert len(lst) == 0 and len(same) == 16

    def test_a_half_done_extend_keeps_what_it_added(self):
        lst = U.numbers(0)
        assert error_of(lst.extend, [1, object(), 3]) == (TypeError, "unknown variant type")
        assert list(lst) == [1]

    def test_sort_and_reverse(self):
        lst = U.list(0)
        lst.extend([3, 1, 2, 1])
        lst.sort()
        assert list(lst) == [1, 1, 2, 3]
        lst.sort(reverse=True)
        assert list(lst) == [3, 2, 1, 1]
        lst.reverse()
        assert list(lst) == [1, 1, 2, 3]
        assert error_of(lst.sort, key=len) == (ValueError, "custom sorting key is not supported")
        mixed = U.mixed()
        assert error_of(mixed.sort)[0] is RuntimeError  # the managed comparer refuses an int beside a str

    def test_a_fixed_size_array_takes_stores_but_no_removal(self):
        arr = as_array([3, 1, 2])
        arr[0] = 9
        arr[1:] = (5, 4)
        arr.sort()
        assert list(arr) == [4, 5, 9] and arr.index(5) == 1 and arr.count(9) == 1
        assert error_of(arr.__delitem__, 0) == (ValueError, "elements removing not supported")
        assert error_of(arr.__delitem__, slice(0, 2)) == (ValueError, "elements removing not supported")
        assert not hasattr(arr, "append")
        fixed = U.fixed()
        assert error_of(fixed.append, 1)[0] is RuntimeError  # the managed array refuses to grow
        assert list(fixed) == [3, 1, 2]

    def test_collection_bases_are_lists(self):
        names = U.names("b,a")
        names.append("c")
        names.sort()
        assert list(names) == ["a", "b", "c"] and names[1:] == ["b", "c"]
        del names[0]
        assert list(names) == ["b", "c"]


class TestIteration:
    def test_iterators_and_enumerables(self):
        it = U.counter(2)
        assert iter(it) is it and list(it) == [0, 1]
        assert error_of(next, it)[0] is StopIteration and error_of(next, it)[0] is StopIteration
        letters = U.letters("ab")
        assert list(letters) == ["a", "b"] and list(letters) == ["a", "b"]
        assert type(iter(U.numbers(1))).__name__ == "_IterWrapper"

    def test_a_failing_enumerator_stops_the_loop_with_the_managed_error(self):
        seen = []
        with pytest.raises(RuntimeError) as info:
            for x in U.failing(2):
                seen.append(x)
        assert seen == [0, 1]
        assert str(info.value) == "Proxy error(System.InvalidOperationException): the source gave out"


class TestDisposables:
    def test_with_disposes_on_exit_and_binds_the_same_object(self):
        before = U.disposed
        tracker = U.tracker()
        with tracker as d:
            assert d is tracker
        assert U.disposed == before + 1
        with pytest.raises(KeyError):
            with U.tracker():
                raise KeyError("body")
        assert U.disposed == before + 2


class TestConversions:
    def test_parameters_take_wrappers_python_lists_or_refuse_with_the_kind_text(self):
        assert U.total(U.numbers(4)) == 6
        assert U.total([1, 2, 3]) == 6 and U.total((4, 5)) == 9
        assert error_of(U.total, 5) == (TypeError, "can't build ArrayList value from 'int'")
        assert error_of(U.total, U.tracker()) == (
            TypeError, "can't build ArrayList value from 'quorix.folio._wrpgen._interop._IDisposableWrapper'")
        assert U.describe(U.counter(3)) == "0,1,2"
        assert error_of(U.describe, [1]) == (TypeError, "can't build IEnumerator value from 'list'")

    def test_object_array_parameters_take_the_array_wrapper_itself(self):
        qf = sys.modules["quorix.folio"]

        def merged(values):
            doc = qf.Document()
            b = qf.DocumentBuilder(doc)
            b.insert_field("MERGEFIELD a")
            b.write(" ")
            b.insert_field("MERGEFIELD b")
            doc.mail_merge.execute(["a", "b", "c"][:len(values)], values)
            return doc.get_text().strip()

        arr = as_array(["x", "y", 3])
        assert merged(arr) == "x y" and merged(arr[1:]) == "y 3"
        assert merged(["p", "q"]) == "p q"
        assert error_of(qf.Document().mail_merge.execute, ["a"], 5)[0] is TypeError

    def test_casting_between_kinds(self):
        lst = U.numbers(2)
        cast = interop._IListWrapper._cast_to(lst)
        assert cast and type(cast.value).__name__ == "_IListWrapper" and list(cast.value) == [0, 1]
        assert interop._ArrayWrapper._cast_as(lst) is None
        assert interop._IColWrapper._is_assignable(lst) is True
        assert interop._IDisposableWrapper._is_assignable(lst) is False
        assert not interop._IterWrapper._cast_to(lst)
        assert interop._ArrListWrapper._type_of().full_name == "System.Collections.ArrayList"
        assert interop._IListWrapper._type_of().full_name == "System.Collections.IList"
        assert interop._ArrListWrapper._reinterpret_obj(U.list(1)).count(0) == 1
        assert error_of(interop._IListWrapper._reinterpret_obj, lst)[0] is TypeError
        assert not lst._cast_from(lst)


_wrap = ctypes.CDLL(str(runtime_dir() / "libquorix.embed.coreclrwrap.so"), mode=os.RTLD_NOLOAD | os.RTLD_NOW)
_wrap.coreclr_wrap_create_delegate.argtypes = [ctypes.c_char_p] * 3 + [ctypes.POINTER(ctypes.c_void_p)]


def _count(name):
    address = ctypes.c_void_p()
    assert _wrap.coreclr_wrap_create_delegate(b"WrpInterop.Quorix.BindTest", b"Quorix.WrpGen.Interop.ExchangeHost",
                                              name, ctypes.byref(address)) == 0
    return ctypes.PYFUNCTYPE(ctypes.c_int64)(address.value)


def test_iterating_and_slicing_leave_no_handle_and_no_reference():
    allocated, freed = _count(b"AllocatedHandleCount"), _count(b"FreedHandleCount")
    big = U.numbers(100_000)
    gc.collect()
    live = allocated() - freed()
    tracemalloc.start()
    start, _ = tracemalloc.get_traced_memory()
    total = 0
    for x in big:
        total += x
    part = big[10_000:20_000]
    every_other = big[::10][:10_000]
    assert total == sum(range(100_000)) and part == list(range(10_000, 20_000)) and len(every_other) == 10_000
    del part, every_other, x
    gc.collect()
    end, _ = tracemalloc.get_traced_memory()
    tracemalloc.stop()
    # the only handle made is the enumerator's, and it is freed with its wrapper; the 120,000
    # items crossed as Python ints and left nothing behind
    assert allocated() - freed() == live
    assert end - start < 64 * 1024


class TestGenericLists:
    """Lists of a bound element type edit like the untyped ones, with the element's own conversion."""

    @staticmethod
    def names(lst):
        return [n.name for n in lst]

    def test_a_list_grows_and_shrinks_with_typed_elements(self):
        lst = bt.NodeLists.named("a,b,c")
        extra = bt.Node("x")
        lst.append(extra)
        lst.insert(0, bt.Node("first"))
        lst.insert(-1, bt.Node("before x"))
        assert self.names(lst) == ["first", "a", "b", "c", "before x", "x"]
        assert type(lst[5]) is bt.Node and lst.index(extra) == 5 and lst.count(extra) == 1 and extra in lst
        lst.remove(extra)
        assert error_of(lst.remove, extra) == (ValueError, "list.remove(x): x not in list")
        assert lst.pop().name == "before x" and lst.pop(0).name == "first"
        assert error_of(lst.pop, 7) == (IndexError, "pop index out of range")
        del lst[0]
        lst[0:1] = [bt.Node("B")]
        assert self.names(lst) == ["B", "c"]
        lst.extend([bt.Node("d"), bt.Node("e")])
        lst.extend(lst)
        assert self.names(lst) == ["B", "c", "d", "e"] * 2
        del lst[::2]
        assert self.names(lst) == ["c", "e", "c", "e"]
        lst *= 2
        lst += [bt.Node("z")]
        assert len(lst) == 9
        lst.clear()
        assert len(lst) == 0 and error_of(lst.pop) == (IndexError, "pop from empty list")

    def test_elements_of_another_type_are_refused_by_the_element_converter(self):
        lst = bt.NodeLists.named("a")
        kind, text = error_of(lst.append, 1)
        assert kind is TypeError and text == "can't build Node value from 'int'"
        assert error_of(lst.insert, 0, "a")[0] is TypeError and len(lst) == 1
        assert error_of(lst.sort, key=len) == (ValueError, "custom sorting key is not supported")

    def test_a_read_only_list_refuses_edits_on_the_managed_side(self):
        frozen = bt.NodeLists.frozen("a,b")
        assert self.names(frozen) == ["a", "b"] and self.names(frozen[::-1]) == ["b", "a"]
        for edit in (lambda: frozen.append(bt.Node()), lambda: frozen.pop(), lambda: frozen.__delitem__(0),
                     lambda: frozen.clear()):
            assert error_of(edit)[0] is RuntimeError
        assert self.names(frozen) == ["a", "b"]
