"""quorix.pyintro and quorix.pygfx as generated bindings of framework types: reflection members
of the types quorix.folio reports, drawing structures built from Python and compared through the
managed side, handles freed when wrappers die, and the runtime joined only on first use."""

import gc

import pytest

from conftest import run_python

import quorix.folio  # noqa: F401  (the product starts the runtime first, as in real use)
import quorix.pygfx as gfx
import quorix.pyintro as intro

from test_hosts import freed_count


class TestReflectionTypes:
    def test_type_of_a_structure_is_a_bound_type_with_working_members(self):
        t = gfx.Point(1, 2).get_type()
        assert type(t) is intro.Type and isinstance(t, intro.Object)
        assert (t.full_name, t.name, t.namespace) == ("System.Drawing.Point", "Point", "System.Drawing")
        assert t.is_value_type is True and t.is_class is False
        assert str(t) == "System.Drawing.Point"

    def test_type_members_return_bound_types(self):
        t = gfx.Rectangle(0, 0, 1, 1).get_type()
        base = t.base_type
        assert type(base) is intro.Type and base.full_name == "System.ValueType"
        assert base.base_type.full_name == "System.Object"
        assert base.base_type.base_type is None

    def test_type_equality_and_hash_are_the_managed_ones(self):
        a, b = gfx.Size(1, 1).get_type(), gfx.Size(5, 6).get_type()
        assert a is not b and a == b and hash(a) == hash(b)
        assert a != gfx.SizeF(1.0, 1.0).get_type()

    def test_type_arguments_refuse_other_values(self):
        t = gfx.Point().get_type()
        assert t.is_assignable_from(t) is True
        with pytest.raises(TypeError, match="^can't build Type value from 'int'$"):
            t.is_assignable_from(3)

    def test_object_and_enum_are_managed_objects_not_structures(self):
        assert intro.Type.__dict__["_quorix_clr_host"] is None
        assert intro.Enum.__dict__["_quorix_clr_host"] is None
        assert issubclass(intro.Enum, intro.Object)
        assert str(intro.Object().get_type()) == "System.Object"


class TestDrawingStructures:
    def test_constructed_from_python_with_properties(self):
        p = gfx.Point(3, -4)
        assert (p.x, p.y, p.is_empty) == (3, -4, False)
        assert gfx.Point().is_empty is True
        assert str(p) == "{X=3,Y=-4}"

    def test_equality_and_hash_through_the_managed_side(self):
        assert gfx.Point(1, 2) == gfx.Point(1, 2)
        assert gfx.Point(1, 2) != gfx.Point(2, 1)
        assert hash(gfx.SizeF(1.5, 2.5)) == hash(gfx.SizeF(1.5, 2.5))
        assert len({gfx.Point(1, 2), gfx.Point(1, 2), gfx.Point(0, 0)}) == 2

    def test_structure_results_are_copies(self):
        r = gfx.Rectangle(1, 2, 3, 4)
        location = r.location
        location.offset(10, 10)
        assert (location.x, location.y) == (11, 12)
        assert (r.x, r.y) == (1, 2)
        assert r.contains(2, 3) and not r.contains(10, 10)

    def test_static_members_and_values_of_other_structures(self):
        red = gfx.Color.red
        assert type(red) is gfx.Color and (red.a, red.r, red.g, red.b) == (255, 255, 0, 0)
        assert gfx.Color.from_argb(255, 255, 0, 0).to_argb() == red.to_argb()
        moved = gfx.Point.add(gfx.Point(1, 1), gfx.Size(2, 3))
        assert (moved.x, moved.y) == (3, 4)
        assert gfx.RectangleF(0.5, 0.5, 1.0, 1.0).size == gfx.SizeF(1.0, 1.0)

    def test_bad_arguments_are_type_errors(self):
        with pytest.raises(TypeError):
            gfx.Point("a", 2)
        with pytest.raises(TypeError, match="^can't build Size value from 'quorix.pygfx.Point'$"):
            gfx.Point.add(gfx.Point(), gfx.Point())

    def test_every_drawing_type_is_a_structure(self):
        for name in ("Color", "Point", "PointF", "Size", "SizeF", "Rectangle", "RectangleF"):
            assert getattr(gfx, name).__dict__["_quorix_clr_host"] is Ellipsis, name


def test_dead_wrappers_free_their_handles():
    gc.collect()
    before = freed_count()
    points = [gfx.Point(i, i) for i in range(20)]
    types = [p.get_type() for p in points[:5]]
    del points, types
    gc.collect()
    assert freed_count() - before == 25


LAZY = """
import quorix.pygfx, quorix.pyintro
p = quorix.pygfx.Point
print("imported", p.__name__, quorix.pygfx.VERSION)
"""


def test_siblings_import_without_starting_the_runtime(built):
    run = run_python(LAZY, env={"COREHOST_TRACE": "1"})
    assert run.returncode == 0, run
    assert run.stdout == "imported Point 25.8.0.0\n"


FIRST_USE = """
import quorix.folio, quorix.pygfx
print("before", flush=True)
print(quorix.pygfx.Point(1, 2).get_type().full_name, flush=True)
"""


def test_a_sibling_joins_the_running_runtime_on_first_use(built):
    run = run_python(FIRST_USE, env={"COREHOST_TRACE": "1"})
    assert run.returncode == 0, run
    out = run.stdout
    # quorix.folio creates the runtime; the sibling reuses it after its import, on its first call
    assert out.index("No existed module...") < out.index("before\n") < out.index("Using existed module...")
    assert out.count("Creating default AppDomain...") == 1
    assert out.endswith("System.Drawing.Point\n") or "System.Drawing.Point\n" in out
