"""Framework types whose static and instance methods share a Python name: System.Type's static
GetType overloads beside the instance get_type, and the drawing rectangles' Inflate and Intersect."""

import quorix.folio  # noqa: F401  (the product starts the runtime first, as in real use)
import quorix.pygfx as gfx
import quorix.pyintro as intro


class TestTypeGetType:
    def test_the_class_looks_a_type_up_by_name(self):
        t = intro.Type.get_type("System.String")
        assert type(t) is intro.Type and t.full_name == "System.String"
        assert intro.Type.get_type(type_name="System.Int32").full_name == "System.Int32"
        assert intro.Type.get_type("No.Such.Type") is None

    def test_an_instance_still_reports_its_own_type(self):
        point_type = gfx.Point(1, 2).get_type()
        assert point_type.full_name == "System.Drawing.Point"
        # a Type wrapper is itself a managed object whose type is the runtime's type class
        assert point_type.get_type().full_name == "System.RuntimeType"
        assert str(intro.Object().get_type()) == "System.Object"


class TestRectangleForms:
    def test_static_inflate_returns_a_new_rectangle(self):
        r = gfx.Rectangle(0, 0, 2, 2)
        grown = gfx.Rectangle.inflate(r, 1, 1)
        assert grown == gfx.Rectangle(-1, -1, 4, 4)
        assert r == gfx.Rectangle(0, 0, 2, 2)

    def test_instance_inflate_changes_the_rectangle(self):
        r = gfx.Rectangle(0, 0, 2, 2)
        assert r.inflate(1, 1) is None
        assert r == gfx.Rectangle(-1, -1, 4, 4)
        r.inflate(gfx.Size(1, 0))
        assert r == gfx.Rectangle(-2, -1, 6, 4)

    def test_intersect_both_ways(self):
        a, b = gfx.RectangleF(0.0, 0.0, 2.0, 2.0), gfx.RectangleF(1.0, 1.0, 2.0, 2.0)
        assert gfx.RectangleF.intersect(a, b) == gfx.RectangleF(1.0, 1.0, 1.0, 1.0)
        assert a == gfx.RectangleF(0.0, 0.0, 2.0, 2.0)
        a.intersect(b)
        assert a == gfx.RectangleF(1.0, 1.0, 1.0, 1.0)
