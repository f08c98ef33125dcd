"""Python lists, sequences and iterables passed where managed code takes IEnumerable,
ICollection and IList: items cross as variants both ways, lists change in place, other
sequences are read-only, and nothing lent for a call can be used after it."""

import decimal

import pytest

from binding_support import load_bindtest

bt = load_bindtest()
S = bt.Sequences


def refused(call, *args):
    with pytest.raises((TypeError, RuntimeError)) as info:
        call(*args)
    return type(info.value).__name__, str(info.value)


class TestEnumerating:
    @pytest.mark.parametrize("items,seen", [
        ([1, "a", 2.5], "Int32:1;String:a;Double:2.5"),
        ((1, None), "Int32:1;null"),
        ((c for c in "ab"), "String:a;String:b"),
        ({3: "x"}, "Int32:3"),
        (range(3), "Int32:0;Int32:1;Int32:2"),
        ([], ""),
    ])
    def test_lists_sequences_and_iterables_enumerate_in_order(self, items, seen):
        assert S.walk(items) == seen

    def test_sizes_come_from_len_and_iterables_are_not_collections(self):
        assert (S.count([1, 2, 3]), S.count((1,)), S.count("abc")) == (3, 1, 3)
        assert refused(S.count, (c for c in "a")) == ("TypeError", "can't build List value from 'generator'")
        assert refused(S.walk, 5) == ("TypeError", "can't build IEnumerable value from 'int'")
        assert refused(S.at, {1: 2}, 0) == ("TypeError", "can't build List value from 'dict'")

    def test_an_item_without_a_managed_kind_stops_the_walk_with_its_own_error(self):
        assert refused(S.walk, [1, object()]) == ("TypeError", "unknown variant type")
        with pytest.raises(ZeroDivisionError):
            S.walk(1 // x for x in (1, 0))


class TestListsInPlace:
    def test_reads_and_writes_reach_the_python_list(self):
        items = [1, 2, 3]
        assert S.at(items, 1) == 2 and S.at((5, 6), 1) == 6
        S.put(items, 0, decimal.Decimal("1.5"))
        assert S.append(items, "x") == 3
        S.insert_at(items, 0, None)
        assert items == [None, decimal.Decimal("1.5"), 2, 3, "x"]
        S.drop(items, "x")
        S.drop(items, "absent")  # a managed Remove of an absent item does nothing
        S.drop_at(items, 0)
        assert items == [decimal.Decimal("1.5"), 2, 3]
        assert (S.has(items, 2), S.has(items, 9), S.find(items, 3), S.find(items, 9)) == (True, False, 2, -1)
        S.empty(items)
        assert items == []

    def test_wrapped_managed_objects_go_in_and_come_back(self):
        node = bt.Node("kept")
        items = []
        S.append(items, node)
        assert items[0] == node and S.at(items, 0) == node

    def test_out_of_range_and_read_only_sequences_are_managed_errors(self):
        kind, text = refused(S.at, [1], 5)
        assert kind == "RuntimeError" and "ArgumentOutOfRangeException" in text and "list index out of range" in text
        assert refused(S.put, (1,), 0, 2) == (
            "RuntimeError", "Proxy error(System.NotSupportedException): a Python sequence that is not a list is read-only")
        assert (S.is_read_only([1]), S.is_read_only((1,))) == (False, True)

    def test_a_list_kept_by_managed_code_is_refused_after_the_call(self):
        items = [1, 2]
        S.keep(items)
        kind, text = refused(S.kept_count)
        assert kind == "RuntimeError" and "lent for one call only" in text
        assert items == [1, 2]
