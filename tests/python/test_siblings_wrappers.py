"""The wrapper types of quorix.pyintro and quorix.pygfx, as quorix.folio relies on them:
fixed names, the wrapper object layout, the marker attributes, and no Python constructor."""

import importlib

import pytest

WRAPPERS = {
    "quorix.pyintro": ("Type", "Object", "Enum"),
    "quorix.pygfx": ("Color", "Point", "PointF", "Size", "SizeF", "Rectangle", "RectangleF"),
}
ALL = [(module, name) for module, names in WRAPPERS.items() for name in names]
POINTER = 8


def wrapper(module, name):
    return getattr(importlib.import_module(module), name)


@pytest.mark.parametrize("module, name", ALL)
class TestWrapperTypes:
    def test_named_inside_its_module(self, module, name):
        cls = wrapper(module, name)
        assert cls.__module__ == module and cls.__qualname__ == name
        assert cls.__name__ == name

    def test_no_constructor_from_python(self, module, name):
        cls = wrapper(module, name)
        with pytest.raises(TypeError, match="^type has no available constructor$"):
            cls()
        with pytest.raises(TypeError, match="^type has no available constructor$"):
            cls.__new__(cls)

    def test_layout_is_header_handle_and_kind(self, module, name):
        # object header, a pointer-sized handle, a 32-bit kind padded to pointer alignment
        assert wrapper(module, name).__basicsize__ == object.__basicsize__ + 2 * POINTER
        assert wrapper(module, name).__itemsize__ == 0

    def test_marked_as_carrying_its_handle_inline(self, module, name):
        cls = wrapper(module, name)
        assert cls.__dict__["_qrxsc2p_handle"] is Ellipsis
        # reflection roots are managed objects; drawing types are managed structures
        expected = None if module == "quorix.pyintro" else Ellipsis
        assert cls.__dict__["_quorix_clr_host"] is expected


@pytest.mark.parametrize("module", sorted(WRAPPERS))
def test_module_offers_exactly_its_wrappers(module):
    public = {name for name in vars(importlib.import_module(module)) if name[:1].isupper()}
    assert public == set(WRAPPERS[module]) | {"VERSION"}
