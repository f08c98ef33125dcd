"""One Python name with a static and an instance form: the class reaches the static method,
an instance its own, and the descriptor refuses objects of other types."""

import pytest

from binding_support import load_bindtest

bt = load_bindtest()


def error_of(call, *args, **kwargs):
    with pytest.raises(Exception) as info:
        call(*args, **kwargs)
    return info.value


class TestBothForms:
    def test_the_class_runs_the_static_form(self):
        assert bt.Twin.describe(bt.Twin("a")) == "static:a"
        assert bt.Twin.describe(3) == "static:3"
        assert bt.Twin.join("x", "y") == "x&y"
        assert bt.Twin.join(a="x", b="y") == "x&y"

    def test_an_instance_runs_the_instance_form(self):
        t = bt.Twin("a")
        assert t.describe() == "instance:a"
        assert t.join("b") == "a+b"
        assert t.join(other="c") == "a+c"

    def test_each_form_keeps_its_own_argument_errors(self):
        e = error_of(bt.Twin.describe, "s")
        assert type(e) is TypeError
        assert e.args == (["can't build Twin value from 'str'", "integer argument expected, got 'str'"],)
        e = error_of(bt.Twin("a").describe, 1)
        assert type(e) is TypeError and str(e) == "Twin.describe() takes no arguments (1 given)"
        e = error_of(bt.Twin.join, "only")
        assert type(e) is TypeError and str(e) == "function missing required argument 'b' (pos 2)"

    def test_a_derived_instance_runs_the_instance_form(self):
        child = bt.TwinChild("c")
        assert child.describe() == "instance:c"
        assert child.join("d") == "c+d"
        assert bt.TwinChild.describe(child) == "static:c"
        assert bt.Twin.__dict__["describe"].__get__(child, bt.Twin)() == "instance:c"

    def test_the_instance_form_refuses_an_unrelated_object(self):
        descr = bt.Twin.__dict__["describe"]
        e = error_of(descr.__get__, bt.Node(), bt.Twin)
        assert type(e) is TypeError
        assert str(e) == "descriptor 'describe' for 'qrx_bindtest.Twin' objects doesn't apply to a 'qrx_bindtest.Node' object"
        e = error_of(descr.__get__, 5)
        assert str(e) == "descriptor 'describe' for 'qrx_bindtest.Twin' objects doesn't apply to a 'int' object"

    def test_without_an_instance_the_owner_must_be_a_type(self):
        e = error_of(bt.Twin.__dict__["join"].__get__, None, 5)
        assert type(e) is TypeError and str(e) == "descriptor 'join' needs a type, not 'int', as arg 2"

    def test_both_forms_live_in_one_descriptor(self):
        for name in ("describe", "join", "get_type"):
            descr = bt.Twin.__dict__[name]
            assert type(descr).__name__ == "_MixMethodDescrType"
            assert repr(descr) == f"<method '{name}' of 'qrx_bindtest.Twin' objects>"
            assert descr.__doc__ is None
        # the class access hands out the same static function every time
        assert bt.Twin.describe is bt.Twin.describe
        assert bt.Twin("a").describe is not bt.Twin("a").describe
        assert type(bt.Node.__dict__["get_type"]).__name__ == "method_descriptor"


class TestBuiltinGetType:
    def test_a_static_get_type_beside_the_builtin(self):
        assert bt.Twin.get_type("x") == "named:x"
        assert bt.Twin.get_type(name="y") == "named:y"

    def test_instances_still_get_their_managed_type(self):
        t = bt.Twin("a").get_type()
        assert t.full_name == "Quorix.BindTest.Twin"
        assert bt.TwinChild("c").get_type().full_name == "Quorix.BindTest.TwinChild"
        assert bt.Twin.__dict__["get_type"].__get__(bt.TwinChild("c"), bt.Twin)().full_name == "Quorix.BindTest.TwinChild"
